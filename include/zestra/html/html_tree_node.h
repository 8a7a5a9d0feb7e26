// HtmlTreeNode is one node of a parsed HTML document: an element, with its
// attributes and its children in document order, or a text node. Its
// keyword word (see html_keyword_table.h) says what kind of element it is;
// text nodes have the id kIdText. Comments, doctypes and processing
// instructions are not kept.
//
// Nodes, their child lists and their text live in the chunks of the
// NodeArena of the parse that made them (see node_arena.h). A node counts
// its holders itself (HtmlTreeNode::Entry, a RefCount of one pointer); a
// node holds its children, and a child lives as long as any holder of it.
// When the last holder of a node lets go, the node, its text and its list
// go, and so do the children it held the last holders of: one node at a
// time, without recursion and without allocating, so trees of any depth
// can be freed on a small stack and when memory has run out.
//
// Source positions are byte offsets in the UTF-8 form of the document that
// was parsed (after charset conversion, without a byte-order mark).
//
// Thread-safety: a finished tree may be read from several threads at once,
// and holders of one node may be copied and dropped on several threads at
// once; building a tree is single-threaded.
#ifndef ZESTRA_HTML_HTML_TREE_NODE_H_
#define ZESTRA_HTML_HTML_TREE_NODE_H_

#include <atomic>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zestra/base/ref_count.h"
#include "zestra/export.h"
#include "zestra/html/html_keyword_table.h"
#include "zestra/html/node_arena.h"

namespace OrvelParser {
class HtmlTreeNode;
}  // namespace OrvelParser

namespace Orvel {

// A shared holder of a parsed tree's node. It behaves as every RefCount
// (copying raises the count, the last holder to let go frees the node), but
// the count lives in the node, so a holder is one pointer and copying one
// allocates nothing.
template <>
class RefCount<OrvelParser::HtmlTreeNode> {
 public:
  using Node = OrvelParser::HtmlTreeNode;

  RefCount() noexcept = default;
  inline RefCount(const RefCount& other) noexcept;
  RefCount(RefCount&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
  ~RefCount() { Reset(); }
  RefCount& operator=(const RefCount& other) noexcept {
    if (node_ != other.node_) {
      RefCount copy(other);
      Swap(copy);
    }
    return *this;
  }
  RefCount& operator=(RefCount&& other) noexcept {
    if (this != &other) {
      Reset();
      Swap(other);
    }
    return *this;
  }

  // Gives up this holder's share; the holder becomes empty.
  inline void Reset() noexcept;
  void Swap(RefCount& other) noexcept { std::swap(node_, other.node_); }
  Node* Get() const noexcept { return node_; }
  Node* operator->() const noexcept { return node_; }
  Node& operator*() const noexcept { return *node_; }
  explicit operator bool() const noexcept { return node_ != nullptr; }
  // Number of holders of the node; 0 for an empty holder.
  inline int32_t Count() const noexcept;
  // True when both hold the same node.
  bool SharesWith(const RefCount& other) const noexcept { return node_ == other.node_; }

 private:
  friend class OrvelParser::HtmlTreeNode;
  // One more holder of `node`. REQUIRES: node is not null.
  inline explicit RefCount(Node* node) noexcept;

  Node* node_ = nullptr;
};

}  // namespace Orvel

namespace OrvelParser {

// NodeList is an ordered list of nodes: a node's children, or a tree's
// top-level nodes. It reads as a vector of holders (begin() and end() are
// pointers; end() is the "no node" position). Its array lives in the arena
// of the parse; changing the list takes that arena, and only the parser
// changes lists.
class ZESTRA_EXPORT NodeList {
 public:
  using Entry = Orvel::RefCount<HtmlTreeNode>;
  using value_type = Entry;
  using iterator = Entry*;
  using const_iterator = const Entry*;

  NodeList() noexcept = default;
  NodeList(NodeList&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)),
        size_(std::exchange(other.size_, 0)),
        capacity_(std::exchange(other.capacity_, 0)) {}
  NodeList& operator=(NodeList&& other) noexcept {
    if (this != &other) {
      Clear();
      std::swap(data_, other.data_);
      std::swap(size_, other.size_);
      std::swap(capacity_, other.capacity_);
    }
    return *this;
  }
  NodeList(const NodeList&) = delete;
  NodeList& operator=(const NodeList&) = delete;
  ~NodeList() { Clear(); }

