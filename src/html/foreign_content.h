// The name tables of SVG and MathML content in HTML: the case of SVG
// element and attribute names (the tokenizer lowers every name, SVG wants
// "clipPath" and "viewBox"), MathML's one mixed-case attribute, and the
// namespaced attributes (xlink:href, xml:lang, xmlns:xlink).
//
// Thread-safety: constant data and pure functions.
#ifndef ZESTRA_HTML_FOREIGN_CONTENT_H_
#define ZESTRA_HTML_FOREIGN_CONTENT_H_

#include <string_view>

#include "html/tree_sink.h"

namespace OrvelParser {

// The SVG name of the element whose lower-case name is `name`: its
// mixed-case form for the names that have one, `name` itself otherwise.
std::string_view AdjustSvgTagName(std::string_view name) noexcept;

// `attribute` (lower-case name, no namespace) as it stands on an element of
// namespace `ns`: SVG's mixed-case names on SVG elements, definitionURL on
// MathML elements, and the xlink, xml and xmlns names split into namespace
// and local name on both. HTML elements' attributes are left as they are.
SinkAttribute AdjustForeignAttribute(Namespace ns, SinkAttribute attribute) noexcept;

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_FOREIGN_CONTENT_H_
