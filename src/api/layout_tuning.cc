#include "zestra/api/layout_tuning.h"

namespace ZestraNS {

LayoutTuning TuningOf(LayoutMode mode) {
  if (mode != LayoutMode::kBlocks) return {};
  static const std::vector<double> kBlocksValues = {
      1.0, 0.05,  0.3, 0.2,   // first set: LowThreshold, HiThreshold, CellLowScore, WinnerLowThreshold
      0.0, 0.425, 0.0, 0.35,  // second set
      0.875,                  // minWordShare
  };
  static const ZestraRankWeights kBlocksWeights = {{0.4}, {0.33}, {1.35}};
  return {&kBlocksValues, &kBlocksWeights};
}

}  // namespace ZestraNS
