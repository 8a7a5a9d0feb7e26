// The parser keyword table shared by every parse of the library.
//
// It is one namespace-scope const object, constructed (with PrtType 0) when
// the library is loaded and destroyed when it is unloaded; no parse may run
// outside that window (for instance from another library's static
// constructors or destructors).
//
// Thread-safety: read-only after load; any number of parses may use it at
// once.
#ifndef ZESTRA_BUILDER_KEYWORD_TABLE_H_
#define ZESTRA_BUILDER_KEYWORD_TABLE_H_

#include "zestra/html/html_keyword_table.h"

namespace ZestraNS {

const OrvelParser::HtmlKeywordTable& KeywordTable();

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_KEYWORD_TABLE_H_
