// KeptText is the text an extraction wrote, item by item: the text items of
// the layout tree that the selection kept, in the order they were written,
// each found again by the source span of the text node it came from. A
// writer that walks the parsed document (article_walk.h) asks it which text
// nodes made it into the output and with what text.
//
// Every text item of a layout tree comes from one text node (text_items.h)
// and carries that node's source span, so the span names the node.
//
// Ownership: holds a counted reference to every kept item, so the layout
// tree may be released while a KeptText lives.
//
// Thread-safety: filled by one thread; then read-only.
#ifndef ZESTRA_API_KEPT_TEXT_H_
#define ZESTRA_API_KEPT_TEXT_H_

#include <cstdint>
#include <string>
#include <vector>

#include "zestra/api/block_pruning.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_table.h"
#include "zestra/ranking/k_rank_parameters.h"
#include "zestra/traversal/zestra_text_extractor.h"

namespace ZestraNS {

// A map from 64-bit keys to 32-bit values in one open-addressed array:
// one probe, one cache line, in the common case. The all-ones key is not
// allowed. Not thread-safe to fill; read-only afterwards.
class FlatKeyMap {
 public:
  // Sets the value of `key` unless it has one. REQUIRES: key != kNoKey.
  void Insert(uint64_t key, uint32_t value);
  // The value of `key`, or nullptr.
  const uint32_t* Find(uint64_t key) const;
  std::size_t Size() const noexcept { return size_; }

  static constexpr uint64_t kNoKey = ~uint64_t{0};

 private:
  struct Slot {
    uint64_t key = kNoKey;
    uint32_t value = 0;
  };
  std::size_t SlotOf(uint64_t key) const { return (key * 0x9E3779B97F4A7C15ull) >> shift_; }
  void Grow();

  std::vector<Slot> slots_;
  std::size_t size_ = 0;
  unsigned shift_ = 64;
};

class KeptText {
 public:
  KeptText() = default;
  KeptText(const KeptText&) = delete;
  KeptText& operator=(const KeptText&) = delete;

  // Records `item` as written. REQUIRES: item is a text item.
  void Add(const Orvel::SmartPtr<KCellItem>& item);

  // The written text of the text node spanning `length` bytes from
  // `position`; null when no such node's text was written. Of two items
  // with one span (which the layout never makes), the first is found.
  const std::u16string* Find(uint32_t position, uint32_t length) const;

  // Items recorded.
  std::size_t Size() const noexcept { return items_.size(); }

 private:
  static uint64_t Key(uint32_t position, uint32_t length) {
    return (static_cast<uint64_t>(position) << 32) | length;
  }

  std::vector<Orvel::SmartPtr<KCellItem>> items_;
  FlatKeyMap by_span_;  // index into items_
};

// A ZestraTextExtractor that also records, in a KeptText, every text item
// its GetText writes. The selection is the extractor's own.
class RecordingTextExtractor : public ZestraTextExtractor {
 public:
  RecordingTextExtractor(const Orvel::SmartPtr<KTable>& root, bool whole_text,
                         const std::vector<double>* parameter_values, const ZestraRankWeights* weights,
                         KeptText* kept)
      : ZestraTextExtractor(root, whole_text, parameter_values, weights), root_(root), kept_(kept) {}

  // GetText, recording the items written into the KeptText (when not null).
  void GetTextRecording(Orvel::BinaryStreamBufT<unsigned int>* output);

  // Prunes the selection installed (PruneSelection, block_pruning.h) and
  // installs a PrunedStrategy over it, so GetText leaves the dropped cells
  // out. `link_document`: the selection is the whole text of a page of
  // links.
  void Prune(const PruningTuning& tuning, bool link_document);

 protected:
  void VisitCellText(const Orvel::SmartPtr<KCellItem>& item) override;

 private:
  const Orvel::SmartPtr<KTable> root_;
  KeptText* const kept_;  // not owned; may be null
  bool recording_ = false;
};

}  // namespace ZestraNS

#endif  // ZESTRA_API_KEPT_TEXT_H_
