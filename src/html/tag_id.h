// TagId names the elements the HTML parser treats by name: every element the
// WHATWG tree-construction rules mention (HTML, and the SVG and MathML names
// that are integration points or break out of foreign content), and every
// element the keyword table gives a treatment. Any other name is kTagUnknown
// and is compared by its text.
//
// The tokenizer looks the id up once per tag, from the lower-case name, so
// that the tree builder and the keyword table compare small integers.
//
// Thread-safety: constant data and pure functions.
#ifndef ZESTRA_HTML_TAG_ID_H_
#define ZESTRA_HTML_TAG_ID_H_

#include <cstdint>
#include <string_view>

namespace OrvelParser {

// The X-macro list of known names, in no particular order. Only ever
// appended to or reordered freely: ids are not stored anywhere.
#define ZESTRA_HTML_TAGS(X)                                                                          \
  X(a) X(abbr) X(acronym) X(address) X(applet) X(area) X(article) X(aside) X(audio) X(b) X(base)     \
  X(basefont) X(bdi) X(bdo) X(bgsound) X(big) X(blink) X(blockquote) X(body) X(br) X(button)        \
  X(canvas) X(caption) X(center) X(cite) X(code) X(col) X(colgroup) X(data) X(datalist) X(dd)       \
  X(del) X(desc) X(details) X(dfn) X(dialog) X(dir) X(div) X(dl) X(dt) X(em) X(embed) X(fieldset)   \
  X(figcaption) X(figure) X(font) X(footer) X(foreignobject) X(form) X(frame) X(frameset) X(h1)    \
  X(h2) X(h3) X(h4) X(h5) X(h6) X(head) X(header) X(hgroup) X(hr) X(html) X(i) X(iframe) X(image)   \
  X(img) X(input) X(ins) X(isindex) X(kbd) X(keygen) X(label) X(legend) X(li) X(link) X(listing)    \
  X(main) X(malignmark) X(map) X(mark) X(marquee) X(math) X(menu) X(menuitem) X(meta) X(meter)      \
  X(mglyph) X(mi) X(mn) X(mo) X(ms) X(mtext) X(multicol) X(nav) X(nextid) X(nobr) X(noembed)        \
  X(noframes) X(noscript) X(object) X(ol) X(optgroup) X(option) X(output) X(p) X(param)             \
  X(picture) X(plaintext) X(pre) X(progress) X(q) X(rb) X(rp) X(rt) X(rtc) X(ruby) X(s) X(samp)     \
  X(script) X(search) X(section) X(select) X(slot) X(small) X(source) X(spacer) X(span) X(strike)   \
  X(strong) X(style) X(sub) X(summary) X(sup) X(svg) X(table) X(tbody) X(td) X(template)            \
  X(textarea) X(tfoot) X(th) X(thead) X(time) X(title) X(tr) X(track) X(tt) X(u) X(ul) X(var)       \
  X(video) X(wbr) X(xmp)

enum class TagId : uint8_t {
  kTagUnknown = 0,
#define ZESTRA_HTML_TAG_ENUM(name) k_##name,
  ZESTRA_HTML_TAGS(ZESTRA_HTML_TAG_ENUM)
#undef ZESTRA_HTML_TAG_ENUM
  // annotation-xml is not a C++ identifier.
  k_annotation_xml,
  kTagCount
};

// The id of the lower-case tag name `name`; kTagUnknown for any other name
// (upper-case letters included: the caller lower-cases first).
TagId LookupTag(std::string_view name) noexcept;

// The lower-case name of `tag`; empty for kTagUnknown and out-of-range ids.
std::string_view TagName(TagId tag) noexcept;

// For a scanner that hashes a name while it reads it: the hash state before
// the first byte (then stepped with NameHashStep of html/perfect_hash.h over
// every lower-cased byte), and the id of `name` given that final `hash`.
uint32_t TagHashSalt() noexcept;
TagId LookupTagHashed(std::string_view name, uint32_t hash) noexcept;

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_TAG_ID_H_
