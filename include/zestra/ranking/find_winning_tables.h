// FindWinningTables picks the tables of a layout tree that carry the
// document's main text.
//
// It ranks the root and every table that KTable::ChildTables reaches below
// it (KTable::Rank), drops those below LowThreshold, makes winners of those
// whose rank lies within the relative margin HiThreshold below the best
// rank, and adds, below each winner, the tables whose own rank reaches
// WinnerLowThreshold. A rank equal to a bound passes; a rank that is not a
// number passes none.
//
// The result goes into a set shared with the ranked strategy, ordered by the
// address of the table; only membership matters.
//
// Thread-safety: reentrant; the tree must not change during the call.
#ifndef ZESTRA_RANKING_FIND_WINNING_TABLES_H_
#define ZESTRA_RANKING_FIND_WINNING_TABLES_H_

#include <set>

#include "zestra/base/ref_count.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/export.h"
#include "zestra/model/k_statistics.h"
#include "zestra/model/k_table.h"
#include "zestra/ranking/k_rank_parameters.h"

namespace ZestraNS {

// A set of tables, ordered by address.
using KTableSet = std::set<Orvel::SmartPtr<KTable>>;
// The shared holder of the winners set.
using KWinners = Orvel::RefCount<KTableSet>;

// Inserts the winning tables of the tree under `root` into `*winners`. Never
// clears the set and never removes from it, so calling twice leaves the
// union of both results. When no table reaches LowThreshold the set is left
// as it was. Does nothing when `winners` holds no set.
// REQUIRES: `root` and `parameters` are not null; `document` holds the
// full-depth statistics of `root` (KTable::Statistics with 0xFFFFFFFF).
ZESTRA_EXPORT void FindWinningTables(const Orvel::SmartPtr<KTable>& root, const KStatistics& document,
                                     const Orvel::SmartPtr<KRankParameters>& parameters, KWinners& winners);

}  // namespace ZestraNS

#endif  // ZESTRA_RANKING_FIND_WINNING_TABLES_H_
