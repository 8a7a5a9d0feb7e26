#include "builder/table_cells.h"

#include <utility>

#include "builder/text_items.h"
#include "zestra/model/k_cell_item.h"

namespace ZestraNS {

using Orvel::SmartPtr;

TableCells::TableCells(TableGrid grid, SmartPtr<KTable> table)
    : grid_(std::move(grid)), table_(std::move(table)) {}

bool TableCells::Next(NodeIterator& node, SmartPtr<KCell>& cell) {
  FinishCell();
  while (!done_) {
    if (row_ == grid_.rows.size()) {
      if (last_) AddLineBreak(last_);
      done_ = true;
      break;
    }
    const GridRow& row = grid_.rows[row_];
    while (column_ < row.cells.size()) {
      const GridEntry& entry = row.cells[column_++];
      const NodeIterator at = entry.node;
      if (!HasChildren(*at)) continue;
      filled_ = row_cell_ = table_->CreateCell(entry.column, row_);
      if (!filled_) continue;  // out of memory: the cell's content is dropped
      node = at;
      cell = filled_;
      return true;
    }
    const std::vector<NodeIterator>& overflow = row.overflow;
    while (overflow_ < overflow.size()) {
      const NodeIterator at = overflow[overflow_++];
      if (!HasChildren(*at)) continue;
      if (!row_cell_) row_cell_ = table_->CreateCell(table_->Cols() - 1, row_);
      filled_ = row_cell_;
      if (!filled_) continue;
      node = at;
      cell = filled_;
      return true;
    }
    EndRow();
  }
  return false;
}

void TableCells::FinishCell() {
  if (!filled_) return;
  if (!filled_->IsEmpty()) {
    last_ = filled_;
    EndTableCellText(*last_);
  }
  filled_ = nullptr;
}

void TableCells::EndRow() {
  if (last_) AddLineBreak(last_);
  ++row_;
  column_ = 0;
  overflow_ = 0;
  row_cell_ = nullptr;
}

std::unique_ptr<TableCells> StartTable(NodeIterator first, NodeIterator end, SmartPtr<KCell>& cell,
                                       const TreatmentTable& treatment, TableBudget& budget) {
  TableGrid grid;
  uint32_t columns = 0;
  uint32_t rows = 0;
  if (!MeasureTableGrid(first, end, columns, rows, grid, treatment, budget)) return nullptr;
  if (static_cast<uint64_t>(columns) * rows == 0) return nullptr;

  KTable* parent = cell->ParentTable();
  const uint32_t level = parent != nullptr ? parent->Level() + 1 : 0;
  SmartPtr<KTable> table(new KTable(parent, columns, rows, level));
  if (!table) return nullptr;
  SmartPtr<KCellItem> item = cell->AddCellItem();
  if (!item) return nullptr;
  item->Table(table);
  cell->AddTables(1);
  if (table->Cols() != columns) return nullptr;
  return std::make_unique<TableCells>(std::move(grid), std::move(table));
}

}  // namespace ZestraNS
