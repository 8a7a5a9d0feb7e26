// KTextRecord is the text part of a text item (KCellItem): the wide text and
// the span of the document source it came from. It is made by the item's
// first AppendText and owned by that item alone.
//
// The span runs from the start of the first source-located run appended to
// the end of the latest one; runs appended with length 0 (line feeds,
// spaces added by the layout rules) leave it alone. Position and length are
// unsigned 32-bit and the length is computed modulo 2^32, so a run placed
// before the recorded position makes it wrap.
//
// Thread-safety: AddRef, Release and NbRef may be called concurrently;
// everything else needs one thread at a time.
#ifndef ZESTRA_MODEL_K_TEXT_RECORD_H_
#define ZESTRA_MODEL_K_TEXT_RECORD_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "zestra/base/sp_ref_counter.h"
#include "zestra/export.h"

namespace ZestraNS {

class ZESTRA_EXPORT KTextRecord : public Orvel::RefCounted<KTextRecord> {
 public:
  // An empty text with room for max(32, first_length + 5) characters, so
  // that the short appends that usually follow need no reallocation;
  // position and length 0.
  explicit KTextRecord(std::size_t first_length);

  KTextRecord(const KTextRecord&) = delete;
  KTextRecord& operator=(const KTextRecord&) = delete;

  const std::u16string& Text() const noexcept { return text_; }
  std::u16string& Text() noexcept { return text_; }

  // Where the first source-located run began; 0 while none was appended.
  uint32_t SourcePosition() const noexcept { return position_; }
  // From SourcePosition() to the end of the latest source-located run; 0
  // while none was appended.
  uint32_t SourceLength() const noexcept { return length_; }

  // Appends `text` (nothing when it is empty). When `length` > 0 the span
  // widens: the first such run sets position and length; a later one sets
  // the length to position - SourcePosition() + length, modulo 2^32.
  void Append(const std::u16string& text, uint32_t position, uint32_t length);

  // Removes all white space (Orvel::IsWhiteSpace) from the end of the text,
  // then appends "\n\n" when the text is not empty. The span is unchanged.
  void MakeParagraph();

  // Gives back the room reserved for appends when it exceeds the text by
  // kCompactSlack characters or more; the text is unchanged. For a record
  // that is not expected to grow again (it still may, at the cost of a
  // reallocation). When memory for the smaller copy cannot be had, the
  // record keeps its room.
  void Compact() noexcept;
  static constexpr std::size_t kCompactSlack = 16;

 private:
  friend class Orvel::RefCounted<KTextRecord>;
  ~KTextRecord() = default;

  std::u16string text_;
  uint32_t position_ = 0;
  uint32_t length_ = 0;
};

}  // namespace ZestraNS

#endif  // ZESTRA_MODEL_K_TEXT_RECORD_H_
