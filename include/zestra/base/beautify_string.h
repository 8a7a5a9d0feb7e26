// BeautifyString is the text clean-up applied to every run of document text
// before the layout rules read it.
//
// BeautifyString(in, out, trim, collapse) replaces `out` with a cleaned copy
// of `in`:
//  - control characters that are not white space (U+0000..U+0008,
//    U+000E..U+001F, U+007F..U+009F) are dropped;
//  - with `collapse`, every run of white space (the wide space class and
//    U+00A0, see wide_chars.h) becomes one space U+0020; without it, white
//    space is kept as it is;
//  - with `trim`, white space at both ends is removed; without it, the ends
//    are kept, so with `collapse` a run at either end leaves one space.
//
// The layout builder calls it with trim false and collapse true: a text
// node "  a \n b " becomes " a b ", and its single leading and trailing
// spaces tell the builder how the run joins its neighbours.
//
// `in` and `out` may be the same string. Thread-safety: reentrant.
#ifndef ZESTRA_BASE_BEAUTIFY_STRING_H_
#define ZESTRA_BASE_BEAUTIFY_STRING_H_

#include <string>

#include "zestra/export.h"

namespace Orvel {

ZESTRA_EXPORT void BeautifyString(const std::u16string& in, std::u16string& out, bool trim, bool collapse);

}  // namespace Orvel

#endif  // ZESTRA_BASE_BEAUTIFY_STRING_H_
