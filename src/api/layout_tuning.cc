#include "zestra/api/layout_tuning.h"

namespace ZestraNS {

namespace {

PruningTuning Balanced() { return PruningTuning(); }

PruningTuning Precision() {
  PruningTuning tuning;
  tuning.credits = true;
  tuning.captions = true;
  tuning.bylines = true;
  tuning.link_heavy = true;
  return tuning;
}

PruningTuning Recall() {
  PruningTuning tuning;
  tuning.before_title = false;
  tuning.teaser_runs = false;
  tuning.forms = false;
  return tuning;
}

}  // namespace

LayoutTuning TuningOf(LayoutMode mode, Favor favor) {
  if (mode != LayoutMode::kBlocks) return {};
  static const PruningTuning kPruning[3] = {Balanced(), Precision(), Recall()};
  static const std::vector<double> kBlocksValues = {
      1.0, 0.05,  0.3, 0.2,   // first set: LowThreshold, HiThreshold, CellLowScore, WinnerLowThreshold
      0.0, 0.425, 0.0, 0.35,  // second set
      0.875,                  // minWordShare
  };
  static const ZestraRankWeights kBlocksWeights = {{0.4}, {0.33}, {1.35}};
  const std::size_t choice = static_cast<std::size_t>(favor) < 3 ? static_cast<std::size_t>(favor) : 0;
  return {&kBlocksValues, &kBlocksWeights, &kPruning[choice]};
}

}  // namespace ZestraNS
