// KStatistics is the record into which the layout tree's per-cell counters
// are summed (KCell::Statistics, KTable::Statistics): words, words inside
// links, links, images, directly nested tables and counted cells, plus the
// largest per-table average of non-link words per non-empty cell seen.
//
// All counters are unsigned 32-bit with plain modular arithmetic: Add and
// Sub wrap modulo 2^32 and are never clamped or checked.
//
// The record is reference counted like the layout nodes (it may be held by
// SmartPtr and is then freed by its last Release), but it is also a plain
// value: it may live on the stack and be copied; a copy starts with a
// reference count of 0.
//
// Thread-safety: AddRef, Release and NbRef may be called concurrently;
// everything else needs one thread at a time.
#ifndef ZESTRA_MODEL_K_STATISTICS_H_
#define ZESTRA_MODEL_K_STATISTICS_H_

#include <cstdint>

#include "zestra/base/sp_ref_counter.h"
#include "zestra/export.h"

namespace ZestraNS {

class ZESTRA_EXPORT KStatistics : public Orvel::RefCounted<KStatistics> {
 public:
  // Every counter 0, MaxWordsPerCell 0.0, reference count 0.
  KStatistics() noexcept = default;

  // Words of all counted cells.
  uint32_t Words() const noexcept { return words_; }
  // The part of Words() that lay inside links.
  uint32_t WordsInLinksAndImages() const noexcept { return words_in_links_and_images_; }
  // Links met in the counted cells.
  uint32_t Links() const noexcept { return links_; }
  // Sum of the counted cells' image counters.
  uint32_t Images() const noexcept { return images_; }
  // Tables nested directly in the counted cells (not the tables on which
  // Statistics was called).
  uint32_t Tables() const noexcept { return tables_; }
  // Number of counted (non-empty) cells.
  uint32_t Cells() const noexcept { return cells_; }

  // Largest average of non-link words per non-empty cell among the tables
  // visited; 0.0 when none was greater.
  double MaxWordsPerCell() const noexcept { return max_words_per_cell_; }
  void MaxWordsPerCell(double value) noexcept { max_words_per_cell_ = value; }

  // Each adds `n` to its counter, modulo 2^32.
  void AddWords(uint32_t n) noexcept { words_ += n; }
  void AddWordsInLinksAndImages(uint32_t n) noexcept { words_in_links_and_images_ += n; }
  void AddLinks(uint32_t n) noexcept { links_ += n; }
  void AddImages(uint32_t n) noexcept { images_ += n; }
  void AddTables(uint32_t n) noexcept { tables_ += n; }
  void AddCells(uint32_t n) noexcept { cells_ += n; }

  // Each subtracts `n` from its counter, modulo 2^32 (0 - 1 is 4294967295).
  void SubWords(uint32_t n) noexcept { words_ -= n; }
  void SubWordsInLinksAndImages(uint32_t n) noexcept { words_in_links_and_images_ -= n; }
  void SubLinks(uint32_t n) noexcept { links_ -= n; }
  void SubImages(uint32_t n) noexcept { images_ -= n; }
  void SubTables(uint32_t n) noexcept { tables_ -= n; }
  void SubCells(uint32_t n) noexcept { cells_ -= n; }

  // Sets the six counters to 0 and MaxWordsPerCell to 0.0.
  // Postcondition: the reference count is what it was.
  void Clear() noexcept {
    words_ = words_in_links_and_images_ = links_ = images_ = tables_ = cells_ = 0;
    max_words_per_cell_ = 0.0;
  }

 private:
  uint32_t words_ = 0;
  uint32_t words_in_links_and_images_ = 0;
  uint32_t links_ = 0;
  uint32_t images_ = 0;
  uint32_t tables_ = 0;
  uint32_t cells_ = 0;
  double max_words_per_cell_ = 0.0;
};

}  // namespace ZestraNS

#endif  // ZESTRA_MODEL_K_STATISTICS_H_
