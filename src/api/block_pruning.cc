#include "zestra/api/block_pruning.h"

#include <iterator>
#include <string>
#include <vector>

#include "zestra/model/k_cell_item.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;

// A kept cell, in the order the text is written, with the words of it and
// of the kept cells below it.
struct Kept {
  KCell* cell;
  KTable* table;
  uint32_t end;  // one past the last kept cell below it, in the list
  uint32_t words = 0;
  uint32_t link_words = 0;
  uint32_t links = 0;
};

// Lists the kept cells under `root` in writing order. An explicit stack:
// trees may be deep.
std::vector<Kept> ListKept(const SmartPtr<KTable>& root, const ZestraVisitorStrategy& selection) {
  struct Frame {
    KTable* table;  // a table frame: its slots; else null
    KCell* cell;    // a cell frame: its items
    uint32_t next;
    bool good;       // table frame: the table is good
    int32_t kept;    // cell frame: its index in the list, or -1
  };
  std::vector<Kept> kept;
  std::vector<int32_t> open;  // indices of the kept cells being walked
  std::vector<Frame> stack;
  stack.push_back({root.Get(), nullptr, 0, selection.IsGoodTable(root), -1});
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.table != nullptr && frame.cell == nullptr) {
      KTable& table = *frame.table;
      const uint32_t slots = static_cast<uint32_t>(table.End() - table.Begin());
      bool entered = false;
      while (!entered && frame.next <= slots + 1) {  // `frame` dies with a push: test `entered` first
        const uint32_t slot = frame.next++;
        const SmartPtr<KCell>& cell = slot < slots ? table.Begin()[slot] : slot == slots ? table.Caption() : table.Summary();
        if (cell.IsNull()) continue;
        int32_t index = -1;
        if (frame.good && selection.IsGoodCell(cell)) {
          index = static_cast<int32_t>(kept.size());
          kept.push_back({cell.Get(), &table, 0, cell->Words(), cell->WordsInLinksAndImages(), cell->Links()});
          open.push_back(index);
        }
        stack.push_back({&table, cell.Get(), 0, false, index});  // `frame` is invalid from here on
        entered = true;
      }
      if (!entered) stack.pop_back();
      continue;
    }
    KCell& cell = *frame.cell;
    const uint32_t items = static_cast<uint32_t>(cell.End() - cell.Begin());
    bool entered = false;
    while (!entered && frame.next < items) {  // `frame` dies with a push: test `entered` first
      const SmartPtr<KCellItem>& item = cell.Begin()[frame.next++];
      if (!item->IsTable() || item->Table().IsNull()) continue;
      const SmartPtr<KTable>& table = item->Table();
      stack.push_back({table.Get(), nullptr, 0, selection.IsGoodTable(table), -1});
      entered = true;
    }
    if (entered) continue;
    const int32_t index = frame.kept;
    stack.pop_back();
    if (index < 0) continue;
    open.pop_back();
    Kept& done = kept[static_cast<std::size_t>(index)];
    done.end = static_cast<uint32_t>(kept.size());
    if (!open.empty()) {
      Kept& parent = kept[static_cast<std::size_t>(open.back())];
      parent.words += done.words;
      parent.link_words += done.link_words;
      parent.links += done.links;
    }
  }
  return kept;
}

bool Has(const Kept& k, uint16_t flag) { return (k.cell->Marks().flags & flag) != 0; }

double LinkShare(const Kept& k) { return k.words == 0 ? 0.0 : static_cast<double>(k.link_words) / k.words; }

// Whether any text item of the cell holds a mark that ends a sentence or a
// clause.
bool HasSentencePunctuation(const KCell& cell) {
  for (const SmartPtr<KCellItem>* item = cell.Begin(); item != cell.End(); ++item) {
    if (!(*item)->IsText()) continue;
    for (char16_t c : (*item)->Text()) {
      if (c == u'.' || c == u'!' || c == u'?' || c == u',' || c == u';' || c == u':' || c == u'\u3002' ||
          c == u'\uff0c' || c == u'\u2026') {
        return true;
      }
    }
  }
  return false;
}

// The pruning of one list of kept cells.
class Pruner {
 public:
  Pruner(std::vector<Kept> kept, const PruningTuning& tuning) : kept_(std::move(kept)), tuning_(tuning) {
    for (const Kept& k : kept_) total_ += k.cell->Words();
    remaining_ = total_;
  }

