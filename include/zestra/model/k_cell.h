// KCell is one cell of a layout table (KTable): an ordered list of items
// (KCellItem) in document order, plus the counters that the layout builder
// keeps while filling it: words, links, images, words inside links and
// directly nested tables. The cell never recomputes its counters from its
// items.
//
// Ownership: the cell holds one counted reference to each of its items; the
// parent table pointer is a plain back link that owns nothing. Cells are
// made by KTable::CreateCell/CreateCaption/CreateSummary or by `new` (count
// 0 until the first SmartPtr takes them) and freed by their last Release.
//
// The item list grows, when an append finds it full, to twice its size
// while the size is at most 256 and to 1.25 times above, and to at least 16:
// capacities 16, 32, ..., 256, 512, 640, 800, ...
//
// Counters are unsigned 32-bit, modulo 2^32.
//
// Thread-safety: AddRef, Release and NbRef may be called concurrently. A
// tree is built on one thread; once built it may be read concurrently, but
// not changed while it is read.
#ifndef ZESTRA_MODEL_K_CELL_H_
#define ZESTRA_MODEL_K_CELL_H_

#include <cstdint>
#include <string>

#include "zestra/base/ref_count_vector.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/base/sp_ref_counter.h"
#include "zestra/export.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_statistics.h"

namespace ZestraNS {

class KTable;
class TreeTeardown;

// What the blocks layout notes about a cell while it builds it, for the
// pruning that follows the ranking (zestra/api/block_pruning.h). The tables
// layout leaves every field 0, and nothing of the reference behaviour reads
// them.
struct KCellMarks {
  // Bits of `flags`. The kind bits hold when every text of the cell lies
  // inside an element of that kind; kHasText says the cell received text.
  enum : uint16_t {
    kHasText = 1,
    kComments = 2,    // a comment section
    kByline = 4,      // a byline, dateline or author line
    kCredit = 8,      // a photo credit or copyright line
    kFurniture = 16,  // navigation, header, footer or a boilerplate class
    kCaption = 32,    // a figure caption
    kTitle = 64,      // holds the heading that matches the article's title
    kBoxed = 128,     // a unit that is a box: a classed element, or one with a heading or an image
    kForm = 256,      // a form
  };
  // The shape of the block the cell holds: its element, class and the
  // elements of its children, hashed; 0 when the cell is not a unit of a
  // block table.
  uint32_t signature = 0;
  uint16_t flags = 0;
  // The pruning step that dropped the cell; 0 when none did.
  uint8_t dropped_by = 0;
};

class ZESTRA_EXPORT KCell : public Orvel::RefCounted<KCell> {
 public:
  // An empty cell of `parent` (which may be null) at (`col`, `row`); all
  // counters 0.
  KCell(KTable* parent, uint32_t col, uint32_t row) noexcept : parent_(parent), col_(col), row_(row) {}

  KCell(const KCell&) = delete;
  KCell& operator=(const KCell&) = delete;

  // Column and row given at construction (KTable::SetCell does not change
  // them).
  uint32_t Col() const noexcept { return col_; }
  uint32_t Row() const noexcept { return row_; }
  // The table that created the cell (not owned); null once the cell is
  // destroyed or when made without one.
  KTable* ParentTable() const noexcept { return parent_; }

  // True when the cell has no items, whatever items would hold.
  bool IsEmpty() const noexcept { return items_.Empty(); }
  // The items in order: [Begin(), End()). Both are null for a cell that
  // never had an item. Appending may move the items, so the pointers are
  // good only until the next AddCellItem.
  const Orvel::SmartPtr<KCellItem>* Begin() const noexcept { return items_.Begin(); }
  const Orvel::SmartPtr<KCellItem>* End() const noexcept { return items_.End(); }
  // The last item, or End() when there are none.
  const Orvel::SmartPtr<KCellItem>* Back() const noexcept { return IsEmpty() ? End() : End() - 1; }

  // Appends a new empty item whose parent is this cell and returns it (the
  // list and the result each hold a reference). Every call makes a new item.
  // Returns null, and appends nothing, when memory cannot be had. The item
  // that was last compacts its text (KCellItem::Compact): the layout rules
  // append only to a cell's last item, so its text is final.
  Orvel::SmartPtr<KCellItem> AddCellItem();

  // Gives back the room the item list and the last item's text keep for
  // appends, for a cell that is complete. Its content is unchanged.
  void Compact() noexcept;

  // If the last item is a text item, applies KCellItem::MakeParagraph to it;
  // otherwise (no items, last item empty or a table) does nothing.
  void MakeParagraph();

  // Words of all text put into this cell (not of nested tables).
  uint32_t Words() const noexcept { return words_; }
  // Links met while filling this cell.
  uint32_t Links() const noexcept { return links_; }
  // Images; the layout builder never raises it.
  uint32_t Images() const noexcept { return images_; }
  // The part of Words() that lay inside links.
  uint32_t WordsInLinksAndImages() const noexcept { return words_in_links_and_images_; }
  // Tables nested directly in this cell's items.
  uint32_t Tables() const noexcept { return tables_; }

  // The blocks layout's notes on the cell; see KCellMarks.
  const KCellMarks& Marks() const noexcept { return marks_; }
  KCellMarks& Marks() noexcept { return marks_; }

  // Each adds `n` to its counter, modulo 2^32.
  void AddWords(uint32_t n) noexcept { words_ += n; }
  void AddLinks(uint32_t n) noexcept { links_ += n; }
  void AddImages(uint32_t n) noexcept { images_ += n; }
  void AddWordsInLinksAndImages(uint32_t n) noexcept { words_in_links_and_images_ += n; }
  void AddTables(uint32_t n) noexcept { tables_ += n; }

  // Appends to `result`, in item order, the table of every table item.
  void ChildTables(Orvel::RefCountVector<KTable>& result) const;

  // The cleaned text of the cell's text items: each non-empty text passed
  // through Orvel::BeautifyString(text, out, false, true), concatenated
  // without separator, followed by one line feed.
  std::u16string Dump() const;

  // Adds this cell's five counters and 1 cell to `record`; then, unless
  // `depth` is 0, adds the tables of its table items with depth - 1 (see
  // KTable::Statistics). Never clears `record`. Uses no stack frame per
  // nesting level, so any depth of nesting is fine.
  void Statistics(KStatistics& record, uint32_t depth) const;

  // The share of words outside links: 1 - WordsInLinksAndImages() / Words(),
  // or 0.0 when Words() is 0. Defined by the ranking subsystem.
  double Rank() const;

 private:
  friend class Orvel::RefCounted<KCell>;
  friend class TreeTeardown;

  // Clears the parent link; releases every item, in order.
  ~KCell();

  KTable* parent_;
  Orvel::RefCountVector<KCellItem> items_;
  uint32_t col_;
  uint32_t row_;
  uint32_t words_ = 0;
  uint32_t links_ = 0;
  uint32_t images_ = 0;
  uint32_t words_in_links_and_images_ = 0;
  uint32_t tables_ = 0;
  KCellMarks marks_;
};

}  // namespace ZestraNS

#endif  // ZESTRA_MODEL_K_CELL_H_
