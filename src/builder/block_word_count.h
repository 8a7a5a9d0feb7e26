// The word count of the blocks layout. Scripts written without spaces
// (Chinese, Japanese) give CountWords one word per sentence or clause,
// while a menu of short links beside them gives one word per link: the
// ranking then prefers the menu. The blocks layout counts, on top of
// CountWords, every ideograph and kana as a word of its own, which puts such
// text on the scale of spaced scripts. Text without them counts as
// CountWords counts it.
//
// Thread-safety: pure functions.
#ifndef ZESTRA_BUILDER_BLOCK_WORD_COUNT_H_
#define ZESTRA_BUILDER_BLOCK_WORD_COUNT_H_

#include <cstdint>
#include <string>

namespace ZestraNS {

// Whether the code point is a kana (U+3040..U+30FF), a CJK ideograph
// (U+3400..U+4DBF, U+4E00..U+9FFF) or a compatibility ideograph
// (U+F900..U+FAFF).
constexpr bool IsIdeograph(uint32_t c) {
  return (c >= 0x3040 && c <= 0x30FF) || (c >= 0x3400 && c <= 0x4DBF) || (c >= 0x4E00 && c <= 0x9FFF) ||
         (c >= 0xF900 && c <= 0xFAFF);
}

// CountWords(text) plus the number of ideographs and kana in `text`.
uint32_t CountBlockWords(const std::u16string& text);

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_BLOCK_WORD_COUNT_H_
