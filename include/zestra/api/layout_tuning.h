// The ranking tuning of each layout mode: the text extractor's nine values
// (thresholds of its two parameter sets and the share of words the first
// selection must keep) and the weights of the three rank terms.
//
// The tables layout ranks with the extractor's built-in values and the
// default weights; its selection is the library's reference behaviour. The
// blocks layout builds deeper trees of smaller tables (one per block of
// several paragraphs), so it ranks with values of its own: a first set that
// wants a table holding most of the page's text outside links, a looser
// second set, and weights that make a table's share of that text count most.
// They were tuned on a development set of 130 pages; changes that move its
// F1 by less than 0.01 are noise.
//
// The blocks layout then prunes its selection (block_pruning.h) with the
// steps of its pruning tuning, of which there are three: kBalanced, the
// default, runs the steps that gained on both halves of both development
// sets; kPrecision adds the steps that drop more of what sits beside the
// article at the cost of some of the article (link bars, labels,
// captions); kRecall runs only the steps that drop no article text on the
// development sets (comments, link furniture).
//
// Thread-safety: constant data; the pointers stay valid for the life of the
// library.
#ifndef ZESTRA_API_LAYOUT_TUNING_H_
#define ZESTRA_API_LAYOUT_TUNING_H_

#include <vector>

#include "zestra/api/block_pruning.h"
#include "zestra/builder/layout_mode.h"
#include "zestra/export.h"
#include "zestra/traversal/zestra_text_extractor.h"

namespace ZestraNS {

// Hand both to ZestraTextExtractor to rank a tree of that layout as the
// library's extraction does.
struct LayoutTuning {
  // The extractor's nine values; null: the built-in ones.
  const std::vector<double>* values = nullptr;
  // The rank weights of both parameter sets; null: the defaults.
  const ZestraRankWeights* weights = nullptr;
  // The pruning of the selection; null: none.
  const PruningTuning* pruning = nullptr;
};

// What the pruning favours when it weighs dropping a cell; the values are
// those of zestra::Favor.
enum class Favor : uint8_t {
  kBalanced = 0,
  kPrecision = 1,  // drop more of what lies beside the article
  kRecall = 2,     // keep more of the article
};

// The tuning of `mode`: all null for LayoutMode::kTables; `favor` chooses
// the pruning of kBlocks (an unknown value counts as kBalanced).
ZESTRA_EXPORT LayoutTuning TuningOf(LayoutMode mode, Favor favor = Favor::kBalanced);

}  // namespace ZestraNS

#endif  // ZESTRA_API_LAYOUT_TUNING_H_
