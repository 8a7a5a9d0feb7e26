#include "zestra/html/html_tree_node.h"

#include <iterator>
#include <new>
#include <utility>

#include "zestra/charset/charset_conversion.h"

namespace OrvelParser {

HtmlTreeNode::~HtmlTreeNode() { ReleaseChildren(); }

void HtmlTreeNode::ReleaseChildren() noexcept {
  if (children_.empty()) {
    List().swap(children_);
    return;
  }
  // Every child of which this node holds the last holder hands its own
  // children to `pending` before it goes, so its destructor finds none.
  // Freeing must work when memory has run out, so the grandchildren move
  // into whichever of the two arrays has room; only when neither has is a
  // larger array asked for, and if that fails too the child is left to its
  // own destructor (one more level of call depth, at a point where memory,
  // not stack, is what is short).
  List pending = std::move(children_);  // leaves children_ empty, without an array
  while (!pending.empty()) {
    Entry entry = std::move(pending.back());
    pending.pop_back();
    if (entry.Count() != 1 || entry->children_.empty()) continue;
    List& grandchildren = entry->children_;
    if (grandchildren.capacity() - grandchildren.size() >= pending.size()) {
      grandchildren.insert(grandchildren.end(), std::make_move_iterator(pending.begin()),
                           std::make_move_iterator(pending.end()));
      pending.clear();
      pending.swap(grandchildren);
      continue;
    }
    try {
      pending.insert(pending.end(), std::make_move_iterator(grandchildren.begin()),
                     std::make_move_iterator(grandchildren.end()));
      grandchildren.clear();
    } catch (const std::bad_alloc&) {
      // `entry` goes at the end of this iteration, with its children.
    }
  }
}

void HtmlTreeNode::GetText(std::u16string& text) const {
  text.clear();
  if (IsText()) {
    OrvelCharset::AppendUtf16(payload_.data(), payload_.size(), text);
    return;
  }
  WalkNodes(children_, [&text](const HtmlTreeNode& node) {
    if (node.IsText()) OrvelCharset::AppendUtf16(node.payload_.data(), node.payload_.size(), text);
    return true;
  });
}

void HtmlTreeNode::GetParam(const std::string& name, std::string& value) const {
  std::string_view found;
  if (FindParam(name, found)) {
    value.assign(found);
  } else {
    value.clear();
  }
}

bool HtmlTreeNode::FindParam(std::string_view name, std::string_view& value) const {
  bool found = false;
  ForEachParam([&](std::string_view attribute, std::string_view attribute_value) {
    if (attribute != name) return true;
    value = attribute_value;
    found = true;
    return false;
  });
  return found;
}

void HtmlTreeNode::AddParam(std::string_view name, std::string_view value) {
  if (name.find('\0') != std::string_view::npos || value.find('\0') != std::string_view::npos) return;
  payload_.append(name);
  payload_.push_back('\0');
  payload_.append(value);
  payload_.push_back('\0');
}

}  // namespace OrvelParser