  void Run(bool link_document) {
    if (tuning_.comments) ByFlag(PruneStep::kComments, KCellMarks::kComments, UINT32_MAX);
    if (link_document) {
      if (tuning_.link_furniture) ByFlag(PruneStep::kLinkFurniture, KCellMarks::kFurniture, UINT32_MAX);
      return;
    }
    if (tuning_.before_title) BeforeTitle();
    if (tuning_.teaser_runs) TeaserRuns();
    if (tuning_.credits) ByFlag(PruneStep::kCredit, KCellMarks::kCredit, tuning_.credit_max_words);
    if (tuning_.captions) ByFlag(PruneStep::kCaption, KCellMarks::kCaption, tuning_.caption_max_words);
    if (tuning_.bylines) ByFlag(PruneStep::kByline, KCellMarks::kByline, tuning_.byline_max_words);
    if (tuning_.link_heavy) {
      Where(PruneStep::kLinkHeavy, [this](const Kept& k) {
        return k.words > 0 && k.words <= tuning_.link_heavy_max_words && LinkShare(k) >= tuning_.link_heavy_min_share;
      });
    }
    if (tuning_.forms) ByFlag(PruneStep::kForm, KCellMarks::kForm, UINT32_MAX);
    if (tuning_.short_labels) {
      Where(PruneStep::kShortLabel, [this](const Kept& k) {
        return k.end == Index(k) + 1 && k.words > 0 && k.words <= tuning_.short_label_max_words &&
               !HasSentencePunctuation(*k.cell);
      });
    }
  }

 private:
  uint32_t Index(const Kept& k) const { return static_cast<uint32_t>(&k - kept_.data()); }

  bool Dropped(const Kept& k) const { return k.cell->Marks().dropped_by != 0; }

  // Drops the kept cells with `flag` and at most `max_words`.
  void ByFlag(PruneStep step, uint16_t flag, uint32_t max_words) {
    Where(step, [flag, max_words](const Kept& k) { return Has(k, flag) && k.words <= max_words; });
  }

  // Drops every cell (with what lies below it) that `test` accepts, unless
  // that leaves too few words.
  template <class Test>
  void Where(PruneStep step, Test&& test) {
    std::vector<uint32_t> chosen;
    for (uint32_t i = 0; i < kept_.size(); ++i) {
      if (Dropped(kept_[i]) || !test(kept_[i])) continue;
      chosen.push_back(i);
      i = kept_[i].end - 1;  // what lies below goes with it
    }
    Apply(step, chosen);
  }

  // Drops the cells `chosen` (each with its subtree) as `step`, unless the
  // words left would fall below the least share kept.
  void Apply(PruneStep step, const std::vector<uint32_t>& chosen) {
    uint32_t dropped = 0;
    for (uint32_t first : chosen) {
      for (uint32_t i = first; i < kept_[first].end; ++i) {
        if (!Dropped(kept_[i])) dropped += kept_[i].cell->Words();
      }
    }
    if (dropped == 0 || static_cast<double>(remaining_ - dropped) < tuning_.min_kept_share * total_) return;
    for (uint32_t first : chosen) {
      for (uint32_t i = first; i < kept_[first].end; ++i) {
        KCellMarks& marks = kept_[i].cell->Marks();
        if (marks.dropped_by == 0) marks.dropped_by = static_cast<uint8_t>(step);
      }
    }
    remaining_ -= dropped;
  }

  void BeforeTitle() {
    uint32_t title = 0;
    while (title < kept_.size() && !(Has(kept_[title], KCellMarks::kTitle) && !Dropped(kept_[title]))) ++title;
    if (title == kept_.size()) return;
    std::vector<uint32_t> chosen;
    uint32_t words = 0;
    for (uint32_t i = 0; i < title; ++i) {
      if (kept_[i].end > title) continue;  // holds the title: not before it
      if (!Dropped(kept_[i])) {
        chosen.push_back(i);
        for (uint32_t j = i; j < kept_[i].end; ++j) {
          if (!Dropped(kept_[j])) words += kept_[j].cell->Words();
        }
      }
      i = kept_[i].end - 1;
    }
    if (static_cast<double>(words) > tuning_.before_title_max_share * remaining_) return;
    Apply(PruneStep::kBeforeTitle, chosen);
  }

