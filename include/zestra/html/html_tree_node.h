// HtmlTreeNode is one node of a parsed HTML document: an element, with its
// attributes and its children in document order, or a text node. Its
// keyword word (see html_keyword_table.h) says what kind of element it is;
// text nodes have the id kIdText. Comments, doctypes and processing
// instructions are not kept.
//
// Nodes are shared through Orvel::RefCount holders: a node owns the holders
// of its children, and a child lives as long as any holder of it. Releasing
// a node never recurses once per level of its subtree, so trees of any depth
// can be freed on a small stack.
//
// Source positions are byte offsets in the UTF-8 form of the document that
// was parsed (after charset conversion, without a byte-order mark).
//
// Thread-safety: a finished tree may be read from several threads at once;
// building it is single-threaded.
#ifndef ZESTRA_HTML_HTML_TREE_NODE_H_
#define ZESTRA_HTML_HTML_TREE_NODE_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zestra/base/memory_pool.h"
#include "zestra/base/ref_count.h"
#include "zestra/export.h"
#include "zestra/html/html_keyword_table.h"

namespace OrvelParser {

class ZESTRA_EXPORT HtmlTreeNode : public OrvelMem::PoolObject {
 public:
  // One entry of a list of nodes: a shared holder of the node.
  using Entry = Orvel::RefCount<HtmlTreeNode>;
  // An ordered list of nodes; its end() is the "no node" position.
  using List = std::vector<Entry>;

  // A node with the given keyword word and element number, no text, no
  // attributes and no children. `length` 0 means the node has no span in
  // the source.
  HtmlTreeNode(uint32_t keyword, uint32_t source_position, uint32_t source_length,
               ElementNumber element = kNoElement) noexcept
      : keyword_(keyword), source_position_(source_position), source_length_(source_length), element_(element) {}
  HtmlTreeNode(const HtmlTreeNode&) = delete;
  HtmlTreeNode& operator=(const HtmlTreeNode&) = delete;
  // Releases the children without recursion: the subtrees this node held the
  // last holders of are freed one node at a time.
  ~HtmlTreeNode();

  // Keyword id in bits 0 to 7, attribute bits (NodeAtt) above.
  uint32_t Keyword() const noexcept { return keyword_; }
  uint32_t Id() const noexcept { return keyword_ & HtmlKeywordTable::kIdMask; }
  bool HasAttribute(HtmlKeywordTable::NodeAtt attribute) const noexcept {
    return (keyword_ & attribute) != 0;
  }
  bool IsText() const noexcept { return Id() == kIdText; }

  // Which element of the element table this is (see html_keyword_table.h),
  // finer than the keyword id: a nav and a footer share an id but not an
  // element number. kNoElement for text nodes and unnamed elements.
  ElementNumber Element() const noexcept { return element_; }
  // The element's lower-case name; empty when Element() is kNoElement.
  std::string_view Name() const { return HtmlKeywordTable::ElementName(element_); }

  // Where the node begins in the source and how many bytes it spans: a text
  // node its text as written (character references undecoded); an element
  // from its start tag to the end of its end tag, or its start tag alone
  // when it has no end tag in the source; 0 for elements the parser made up
  // (an implied body or tbody).
  uint32_t SourcePosition() const noexcept { return source_position_; }
  uint32_t SourceLength() const noexcept { return source_length_; }

  const List& Children() const noexcept { return children_; }
  List& Children() noexcept { return children_; }

  // Gives up this node's holders of its children, and the list's memory:
  // the subtrees no one else holds are freed, one node at a time (no
  // recursion). Afterwards Children() is empty. For a reader done with a
  // part of a tree it owns, so that the tree shrinks as it is read.
  void ReleaseChildren() noexcept;

  // Sets `text` to the node's text as 16-bit units: for a text node its
  // characters, character references decoded and white space as written;
  // for an element the text of all text nodes below it, in document order.
  void GetText(std::u16string& text) const;

  // The UTF-8 text of a text node (empty for an element).
  std::string_view Utf8Text() const noexcept {
    return IsText() ? std::string_view(payload_) : std::string_view();
  }

  // Sets `value` to the value of the attribute `name` (lower case, as the
  // parser reports names), character references decoded; empties it when
  // the element has no such attribute. Text nodes have no attributes.
  void GetParam(const std::string& name, std::string& value) const;

  // Whether the element has the attribute `name` (lower case); when it has,
  // `value` views its value, valid until the node changes or goes. Unlike
  // GetParam this tells an absent attribute from an empty one (`hidden`).
  bool FindParam(std::string_view name, std::string_view& value) const;

  // Calls `visit(name, value)` for each attribute, in order, with views
  // valid until the node changes or goes; it returns whether to go on. For
  // readers of several names, which then pass over the attributes once
  // rather than once per name.
  template <class Visit>
  void ForEachParam(Visit&& visit) const {
    if (IsText()) return;
    std::string_view rest = payload_;
    while (!rest.empty()) {
      const size_t name_end = rest.find('\0');
      const size_t value_end = rest.find('\0', name_end + 1);
      if (!visit(rest.substr(0, name_end), rest.substr(name_end + 1, value_end - name_end - 1))) return;
      rest.remove_prefix(value_end + 1);
    }
  }

  // Building. REQUIRES (SetText): IsText(). REQUIRES (AddParam): !IsText();
  // an attribute whose name or value holds a NUL character is not kept.
  void SetText(std::string_view utf8) { payload_.assign(utf8); }
  // REQUIRES: IsText(). Adds `utf8` at the end of the text.
  void AppendText(std::string_view utf8) { payload_.append(utf8); }
  // Sets the source length (see SourceLength).
  void SetSourceLength(uint32_t length) noexcept { source_length_ = length; }
  void AddParam(std::string_view name, std::string_view value);

 private:
  uint32_t keyword_;
  uint32_t source_position_;
  uint32_t source_length_;
  ElementNumber element_;  // fills what would be padding before children_
  List children_;
  // A text node's UTF-8 text; an element's attributes, each as its name, a
  // NUL, its value and a NUL (the parser replaces NULs in names and values).
  std::string payload_;
};

// Visits the nodes of `list` and their descendants depth first in document
// order, without recursion: `visit(const HtmlTreeNode&)` is called for each
// node and returns whether to go on into the node's children.
template <class Visit>
void WalkNodes(const HtmlTreeNode::List& list, Visit&& visit) {
  std::vector<std::pair<const HtmlTreeNode::List*, size_t>> stack;
  if (!list.empty()) stack.emplace_back(&list, 0);
  while (!stack.empty()) {
    const HtmlTreeNode::List& current = *stack.back().first;
    size_t& next = stack.back().second;
    if (next == current.size()) {
      stack.pop_back();
      continue;
    }
    const HtmlTreeNode& node = *current[next++];
    if (visit(node) && !node.Children().empty()) stack.emplace_back(&node.Children(), 0);
  }
}

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_HTML_TREE_NODE_H_
