// GumboTreeConverter parses UTF-8 HTML with Gumbo and turns Gumbo's tree into
// an HtmlDocTree of HtmlTreeNodes. The conversion walks with an explicit
// stack, not one call per level of nesting. Gumbo allocates from an arena of
// the parse (html/parse_arena.h), compact for its many small objects.
// In a large document each of Gumbo's nodes is freed as soon as it is
// converted, so the memory of Gumbo's tree goes back while ours is built and
// the peak is about that of Gumbo's tree alone, not of both. What is left of
// Gumbo's tree at the end, or when an exception stops the conversion, goes
// with the arena.
//
// Thread-safety: stateless; concurrent calls on distinct trees are safe.
#ifndef ZESTRA_HTML_GUMBO_TREE_CONVERTER_H_
#define ZESTRA_HTML_GUMBO_TREE_CONVERTER_H_

#include <cstddef>
#include <string_view>

#include "zestra/base/charset.h"
#include "zestra/html/html_doc_tree.h"
#include "zestra/html/html_keyword_table.h"

namespace OrvelParser {

class GumboTreeConverter {
 public:
  // Texts of at least this many bytes have Gumbo's nodes freed as they are
  // converted. For smaller ones the two trees standing side by side cost a
  // few MB at most, and leaving Gumbo's whole tree to the arena saves about
  // a tenth of our share of an extraction's time.
  static constexpr size_t kReleaseFromBytes = size_t{1} << 20;

  GumboTreeConverter() = delete;

  // Parses `utf8` and replaces the content of `tree` with the result, noting
  // `document_charset` as the charset the text was read in. Empty text gives
  // an empty tree (node count 0). Throws std::bad_alloc when memory runs out;
  // Gumbo's tree is freed in every case.
  // `release_from_bytes` is the size from which Gumbo's nodes are freed as
  // they are converted (tests pass other values to reach both ways).
  // REQUIRES: utf8.size() < 4 GiB (positions are 32-bit).
  static void Parse(std::string_view utf8, const HtmlKeywordTable& keywords, HtmlDocTree& tree,
                    Orvel::CHARSET document_charset, size_t release_from_bytes = kReleaseFromBytes);
};

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_GUMBO_TREE_CONVERTER_H_
