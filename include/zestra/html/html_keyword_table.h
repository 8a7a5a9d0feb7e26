// HtmlKeywordTable gives every HTML element its keyword word: a keyword id
// in bits 0 to 7, which says how the layout treats the element, and
// attribute bits (NodeAtt) above them. Nodes of a parsed HtmlDocTree carry
// the word of their element.
//
// Which element gets which id is decided in one place, the element table
// (src/html/html_element_table.cc); this class only looks it up.
// Several elements share an id where the layout treats them alike. Elements
// the table does not name (custom elements, unknown tags) and elements
// inside SVG or MathML other than their <svg> and <math> roots get kIdOther.
// Of the latter, those the table names with kIdOther (<foreignObject>, where
// SVG holds HTML again) carry their element number, so that a layout can
// tell them; the others have kNoElement.
//
// Beside the word, each element the table names has an element number
// (ElementNumber) that tells it apart from the other elements of its id: a
// layout that treats a nav unlike a section (both kIdSection) asks for it.
//
// Thread-safety: immutable after construction; any number of threads may
// read one table.
#ifndef ZESTRA_HTML_HTML_KEYWORD_TABLE_H_
#define ZESTRA_HTML_HTML_KEYWORD_TABLE_H_

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "zestra/export.h"

namespace OrvelParser {

class HtmlTreeSink;

// Keyword ids. The comments name the elements of each id; the element table
// is the full list.
enum KeywordId : uint32_t {
  // Left out with everything inside them: what a reader never sees.
  kIdScript = 0,        // script, noscript
  kIdStyle = 4,         // style
  kIdHead = 10,         // head and its metadata: title, meta, link, base, ...
  kIdTemplate = 14,     // template
  kIdOptionList = 16,   // select, option, optgroup, datalist
  kIdEmbedded = 20,     // iframe, frame, frameset, noframes, object, embed, applet, ...
  kIdGraphics = 26,     // img, svg, math, canvas, picture, video, audio, ...
  kIdFormControl = 32,  // textarea, input, progress, meter, keygen
  // Blocks that end the paragraph before and after them.
  kIdParagraph = 12,    // p
  kIdDivision = 18,     // div, center, main
  kIdHeading = 40,      // h1-h6, hgroup
  kIdList = 42,         // ul, ol, dl, menu, dir
  kIdBlockQuote = 44,   // blockquote, figure, figcaption, address, details, fieldset, dialog
  kIdSection = 46,      // section, article, header, footer, nav, aside, form, hr, search
  // Blocks that end the paragraph before them; the next one, or their
  // container, ends theirs.
  kIdListItem = 5,      // li
  kIdTerm = 11,         // dt
  kIdDefinition = 17,   // dd
  kIdCaption = 22,      // caption
  // Ids 23 and 49 (paragraph ended before) are not given to any element.
  // Blocks that end the paragraph after them; they open their container.
  kIdSummary = 33,      // summary, legend
  // Text, line structure, links and tables.
  kIdText = 73,         // a text node
  kIdPre = 54,          // pre, listing, xmp, plaintext
  kIdBr = 28,           // br
  kIdAnchor = 31,       // a
  kIdTable = 50,        // table
  kIdTr = 15,
  kIdTd = 21,
  kIdTh = 27,
  kIdThead = 3,
  kIdTbody = 39,
  kIdTfoot = 9,
  // Walked into with nothing done for the element itself.
  kIdDocument = 1,      // html, body
  kIdPhrase = 2,        // span, b, i, em, strong, code, label, button, ...
  kIdArea = 6,          // area (a link)
  kIdOther = 7,         // elements the table does not name, SVG and MathML content
  kIdColumn = 8,        // col, colgroup
  kIdMap = 13,          // map
};

// Identifies one element of the element table: 1 to the number of rows.
// kNoElement for text nodes and for elements the table does not name.
using ElementNumber = uint16_t;
inline constexpr ElementNumber kNoElement = 0;

class ZESTRA_EXPORT HtmlKeywordTable {
 public:
  // Attribute bits of a keyword word (a bit mask above bits 0 to 7).
  using NodeAtt = uint32_t;
  static constexpr NodeAtt kTitleAtt = 0x100;   // the document's title: TITLE
  static constexpr NodeAtt kLinkAtt = 0x40000;  // the element is a link: A, AREA
  // Bits 0 to 7 of a keyword word.
  static constexpr uint32_t kIdMask = 0xFF;

  // Keyword sets; only HTML exists. Any other value selects it too.
  enum PrtType : int { kHtmlPrtType = 0 };

  explicit HtmlKeywordTable(int prt_type = kHtmlPrtType);
  HtmlKeywordTable(const HtmlKeywordTable&) = delete;
  HtmlKeywordTable& operator=(const HtmlKeywordTable&) = delete;
  ~HtmlKeywordTable();

  // The keyword word of the HTML element named `name` (lower case, as HTML
  // parsers report names); kIdOther with no attributes for names the table
  // does not know.
  uint32_t Word(std::string_view name) const { return Find(name).word; }

  // The element number of the element named `name` (lower case);
  // kNoElement for names the table does not know.
  ElementNumber Element(std::string_view name) const { return Find(name).element; }

  // The lower-case name of element `element`; empty for kNoElement and for
  // numbers beyond the table.
  static std::string_view ElementName(ElementNumber element);

 private:
  friend class HtmlTreeSink;

  // What the table says of one element.
  struct Keyword {
    uint32_t word = kIdOther;
    ElementNumber element = kNoElement;
  };

  Keyword Find(std::string_view name) const;

  // The keyword of an HTML element by the parser's tag id (a TagId of
  // html/tag_id.h as a number); names without an id go to Find.
  Keyword ForTag(unsigned tag) const { return tag < by_tag_.size() ? by_tag_[tag] : Keyword(); }

  std::vector<Keyword> by_tag_;
  // Rows of the element table by name, sorted for binary search.
  std::vector<std::pair<std::string_view, Keyword>> by_name_;
};

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_HTML_KEYWORD_TABLE_H_
