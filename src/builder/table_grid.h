// The span grid of one HTML table: which table cell node begins at which
// column of which row, once "rowspan" and "colspan" have been applied.
//
// MeasureTableGrid walks the TABLE node's children twice. The first pass
// counts the rows: TR children of the TABLE and of its THEAD, TBODY and
// TFOOT children, in document order. The second pass places the TD and TH
// cells of each row at the first column not covered by an earlier cell,
// with the rows of the last TFOOT placed after all the others.
//
// Limits for hostile documents (HTML's own caps on the attributes, and a
// budget that keeps a grid from demanding absurd memory):
//  - "colspan" is capped at 1000 and "rowspan" at 65534, after the row
//    span has been clamped to the rows that remain;
//  - the grid holds at most max(slot budget, rows) slots, the slot budget
//    being 1 << 22: the columns are limited to max(1, budget / rows). A
//    span reaching past the limit covers only the columns inside it; a
//    cell whose first free column lies outside the limit is an overflow
//    cell of its row, whose content goes into the row's latest cell (see
//    table_cells.h), so no text is lost;
//  - the span marking of one table does at most 4 << 22 entry updates;
//    once that is spent, further cells span one column and one row, so
//    crafted overlapping spans cannot cost rows x columns each. Spans of a
//    real table cover each entry about once and never come near it.
//
// Thread-safety: none; a grid is a local of one build.
#ifndef ZESTRA_BUILDER_TABLE_GRID_H_
#define ZESTRA_BUILDER_TABLE_GRID_H_

#include <cstdint>
#include <vector>

#include "builder/element_treatment.h"
#include "builder/html_nodes.h"

namespace ZestraNS {

// The limits of one grid; the defaults are those of every build. Tests may
// pass smaller ones.
struct GridLimits {
  uint32_t max_colspan = 1000;
  uint32_t max_rowspan = 65534;
  // 4,194,304 slots: 32 MiB of slot pointers in a 64-bit process.
  uint32_t slot_budget = 1u << 22;
  // Entry updates by span marking, per table.
  uint64_t span_work_budget = 4ull << 22;
};

// One position of a row.
struct GridEntry {
  bool occupied = false;  // covered by a table cell, its own or a span
  NodeIterator node;      // the table cell node beginning here, or the
                          // grid's no-node marker
};

struct TableGrid {
  // The marker of entries where no table cell begins: the end of the TABLE
  // node's child list.
  NodeIterator no_node;
  // One list per row, indexed by column; rows may differ in length.
  std::vector<std::vector<GridEntry>> rows;
  // Per row, the table cell nodes that fell outside the column limit, in
  // document order. Empty unless the slot budget clamped the table.
  std::vector<std::vector<NodeIterator>> overflow;
  uint32_t columns = 0;  // length of the longest row
};

// Measures the table whose child entries are [first, end) into `grid`,
// `columns` and `rows` (rows == grid.rows.size()). The element roles come
// from `treatment`. Returns false, with `columns` and `rows` 0, when the
// table has no rows.
bool MeasureTableGrid(NodeIterator first, NodeIterator end, uint32_t& columns, uint32_t& rows,
                      TableGrid& grid, const TreatmentTable& treatment = TablesLayoutTreatment(),
                      const GridLimits& limits = GridLimits());

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_TABLE_GRID_H_
