// Fuzz target: the HTML parser alone. The whole input is a document in
// UTF-8, parsed by HtmlDocParser from a memory buffer; the tree it builds
// must keep the invariants that hold for any input under the HTML standard's
// parsing rules:
//   - shape: no null entry in any list of children; every node is reached
//     once; the nodes reached are the tree's node count; a non-empty tree has
//     one top-level node, the <html> element; text nodes have no children;
//   - depth: no node is deeper than the parser's nesting cap allows (an
//     element past the cap is kept as an empty leaf, text goes into the
//     element at the cap);
//   - keywords: a text node carries the text id; an element the word that
//     the keyword table gives its name, or that of unnamed elements;
//   - text: every source span lies within the UTF-8 text that was parsed;
//     a text node's characters are characters of the input in input order,
//     so a span free of what the tokenizer rewrites (character references,
//     NUL, CR) holds the node's text as a subsequence; and the text of all
//     nodes together is at most three times the input (U+FFFD for a NUL byte
//     is the largest growth of any character).
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "builder/keyword_table.h"
#include "charset/document_decoder.h"
#include "fuzz_input.h"
#include "zestra/html/html_doc_parser.h"
#include "zestra/html/html_doc_tree.h"
#include "zestra/html/html_keyword_table.h"
#include "zestra/html/html_tree_node.h"
#include "zestra/stream/memory_buffer.h"

namespace {

using OrvelFile::MemoryBuffer;
using OrvelParser::HtmlKeywordTable;
using OrvelParser::HtmlTreeNode;
using zestra_fuzz::Check;

// The stack of open elements holds at most 512 elements, <html> the first;
// an element or text past it is a leaf one level below.
constexpr size_t kMaxDepth = 512 + 1;

// Whether `text` is a subsequence of `span`.
bool IsSubsequence(std::string_view text, std::string_view span) {
  size_t at = 0;
  for (char c : span) {
    if (at == text.size()) break;
    if (c == text[at]) ++at;
  }
  return at == text.size();
}

void CheckText(const HtmlTreeNode& node, std::string_view utf8) {
  Check(node.Children().empty());
  Check(node.Element() == OrvelParser::kNoElement);
  const std::string_view text = node.Utf8Text();
  Check(!text.empty());
  if (node.SourceLength() == 0) return;
  const std::string_view span = utf8.substr(node.SourcePosition(), node.SourceLength());
  if (span.find_first_of(std::string_view("&\0\r", 3)) != std::string_view::npos) return;
  Check(IsSubsequence(text, span));
}

void CheckElement(const HtmlTreeNode& node, const HtmlKeywordTable& keywords) {
  const uint32_t other = OrvelParser::kIdOther;
  if (node.Element() == OrvelParser::kNoElement) {
    Check(node.Keyword() == other);
  } else {
    Check(!node.Name().empty());
    Check(node.Keyword() == keywords.Word(node.Name()) || node.Keyword() == other);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const HtmlKeywordTable& keywords = ZestraNS::KeywordTable();
  MemoryBuffer in(data, static_cast<unsigned int>(size), MemoryBuffer::kReadInPlace);
  OrvelParser::HtmlDocTree tree(Orvel::Utf8Charset);
  OrvelParser::HtmlDocParser parser(in, keywords, tree);
  parser.Parse();

  // The text the parser read, as it read it: spans are offsets into it.
  MemoryBuffer again(data, static_cast<unsigned int>(size), MemoryBuffer::kReadInPlace);
  std::string utf8;
  OrvelParser::DecodeDocument(again, Orvel::Utf8Charset, utf8);

  const HtmlTreeNode::List& top = tree.TopLevel();
  Check((tree.NodeCount() == 0) == top.empty());
  if (top.empty()) return 0;
  Check(top.size() == 1 && static_cast<bool>(top[0]) && top[0]->Name() == "html");

  std::unordered_set<const HtmlTreeNode*> seen;
  uint64_t text_bytes = 0;
  // Depth first with an explicit stack: (node, depth), <html> at depth 1.
  std::vector<std::pair<const HtmlTreeNode*, size_t>> stack{{top[0].Get(), 1}};
  while (!stack.empty()) {
    const auto [node, depth] = stack.back();
    stack.pop_back();
    Check(seen.insert(node).second);
    Check(depth <= kMaxDepth);
    Check(uint64_t{node->SourcePosition()} + node->SourceLength() <= utf8.size());
    if (node->IsText()) {
      Check(node->Keyword() == OrvelParser::kIdText);
      CheckText(*node, utf8);
      text_bytes += node->Utf8Text().size();
      continue;
    }
    CheckElement(*node, keywords);
    for (const HtmlTreeNode::Entry& child : node->Children()) {
      Check(static_cast<bool>(child));
      stack.emplace_back(child.Get(), depth + 1);
    }
  }
  Check(seen.size() == tree.NodeCount());
  Check(text_bytes <= 3 * uint64_t{utf8.size()});
  return 0;
}
