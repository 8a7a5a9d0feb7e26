#include "zestra/html/html_doc_tree.h"

#include <utility>

namespace OrvelParser {
namespace {

// White space of HTML: space, tab, line feed, form feed, carriage return.
bool IsHtmlSpace(char16_t c) { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\f' || c == u'\r'; }

// Appends `text` to `out` with HTML white space trimmed and collapsed, one
// space before it when `out` already holds text.
void AppendCollapsed(const std::u16string& text, std::u16string& out) {
  bool space_pending = !out.empty();
  bool any = false;
  for (char16_t c : text) {
    if (IsHtmlSpace(c)) {
      space_pending = space_pending || any;
      continue;
    }
    if (space_pending) out.push_back(u' ');
    space_pending = false;
    any = true;
    out.push_back(c);
  }
}

}  // namespace

HtmlDocTree::~HtmlDocTree() = default;

void HtmlDocTree::Assign(HtmlTreeNode::List top_level, uint32_t node_count, Orvel::CHARSET document_charset) {
  top_level_ = std::move(top_level);
  node_count_ = node_count;
  document_charset_ = document_charset;
}

void HtmlDocTree::GetText(std::u16string& text, HtmlKeywordTable::NodeAtt attribute) const {
  text.clear();
  std::u16string node_text;
  WalkNodes(top_level_, [&](const HtmlTreeNode& node) {
    if (!node.HasAttribute(attribute)) return true;
    node.GetText(node_text);
    AppendCollapsed(node_text, text);
    return false;
  });
}

}  // namespace OrvelParser
