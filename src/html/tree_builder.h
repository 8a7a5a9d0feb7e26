// TreeBuilder is the tree-construction stage of the WHATWG HTML parser: it
// drives a Tokenizer over UTF-8 text and puts the document into a TreeSink,
// repairing malformed markup as browsers do: every insertion mode, implied
// end tags, the list of active formatting elements, the adoption agency,
// foster parenting, foreign (SVG and MathML) content, the quirks-mode
// decision, templates, and fragment parsing for a context element.
//
// Limits, so that a parse is linear in its input whatever the markup:
//   - The stack of open elements holds at most kMaxDepth elements (<html>
//     is depth 1). A start tag that comes when the stack is full is dropped,
//     attributes and all, so what follows it (its content, by the markup)
//     goes into the element at the limit; its end tag closes what it names
//     among the elements kept, or nothing. Start tags of elements that are
//     never open for long still come: void elements, raw-text and RCDATA
//     elements (script, style, title, textarea, ...) and self-closing
//     foreign elements, so the stack may hold one more. The implied tbody
//     and tr that a table part brings may take it a few further. Formatting
//     elements are not reconstructed into a full stack.
//   - The list of active formatting elements keeps at most
//     kMaxFormattingEntries entries; pushing one more drops the oldest
//     element (not marker) of the list, which then stays in the tree as an
//     ordinary element. Real pages hold a handful.
//   - The adoption agency runs its outer loop at most 8 times and its inner
//     loop at most 3 times per formatting element, as the standard says.
// With the counts of open elements kept per tag, a scope check that cannot
// succeed costs nothing, and one that walks walks the (bounded) stack.
//
// Scripting: the builder parses as a browser with scripting disabled unless
// told otherwise (<noscript> content is parsed as markup).
//
// Thread-safety: a builder is used by one thread.
#ifndef ZESTRA_HTML_TREE_BUILDER_H_
#define ZESTRA_HTML_TREE_BUILDER_H_

#include <cstdint>
#include <memory>
#include <string_view>

#include "html/tree_sink.h"

namespace OrvelParser {

struct TreeBuilderOptions {
  // Parse as a browser that runs scripts: <noscript> is raw text.
  bool scripting = false;
  // Fragment parsing: the context element's lower-case name (empty: parse a
  // whole document) and namespace. The fragment's nodes go into an <html>
  // element the builder makes, the child of the document.
  std::string_view fragment_context;
  Namespace fragment_namespace = Namespace::kHtml;
};

class TreeBuilder {
 public:
  // The deepest the stack of open elements goes (see above).
  static constexpr uint32_t kMaxDepth = 512;
  // The longest the list of active formatting elements gets.
  static constexpr uint32_t kMaxFormattingEntries = 64;

  TreeBuilder() = delete;

  // Parses `utf8` into `sink`.
  // REQUIRES: utf8.size() <= UINT32_MAX.
  static void Build(std::string_view utf8, TreeSink& sink, const TreeBuilderOptions& options = {});
};

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_TREE_BUILDER_H_
