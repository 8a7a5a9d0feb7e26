// Pruning of the blocks layout's selection: once the ranking has chosen
// the tables and cells to keep, named steps drop the kept cells that sit
// beside the article inside the winning region: comment sections, runs of
// teaser boxes, what comes before the article's title, credit, caption and
// byline lines, link bars, and the site's furniture around a page of links.
//
// Each step reads the notes the blocks walk left on the cells (KCellMarks)
// and the cells' own counters; each has its own switch and thresholds in
// PruningTuning. A cell a step drops takes the cells below it along, and
// records the step in KCellMarks::dropped_by, so tools can say which step
// dropped it. A step that would leave less than PruningTuning::min_kept_share
// of the selection's words drops nothing: on a page where the comments are
// the content, they stay.
//
// Thread-safety: PruneSelection writes the marks of the tree it is given
// and must not run while anything else reads or writes that tree;
// PrunedStrategy is read-only once made.
#ifndef ZESTRA_API_BLOCK_PRUNING_H_
#define ZESTRA_API_BLOCK_PRUNING_H_

#include <cstdint>
#include <string_view>

#include "zestra/base/smart_ptr.h"
#include "zestra/export.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_table.h"
#include "zestra/traversal/zestra_visitor_strategy.h"

namespace ZestraNS {

// The steps, in the order they run; stored in KCellMarks::dropped_by.
enum class PruneStep : uint8_t {
  kNone = 0,
  // Cells whose text lies inside a comment section (class or id comment,
  // comments, disqus, ...).
  kComments,
  // In a link document, the cells of navigation, headers, footers and
  // boilerplate classes: the page's furniture around its list of links.
  kLinkFurniture,
  // Cells before the one holding the heading that names the article (the
  // h1 or h2 matching the metadata's title): menus, breadcrumbs and kickers
  // above the article; only when they hold few words beside the rest.
  kBeforeTitle,
  // Runs of sibling boxes of one shape (element, class and child elements)
  // that each link elsewhere and hold few words: lists of other articles.
  kTeaserRun,
  // Short lines inside credit or copyright elements.
  kCredit,
  // Short lines inside figure captions.
  kCaption,
  // Short lines inside bylines, datelines and author lines.
  kByline,
  // Cells of few words that lie mostly in links: link bars.
  kLinkHeavy,
  // Cells whose text lies inside a form: its labels, options and notes.
  kForm,
  // Cells of very few words, none of them in a sentence: labels.
  kShortLabel,
};

// The name of a step, for people: "comments", "teaser run", ...; "" for
// kNone.
ZESTRA_EXPORT const char* PruneStepName(PruneStep step);

// Sets the switches of `tuning` from a list of step names separated by
// commas ("comments,teaser-run"; the names of PruneStepName with '-' for
// ' '; "none" names no step): the steps named run, the others do not.
// Returns false, with `tuning` unchanged, when a name names no step.
ZESTRA_EXPORT bool ChooseSteps(std::string_view names, struct PruningTuning& tuning);

// The switches and thresholds of the steps. Word counts are those of the
// layout tree (CountWords), taken over a cell and the kept cells below it.
struct PruningTuning {
  bool comments = true;
  bool link_furniture = true;
  bool before_title = true;
  // The words before the title may be at most this share of the words kept.
  double before_title_max_share = 0.25;
  bool teaser_runs = true;
  uint32_t teaser_min_run = 3;
  uint32_t teaser_max_words = 60;
  // Each box of a run has at least this share of its words in links; a
  // plain item (an element without a class, a heading or an image) at
  // least teaser_item_link_share.
  double teaser_min_link_share = 0.2;
  double teaser_item_link_share = 0.7;
  bool credits = false;
  uint32_t credit_max_words = 20;
  bool captions = false;
  uint32_t caption_max_words = 25;
  bool bylines = false;
  uint32_t byline_max_words = 25;
  bool link_heavy = false;
  uint32_t link_heavy_max_words = 40;
  double link_heavy_min_share = 0.75;
  bool forms = true;
  bool short_labels = false;
  uint32_t short_label_max_words = 3;
  // No step may leave less than this share of the words kept before it.
  double min_kept_share = 0.5;
};

// Runs the steps of `tuning` over the cells that `selection` keeps in the
// tree under `root` (a cell is kept when its table is good and it is good),
// recording in each dropped cell's marks the step that dropped it. With
// `link_document` only the steps that apply to a page of links run
// (comments, link furniture); otherwise every step but link furniture.
// REQUIRES: root is not null.
ZESTRA_EXPORT void PruneSelection(const Orvel::SmartPtr<KTable>& root, const ZestraVisitorStrategy& selection,
                                  const PruningTuning& tuning, bool link_document);

// A strategy that keeps what another keeps, less the cells a pruning step
// dropped.
class ZESTRA_EXPORT PrunedStrategy : public ZestraVisitorStrategy {
 public:
  // REQUIRES: inner is not null.
  explicit PrunedStrategy(const Orvel::SmartPtr<ZestraVisitorStrategy>& inner) : inner_(inner) {}
  ~PrunedStrategy() override;

  bool IsGoodTable(const Orvel::SmartPtr<KTable>& table) const override { return inner_->IsGoodTable(table); }
  bool IsGoodCell(const Orvel::SmartPtr<KCell>& cell) const override {
    return cell->Marks().dropped_by == 0 && inner_->IsGoodCell(cell);
  }
  bool IsGoodCellItem(const Orvel::SmartPtr<KCellItem>& item) const override {
    return inner_->IsGoodCellItem(item);
  }

 private:
  Orvel::SmartPtr<ZestraVisitorStrategy> inner_;
};

}  // namespace ZestraNS

#endif  // ZESTRA_API_BLOCK_PRUNING_H_
