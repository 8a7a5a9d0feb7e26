// The two halves of FindWinningTables that work on ranks already computed,
// apart so that they can be exercised with ranks chosen at will.
//
// Thread-safety: reentrant.
#ifndef ZESTRA_RANKING_WINNER_SELECTION_H_
#define ZESTRA_RANKING_WINNER_SELECTION_H_

#include <cstdint>

#include "zestra/base/fast_vector.h"
#include "zestra/ranking/find_winning_tables.h"
#include "zestra/ranking/k_rank_parameters.h"
#include "ranking/table_graph.h"

namespace ZestraNS {
namespace ranking_internal {

// Chooses winners among `count` candidates whose ranks are
// `candidate_ranks[0..count)`: drops ranks below LowThreshold and NaN, sorts
// the rest, and appends to `winners` the index of every kept candidate
// whose rank is not below best - HiThreshold * best, best first. Appends
// nothing when no candidate is kept.
void ChooseWinners(const double* candidate_ranks, uint32_t count, const KRankParameters& parameters,
                   Orvel::FastVector<uint32_t>& winners);

// FindWinningTables over `graph` with `ranks[id]` taken as the rank of table
// `id`: the candidates are the root and its FindAllTables, in that order;
// the winners and, below each, the tables whose rank reaches
// WinnerLowThreshold are inserted into `winners`.
// REQUIRES: `ranks` holds graph.Size() values.
void SelectWinningTables(const TableGraph& graph, const double* ranks, const KRankParameters& parameters,
                         KTableSet& winners);

}  // namespace ranking_internal
}  // namespace ZestraNS

#endif  // ZESTRA_RANKING_WINNER_SELECTION_H_
