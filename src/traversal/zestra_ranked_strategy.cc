#include "zestra/traversal/zestra_ranked_strategy.h"

namespace ZestraNS {

ZestraRankedStrategy::ZestraRankedStrategy(const Orvel::SmartPtr<KRankParameters>& parameters,
                                           const KWinners& winners)
    : parameters_(parameters), winners_(winners) {}

ZestraRankedStrategy::~ZestraRankedStrategy() {
  parameters_ = nullptr;
  winners_.Reset();
}

bool ZestraRankedStrategy::IsGoodTable(const Orvel::SmartPtr<KTable>& table) const {
  if (!winners_) return true;
  return winners_->find(table) != winners_->end();
}

bool ZestraRankedStrategy::IsGoodCell(const Orvel::SmartPtr<KCell>& cell) const {
  return cell->Rank() > parameters_->CellLowScore();
}

}  // namespace ZestraNS
