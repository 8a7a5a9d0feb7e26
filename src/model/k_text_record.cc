#include "zestra/model/k_text_record.h"

#include <algorithm>
#include <new>

#include "zestra/base/wide_chars.h"

namespace ZestraNS {

KTextRecord::KTextRecord(std::size_t first_length) {
  text_.reserve(std::max<std::size_t>(32, first_length + 5));
}

void KTextRecord::Append(const std::u16string& text, uint32_t position, uint32_t length) {
  if (text.empty()) return;
  text_ += text;
  if (length == 0) return;
  if (length_ == 0) {
    position_ = position;
    length_ = length;
  } else {
    length_ = position - position_ + length;
  }
}

void KTextRecord::Compact() noexcept {
  if (text_.capacity() < text_.size() + kCompactSlack) return;
  try {
    text_.shrink_to_fit();
  } catch (const std::bad_alloc&) {
    // The record keeps its room: it only costs memory.
  }
}

void KTextRecord::MakeParagraph() {
  std::size_t end = text_.size();
  while (end > 0 && Orvel::IsWhiteSpace(text_[end - 1])) --end;
  text_.resize(end);
  if (end != 0) text_ += u"\n\n";
}

}  // namespace ZestraNS
