// TableCells builds the cells of one nested layout table from the span grid
// of its HTML table, one cell at a time, so that the layout walk can fill
// each cell with its own explicit stack instead of recursing.
//
// StartTable measures the HTML table, makes the KTable and hangs it into
// the current cell as a new table item (the cell counts one more table).
// Then Next() hands out the table cell nodes row by row, column by column,
// each with a fresh KCell at its grid position; the walk fills that cell
// from the node's children, in-link and preformatted both off, and calls
// Next() again. Next() first finishes the cell handed out before: a cell
// with items becomes `last` and its trailing text gets one line feed. At
// the end of each row `last` gets a line break, and once more after the
// last row; `last` carries over rows without content.
//
// Positions without a table cell node (table_grid.h), and table cell nodes without
// children, get no KCell: their slots stay null. Overflow cells of a row
// (cells beyond the grid's column limit, see table_grid.h) are handed out
// after the row's placed cells, each with the row's latest cell, or a new
// cell in the row's last column when the row has none: their text is kept
// in that cell, separated as a cell of its own would be.
//
// Thread-safety: none; one build.
#ifndef ZESTRA_BUILDER_TABLE_CELLS_H_
#define ZESTRA_BUILDER_TABLE_CELLS_H_

#include <cstddef>
#include <cstdint>
#include <memory>

#include "builder/element_treatment.h"
#include "builder/html_nodes.h"
#include "builder/table_grid.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {

class TableCells {
 public:
  TableCells(TableGrid grid, Orvel::SmartPtr<KTable> table);
  TableCells(const TableCells&) = delete;
  TableCells& operator=(const TableCells&) = delete;

  // Finishes the cell handed out by the previous call, if any, and moves to
  // the next table cell node with children. Returns true with that node in
  // `node` and the KCell to fill in `cell`; returns false, after the final
  // line breaks, when the table is done (and on every later call).
  bool Next(NodeIterator& node, Orvel::SmartPtr<KCell>& cell);

 private:
  void FinishCell();
  void EndRow();

  TableGrid grid_;
  Orvel::SmartPtr<KTable> table_;
  uint32_t row_ = 0;
  std::size_t column_ = 0;         // next cell of row_
  std::size_t overflow_ = 0;       // next overflow cell of row_
  Orvel::SmartPtr<KCell> filled_;  // the cell handed out last, not yet finished
  Orvel::SmartPtr<KCell> row_cell_;  // the latest cell made in row_
  Orvel::SmartPtr<KCell> last_;      // the latest cell that received items
  bool done_ = false;
};

// Measures the HTML table whose children are [first, end), with slots and
// span work from the document's `budget` (table_grid.h), and, when it has
// rows and cells, appends a new table item holding a new KTable to `cell`
// (parent: cell's table; level: that table's level + 1, or 0 without one)
// and adds 1 to the cell's Tables. Returns the cells to fill, or null when
// the table adds nothing to the layout tree (no rows, an empty grid, or a
// grid whose slots could not be allocated; in the last case the table item
// stays, holding a table without slots).
// REQUIRES: cell is not null.
std::unique_ptr<TableCells> StartTable(NodeIterator first, NodeIterator end, Orvel::SmartPtr<KCell>& cell,
                                       const TreatmentTable& treatment, TableBudget& budget);

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_TABLE_CELLS_H_
