#include "zestra/ranking/find_winning_tables.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "zestra/base/ref_count_vector.h"
#include "zestra/ranking/sort_idxtbl_pair.h"
#include "ranking/level_ranker.h"
#include "ranking/table_graph.h"
#include "ranking/winner_selection.h"

namespace ZestraNS {
namespace ranking_internal {

void ChooseWinners(const double* candidate_ranks, uint32_t count, const KRankParameters& parameters,
                   Orvel::FastVector<uint32_t>& winners) {
  // Keep, in order, the candidates whose rank reaches LowThreshold. This is
  // the same list as erasing each dropped candidate in place, in one pass.
  Orvel::FastVector<double> ranks;
  Orvel::FastVector<uint32_t> kept;
  for (uint32_t k = 0; k < count; ++k) {
    const double rank = candidate_ranks[k];
    if (rank < parameters.LowThreshold() || std::isnan(rank)) continue;
    ranks.Add(rank);
    kept.Add(k);
  }
  if (ranks.Empty()) return;

  // Sort indices by rank, leaving the ranks in place. Ties may come out in
  // any order: the walk below takes all of them or none.
  Orvel::FastVector<sort_idxtbl_pair<double*>> pairs;
  pairs.Reserve(ranks.Size());
  for (uint32_t k = 0; k < ranks.Size(); ++k) pairs.Add({&ranks[k], k});
  std::sort(pairs.begin(), pairs.end());
  Orvel::FastVector<uint32_t> sorted;
  sorted.Reserve(pairs.Size());
  for (const sort_idxtbl_pair<double*>& pair : pairs) sorted.Add(pair.index);

  const double best = ranks[sorted[sorted.Size() - 1]];
  const double cutoff = best - parameters.HiThreshold() * best;
  for (uint32_t i = sorted.Size(); i-- > 0;) {
    if (ranks[sorted[i]] < cutoff) break;
    winners.Add(kept[sorted[i]]);
  }
}

void SelectWinningTables(const TableGraph& graph, const double* ranks, const KRankParameters& parameters,
                         KTableSet& winners) {
  const Orvel::SmartPtr<KTable>& root = graph.Table(0);
  Orvel::RefCountVector<KTable> candidates;
  candidates.Add(root);
  root->FindAllTables(candidates);
  Orvel::FastVector<uint32_t> candidate_ids;
  Orvel::FastVector<double> candidate_ranks;
  candidate_ids.Reserve(candidates.Size());
  candidate_ranks.Reserve(candidates.Size());
  for (const Orvel::SmartPtr<KTable>& table : candidates) {
    const uint32_t id = graph.IdOf(table.Get());
    candidate_ids.Add(id);
    candidate_ranks.Add(ranks[id]);
  }
  candidates.Clear();

  Orvel::FastVector<uint32_t> chosen;
  ChooseWinners(candidate_ranks.Data(), candidate_ranks.Size(), parameters, chosen);

  // Below each winner, every table whose rank reaches WinnerLowThreshold
  // joins. A table's rank does not depend on the winner it is found under,
  // so a subtree already walked below one winner adds nothing new below
  // another: `walked` marks the tables whose whole subtree has been (or is
  // being) walked, and such a subtree is not entered again.
  std::vector<bool> walked(graph.Size(), false);
  std::vector<uint32_t> pending;
  const double winner_low = parameters.WinnerLowThreshold();
  for (uint32_t k : chosen) {
    const uint32_t winner = candidate_ids[k];
    winners.insert(graph.Table(winner));
    if (walked[winner]) continue;
    walked[winner] = true;
    pending.assign(graph.ChildrenBegin(winner), graph.ChildrenEnd(winner));
    while (!pending.empty()) {
      const uint32_t id = pending.back();
      pending.pop_back();
      if (walked[id]) continue;
      walked[id] = true;
      if (ranks[id] >= winner_low) winners.insert(graph.Table(id));
      pending.insert(pending.end(), graph.ChildrenBegin(id), graph.ChildrenEnd(id));
    }
  }
}

}  // namespace ranking_internal

void FindWinningTables(const Orvel::SmartPtr<KTable>& root, const KStatistics& document,
                       const Orvel::SmartPtr<KRankParameters>& parameters, KWinners& winners) {
  if (!winners) return;
  const ranking_internal::TableGraph graph(root);
  ranking_internal::LevelRanker<const ranking_internal::TableGraph> ranker(graph, document, *parameters);
  Orvel::FastVector<double> ranks;
  ranks.Reserve(graph.Size());
  for (uint32_t id = 0; id < graph.Size(); ++id) ranks.Add(ranker.Rank(id));
  ranking_internal::SelectWinningTables(graph, ranks.Data(), *parameters, *winners);
}

}  // namespace ZestraNS
