#include "zestra/model/k_cell_item.h"

#include "model/tree_teardown.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {

KCellItem::KCellItem(KCell* parent) noexcept : parent_(parent) {}

KCellItem::~KCellItem() {
  parent_ = nullptr;
  TreeTeardown::ReleaseChildren(*this);
}

void KCellItem::Table(const Orvel::SmartPtr<KTable>& table) { table_ = table; }

void KCellItem::AppendText(const std::u16string& text, uint32_t position, uint32_t length) {
  if (text_.IsNull()) {
    text_ = new KTextRecord(text.size());
    if (text_.IsNull()) return;
  }
  text_->Append(text, position, length);
}

void KCellItem::MakeParagraph() {
  assert(IsText());
  text_->MakeParagraph();
}

}  // namespace ZestraNS
