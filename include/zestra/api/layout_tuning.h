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
// Thread-safety: constant data; the pointers stay valid for the life of the
// library.
#ifndef ZESTRA_API_LAYOUT_TUNING_H_
#define ZESTRA_API_LAYOUT_TUNING_H_

#include <vector>

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
};

// The tuning of `mode`: both null for LayoutMode::kTables.
ZESTRA_EXPORT LayoutTuning TuningOf(LayoutMode mode);

}  // namespace ZestraNS

#endif  // ZESTRA_API_LAYOUT_TUNING_H_
