// AttributeId names the attributes that the tree builder and the layout
// stages read by name (table spans, hiding, links, the attributes that make
// a <font> leave foreign content, the annotation-xml encoding, ...), so that
// they compare small integers instead of strings. Any other name is
// kAttributeUnknown and is compared by its text.
//
// The tokenizer sets the id of every attribute it hands out
// (TokenAttribute::id), from the name it hashes while it lower-cases it.
//
// Thread-safety: constant data and pure functions.
#ifndef ZESTRA_HTML_ATTRIBUTE_ID_H_
#define ZESTRA_HTML_ATTRIBUTE_ID_H_

#include <cstdint>
#include <string_view>

namespace OrvelParser {

// The X-macro list of known names that are C++ identifiers, in no
// particular order. Ids are not stored anywhere: append or reorder freely.
#define ZESTRA_HTML_ATTRIBUTES(X)                                                                      \
  X(abbr) X(action) X(align) X(alt) X(axis) X(bgcolor) X(border) X(cellpadding) X(cellspacing)         \
  X(charset) X(cite) X(class) X(color) X(cols) X(colspan) X(content) X(datetime) X(definitionurl)     \
  X(dir) X(encoding) X(face) X(for) X(headers) X(height) X(hidden) X(href) X(id) X(itemprop)          \
  X(itemscope) X(itemtype) X(label) X(lang) X(name) X(nowrap) X(property) X(prompt) X(rel) X(role)    \
  X(rows) X(rowspan) X(scope) X(size) X(span) X(src) X(srcset) X(start) X(style) X(summary)           \
  X(tabindex) X(target) X(title) X(type) X(valign) X(value) X(width)

enum class AttributeId : uint8_t {
  kAttributeUnknown = 0,
#define ZESTRA_HTML_ATTRIBUTE_ENUM(name) k_##name,
  ZESTRA_HTML_ATTRIBUTES(ZESTRA_HTML_ATTRIBUTE_ENUM)
#undef ZESTRA_HTML_ATTRIBUTE_ENUM
  // Names that are not C++ identifiers.
  k_aria_hidden,  // aria-hidden
  k_http_equiv,   // http-equiv
  kAttributeCount
};

// The id of the lower-case attribute name `name`; kAttributeUnknown for any
// other name (upper-case letters included).
AttributeId LookupAttribute(std::string_view name) noexcept;

// The lower-case name of `id`; empty for kAttributeUnknown and out-of-range
// ids.
std::string_view AttributeName(AttributeId id) noexcept;

// For a scanner that hashes a name while it reads it: the hash state before
// the first byte (then stepped with NameHashStep of html/perfect_hash.h over
// every lower-cased byte), and the id of `name` given that final `hash`.
uint32_t AttributeHashSalt() noexcept;
AttributeId LookupAttributeHashed(std::string_view name, uint32_t hash) noexcept;

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_ATTRIBUTE_ID_H_
