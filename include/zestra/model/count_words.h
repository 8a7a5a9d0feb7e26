// CountWords is the library's one definition of a word count.
//
// The separators are the 14 characters of "\n\t .,!()%$?*#|"; every other
// character (carriage return, the no-break space, hyphen, colon, letters,
// digits, ...) is a word character. The count is the number of maximal runs
// of separators plus one when the last character is not a separator. So a
// text that does not begin with a separator counts its words, a text that
// begins with one counts one more (" a" is 2), and a text made only of
// separators counts 1.
//
// The run scan treats the text as zero-terminated: it stops at the first
// NUL (U+0000). The last-character test treats a final NUL as a separator.
//
// Thread-safety: reentrant.
#ifndef ZESTRA_MODEL_COUNT_WORDS_H_
#define ZESTRA_MODEL_COUNT_WORDS_H_

#include <cstdint>
#include <string>

#include "zestra/export.h"

namespace ZestraNS {

// Returns the word count of `text` as described above; 0 for the empty text.
ZESTRA_EXPORT uint32_t CountWords(const std::u16string& text);

}  // namespace ZestraNS

#endif  // ZESTRA_MODEL_COUNT_WORDS_H_
