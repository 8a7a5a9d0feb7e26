#include "ranking/table_graph.h"

namespace ZestraNS {
namespace ranking_internal {

TableGraph::TableGraph(const Orvel::SmartPtr<KTable>& root) {
  Enter(root);
  child_offsets_.Add(0);
  Orvel::RefCountVector<KTable> children;
  // Tables are numbered in the order they are met, so processing ids in
  // increasing order is a breadth-first walk, and each table's child list
  // lands right after the previous table's.
  for (uint32_t id = 0; id < tables_.Size(); ++id) {
    const Orvel::SmartPtr<KTable> table = tables_[id];
    KStatistics own;
    table->Statistics(own, 0);
    own_.Add(OwnCounts{own.Words(), own.WordsInLinksAndImages(), own.Cells(), own.MaxWordsPerCell(),
                       table->WordsPerCell()});
    children.Clear();
    table->ChildTables(children);
    for (const Orvel::SmartPtr<KTable>& child : children) children_.Add(Enter(child));
    child_offsets_.Add(children_.Size());
  }
}

uint32_t TableGraph::Enter(const Orvel::SmartPtr<KTable>& table) {
  const auto [it, added] = ids_.emplace(table.Get(), tables_.Size());
  if (added) tables_.Add(table);
  return it->second;
}

uint32_t TableGraph::IdOf(const KTable* table) const {
  const auto it = ids_.find(table);
  return it == ids_.end() ? Size() : it->second;
}

// Statistics(sums, 0) adds each non-empty own cell's counters modulo 2^32,
// then raises sums.MaxWordsPerCell to the table's average a when a is
// greater. Adding the table's sums taken from zero gives the same counters
// (modular addition is associative), and max_average is a when a > 0.0 and
// 0.0 otherwise; since sums.MaxWordsPerCell is never below 0.0, comparing
// with max_average raises it exactly when comparing with a would.
void TableGraph::AddOwnStatistics(uint32_t id, KStatistics& sums) const noexcept {
  const OwnCounts& own = own_[id];
  sums.AddWords(own.words);
  sums.AddWordsInLinksAndImages(own.words_in_links);
  sums.AddCells(own.cells);
  if (own.max_average > sums.MaxWordsPerCell()) sums.MaxWordsPerCell(own.max_average);
}

}  // namespace ranking_internal
}  // namespace ZestraNS
