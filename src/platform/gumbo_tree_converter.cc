#include "platform/gumbo_tree_converter.h"

#include <gumbo.h>

#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace OrvelParser {
namespace {

// Trees up to this depth are freed by Gumbo as they are; its recursion then
// needs a few kilobytes of stack at most.
constexpr size_t kShallowDepth = 256;

const GumboVector* ChildrenOf(const GumboNode& node) {
  switch (node.type) {
    case GUMBO_NODE_DOCUMENT:
      return &node.v.document.children;
    case GUMBO_NODE_ELEMENT:
    case GUMBO_NODE_TEMPLATE:
      return &node.v.element.children;
    default:
      return nullptr;
  }
}

// Frees a Gumbo parse. Gumbo's own release recurses into children; for a
// deep tree, every node is first made a child of the document node, with no
// children of its own, so that its recursion is two levels deep.
void DestroyGumboOutput(const GumboOptions& options, GumboOutput* output) {
  std::vector<void*> nodes;
  size_t depth = 0;
  std::vector<std::pair<const GumboVector*, unsigned>> stack;
  stack.emplace_back(&output->document->v.document.children, 0);
  while (!stack.empty()) {
    depth = std::max(depth, stack.size());
    const GumboVector* children = stack.back().first;
    unsigned& next = stack.back().second;
    if (next == children->length) {
      stack.pop_back();
      continue;
    }
    auto* node = static_cast<GumboNode*>(children->data[next++]);
    nodes.push_back(node);
    const GumboVector* grandchildren = ChildrenOf(*node);
    if (grandchildren != nullptr && grandchildren->length > 0) stack.emplace_back(grandchildren, 0);
  }
  if (depth > kShallowDepth) {
    void* memory = options.allocator(options.userdata, sizeof(void*) * nodes.size());
    if (memory != nullptr) {
      std::memcpy(memory, nodes.data(), sizeof(void*) * nodes.size());
      for (void* pointer : nodes) {
        auto* node = static_cast<GumboNode*>(pointer);
        if (node->type == GUMBO_NODE_ELEMENT || node->type == GUMBO_NODE_TEMPLATE) {
          node->v.element.children.length = 0;  // its array is still freed with it
        }
      }
      GumboVector& top = output->document->v.document.children;
      options.deallocator(options.userdata, top.data);
      top.data = static_cast<void**>(memory);
      top.length = static_cast<unsigned>(nodes.size());
      top.capacity = top.length;
    }
  }
  gumbo_destroy_output(&options, output);
}

// Frees Gumbo's nodes one at a time during the conversion, so that the
// memory of Gumbo's tree goes back while ours is built and the two trees
// never stand whole side by side. A node is freed by Gumbo's own
// gumbo_destroy_output, handed a shell output whose document is that node
// (its children already freed and cut off); the deallocator installed by
// Install skips the shell, which lives here and is used again.
class NodeReleaser {
 public:
  // Routes the frees of `options` through this object. `options` must have
  // parsed with malloc-compatible memory, as the default options do.
  void Install(GumboOptions& options) {
    free_ = options.deallocator;
    free_userdata_ = options.userdata;
    options.deallocator = &Deallocate;
    options.userdata = this;
    options_ = &options;
  }

  // Frees every node of `children` with what it owns, and empties the
  // vector (its array goes with its owner).
  // REQUIRES: the children of those nodes were freed the same way.
  void ReleaseAll(GumboVector& children) {
    for (unsigned i = 0; i < children.length; ++i) {
      shell_ = GumboOutput{};
      shell_.document = static_cast<GumboNode*>(children.data[i]);
      gumbo_destroy_output(options_, &shell_);
    }
    children.length = 0;
  }

 private:
  static void Deallocate(void* userdata, void* pointer) {
    auto* self = static_cast<NodeReleaser*>(userdata);
    if (pointer != &self->shell_) self->free_(self->free_userdata_, pointer);
  }

  GumboOutput shell_{};
  const GumboOptions* options_ = nullptr;
  GumboDeallocatorFunction free_ = nullptr;
  void* free_userdata_ = nullptr;
};

}  // namespace