  // Whether a box may belong to a run of teasers.
  bool Teaser(const Kept& k) const {
    if (Dropped(k) || k.cell->Marks().signature == 0 || k.links == 0 || k.words > tuning_.teaser_max_words) {
      return false;
    }
    // A plain item (a reference, a list entry) must be mostly its link.
    const double share = LinkShare(k);
    return share >= (Has(k, KCellMarks::kBoxed) ? tuning_.teaser_min_link_share : tuning_.teaser_item_link_share);
  }

  void TeaserRuns() {
    std::vector<uint32_t> chosen;
    std::vector<bool> seen(kept_.size(), false);
    for (uint32_t i = 0; i < kept_.size(); ++i) {
      if (seen[i] || !Teaser(kept_[i])) continue;
      // The next box of a run is the next kept row of the same table.
      std::vector<uint32_t> run{i};
      for (uint32_t at = i, next = kept_[i].end; next < kept_.size(); at = next, next = kept_[next].end) {
        const Kept& a = kept_[at];
        const Kept& b = kept_[next];
        if (b.table != a.table || b.cell->Row() != a.cell->Row() + 1 ||
            b.cell->Marks().signature != a.cell->Marks().signature || !Teaser(b)) {
          break;
        }
        run.push_back(next);
        seen[next] = true;
      }
      if (run.size() >= tuning_.teaser_min_run) chosen.insert(chosen.end(), run.begin(), run.end());
      i = kept_[i].end - 1;
    }
    Apply(PruneStep::kTeaserRun, chosen);
  }

  std::vector<Kept> kept_;
  const PruningTuning& tuning_;
  uint32_t total_ = 0;
  uint32_t remaining_ = 0;
};

}  // namespace

const char* PruneStepName(PruneStep step) {
  switch (step) {
    case PruneStep::kNone:
      return "";
    case PruneStep::kComments:
      return "comments";
    case PruneStep::kLinkFurniture:
      return "link furniture";
    case PruneStep::kBeforeTitle:
      return "before title";
    case PruneStep::kTeaserRun:
      return "teaser run";
    case PruneStep::kCredit:
      return "credit";
    case PruneStep::kCaption:
      return "caption";
    case PruneStep::kByline:
      return "byline";
    case PruneStep::kLinkHeavy:
      return "link heavy";
    case PruneStep::kForm:
      return "form";
    case PruneStep::kShortLabel:
      return "short label";
  }
  return "";
}

bool ChooseSteps(std::string_view names, PruningTuning& tuning) {
  constexpr PruneStep kSteps[] = {PruneStep::kComments,  PruneStep::kLinkFurniture, PruneStep::kBeforeTitle,
                                  PruneStep::kTeaserRun, PruneStep::kCredit,        PruneStep::kCaption,
                                  PruneStep::kByline,    PruneStep::kLinkHeavy,     PruneStep::kForm,
                                  PruneStep::kShortLabel};
  bool chosen[std::size(kSteps)] = {};
  std::size_t at = 0;
  while (at <= names.size()) {
    std::size_t end = names.find(',', at);
    if (end == std::string_view::npos) end = names.size();
    const std::string_view name = names.substr(at, end - at);
    bool known = name.empty() || name == "none";  // a trailing comma names nothing
    for (std::size_t i = 0; i < std::size(kSteps) && !known; ++i) {
      std::string step = PruneStepName(kSteps[i]);
      for (char& c : step) c = c == ' ' ? '-' : c;
      if (name == step) known = chosen[i] = true;
    }
    if (!known) return false;
    at = end + 1;
  }
  bool* const switches[] = {&tuning.comments, &tuning.link_furniture, &tuning.before_title, &tuning.teaser_runs,
                            &tuning.credits,  &tuning.captions,       &tuning.bylines,      &tuning.link_heavy,
                            &tuning.forms,    &tuning.short_labels};
  static_assert(std::size(switches) == std::size(kSteps));
  for (std::size_t i = 0; i < std::size(kSteps); ++i) *switches[i] = chosen[i];
  return true;
}

void PruneSelection(const SmartPtr<KTable>& root, const ZestraVisitorStrategy& selection, const PruningTuning& tuning,
                    bool link_document) {
  Pruner(ListKept(root, selection), tuning).Run(link_document);
}

PrunedStrategy::~PrunedStrategy() { inner_ = nullptr; }

}  // namespace ZestraNS
