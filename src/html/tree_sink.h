// TreeSink is where the tree builder puts the document it builds: the
// builder decides what goes where (the WHATWG tree-construction rules), the
// sink makes and links the nodes. The production sink (html_tree_sink.h)
// builds HtmlTreeNodes; a test sink builds a full DOM (comments, doctype,
// namespaces, template contents) for the conformance tests.
//
// Nodes are opaque handles (SinkNode) that the sink hands out and the
// builder only passes back. The document itself is the null handle. A node
// the sink made stays valid until the sink is destroyed, whether or not it
// is in the tree at the moment (the adoption agency takes nodes out and puts
// them back).
//
// Every view passed to the sink (names, values, text) is valid only for the
// call, unless the call says it lies in the parser's input; the sink copies
// what it keeps.
//
// Thread-safety: a sink is used by one builder on one thread.
#ifndef ZESTRA_HTML_TREE_SINK_H_
#define ZESTRA_HTML_TREE_SINK_H_

#include <cstdint>
#include <span>
#include <string_view>

#include "html/tag_id.h"

namespace OrvelParser {

// An element's namespace.
enum class Namespace : uint8_t { kHtml, kSvg, kMathml };

// The namespace of an attribute of a foreign element (xlink:href, xml:lang,
// xmlns:xlink); kNone for every other attribute.
enum class AttributeNamespace : uint8_t { kNone, kXlink, kXml, kXmlns };

using SinkNode = void*;

struct SinkAttribute {
  // The local name (lower case, or SVG's camel case such as viewBox); for
  // an attribute in a namespace the part after the prefix ("href").
  std::string_view name;
  std::string_view value;
  AttributeNamespace ns = AttributeNamespace::kNone;
};

// What the builder knows of an element it asks the sink to make.
struct SinkElement {
  std::string_view name;  // local name: lower case, SVG names in their case
  TagId tag;              // the id of the lower-case name; kTagUnknown for others
  Namespace ns;
  std::span<const SinkAttribute> attributes;
  // Byte offsets of the start tag in the input; begin == end for an element
  // the builder made up (an implied html, head, body, tbody, ...).
  uint32_t begin;
  uint32_t end;
};

class TreeSink {
 public:
  virtual ~TreeSink() = default;

  // Makes an element, not yet in the tree.
  virtual SinkNode CreateElement(const SinkElement& element) = 0;

  // Puts `child` (made by CreateElement and not in the tree, or taken out
  // by Remove) into `parent` (null: the document) before `before`, a child
  // of `parent`; at the end when `before` is null.
  virtual void Insert(SinkNode parent, SinkNode child, SinkNode before) = 0;

  // Takes `child` out of `parent`, its parent; it stays valid.
  virtual void Remove(SinkNode parent, SinkNode child) = 0;

  // Moves every child of `from` to the end of `to`, in order.
  virtual void MoveChildren(SinkNode from, SinkNode to) = 0;

  // Adds `text` to `parent` before `before` (at the end when null): to the
  // text node just before that place if there is one, else as a new text
  // node. [begin, end) is the text's span in the input; `in_input` says
  // that `text` views the input (then it outlives the sink's tree if the
  // sink keeps the input alive).
  virtual void InsertText(SinkNode parent, SinkNode before, std::string_view text, uint32_t begin, uint32_t end,
                          bool in_input) = 0;

  // Adds to `element` every attribute of `attributes` whose name it does
  // not have yet (a second <html> or <body> start tag).
  virtual void AddMissingAttributes(SinkNode element, std::span<const SinkAttribute> attributes) = 0;

  // `element`'s end tag ended at byte `end` of the input.
  virtual void SetEndTag(SinkNode element, uint32_t end) = 0;

  // Where the content of a <template> goes: its template contents for a
  // full DOM, or the element itself.
  virtual SinkNode TemplateContents(SinkNode template_element) = 0;

  // A comment in `parent` (null: the document), appended. A sink that does
  // not keep comments ignores it.
  virtual void AppendComment(SinkNode parent, std::string_view text) = 0;

  // The document's doctype. A sink that does not keep it ignores it.
  virtual void AppendDoctype(std::string_view name, std::string_view public_id, std::string_view system_id) = 0;
};

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_TREE_SINK_H_
