// How the builder reads the parser's node lists. A range of sibling nodes
// is a pair of NodeIterators into a HtmlTreeNode::List; the end of a list
// serves as the "no node" marker.
#ifndef ZESTRA_BUILDER_HTML_NODES_H_
#define ZESTRA_BUILDER_HTML_NODES_H_

#include <cstdint>
#include <string>

#include "zestra/html/html_tree_node.h"

namespace ZestraNS {

using NodeEntry = OrvelParser::HtmlTreeNode::Entry;
using NodeIterator = OrvelParser::HtmlTreeNode::List::const_iterator;

inline uint32_t KeywordWord(const NodeEntry& entry) { return entry->Keyword(); }
inline uint32_t SourcePosition(const NodeEntry& entry) { return entry->SourcePosition(); }
inline uint32_t SourceLength(const NodeEntry& entry) { return entry->SourceLength(); }
inline bool HasChildren(const NodeEntry& entry) { return !entry->Children().empty(); }
inline NodeIterator ChildrenBegin(const NodeEntry& entry) { return entry->Children().begin(); }
inline NodeIterator ChildrenEnd(const NodeEntry& entry) { return entry->Children().end(); }
inline void GetText(const NodeEntry& entry, std::u16string& text) { entry->GetText(text); }
inline void GetParam(const NodeEntry& entry, const std::string& name, std::string& value) {
  entry->GetParam(name, value);
}

// What a layout walk does with the parts of the tree it is done with.
enum class WalkedNodes {
  kKeep,     // nothing: the tree is only read
  kRelease,  // an element's children are released once walked (or skipped),
             // so that a tree the caller drops next shrinks while the layout
             // tree grows, and the two never stand whole side by side
};

// Called by a walk when it is done with the children of `owner` (null: a
// list the walk does not own, such as the top level).
inline void DoneWithChildren(OrvelParser::HtmlTreeNode* owner, WalkedNodes walked) {
  if (owner != nullptr && walked == WalkedNodes::kRelease) owner->ReleaseChildren();
}

// Called by a walk when it is done with the children [first, last) of
// `owner` (null: a list the walk does not own) and everything below them,
// before it is done with all of them: their holders are emptied, so that a
// list of a million items shrinks while it is walked. The list keeps its
// length, so iterators into it stay valid; the emptied entries must not be
// read again. Returns `last`, where the next call starts.
inline NodeIterator DoneWithChildren(OrvelParser::HtmlTreeNode* owner, NodeIterator first, NodeIterator last,
                                     WalkedNodes walked) {
  if (owner == nullptr || walked != WalkedNodes::kRelease) return last;
  OrvelParser::HtmlTreeNode::List& children = owner->Children();
  const auto begin = children.begin() + (first - children.cbegin());
  const auto end = children.begin() + (last - children.cbegin());
  for (auto it = begin; it != end; ++it) it->Reset();
  return last;
}

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_HTML_NODES_H_
