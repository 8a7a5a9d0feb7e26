// HtmlDocTree is the parsed form of one HTML document: the list of its
// top-level element nodes (in practice the one <html> element) and the
// number of nodes below them. An HtmlDocParser fills it.
//
// Thread-safety: a filled tree may be read from several threads at once.
#ifndef ZESTRA_HTML_HTML_DOC_TREE_H_
#define ZESTRA_HTML_HTML_DOC_TREE_H_

#include <cstdint>
#include <string>

#include "zestra/base/charset.h"
#include "zestra/export.h"
#include "zestra/html/html_keyword_table.h"
#include "zestra/html/html_tree_node.h"

namespace OrvelParser {

class ZESTRA_EXPORT HtmlDocTree {
 public:
  // An empty tree for a document whose bytes are in `charset`;
  // UnknownCharset asks the parser to find the charset.
  explicit HtmlDocTree(Orvel::CHARSET charset) noexcept : charset_(charset) {}
  HtmlDocTree(const HtmlDocTree&) = delete;
  HtmlDocTree& operator=(const HtmlDocTree&) = delete;
  ~HtmlDocTree();

  // The charset given at construction.
  Orvel::CHARSET Charset() const noexcept { return charset_; }
  // The charset the parser read the bytes in: the given one, or the one a
  // byte-order mark announced, or the one it found when none was given or
  // the given one cannot be converted. UnknownCharset before parsing.
  Orvel::CHARSET DocumentCharset() const noexcept { return document_charset_; }

  // Number of nodes in the tree (elements and text nodes); 0 when nothing
  // was parsed.
  uint32_t NodeCount() const noexcept { return node_count_; }

  // The document's outermost nodes, elements only, in document order.
  const HtmlTreeNode::List& TopLevel() const noexcept { return top_level_; }

  // Sets `text` to the text of the nodes whose keyword word has `attribute`
  // (kTitleAtt gives the page title): each node's text with white space
  // trimmed at both ends and runs of it inside made one space, as browsers
  // show a title; several such nodes are joined by one space, and nodes
  // below a node with the attribute are not visited again. Empty when no
  // node has it.
  void GetText(std::u16string& text, HtmlKeywordTable::NodeAtt attribute) const;

  // Building: replaces the content with `top_level`, holding `node_count`
  // nodes, read in `document_charset`.
  void Assign(HtmlTreeNode::List top_level, uint32_t node_count, Orvel::CHARSET document_charset);

 private:
  Orvel::CHARSET charset_;
  Orvel::CHARSET document_charset_ = Orvel::UnknownCharset;
  uint32_t node_count_ = 0;
  HtmlTreeNode::List top_level_;
};

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_HTML_DOC_TREE_H_
