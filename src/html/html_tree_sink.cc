#include "html/html_tree_sink.h"

#include <algorithm>
#include <new>
#include <string>

namespace OrvelParser {
namespace {

// The position of `node` in `list`, searched from the end (the builder
// nearly always works at the end of a list); list.end() when absent.
template <class List>
auto FindFromEnd(List& list, const void* node) {
  for (auto it = list.end(); it != list.begin();) {
    --it;
    if (it->Get() == node) return it;
  }
  return list.end();
}

// The prefix of an attribute's name in its namespace ("xlink:"); the
// namespace declaration xmlns itself has none.
std::string_view PrefixOf(const SinkAttribute& attribute) {
  switch (attribute.ns) {
    case AttributeNamespace::kXlink:
      return "xlink:";
    case AttributeNamespace::kXml:
      return "xml:";
    case AttributeNamespace::kXmlns:
      return attribute.name == "xmlns" ? "" : "xmlns:";
    case AttributeNamespace::kNone:
      break;
  }
  return "";
}

}  // namespace

HtmlTreeNode::Entry HtmlTreeSink::MakeNode(uint32_t word, uint32_t position, uint32_t length,
                                           ElementNumber element) {
  HtmlTreeNode::Entry entry = HtmlTreeNode::Make(arena_, word, position, length, element);
  if (!entry) throw std::bad_alloc();
  return entry;
}

void HtmlTreeSink::AddAttribute(HtmlTreeNode& node, const SinkAttribute& attribute) {
  const std::string_view prefix = PrefixOf(attribute);
  if (prefix.empty()) {
    node.AddParam(arena_, attribute.name, attribute.value);
    return;
  }
  name_.assign(prefix).append(attribute.name);
  node.AddParam(arena_, name_, attribute.value);
}

SinkNode HtmlTreeSink::CreateElement(const SinkElement& element) {
  HtmlKeywordTable::Keyword keyword;
  if (element.ns == Namespace::kHtml) {
    keyword = element.tag != TagId::kTagUnknown ? keywords_.ForTag(static_cast<unsigned>(element.tag))
                                                : keywords_.Find(element.name);
  } else if ((element.ns == Namespace::kSvg && element.tag == TagId::k_svg) ||
             (element.ns == Namespace::kMathml && element.tag == TagId::k_math)) {
    // Only the roots of SVG and MathML islands carry their own word: an SVG
    // <title> or <a> is not the document's.
    keyword = keywords_.ForTag(static_cast<unsigned>(element.tag));
  } else if (element.tag != TagId::kTagUnknown) {
    // Other foreign elements are kIdOther; those the element table names
    // with kIdOther (<foreignObject>, where SVG holds HTML again) keep their
    // element number, so that a layout can tell them.
    const HtmlKeywordTable::Keyword named = keywords_.ForTag(static_cast<unsigned>(element.tag));
    if ((named.word & HtmlKeywordTable::kIdMask) == kIdOther) keyword = named;
  }
  HtmlTreeNode::Entry entry = MakeNode(keyword.word, element.begin, element.end - element.begin, keyword.element);
  if (!element.attributes.empty()) {
    std::size_t bytes = 0;
    for (const SinkAttribute& attribute : element.attributes) {
      bytes += PrefixOf(attribute).size() + attribute.name.size() + attribute.value.size() + 2;
    }
    entry->ReservePayload(arena_, bytes);
    for (const SinkAttribute& attribute : element.attributes) AddAttribute(*entry, attribute);
  }
  HtmlTreeNode* node = entry.Get();
  detached_.push_back(std::move(entry));
  ++node_count_;
  return node;
}

void HtmlTreeSink::Insert(SinkNode parent, SinkNode child, SinkNode before) {
  auto held = FindFromEnd(detached_, child);
  if (held == detached_.end()) return;
  HtmlTreeNode::Entry entry = std::move(*held);
  detached_.erase(held);
  HtmlTreeNode::List& list = ListOf(parent);
  auto at = before == nullptr ? list.end() : FindFromEnd(list, before);
  list.Insert(arena_, at, std::move(entry));
}

void HtmlTreeSink::Remove(SinkNode parent, SinkNode child) {
  HtmlTreeNode::List& list = ListOf(parent);
  auto at = FindFromEnd(list, child);
  if (at == list.end()) return;
  detached_.push_back(list.Erase(at));
}

void HtmlTreeSink::MoveChildren(SinkNode from, SinkNode to) {
  ListOf(to).Append(arena_, ListOf(from));
}

void HtmlTreeSink::InsertText(SinkNode parent, SinkNode before, std::string_view text, uint32_t begin,
                              uint32_t end, bool /*in_input*/) {
  if (parent == nullptr) return;  // the top-level list holds elements only
  HtmlTreeNode::List& list = ListOf(parent);
  auto at = before == nullptr ? list.end() : FindFromEnd(list, before);
  if (at != list.begin()) {
    HtmlTreeNode& previous = **(at - 1);
    if (previous.IsText() && &previous != before_comment_) {
      previous.AppendText(arena_, text);
      if (end > previous.SourcePosition()) previous.SetSourceLength(end - previous.SourcePosition());
      return;
    }
  }
  HtmlTreeNode::Entry entry = MakeNode(kIdText, begin, end - begin, kNoElement);
  entry->SetText(arena_, text);
  list.Insert(arena_, at, std::move(entry));
  ++node_count_;
}

void HtmlTreeSink::AppendComment(SinkNode parent, std::string_view) {
  if (parent == nullptr) return;
  const HtmlTreeNode::List& list = ListOf(parent);
  if (!list.empty() && list.back()->IsText()) before_comment_ = list.back().Get();
}

void HtmlTreeSink::AddMissingAttributes(SinkNode element, std::span<const SinkAttribute> attributes) {
  auto* node = static_cast<HtmlTreeNode*>(element);
  std::string_view value;
  for (const SinkAttribute& attribute : attributes) {
    if (!node->FindParam(attribute.name, value)) AddAttribute(*node, attribute);
  }
}

void HtmlTreeSink::SetEndTag(SinkNode element, uint32_t end) {
  auto* node = static_cast<HtmlTreeNode*>(element);
  // An element the parser made up has no span, whatever closes it.
  if (node->SourceLength() == 0 || end <= node->SourcePosition()) return;
  node->SetSourceLength(end - node->SourcePosition());
}

}  // namespace OrvelParser