  bool empty() const noexcept { return size_ == 0; }
  std::size_t size() const noexcept { return size_; }
  iterator begin() noexcept { return data_; }
  iterator end() noexcept { return data_ + size_; }
  const_iterator begin() const noexcept { return data_; }
  const_iterator end() const noexcept { return data_ + size_; }
  const_iterator cbegin() const noexcept { return data_; }
  const_iterator cend() const noexcept { return data_ + size_; }
  std::reverse_iterator<const_iterator> rbegin() const noexcept { return std::reverse_iterator(end()); }
  std::reverse_iterator<const_iterator> rend() const noexcept { return std::reverse_iterator(begin()); }
  // REQUIRES: index < size().
  Entry& operator[](std::size_t index) noexcept { return data_[index]; }
  const Entry& operator[](std::size_t index) const noexcept { return data_[index]; }
  // REQUIRES: !empty().
  const Entry& front() const noexcept { return data_[0]; }
  const Entry& back() const noexcept { return data_[size_ - 1]; }

  // Puts `entry` before `at` (end(): at the end) and returns where it went;
  // positions at or after `at` move. Throws std::bad_alloc when the array
  // cannot grow (the list is then unchanged). REQUIRES: `at` is in
  // [begin(), end()].
  iterator Insert(NodeArena& arena, const_iterator at, Entry entry);
  void PushBack(NodeArena& arena, Entry entry) { Insert(arena, end(), std::move(entry)); }

  // Takes the entry at `at` out of the list and returns it; the entries
  // after it move up one place. REQUIRES: `at` is in [begin(), end()).
  Entry Erase(const_iterator at) noexcept;

  // Moves every entry of `other` to the end of this list, in order; `other`
  // is left empty. Throws std::bad_alloc when the array cannot grow (both
  // lists are then unchanged).
  void Append(NodeArena& arena, NodeList& other);

  // Gives up every holder and the array: the nodes no one else holds go,
  // one at a time. Afterwards the list is empty.
  void Clear() noexcept;

 private:
  friend class HtmlTreeNode;

  // Makes room for one more entry. Throws std::bad_alloc.
  void Reserve(NodeArena& arena, uint32_t capacity);

  Entry* data_ = nullptr;  // an arena block of capacity_ holders, or null
  uint32_t size_ = 0;
  uint32_t capacity_ = 0;
};

class ZESTRA_EXPORT HtmlTreeNode {
 public:
  // One entry of a list of nodes: a shared holder of the node.
  using Entry = Orvel::RefCount<HtmlTreeNode>;
  // An ordered list of nodes; its end() is the "no node" position.
  using List = NodeList;

  // Makes, in `arena`, a node with the given keyword word and element
  // number, no text, no attributes and no children, and returns its first
  // holder; an empty holder when memory cannot be had. `source_length` 0
  // means the node has no span in the source.
  static Entry Make(NodeArena& arena, uint32_t keyword, uint32_t source_position, uint32_t source_length,
                    ElementNumber element = kNoElement) noexcept;

  HtmlTreeNode(const HtmlTreeNode&) = delete;
  HtmlTreeNode& operator=(const HtmlTreeNode&) = delete;

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

  // Gives up this node's holders of its children, and the list's array:
  // the subtrees no one else holds are freed, one node at a time (no
  // recursion). Afterwards Children() is empty. For a reader done with a
  // part of a tree it owns, so that the tree shrinks as it is read.
  void ReleaseChildren() noexcept { children_.Clear(); }

  // Sets `text` to the node's text as 16-bit units: for a text node its
  // characters, character references decoded and white space as written;
  // for an element the text of all text nodes below it, in document order.
  void GetText(std::u16string& text) const;

