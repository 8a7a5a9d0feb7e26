// Character classes of 16-bit text used by the clean-up and the layout
// rules. They are fixed tables, independent of the process locale, so the
// same bytes give the same text on every machine.
#ifndef ZESTRA_BASE_WIDE_CHARS_H_
#define ZESTRA_BASE_WIDE_CHARS_H_

#include "zestra/export.h"

namespace Orvel {

// The wide space class: U+0009..U+000D, U+0020, U+1680, U+2000..U+2006,
// U+2008..U+200A, U+2028, U+2029, U+205F, U+3000. The no-break spaces
// (U+00A0, U+2007, U+202F) are not in it.
ZESTRA_EXPORT bool IsSpaceClass(char16_t c) noexcept;

// White space of the layout rules: the space class or U+00A0.
inline bool IsWhiteSpace(char16_t c) noexcept {
  // ASCII, most of every text, is answered here without the call.
  if (c < 0x80) return c == 0x20 || (c >= 0x09 && c <= 0x0D);
  return c == 0x00A0 || IsSpaceClass(c);
}

// Control characters that are not white space: U+0000..U+0008,
// U+000E..U+001F, U+007F..U+009F.
inline bool IsNonSpaceControl(char16_t c) noexcept {
  return (c < 0x20 && (c < 0x09 || c > 0x0D)) || (c >= 0x7F && c <= 0x9F);
}

}  // namespace Orvel

#endif  // ZESTRA_BASE_WIDE_CHARS_H_
