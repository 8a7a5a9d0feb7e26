// The two ways the builder reads a document's layout.
//
// kTables is the layout of pages built with HTML tables: only HTML tables
// become tables of the layout tree, and everything else is text of the
// cell it stands in. Its output is the library's reference behaviour, kept
// exactly; the Beautify family and the component functions use it.
//
// kBlocks is the layout of pages built with block elements (divisions,
// sections, lists): blocks holding several units of text become tables of
// one column, so the ranking can tell an article from the navigation,
// sidebars and comments around it; content a reader never sees is left
// out, words of boilerplate (navigation, share bars, comments, ...) count
// as words in links, CJK ideographs count as words and MathML formulas are
// read as text.
//
// Thread-safety: constant.
#ifndef ZESTRA_BUILDER_LAYOUT_MODE_H_
#define ZESTRA_BUILDER_LAYOUT_MODE_H_

#include <cstdint>

namespace ZestraNS {

enum class LayoutMode : uint8_t {
  kTables = 0,
  kBlocks = 1,
};

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_LAYOUT_MODE_H_
