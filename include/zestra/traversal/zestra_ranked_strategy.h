// ZestraRankedStrategy is the visitor strategy of the ranked selection: a
// table is good when it is in the winners set that FindWinningTables
// filled, a cell when its rank (KCell::Rank, the share of its words outside
// links) is strictly above the CellLowScore of the rank parameters. Every
// text item of a good cell is good.
//
// Ownership: shares its parameters (one reference) and its winners holder
// (one share of the holder's counter); both are only read.
//
// Thread-safety: as ZestraVisitorStrategy.
#ifndef ZESTRA_TRAVERSAL_ZESTRA_RANKED_STRATEGY_H_
#define ZESTRA_TRAVERSAL_ZESTRA_RANKED_STRATEGY_H_

#include "zestra/base/smart_ptr.h"
#include "zestra/export.h"
#include "zestra/ranking/find_winning_tables.h"
#include "zestra/ranking/k_rank_parameters.h"
#include "zestra/traversal/zestra_visitor_strategy.h"

namespace ZestraNS {

class ZESTRA_EXPORT ZestraRankedStrategy : public ZestraVisitorStrategy {
 public:
  // Shares `parameters` and `winners` (an empty holder makes every table
  // good). REQUIRES: `parameters` is not null.
  ZestraRankedStrategy(const Orvel::SmartPtr<KRankParameters>& parameters, const KWinners& winners);
  // A strategy sharing the other's parameters and winners; count 0.
  ZestraRankedStrategy(const ZestraRankedStrategy& other) = default;
  // Shares the other's parameters and winners, giving up the old ones
  // (nothing changes for those already shared); the count is untouched.
  ZestraRankedStrategy& operator=(const ZestraRankedStrategy& other) = default;
  // Releases the parameters, then its share of the winners.
  ~ZestraRankedStrategy() override;

  // True when the holder holds no set, or when this very table is in it.
  bool IsGoodTable(const Orvel::SmartPtr<KTable>& table) const override;
  // True when cell->Rank() > CellLowScore(); false for equal ranks and NaN.
  bool IsGoodCell(const Orvel::SmartPtr<KCell>& cell) const override;

 private:
  Orvel::SmartPtr<KRankParameters> parameters_;
  KWinners winners_;
};

}  // namespace ZestraNS

#endif  // ZESTRA_TRAVERSAL_ZESTRA_RANKED_STRATEGY_H_