  // The UTF-8 text of a text node (empty for an element).
  std::string_view Utf8Text() const noexcept { return IsText() ? Payload() : std::string_view(); }

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
    std::string_view rest = Payload();
    while (!rest.empty()) {
      const size_t name_end = rest.find('\0');
      const size_t value_end = rest.find('\0', name_end + 1);
      if (!visit(rest.substr(0, name_end), rest.substr(name_end + 1, value_end - name_end - 1))) return;
      rest.remove_prefix(value_end + 1);
    }
  }

  // Building, with the arena of the parse (any arena works, but the node's
  // text then lives in that arena's chunks). Each throws std::bad_alloc
  // when memory cannot be had, leaving the node as it was.
  // REQUIRES (SetText, AppendText): IsText(). SetText replaces the text;
  // AppendText adds `utf8` at its end.
  void SetText(NodeArena& arena, std::string_view utf8);
  void AppendText(NodeArena& arena, std::string_view utf8);
  // REQUIRES: !IsText(). Adds an attribute; one whose name or value holds a
  // NUL character is not kept.
  void AddParam(NodeArena& arena, std::string_view name, std::string_view value);
  // Makes room for `bytes` more bytes of text, or of attributes (each takes
  // its name's and its value's lengths plus 2), so that the next appends
  // find room in one block.
  void ReservePayload(NodeArena& arena, std::size_t bytes);
  // Sets the source length (see SourceLength).
  void SetSourceLength(uint32_t length) noexcept { source_length_ = length; }

 private:
  friend class Orvel::RefCount<HtmlTreeNode>;

  HtmlTreeNode(uint32_t keyword, uint32_t source_position, uint32_t source_length,
               ElementNumber element) noexcept
      : keyword_(keyword), source_position_(source_position), source_length_(source_length), element_(element) {}
  ~HtmlTreeNode() = default;

  std::string_view Payload() const noexcept { return std::string_view(payload_, payload_size_); }
  // Appends `bytes` to the payload, growing its block as needed.
  void AppendPayload(NodeArena& arena, std::string_view bytes);

  // Drops one holder; returns whether it was the last. The only holder
  // needs no atomic operation: no other thread can hold the node to copy it.
  bool DropHolder() noexcept {
    return holders_.load(std::memory_order_acquire) == 1 ||
           holders_.fetch_sub(1, std::memory_order_acq_rel) == 1;
  }

  // Frees `node`, whose last holder went, and the nodes below it that it
  // held the last holders of.
  static void Free(HtmlTreeNode* node) noexcept;

  uint32_t keyword_;
  uint32_t source_position_;
  uint32_t source_length_;
  ElementNumber element_;
  std::atomic<int32_t> holders_{0};
  List children_;
  // A text node's UTF-8 text; an element's attributes, each as its name, a
  // NUL, its value and a NUL (the parser replaces NULs in names and values).
  // An arena block of payload_capacity_ bytes, or null.
  char* payload_ = nullptr;
  uint32_t payload_size_ = 0;
  uint32_t payload_capacity_ = 0;
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
    const HtmlTreeNode* node = current[next++].Get();
    if (node == nullptr) continue;  // an entry a reader has released
    if (visit(*node) && !node->Children().empty()) stack.emplace_back(&node->Children(), 0);
  }
}

}  // namespace OrvelParser

namespace Orvel {

RefCount<OrvelParser::HtmlTreeNode>::RefCount(Node* node) noexcept : node_(node) {
  node_->holders_.fetch_add(1, std::memory_order_relaxed);
}

RefCount<OrvelParser::HtmlTreeNode>::RefCount(const RefCount& other) noexcept : node_(other.node_) {
  if (node_ != nullptr) node_->holders_.fetch_add(1, std::memory_order_relaxed);
}

void RefCount<OrvelParser::HtmlTreeNode>::Reset() noexcept {
  Node* node = std::exchange(node_, nullptr);
  if (node != nullptr && node->DropHolder()) Node::Free(node);
}

int32_t RefCount<OrvelParser::HtmlTreeNode>::Count() const noexcept {
  return node_ == nullptr ? 0 : node_->holders_.load(std::memory_order_relaxed);
}

}  // namespace Orvel

#endif  // ZESTRA_HTML_HTML_TREE_NODE_H_
