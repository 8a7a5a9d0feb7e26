#include "zestra/model/k_cell.h"

#include <new>

#include "model/tree_teardown.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {

KCell::~KCell() {
  parent_ = nullptr;
  TreeTeardown::ReleaseChildren(*this);
}

Orvel::SmartPtr<KCellItem> KCell::AddCellItem() {
  if (!IsEmpty()) (*Back())->Compact();
  Orvel::SmartPtr<KCellItem> item(new KCellItem(this));
  if (item.IsNull()) return item;
  try {
    items_.Add(item);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  return item;
}

void KCell::Compact() noexcept {
  if (IsEmpty()) return;
  (*Back())->Compact();
  items_.ShrinkToFit();
}

void KCell::MakeParagraph() {
  if (IsEmpty()) return;
  KCellItem& last = **Back();
  if (last.IsText()) last.MakeParagraph();
}

}  // namespace ZestraNS
