// The element categories of the tree-construction rules (special elements,
// scope boundaries, implied end tags, the tags that leave foreign content)
// and the doctypes that put a document in quirks mode.
//
// Thread-safety: constant data and pure functions.
#ifndef ZESTRA_HTML_TREE_BUILDER_TABLES_H_
#define ZESTRA_HTML_TREE_BUILDER_TABLES_H_

#include "html/tag_id.h"
#include "html/token.h"

namespace OrvelParser {

// h1 to h6.
bool IsHeading(TagId tag) noexcept;
// HTML elements that bound every scope: applet, caption, html, table, td,
// th, marquee, object, template, select.
bool IsDefaultScopeBoundary(TagId tag) noexcept;
// Elements whose end tags are implied: dd, dt, li, optgroup, option, p, rb,
// rp, rt, rtc.
bool IsImpliedEndTag(TagId tag) noexcept;
// The table parts closed when implied end tags are generated thoroughly:
// caption, colgroup, tbody, td, tfoot, th, thead, tr.
bool IsTablePart(TagId tag) noexcept;
// HTML elements of the special category.
bool IsSpecialTag(TagId tag) noexcept;
// Start tags that leave SVG or MathML content (font aside, which does so
// only with a color, face or size attribute).
bool IsForeignBreakout(TagId tag) noexcept;
// Elements that are never open for long: void elements, which are popped at
// once, and the elements whose content is raw text or RCDATA.
bool IsVoidOrRawText(TagId tag) noexcept;
// Whether the doctype token `doctype` puts the document in quirks mode.
bool IsQuirksDoctype(const Token& doctype) noexcept;

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_TREE_BUILDER_TABLES_H_
