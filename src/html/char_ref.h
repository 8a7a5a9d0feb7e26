// Character references: "&amp;", "&#169;", "&#x1F600;" and the rest of the
// standard's named table, decoded to UTF-8 the way the HTML tokenizer's
// character reference states do it.
//
// Thread-safety: constant data and pure functions.
#ifndef ZESTRA_HTML_CHAR_REF_H_
#define ZESTRA_HTML_CHAR_REF_H_

#include <cstdint>
#include <string_view>

namespace OrvelParser {

// A decoded reference.
struct CharRef {
  uint32_t end = 0;  // offset one past the reference's last input byte
  uint8_t size = 0;  // bytes used in `utf8`
  char utf8[8] = {};  // the replacement text (at most two code points)
};

// Decodes the character reference whose '&' is at `amp` in `input`.
// `in_attribute` applies the rule for attribute values: a named reference
// without its ';' that is followed by '=' or a letter or digit is left as
// text. Returns false when the '&' starts no reference (the '&' and what
// follows it are then plain text); else fills `ref`.
// REQUIRES: input[amp] == '&'.
bool DecodeCharRef(std::string_view input, uint32_t amp, bool in_attribute, CharRef& ref) noexcept;

// Appends the UTF-8 form of `code_point` (at most 0x10FFFF; surrogates get
// the generalized three-byte form) at `out`; returns the bytes written.
int EncodeUtf8(uint32_t code_point, char* out) noexcept;

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_CHAR_REF_H_
