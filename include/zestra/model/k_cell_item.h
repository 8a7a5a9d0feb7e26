// KCellItem is one entry of a cell's content (KCell): a run of text (a text
// item, holding a KTextRecord), a nested table (a table item), or nothing
// yet (an empty item). The layout rules never give one item both; the class
// does not forbid it.
//
// Ownership: the item owns its text record and holds a counted reference to
// its nested table. The parent cell pointer is a plain back link that owns
// nothing; the cell owns the item. Items are made by KCell::AddCellItem or
// by `new` (count 0 until the first SmartPtr takes them) and freed by their
// last Release.
//
// KTable is only declared here; include zestra/model/k_table.h to use the
// nested table itself.
//
// Thread-safety: AddRef, Release and NbRef may be called concurrently. A
// tree is built on one thread; once built it may be read concurrently, but
// not changed while it is read.
#ifndef ZESTRA_MODEL_K_CELL_ITEM_H_
#define ZESTRA_MODEL_K_CELL_ITEM_H_

#include <cassert>
#include <cstdint>
#include <string>

#include "zestra/base/smart_ptr.h"
#include "zestra/base/sp_ref_counter.h"
#include "zestra/export.h"
#include "zestra/model/k_text_record.h"

namespace ZestraNS {

class KCell;
class KTable;
class TreeTeardown;

class ZESTRA_EXPORT KCellItem : public Orvel::RefCounted<KCellItem> {
 public:
  // An empty item of `parent` (which may be null): no text, no table.
  explicit KCellItem(KCell* parent) noexcept;

  KCellItem(const KCellItem&) = delete;
  KCellItem& operator=(const KCellItem&) = delete;

  // The cell this item belongs to (not owned); null once it is destroyed or
  // when made without one.
  KCell* ParentCell() const noexcept { return parent_; }

  // True when the item has neither a text record nor a table.
  bool IsEmpty() const noexcept { return text_.IsNull() && table_.IsNull(); }
  // True when the item has a text record (even with empty text).
  bool IsText() const noexcept { return !text_.IsNull(); }
  // True when the item holds a nested table.
  bool IsTable() const noexcept { return !table_.IsNull(); }

  // The item's text. REQUIRES: IsText().
  const std::u16string& Text() const noexcept {
    assert(IsText());
    return text_->Text();
  }
  std::u16string& Text() noexcept {
    assert(IsText());
    return text_->Text();
  }
  // The source span of the text (see KTextRecord). REQUIRES: IsText().
  uint32_t SourcePosition() const noexcept {
    assert(IsText());
    return text_->SourcePosition();
  }
  uint32_t SourceLength() const noexcept {
    assert(IsText());
    return text_->SourceLength();
  }

  // The nested table; null when there is none.
  const Orvel::SmartPtr<KTable>& Table() const noexcept { return table_; }
  // Holds `table` instead of the current nested table (null removes it).
  // Storing the pointer already held changes nothing, not even its count.
  void Table(const Orvel::SmartPtr<KTable>& table);

  // Makes the item a text item if it is not one yet (the record reserves
  // room for max(32, text.size() + 5) characters), then appends `text` and
  // widens the source span as KTextRecord::Append does. If the record cannot
  // be allocated the item stays as it was and the text is dropped.
  void AppendText(const std::u16string& text, uint32_t position, uint32_t length);

  // Trims trailing white space and ends a non-empty text with "\n\n".
  // REQUIRES: IsText().
  void MakeParagraph();

  // Applies KTextRecord::Compact to the text, if the item has one.
  void Compact() noexcept {
    if (IsText()) text_->Compact();
  }

 private:
  friend class Orvel::RefCounted<KCellItem>;
  friend class TreeTeardown;

  // Clears the parent link; releases the text record, then the table.
  ~KCellItem();

  KCell* parent_;
  Orvel::SmartPtr<KTextRecord> text_;
  Orvel::SmartPtr<KTable> table_;
};

}  // namespace ZestraNS

#endif  // ZESTRA_MODEL_K_CELL_ITEM_H_
