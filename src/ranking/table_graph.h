// TableGraph is a snapshot of the tables of a layout tree as the ranking
// sees them: the root and every table that KTable::ChildTables reaches below
// it, each once, numbered in breadth-first order (the root is 0), with its
// child list (ChildTables order, repeats kept) and the sums of its own cells
// that a rank reads. Gathering them once lets one winner selection rank
// every table without walking the layout tree again for each.
//
// It serves as the Tree policy of LevelRanker (level_ranker.h); the ranks
// it gives are those of KTable::Rank on the same tree.
//
// Ownership: holds a reference to every table it lists, so the tables stay
// alive as long as the graph.
//
// Thread-safety: const methods may be called concurrently; the tree must not
// change while the graph is in use.
#ifndef ZESTRA_RANKING_TABLE_GRAPH_H_
#define ZESTRA_RANKING_TABLE_GRAPH_H_

#include <cstdint>
#include <unordered_map>

#include "zestra/base/fast_vector.h"
#include "zestra/base/ref_count_vector.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/model/k_statistics.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {
namespace ranking_internal {

class TableGraph {
 public:
  using Node = uint32_t;
  using List = Orvel::FastVector<uint32_t>;

  // Gathers `root` and the tables below it, walking with a queue (no
  // recursion). REQUIRES: `root` is not null.
  explicit TableGraph(const Orvel::SmartPtr<KTable>& root);

  TableGraph(const TableGraph&) = delete;
  TableGraph& operator=(const TableGraph&) = delete;

  // Number of distinct tables, the root included.
  uint32_t Size() const noexcept { return tables_.Size(); }
  // The table numbered `id`. REQUIRES: id < Size().
  const Orvel::SmartPtr<KTable>& Table(uint32_t id) const noexcept { return tables_[id]; }
  // The number of `table`, or Size() when the graph does not hold it.
  uint32_t IdOf(const KTable* table) const;

  // The child list of `id`: [ChildrenBegin(id), ChildrenEnd(id)).
  const uint32_t* ChildrenBegin(uint32_t id) const noexcept { return children_.Data() + child_offsets_[id]; }
  const uint32_t* ChildrenEnd(uint32_t id) const noexcept { return children_.Data() + child_offsets_[id + 1]; }

  // Tree policy of LevelRanker.
  void AppendChildren(uint32_t id, List& next) const {
    next.Append(ChildrenBegin(id), child_offsets_[id + 1] - child_offsets_[id]);
  }
  // Adds what Statistics(sums, 0) on the table adds to the counters a rank
  // reads (words, words in links, cells, the largest average).
  void AddOwnStatistics(uint32_t id, KStatistics& sums) const noexcept;
  double WordsPerCell(uint32_t id) const noexcept { return own_[id].words_per_cell; }

 private:
  // What one table's own cells contribute to a level of a rank.
  struct OwnCounts {
    uint32_t words;           // Words of the counted cells, modulo 2^32
    uint32_t words_in_links;  // WordsInLinksAndImages of the counted cells
    uint32_t cells;           // non-empty cells counted
    double max_average;       // MaxWordsPerCell of a cleared record after Statistics(record, 0)
    double words_per_cell;    // KTable::WordsPerCell()
  };

  // Numbers `table` if it is new (appending it to the queue); returns its id.
  uint32_t Enter(const Orvel::SmartPtr<KTable>& table);

  Orvel::RefCountVector<KTable> tables_;
  Orvel::FastVector<OwnCounts> own_;
  Orvel::FastVector<uint32_t> children_;
  Orvel::FastVector<uint32_t> child_offsets_;  // Size() + 1 entries
  std::unordered_map<const KTable*, uint32_t> ids_;
};

}  // namespace ranking_internal
}  // namespace ZestraNS

#endif  // ZESTRA_RANKING_TABLE_GRAPH_H_
