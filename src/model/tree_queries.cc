// ChildTables, FindAllTables and Dump.
#include <cstdint>

#include "zestra/base/beautify_string.h"
#include "zestra/base/fast_vector.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {

void KCell::ChildTables(Orvel::RefCountVector<KTable>& result) const {
  for (const Orvel::SmartPtr<KCellItem>& item : items_) {
    if (item->IsTable()) result.Add(item->Table());
  }
}

void KTable::ChildTables(Orvel::RefCountVector<KTable>& result) const {
  // Column by column, across the row-major storage.
  for (uint32_t col = 0; col < cols_; ++col) {
    for (uint32_t row = 0; row < rows_; ++row) {
      const Orvel::SmartPtr<KCell>& cell = GetCell(col, row);
      if (!cell.IsNull()) cell->ChildTables(result);
    }
  }
}

void KTable::FindAllTables(Orvel::RefCountVector<KTable>& result) const {
  // The tables of one ChildTables call lie side by side in `result`; each
  // pending range is such a run whose tables still have to be expanded, the
  // innermost last. Expanding a table appends its children and makes them
  // the innermost range, so every subtree is finished before the next
  // sibling's begins: the order of the recursive definition, without one
  // native stack frame per level.
  struct Range {
    uint32_t next;
    uint32_t end;
  };
  Orvel::FastVector<Range> pending;
  const auto expand = [&result, &pending](const KTable& table) {
    const uint32_t begin = result.Size();
    table.ChildTables(result);
    if (result.Size() != begin) pending.Add(Range{begin, result.Size()});
  };
  expand(*this);
  while (!pending.Empty()) {
    Range& top = pending[pending.Size() - 1];
    const KTable* table = result[top.next++].Get();
    // A finished range is dropped before its last table is expanded, so a
    // chain of single tables keeps the stack at one range.
    if (top.next == top.end) pending.Erase(pending.Size() - 1);
    expand(*table);
  }
}

std::u16string KCell::Dump() const {
  std::u16string dump;
  dump.reserve(1024);
  std::u16string cleaned;
  for (const Orvel::SmartPtr<KCellItem>& item : items_) {
    if (!item->IsText() || item->Text().empty()) continue;
    cleaned.clear();
    Orvel::BeautifyString(item->Text(), cleaned, false, true);
    dump += cleaned;
  }
  dump += u'\n';
  return dump;
}

}  // namespace ZestraNS
