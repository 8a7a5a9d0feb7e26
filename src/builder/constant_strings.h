// The constant strings of the builder. Each is one namespace-scope const
// object, constructed when the library is loaded and destroyed when it is
// unloaded; the accessors return references to them.
//
// Thread-safety: read-only after load; any thread may use them.
#ifndef ZESTRA_BUILDER_CONSTANT_STRINGS_H_
#define ZESTRA_BUILDER_CONSTANT_STRINGS_H_

#include <string>

namespace ZestraNS {

// HTML attribute names read from table cells.
const std::string& RowspanAttribute();  // "rowspan"
const std::string& ColspanAttribute();  // "colspan"

// Texts appended to items.
const std::u16string& LineFeedText();      // "\n": a line break, the end of a table cell
const std::u16string& RunSeparatorText();  // " ": joins two runs of text

// "\r\n": the line end that preformatted runs turn into "\n".
const std::u16string& CrLfText();

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_CONSTANT_STRINGS_H_
