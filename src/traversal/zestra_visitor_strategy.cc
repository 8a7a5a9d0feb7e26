#include "zestra/traversal/zestra_visitor_strategy.h"

namespace ZestraNS {

ZestraVisitorStrategy::~ZestraVisitorStrategy() = default;

int32_t ZestraVisitorStrategy::Release() const noexcept {
  const int32_t count = refs_.Decrement();
  if (count == 0) delete this;
  return count;
}

bool ZestraVisitorStrategy::IsGoodTable(const Orvel::SmartPtr<KTable>&) const { return true; }
bool ZestraVisitorStrategy::IsGoodCell(const Orvel::SmartPtr<KCell>&) const { return true; }
bool ZestraVisitorStrategy::IsGoodCellItem(const Orvel::SmartPtr<KCellItem>&) const { return true; }

}  // namespace ZestraNS
