#include "api/kept_text.h"

#include <new>

namespace ZestraNS {

void FlatKeyMap::Insert(uint64_t key, uint32_t value) {
  if ((size_ + 1) * 2 > slots_.size()) Grow();
  for (std::size_t at = SlotOf(key);; at = (at + 1) & (slots_.size() - 1)) {
    Slot& slot = slots_[at];
    if (slot.key == key) return;
    if (slot.key == kNoKey) {
      slot = Slot{key, value};
      ++size_;
      return;
    }
  }
}

const uint32_t* FlatKeyMap::Find(uint64_t key) const {
  if (slots_.empty()) return nullptr;
  for (std::size_t at = SlotOf(key);; at = (at + 1) & (slots_.size() - 1)) {
    const Slot& slot = slots_[at];
    if (slot.key == key) return &slot.value;
    if (slot.key == kNoKey) return nullptr;
  }
}

void FlatKeyMap::Grow() {
  std::vector<Slot> old = std::move(slots_);
  const std::size_t capacity = old.empty() ? 64 : old.size() * 2;
  slots_.assign(capacity, Slot());
  shift_ = 64;
  for (std::size_t c = capacity; c > 1; c >>= 1) --shift_;
  size_ = 0;
  for (const Slot& slot : old) {
    if (slot.key != kNoKey) Insert(slot.key, slot.value);
  }
}

void KeptText::Add(const Orvel::SmartPtr<KCellItem>& item) {
  by_span_.Insert(Key(item->SourcePosition(), item->SourceLength()), static_cast<uint32_t>(items_.size()));
  items_.push_back(item);
}

const std::u16string* KeptText::Find(uint32_t position, uint32_t length) const {
  const uint32_t* found = by_span_.Find(Key(position, length));
  return found == nullptr ? nullptr : &items_[*found]->Text();
}

void RecordingTextExtractor::GetTextRecording(Orvel::BinaryStreamBufT<unsigned int>* output) {
  recording_ = kept_ != nullptr;
  GetText(output);
  recording_ = false;
}

void RecordingTextExtractor::Prune(const PruningTuning& tuning, bool link_document) {
  const Orvel::SmartPtr<ZestraVisitorStrategy> selection = Strategy();
  PruneSelection(root_, *selection, tuning, link_document);
  Orvel::SmartPtr<ZestraVisitorStrategy> pruned(new PrunedStrategy(selection));
  if (pruned.IsNull()) throw std::bad_alloc();
  Strategy(pruned);
}

void RecordingTextExtractor::VisitCellText(const Orvel::SmartPtr<KCellItem>& item) {
  ZestraTextExtractor::VisitCellText(item);
  if (recording_) kept_->Add(item);
}

}  // namespace ZestraNS
