// HtmlTreeSink is the tree builder's production sink: it builds the
// HtmlTreeNodes of an HtmlDocTree as the builder decides, with the keyword
// words and element numbers of the keyword table, attributes, text and
// source spans. Comments and the doctype are not kept, nor template
// contents apart from the template element (whose content goes into the
// element itself). Elements inside SVG and MathML get kIdOther, except the
// <svg> and <math> roots; <foreignObject> keeps its element number.
//
// Nodes are made as the builder asks for them, in the sink's NodeArena, and
// linked in place: there is no second tree and no conversion pass. The
// nodes outlive the sink (see node_arena.h). A node the builder has taken out of
// the tree (the adoption agency moves nodes) is held here until it goes back.
//
// Thread-safety: one sink per parse.
#ifndef ZESTRA_HTML_HTML_TREE_SINK_H_
#define ZESTRA_HTML_HTML_TREE_SINK_H_

#include <cstdint>
#include <string>
#include <vector>

#include "html/tree_sink.h"
#include "zestra/html/html_keyword_table.h"
#include "zestra/html/html_tree_node.h"
#include "zestra/html/node_arena.h"

namespace OrvelParser {

class HtmlTreeSink final : public TreeSink {
 public:
  explicit HtmlTreeSink(const HtmlKeywordTable& keywords) noexcept : keywords_(keywords) {}
  HtmlTreeSink(const HtmlTreeSink&) = delete;
  HtmlTreeSink& operator=(const HtmlTreeSink&) = delete;

  // The document's top-level elements, given up to the caller.
  HtmlTreeNode::List TakeTopLevel() noexcept { return std::move(top_level_); }
  // Number of nodes made (elements and text nodes, merged text counting once).
  uint32_t NodeCount() const noexcept { return node_count_; }

  SinkNode CreateElement(const SinkElement& element) override;
  void Insert(SinkNode parent, SinkNode child, SinkNode before) override;
  void Remove(SinkNode parent, SinkNode child) override;
  void MoveChildren(SinkNode from, SinkNode to) override;
  void InsertText(SinkNode parent, SinkNode before, std::string_view text, uint32_t begin, uint32_t end,
                  bool in_input) override;
  void AddMissingAttributes(SinkNode element, std::span<const SinkAttribute> attributes) override;
  void SetEndTag(SinkNode element, uint32_t end) override;
  SinkNode TemplateContents(SinkNode template_element) override { return template_element; }
  // Comments are not kept, but the text on either side of one stays in two
  // text nodes, as in the document's DOM.
  void AppendComment(SinkNode parent, std::string_view) override;
  void AppendDoctype(std::string_view, std::string_view, std::string_view) override {}

 private:
  HtmlTreeNode::List& ListOf(SinkNode parent) {
    return parent == nullptr ? top_level_ : static_cast<HtmlTreeNode*>(parent)->Children();
  }
  void AddAttribute(HtmlTreeNode& node, const SinkAttribute& attribute);
  HtmlTreeNode::Entry MakeNode(uint32_t word, uint32_t position, uint32_t length, ElementNumber element);

  const HtmlKeywordTable& keywords_;
  NodeArena arena_;
  HtmlTreeNode::List top_level_;
  // Nodes made or taken out and not (yet) in the tree; few at any time.
  std::vector<HtmlTreeNode::Entry> detached_;
  uint32_t node_count_ = 0;
  // The text node that a comment follows: text after the comment does not
  // join it. Null when none.
  const HtmlTreeNode* before_comment_ = nullptr;
  std::string name_;  // scratch for qualified attribute names
};

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_HTML_TREE_SINK_H_
