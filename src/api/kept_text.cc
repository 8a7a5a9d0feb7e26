#include "api/kept_text.h"

namespace ZestraNS {

void KeptText::Add(const Orvel::SmartPtr<KCellItem>& item) {
  by_span_.emplace(Key(item->SourcePosition(), item->SourceLength()), items_.size());
  items_.push_back(item);
}

const std::u16string* KeptText::Find(uint32_t position, uint32_t length) const {
  const auto found = by_span_.find(Key(position, length));
  return found == by_span_.end() ? nullptr : &items_[found->second]->Text();
}

void RecordingTextExtractor::GetTextRecording(Orvel::BinaryStreamBufT<unsigned int>* output) {
  recording_ = kept_ != nullptr;
  GetText(output);
  recording_ = false;
}

void RecordingTextExtractor::VisitCellText(const Orvel::SmartPtr<KCellItem>& item) {
  ZestraTextExtractor::VisitCellText(item);
  if (recording_) kept_->Add(item);
}

}  // namespace ZestraNS
