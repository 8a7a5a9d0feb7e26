// GumboTreeConverter parses UTF-8 HTML with Gumbo and turns Gumbo's tree into
// an HtmlDocTree of HtmlTreeNodes. Neither the conversion nor the release of
// Gumbo's tree recurses once per level of nesting: both walk with explicit
// stacks, and Gumbo's tree is flattened before Gumbo frees it (Gumbo frees
// recursively). Gumbo's nodes are freed as the conversion finishes with
// them, so the peak memory is about that of Gumbo's tree alone, not of both
// trees.
//
// Thread-safety: stateless; concurrent calls on distinct trees are safe.
#ifndef ZESTRA_PLATFORM_GUMBO_TREE_CONVERTER_H_
#define ZESTRA_PLATFORM_GUMBO_TREE_CONVERTER_H_

#include <string_view>

#include "zestra/base/charset.h"
#include "zestra/platform/html_doc_tree.h"
#include "zestra/platform/html_keyword_table.h"

namespace OrvelParser {

class GumboTreeConverter {
 public:
  GumboTreeConverter() = delete;

  // Parses `utf8` and replaces the content of `tree` with the result, noting
  // `document_charset` as the charset the text was read in. Empty text gives
  // an empty tree (node count 0). Throws std::bad_alloc when memory runs out;
  // Gumbo's tree is freed in every case.
  // REQUIRES: utf8.size() < 4 GiB (positions are 32-bit).
  static void Parse(std::string_view utf8, const HtmlKeywordTable& keywords, HtmlDocTree& tree,
                    Orvel::CHARSET document_charset);
};

}  // namespace OrvelParser

#endif  // ZESTRA_PLATFORM_GUMBO_TREE_CONVERTER_H_
