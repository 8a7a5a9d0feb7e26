// KTable::Rank and KCell::Rank, declared with the layout model.
#include "zestra/model/k_cell.h"
#include "zestra/model/k_table.h"
#include "zestra/ranking/k_rank_parameters.h"
#include "ranking/level_ranker.h"

namespace ZestraNS {
namespace {

// Reaches the tables directly through the layout model; the level lists
// hold a reference to each table they list.
class ModelLevels {
 public:
  using Node = Orvel::SmartPtr<KTable>;
  using List = Orvel::RefCountVector<KTable>;

  void AppendChildren(const Node& table, List& next) { table->ChildTables(next); }
  void AddOwnStatistics(const Node& table, KStatistics& sums) { table->Statistics(sums, 0); }
  double WordsPerCell(const Node& table) { return table->WordsPerCell(); }
};

}  // namespace

// The level lists hold counted references, this table's included: a table
// that nobody holds is freed when the walk lets go of it, so callers hold a
// SmartPtr to it during the call.
double KTable::Rank(const KStatistics& document, const Orvel::SmartPtr<KRankParameters>& parameters) {
  ModelLevels tree;
  ranking_internal::LevelRanker<ModelLevels> ranker(tree, document, *parameters);
  return ranker.Rank(Orvel::SmartPtr<KTable>(this));
}

double KCell::Rank() const {
  if (Words() == 0) return 0.0;
  return 1.0 - static_cast<double>(WordsInLinksAndImages()) / static_cast<double>(Words());
}

}  // namespace ZestraNS
