// The span grid of one HTML table: which table cell node begins at which
// column of which row, once "rowspan" and "colspan" have been applied.
//
// MeasureTableGrid walks the TABLE node's children twice. The first pass
// counts the rows: TR children of the TABLE and of its THEAD, TBODY and
// TFOOT children, in document order. The second pass places the TD and TH
// cells of each row at the first column not covered by an earlier cell,
// with the rows of the last TFOOT placed after all the others.
//
// The grid is stored sparsely: each row keeps the cells that begin in it
// (column and node) and its length, the column after the last position a
// cell or a span covers. The positions in between are covered by spans or
// padding and carry no node; nothing is stored for them. Row spans are
// kept once, while their rows are placed, as column intervals. So a grid
// costs memory in proportion to its cells, whatever its spans cover.
//
// Limits for hostile documents (HTML's own caps on the attributes, and
// budgets that keep the tables of one document from demanding memory and
// time out of proportion to it):
//  - "colspan" is capped at 1000 and "rowspan" at 65534, after the row
//    span has been clamped to the rows that remain;
//  - slots: the layout table made from a grid has columns x rows slots, so
//    the columns are limited to max(1, slots / rows), where slots is the
//    smaller of 1 << 22 per table and what the document's TableBudget
//    grants the table: 4 slots per row and cell of its own, plus what is
//    left of 262,144 slots the document's tables share. A span reaching
//    past the limit covers only the columns inside it; a cell whose first
//    free column lies outside the limit is an overflow cell of its row,
//    whose content goes into the row's latest cell (see table_cells.h), so
//    no text is lost. A table thus never holds more than max(slots, rows)
//    slots, and the tables of a document together at most 262,144 plus 4
//    per row and cell (plus, for tables clamped to one column, their rows);
//  - span work: a cell's row span costs one unit per row it covers. Each
//    table is granted 16 units per row and cell of its own, plus what is
//    left of 1 << 20 units the document's tables share, and at most
//    4 << 22 in all; once that is spent, further cells span one column and
//    one row, so crafted overlapping spans cannot cost rows x cells. Spans
//    of a real table cost about one unit per cell and never come near it.
//
// Thread-safety: none; a grid and a budget are locals of one build.
#ifndef ZESTRA_BUILDER_TABLE_GRID_H_
#define ZESTRA_BUILDER_TABLE_GRID_H_

#include <cstdint>
#include <vector>

#include "builder/element_treatment.h"
#include "builder/html_nodes.h"

namespace ZestraNS {

// The limits of the grids of one document; the defaults are those of every
// build. Tests may pass smaller ones.
struct GridLimits {
  uint32_t max_colspan = 1000;
  uint32_t max_rowspan = 65534;
  // Slots of one table: 4,194,304, 32 MiB of slot pointers in a 64-bit
  // process.
  uint32_t slot_budget = 1u << 22;
  // Slots granted per row and cell of a table, and shared by the tables of
  // a document beyond those grants.
  uint32_t slots_per_element = 4;
  uint64_t shared_slots = 1u << 18;
  // Span work (rows covered by row spans) of one table, granted per row
  // and cell, and shared by the tables of a document.
  uint64_t span_work_budget = 4ull << 22;
  uint32_t span_work_per_element = 16;
  uint64_t shared_span_work = 1u << 20;
};

// What is left of the shared slots and span work of one document's tables.
// One budget serves one build; the tables take from it in the order they
// are measured.
class TableBudget {
 public:
  explicit TableBudget(const GridLimits& limits = GridLimits())
      : limits_(limits), slots_(limits.shared_slots), span_work_(limits.shared_span_work) {}
  TableBudget(const TableBudget&) = delete;
  TableBudget& operator=(const TableBudget&) = delete;

  const GridLimits& Limits() const { return limits_; }

  // The slots a table of `elements` rows and cells may hold.
  uint64_t SlotsFor(uint64_t elements) const;
  // Takes the slots a table of `elements` rows and cells holds beyond its
  // own grant from the shared slots (down to 0).
  void TakeSlots(uint64_t elements, uint64_t slots);
  // The span work a table of `elements` rows and cells may do.
  uint64_t SpanWorkFor(uint64_t elements) const;
  // Takes the work done beyond the table's own grant from the shared work.
  void TakeSpanWork(uint64_t elements, uint64_t work);

 private:
  const GridLimits limits_;
  uint64_t slots_;
  uint64_t span_work_;
};

// A table cell node that begins at `column` of its row. The positions of a
// row where no cell begins are covered by spans or padding: they hold no
// node.
struct GridEntry {
  uint32_t column = 0;
  NodeIterator node;
};

// One row of the grid.
struct GridRow {
  // The cells that begin in this row, by increasing column.
  std::vector<GridEntry> cells;
  // The row's length: the column after the last position covered in it.
  uint32_t length = 0;
  // The table cell nodes that fell outside the column limit, in document
  // order. Empty unless the slot budget clamped the table.
  std::vector<NodeIterator> overflow;
};

struct TableGrid {
  // The marker of positions where no table cell begins: the end of the
  // TABLE node's child list. No entry holds it.
  NodeIterator no_node;
  std::vector<GridRow> rows;
  uint32_t columns = 0;  // length of the longest row
};

// Measures the table whose child entries are [first, end) into `grid`,
// `columns` and `rows` (rows == grid.rows.size()), taking its slots and
// span work from `budget`. The element roles come from `treatment`.
// Returns false, with `columns` and `rows` 0, when the table has no rows.
bool MeasureTableGrid(NodeIterator first, NodeIterator end, uint32_t& columns, uint32_t& rows,
                      TableGrid& grid, const TreatmentTable& treatment, TableBudget& budget);

// The same for a table measured on its own: a document of one table.
bool MeasureTableGrid(NodeIterator first, NodeIterator end, uint32_t& columns, uint32_t& rows,
                      TableGrid& grid, const TreatmentTable& treatment = TablesLayoutTreatment(),
                      const GridLimits& limits = GridLimits());

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_TABLE_GRID_H_
