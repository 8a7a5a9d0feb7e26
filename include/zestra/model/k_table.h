// KTable is a table of the layout tree: a fixed grid of Cols() x Rows()
// slots, each holding a cell (KCell) or null, plus an optional caption cell
// and an optional summary cell. A layout tree is a root table whose cells
// hold items, some of which hold nested tables, and so on.
//
// The grid is row-major: the slot of column c and row r is slot
// r * Cols() + c. It is one array allocated through the memory pool at
// construction and never resized; every slot starts null.
//
// Ownership: the table holds one counted reference to each cell in its
// slots, its caption and its summary; its cells hold their items, and items
// hold nested tables. The parent table pointer is a plain back link that
// owns nothing. Releasing the last reference to a root table frees the
// whole tree below it. Tables are made with `new` (count 0 until the first
// SmartPtr takes them).
//
// Freeing, statistics and FindAllTables walk the tree with explicit stacks
// on the heap, not with one stack frame per nesting level, so trees nested
// millions of levels deep are fine. They keep the order of a recursive
// walk at every depth; freeing in particular releases a table's summary,
// caption and slots in that order, each released subtree completely before
// the next link, and frees a node after everything below it.
//
// Thread-safety: AddRef, Release and NbRef may be called concurrently. A
// tree is built on one thread; once built it may be read concurrently, but
// not changed while it is read.
#ifndef ZESTRA_MODEL_K_TABLE_H_
#define ZESTRA_MODEL_K_TABLE_H_

#include <cassert>
#include <cstddef>
#include <cstdint>

#include "zestra/base/ref_count_vector.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/base/sp_ref_counter.h"
#include "zestra/export.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_statistics.h"

namespace ZestraNS {

class KRankParameters;
class TreeTeardown;

class ZESTRA_EXPORT KTable : public Orvel::RefCounted<KTable> {
 public:
  // A table of `cols` x `rows` null slots at nesting level `level`, nested
  // under `parent` (null for a root table); no caption, no summary.
  // If the slot array cannot be allocated (memory exhausted, or a slot count
  // beyond what the address space holds) the table is made with 0 columns
  // and 0 rows instead; callers that ask for large grids check Cols().
  KTable(KTable* parent, uint32_t cols, uint32_t rows, uint32_t level) noexcept;

  KTable(const KTable&) = delete;
  KTable& operator=(const KTable&) = delete;

  uint32_t Cols() const noexcept { return cols_; }
  uint32_t Rows() const noexcept { return rows_; }
  // Nesting level: 0 for a root table, parent's level + 1 for a table the
  // layout builder makes from an HTML table.
  uint32_t Level() const noexcept { return level_; }
  // The table whose cell holds this table (not owned); null for a root
  // table and once this table is destroyed.
  KTable* ParentTable() const noexcept { return parent_; }

  // The slot of (`col`, `row`); null when it is empty.
  // REQUIRES: col < Cols() and row < Rows().
  const Orvel::SmartPtr<KCell>& GetCell(uint32_t col, uint32_t row) const noexcept {
    return grid_[SlotIndex(col, row)];
  }
  // Makes a new cell (parent this table, column `col`, row `row`), puts it
  // into the slot of (col, row), releasing what the slot held, and returns
  // it. When memory cannot be had the slot is emptied and null is returned.
  // REQUIRES: col < Cols() and row < Rows().
  Orvel::SmartPtr<KCell> CreateCell(uint32_t col, uint32_t row);
  // Puts `cell` (or null) into the slot of (`col`, `row`), releasing what
  // the slot held. The cell's parent, column and row are not touched.
  // REQUIRES: col < Cols() and row < Rows().
  void SetCell(uint32_t col, uint32_t row, const Orvel::SmartPtr<KCell>& cell);

  // Make a fresh cell (parent this table, column 0, row 0) the caption or
  // the summary, releasing the previous one; return the held pointer (null
  // when memory cannot be had).
  const Orvel::SmartPtr<KCell>& CreateCaption();
  const Orvel::SmartPtr<KCell>& CreateSummary();
  // The caption or summary cell; null until created.
  const Orvel::SmartPtr<KCell>& Caption() const noexcept { return caption_; }
  const Orvel::SmartPtr<KCell>& Summary() const noexcept { return summary_; }

  // The slots in storage order: [Begin(), End()), Cols() * Rows() of them.
  const Orvel::SmartPtr<KCell>* Begin() const noexcept { return grid_; }
  const Orvel::SmartPtr<KCell>* End() const noexcept { return grid_ + SlotCount(); }

  // Appends to `result` the tables held by the items of the grid's cells,
  // walking the grid column by column (column 0 rows 0.., then column 1,
  // ...) and each cell's items in order. Empty slots are skipped; caption
  // and summary are not read. A cell in several slots is read once per slot.
  void ChildTables(Orvel::RefCountVector<KTable>& result) const;

  // Appends to `result` every table below this one (not this one): its
  // child tables, then the first child's tables found the same way, then
  // the second child's, and so on. For T with children A, B, where A has
  // A1, A2, A1 has A11 and B has B1: A, B, A1, A2, A11, B1.
  void FindAllTables(Orvel::RefCountVector<KTable>& result) const;

  // Adds into `record` (never clearing it) the counters of this table's
  // non-empty cells (caption, summary, then grid slots in storage order),
  // each cell descending `depth` levels into nested tables (depth 0: this
  // table's own cells; 0xFFFFFFFF: the whole subtree). Every table visited
  // stores its WordsPerCell() into record.MaxWordsPerCell() when greater.
  void Statistics(KStatistics& record, uint32_t depth) const;

  // Average of Words() - WordsInLinksAndImages() over the non-empty cells
  // of the caption, the summary and the grid slots; 0.0 when there are none.
  // Reads no nested table.
  double WordsPerCell() const;

  // The rank of this table and its nested tables against the document's
  // full-depth statistics. Defined by the ranking subsystem.
  double Rank(const KStatistics& document, const Orvel::SmartPtr<KRankParameters>& parameters);

 private:
  friend class Orvel::RefCounted<KTable>;
  friend class TreeTeardown;

  // Clears the parent link; releases the summary, then the caption, then
  // every slot in storage order; frees the slot array.
  ~KTable();

  std::size_t SlotCount() const noexcept { return static_cast<std::size_t>(cols_) * rows_; }
  std::size_t SlotIndex(uint32_t col, uint32_t row) const noexcept {
    assert(col < cols_ && row < rows_);
    return static_cast<std::size_t>(row) * cols_ + col;
  }
  Orvel::SmartPtr<KCell>& Slot(uint32_t col, uint32_t row) noexcept { return grid_[SlotIndex(col, row)]; }

  KTable* parent_;
  uint32_t cols_;
  uint32_t rows_;
  Orvel::SmartPtr<KCell>* grid_;
  Orvel::SmartPtr<KCell> caption_;
  Orvel::SmartPtr<KCell> summary_;
  uint32_t level_;
};

}  // namespace ZestraNS

#endif  // ZESTRA_MODEL_K_TABLE_H_
