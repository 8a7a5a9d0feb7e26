// The element table: the keyword id and attribute bits of every HTML element
// the parser adapter distinguishes. It is the one place where elements are
// given their treatment; the keyword table (zestra/html/
// html_keyword_table.h) is built from it, and a layout that wants another
// treatment reads the same ids.
//
// The choices, with the reasons (ids as in KeywordId):
//   - What a reader never sees is skipped, with all its content: scripts and
//     their fallbacks (0: script, noscript; browsers run scripts, so
//     noscript stays hidden), styles (4), the head with its metadata (10:
//     head, title, meta, link, base, basefont, bgsound; a title in the body
//     is metadata as well), templates (14), the option lists of forms (16),
//     embedded documents and plug-ins, whose content is fallback text or a
//     separate document (20: iframe, frame, frameset, noframes, noembed,
//     object, embed, applet, param), graphics and media (26: img, image,
//     svg, math, canvas, picture, video, audio, source, track) and form
//     controls holding user input (32: textarea, input, keygen, progress,
//     meter). Buttons are kept: their labels are text a reader sees.
//   - Block elements end the paragraph before and after them (12, 18, 40,
//     42, 44, 46), so headings, paragraphs, lists, quotes and the sections of
//     a page never run into the text around them.
//   - List items, terms and definitions end the paragraph only before them
//     (5, 11, 17): the next item, or the list, ends theirs. Captions too
//     (22), although the table layout does not read them.
//   - The summary of a details element and the legend of a fieldset end the
//     paragraph after them (33): their container has ended the one before.
//   - Preformatted blocks (54) are pre and its obsolete synonyms listing,
//     xmp and plaintext.
//   - Links (attribute kLinkAtt) are a and area; the title attribute
//     (kTitleAtt) marks title, so a tree's title text is the page title.
//   - Everything else (phrasing elements, html and body, map, columns) is
//     walked into as if it were not there.
//
// Thread-safety: constant data.
#ifndef ZESTRA_HTML_HTML_ELEMENT_TABLE_H_
#define ZESTRA_HTML_HTML_ELEMENT_TABLE_H_

#include <cstdint>
#include <span>

namespace OrvelParser {

struct HtmlElementRow {
  const char* name;     // lower-case element name
  uint32_t id;          // keyword id, 0 to 255
  uint32_t attributes;  // NodeAtt bits, above bit 7
};

// Every row; names are unique. A row's position (from 1) is its element's
// ElementNumber, so rows are only ever appended.
std::span<const HtmlElementRow> HtmlElementTable();

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_HTML_ELEMENT_TABLE_H_
