// Test helper: HTML node trees made by hand, for the builder's tests that
// need shapes a conforming parser never produces (an anchor inside an
// anchor, a cell outside a table) or exact control over attributes.
#ifndef ZESTRA_TESTS_BUILDER_HTML_NODE_BUILDER_H_
#define ZESTRA_TESTS_BUILDER_HTML_NODE_BUILDER_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "zestra/html/html_keyword_table.h"
#include "zestra/html/html_tree_node.h"

namespace ZestraNS::testing {

using OrvelParser::HtmlTreeNode;
using Node = HtmlTreeNode::Entry;
using NodeList = HtmlTreeNode::List;

constexpr uint32_t kLink = OrvelParser::HtmlKeywordTable::kLinkAtt;

// An element with keyword word `word` and the given children.
inline Node El(uint32_t word, NodeList children = {}) {
  Node node(new HtmlTreeNode(word, 0, 0));
  node->Children() = std::move(children);
  return node;
}

// A text node; `position` and `length` are its source span.
inline Node Text(const std::string& utf8, uint32_t position = 0, uint32_t length = 0) {
  Node node(new HtmlTreeNode(OrvelParser::kIdText, position, length));
  node->SetText(utf8);
  return node;
}

// `node` with an attribute added.
inline Node With(Node node, const std::string& name, const std::string& value) {
  node->AddParam(name, value);
  return node;
}

}  // namespace ZestraNS::testing

#endif  // ZESTRA_TESTS_BUILDER_HTML_NODE_BUILDER_H_