void GumboTreeConverter::Parse(std::string_view utf8, const HtmlKeywordTable& keywords, HtmlDocTree& tree,
                               Orvel::CHARSET document_charset) {
  HtmlTreeNode::List top_level;
  if (utf8.empty()) {
    tree.Assign(std::move(top_level), 0, document_charset);
    return;
  }
  GumboOptions options = kGumboDefaultOptions;
  options.max_errors = 0;  // parse errors are of no use here, and a broken page makes many
  GumboOutput* parsed = gumbo_parse_with_options(&options, utf8.data(), utf8.size());
  if (parsed == nullptr) throw std::bad_alloc();
  NodeReleaser releaser;
  releaser.Install(options);
  const auto release = [&options](GumboOutput* output) { DestroyGumboOutput(options, output); };
  const std::unique_ptr<GumboOutput, decltype(release)> output(parsed, release);

  // Element names of unknown tags, lower-cased for the keyword table.
  std::string name;
  using Keyword = HtmlKeywordTable::Keyword;
  const auto keyword_of = [&](const GumboElement& element) -> Keyword {
    if (element.tag_namespace != GUMBO_NAMESPACE_HTML) {
      // Only the roots of SVG and MathML islands carry their own word: an
      // SVG <title> or <a> is not the document's.
      const bool root = element.tag == GUMBO_TAG_SVG || element.tag == GUMBO_TAG_MATH;
      return root ? keywords.ForTag(element.tag) : Keyword();
    }
    if (element.tag != GUMBO_TAG_UNKNOWN) return keywords.ForTag(element.tag);
    GumboStringPiece tag = element.original_tag;
    gumbo_tag_from_original_text(&tag);
    name.assign(tag.data == nullptr ? "" : tag.data, tag.length);
    for (char& c : name) c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c + ('a' - 'A')) : c;
    return keywords.Find(name);
  };
  const auto make_node = [](Keyword keyword, size_t position, size_t length) {
    HtmlTreeNode::Entry entry(new HtmlTreeNode(keyword.word, static_cast<uint32_t>(position),
                                               static_cast<uint32_t>(length), keyword.element));
    if (!entry) throw std::bad_alloc();
    return entry;
  };

  uint32_t count = 0;
  struct Frame {
    GumboVector* children;
    unsigned next;
    HtmlTreeNode::List* list;
  };
  std::vector<Frame> stack;
  stack.push_back({&output->document->v.document.children, 0, &top_level});
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next == frame.children->length) {
      // All converted, the children's own children freed before: the
      // nodes of this list can go.
      releaser.ReleaseAll(*frame.children);
      stack.pop_back();
      continue;
    }
    GumboNode& node = *static_cast<GumboNode*>(frame.children->data[frame.next++]);
    HtmlTreeNode::List& list = *frame.list;
    const bool top = stack.size() == 1;
    switch (node.type) {
      case GUMBO_NODE_ELEMENT:
      case GUMBO_NODE_TEMPLATE: {
        GumboElement& element = node.v.element;
        const size_t start = element.start_pos.offset;
        // Elements the parser made up have no start tag in the source.
        size_t length = element.original_tag.length;
        if (length > 0 && element.original_end_tag.length > 0) {
          length = element.end_pos.offset + element.original_end_tag.length - start;
        }
        HtmlTreeNode::Entry entry = make_node(keyword_of(element), start, length);
        for (unsigned i = 0; i < element.attributes.length; ++i) {
          const auto* attribute = static_cast<const GumboAttribute*>(element.attributes.data[i]);
          entry->AddParam(attribute->name, attribute->value);
        }
        list.push_back(entry);
        ++count;
        if (element.children.length > 0) {
          entry->Children().reserve(element.children.length);  // comments aside, the exact size
          stack.push_back({&element.children, 0, &entry->Children()});
        }
        break;
      }
      case GUMBO_NODE_TEXT:
      case GUMBO_NODE_WHITESPACE:
      case GUMBO_NODE_CDATA: {
        if (top) break;  // the top-level list holds elements only
        const GumboText& text = node.v.text;
        HtmlTreeNode::Entry entry = make_node(Keyword{kIdText, kNoElement}, text.start_pos.offset, text.original_text.length);
        entry->SetText(text.text);
        list.push_back(std::move(entry));
        ++count;
        break;
      }
      default:  // comments
        break;
    }
  }
  tree.Assign(std::move(top_level), count, document_charset);
}

}  // namespace OrvelParser
