// LimitNesting keeps the elements of an HTML text from nesting deeper than
// a fixed depth before Gumbo parses it, as browsers cap the depth of the
// tree they build (Blink at 512).
//
// Why: for many start tags Gumbo's tree construction looks through the
// whole stack of open elements, so its time grows with the square of the
// nesting depth: 40,000 nested lists (<ul><li>, 320 KB) take over a minute.
// Capping the depth at kMaxNestingDepth bounds that work by the depth times
// the number of tags.
//
// How: a scan in document order follows start and end tags (skipping
// comments, declarations and the text of raw-text elements such as
// <script>) and keeps an estimate of Gumbo's stack of open elements: void
// elements are never open, an end tag closes the elements up to its own,
// the start tags that close elements implicitly (p, li, dd, dt, td, th,
// tr, table sections, option, headings, a nested a or select) do so, and
// table rows and cells get the body and row the parser makes up. The
// estimate follows the real depth closely on ordinary pages (within a few
// levels on the development set, whose deepest page nests 38 levels); it
// strays from it only where Gumbo applies rules not modelled here (such as
// the adoption agency for misnested formatting elements). A start tag that would
// open an element deeper than the limit is taken out of the text; the
// element's content stays where it is, in the element at the limit, so its
// text is kept and only its own markup (a link, a table, a paragraph
// break) is lost. End tags are kept, and raw-text and void elements are
// never taken out.
//
// A text whose estimate stays within the limit is not touched, so the
// limit changes nothing for any ordinary page; nodes of a flattened text
// have their source positions in the flattened text.
//
// Thread-safety: stateless.
#ifndef ZESTRA_HTML_HTML_NESTING_LIMIT_H_
#define ZESTRA_HTML_HTML_NESTING_LIMIT_H_

#include <cstdint>
#include <string>

namespace OrvelParser {

// The deepest an element may lie, counting <html> as depth 1 and <body> as
// depth 2.
inline constexpr uint32_t kMaxNestingDepth = 512;

// Takes out of `utf8` the start tags that would open elements deeper than
// `max_depth` (see above). Returns the number of tags taken out; 0 leaves
// `utf8` as it was.
// REQUIRES: max_depth >= 3.
uint32_t LimitNesting(std::string& utf8, uint32_t max_depth = kMaxNestingDepth);

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_HTML_NESTING_LIMIT_H_
