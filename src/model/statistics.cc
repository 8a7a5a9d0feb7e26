// KTable::Statistics, KCell::Statistics and KTable::WordsPerCell.
//
// The walk keeps its own stack of tables on the heap, so that a tree nested
// any number of levels deep is summed without one native stack frame per
// level. It visits tables, cells and items in exactly the order of the
// recursive definition: a table's caption, summary and grid slots in
// storage order; for each non-empty cell its counters, then (depth
// permitting) the tables of its items in order, each summed completely
// before the next item; a table's average competes for MaxWordsPerCell once
// all its cells are done.
#include <cstddef>
#include <cstdint>

#include "zestra/base/fast_vector.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_statistics.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {
namespace {

using CellLink = Orvel::SmartPtr<KCell>;
using ItemLink = Orvel::SmartPtr<KCellItem>;

// The cells whose non-link words make a table's average, in the order they
// are counted: caption (0), summary (1), then the grid slots (2 + i).
// Returns null past the last slot.
const CellLink* CountedCell(const KTable& table, std::size_t index) {
  if (index == 0) return &table.Caption();
  if (index == 1) return &table.Summary();
  const CellLink* slot = table.Begin() + (index - 2);
  return slot < table.End() ? slot : nullptr;
}

// Average of non-link words per non-empty cell, summed in unsigned 32-bit
// arithmetic.
struct WordsPerCellSum {
  uint32_t words = 0;
  uint32_t cells = 0;

  void Add(const KCell& cell) {
    words += cell.Words() - cell.WordsInLinksAndImages();
    ++cells;
  }
  double Average() const {
    return cells == 0 ? 0.0 : static_cast<double>(words) / static_cast<double>(cells);
  }
};

void AddCellCounters(const KCell& cell, KStatistics& record) {
  record.AddWords(cell.Words());
  record.AddWordsInLinksAndImages(cell.WordsInLinksAndImages());
  record.AddLinks(cell.Links());
  record.AddImages(cell.Images());
  record.AddTables(cell.Tables());
  record.AddCells(1);
}

// One table being summed, with the cell whose items are being walked.
struct Frame {
  const KTable* table;     // null when the walk began at a lone cell
  std::size_t next_cell;   // next CountedCell index of `table`
  const KCell* cell;       // cell whose items are being walked, or null
  const ItemLink* next_item;
  uint32_t depth;          // depth given to the table's cells
  WordsPerCellSum sum;
};

// Advances past the items of `frame.cell` that hold no table; returns the
// next nested table, or null when the items are done.
const KTable* NextNestedTable(Frame& frame) {
  while (frame.next_item != frame.cell->End()) {
    const KCellItem& item = **frame.next_item++;
    if (item.IsTable()) return item.Table().Get();
  }
  return nullptr;
}

// Advances past empty slots and empty cells of `frame.table`; returns the
// next counted cell, or null when the table is done.
const KCell* NextCountedCell(Frame& frame) {
  while (const CellLink* link = CountedCell(*frame.table, frame.next_cell)) {
    ++frame.next_cell;
    if (!link->IsNull() && !(*link)->IsEmpty()) return link->Get();
  }
  return nullptr;
}

void Walk(Frame bottom, KStatistics& record) {
  // Frames above `bottom`; unallocated for a depth-0 walk.
  Orvel::FastVector<Frame> stack;
  for (;;) {
    Frame& top = stack.Empty() ? bottom : stack[stack.Size() - 1];
    if (top.cell != nullptr) {
      if (top.depth != 0) {
        if (const KTable* nested = NextNestedTable(top)) {
          stack.Add(Frame{nested, 0, nullptr, nullptr, top.depth - 1, {}});
          continue;
        }
      }
      top.cell = nullptr;
    }
    if (top.table != nullptr) {
      if (const KCell* cell = NextCountedCell(top)) {
        top.sum.Add(*cell);
        AddCellCounters(*cell, record);
        top.cell = cell;
        top.next_item = cell->Begin();
        continue;
      }
      const double average = top.sum.Average();
      if (average > record.MaxWordsPerCell()) record.MaxWordsPerCell(average);
    }
    if (stack.Empty()) return;
    stack.Erase(stack.Size() - 1);
  }
}

}  // namespace

void KCell::Statistics(KStatistics& record, uint32_t depth) const {
  AddCellCounters(*this, record);
  if (depth == 0) return;
  Walk(Frame{nullptr, 0, this, Begin(), depth, {}}, record);
}

void KTable::Statistics(KStatistics& record, uint32_t depth) const {
  Walk(Frame{this, 0, nullptr, nullptr, depth, {}}, record);
}

double KTable::WordsPerCell() const {
  WordsPerCellSum sum;
  for (std::size_t i = 0; const CellLink* link = CountedCell(*this, i); ++i) {
    if (!link->IsNull() && !(*link)->IsEmpty()) sum.Add(**link);
  }
  return sum.Average();
}

}  // namespace ZestraNS
