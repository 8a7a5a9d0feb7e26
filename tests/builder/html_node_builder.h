// Test helper: HTML node trees made by hand, for the builder's tests that
// need shapes a conforming parser never produces (an anchor inside an
// anchor, a cell outside a table) or exact control over attributes.
#ifndef ZESTRA_TESTS_BUILDER_HTML_NODE_BUILDER_H_
#define ZESTRA_TESTS_BUILDER_HTML_NODE_BUILDER_H_

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>

#include "zestra/html/html_keyword_table.h"
#include "zestra/html/html_tree_node.h"
#include "zestra/html/node_arena.h"

namespace ZestraNS::testing {

using OrvelParser::HtmlTreeNode;
using Node = HtmlTreeNode::Entry;

constexpr uint32_t kLink = OrvelParser::HtmlKeywordTable::kLinkAtt;

// The arena of the hand-made trees: nodes outlive it, it only cuts.
inline OrvelParser::NodeArena& TestArena() {
  static OrvelParser::NodeArena arena;
  return arena;
}

// A list of nodes written as a braced list: {El(...), Text(...)}.
struct NodeList : HtmlTreeNode::List {
  NodeList() = default;
  NodeList(std::initializer_list<Node> nodes) {
    for (const Node& node : nodes) PushBack(TestArena(), node);
  }
  void push_back(Node node) { PushBack(TestArena(), std::move(node)); }
};

// An element with keyword word `word` and the given children.
inline Node El(uint32_t word, NodeList children = {}) {
  Node node = HtmlTreeNode::Make(TestArena(), word, 0, 0);
  node->Children() = std::move(children);
  return node;
}

// A text node; `position` and `length` are its source span.
inline Node Text(const std::string& utf8, uint32_t position = 0, uint32_t length = 0) {
  Node node = HtmlTreeNode::Make(TestArena(), OrvelParser::kIdText, position, length);
  node->SetText(TestArena(), utf8);
  return node;
}

// `node` with an attribute added.
inline Node With(Node node, const std::string& name, const std::string& value) {
  node->AddParam(TestArena(), name, value);
  return node;
}

}  // namespace ZestraNS::testing

#endif  // ZESTRA_TESTS_BUILDER_HTML_NODE_BUILDER_H_
