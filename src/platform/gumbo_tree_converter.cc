#include "platform/gumbo_tree_converter.h"

#include <gumbo.h>
#include <sys/resource.h>

#include <algorithm>
#include <new>
#include <string>
#include <vector>

#include "platform/parse_arena.h"

namespace OrvelParser {
namespace {

// Address space reserved for a parse's arena per byte of text, and in
// addition to it. Markup with an element every 10 bytes leads Gumbo to about
// 15 bytes of tree per byte of text; past the reservation the arena serves
// requests from the C library, so the figure bounds efficiency, not size.
constexpr size_t kArenaBytesPerTextByte = 64;
constexpr size_t kArenaFixedBytes = size_t{16} << 20;
constexpr size_t kArenaMaxBytes = size_t{64} << 30;

// The reservation for a text of `text_bytes`. A process whose address space
// is limited (ulimit -v) reserves at most a quarter of the limit, so that
// the reservation does not crowd out the rest of the extraction.
size_t ArenaReservation(size_t text_bytes) {
  const size_t wanted = kArenaFixedBytes + std::min(text_bytes, kArenaMaxBytes) * kArenaBytesPerTextByte;
  size_t bytes = std::min(kArenaMaxBytes, wanted);
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY) {
    bytes = std::min(bytes, static_cast<size_t>(limit.rlim_cur / 4));
  }
  return bytes;
}

// Frees Gumbo's nodes one at a time during the conversion, as soon as each
// is converted, so that the memory of Gumbo's tree goes back while ours is
// built and the two trees never stand whole side by side. A node is freed
// by Gumbo's own gumbo_destroy_output, handed a shell output whose document
// is that node (its children already freed and cut off); the deallocator
// installed by Install skips the shell, which lives here and is used again.
// A releaser made disabled frees nothing: the arena takes the whole tree.
class NodeReleaser {
 public:
  explicit NodeReleaser(bool enabled) : enabled_(enabled) {}

  // Routes the frees of `options` through this object.
  void Install(GumboOptions& options) {
    free_ = options.deallocator;
    free_userdata_ = options.userdata;
    options.deallocator = &Deallocate;
    options.userdata = this;
    options_ = &options;
  }

  // Frees `node` with what it owns.
  // REQUIRES: the node has no children left (they were released before,
  // and its child list cut to length 0).
  void Release(GumboNode* node) {
    if (!enabled_) return;
    shell_ = GumboOutput{};
    shell_.document = node;
    gumbo_destroy_output(options_, &shell_);
  }

 private:
  static void Deallocate(void* userdata, void* pointer) {
    auto* self = static_cast<NodeReleaser*>(userdata);
    if (pointer != &self->shell_) self->free_(self->free_userdata_, pointer);
  }

  const bool enabled_;
  GumboOutput shell_{};
  const GumboOptions* options_ = nullptr;
  GumboDeallocatorFunction free_ = nullptr;
  void* free_userdata_ = nullptr;
};

}  // namespace

void GumboTreeConverter::Parse(std::string_view utf8, const HtmlKeywordTable& keywords, HtmlDocTree& tree,
                               Orvel::CHARSET document_charset, size_t release_from_bytes) {
  HtmlTreeNode::List top_level;
  if (utf8.empty()) {
    tree.Assign(std::move(top_level), 0, document_charset);
    return;
  }
  // Everything Gumbo allocates comes from the arena, which frees what is
  // left when it goes: on success the output shell, on an exception the
  // rest of Gumbo's tree, without walking it.
  ParseArena arena(ArenaReservation(utf8.size()));
  GumboOptions options = kGumboDefaultOptions;
  options.allocator = &ParseArena::AllocateHook;
  options.deallocator = &ParseArena::FreeHook;
  options.userdata = &arena;
  options.max_errors = 0;  // parse errors are of no use here, and a broken page makes many
  GumboOutput* output = gumbo_parse_with_options(&options, utf8.data(), utf8.size());
  if (output == nullptr) throw std::bad_alloc();
  NodeReleaser releaser(utf8.size() >= release_from_bytes);
  releaser.Install(options);

  // Element names of unknown tags, lower-cased for the keyword table.
  std::string name;
  using Keyword = HtmlKeywordTable::Keyword;
  const auto keyword_of = [&](const GumboElement& element) -> Keyword {
    if (element.tag_namespace != GUMBO_NAMESPACE_HTML) {
      // Only the roots of SVG and MathML islands carry their own word: an
      // SVG <title> or <a> is not the document's. The others are kIdOther,
      // named when the table names them so (a foreignObject).
      const bool root = element.tag == GUMBO_TAG_SVG || element.tag == GUMBO_TAG_MATH;
      if (root) return keywords.ForTag(element.tag);
      const Keyword named = keywords.ForTag(element.tag);
      return (named.word & HtmlKeywordTable::kIdMask) == kIdOther ? named : Keyword();
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
    GumboNode* owner;  // the element whose children these are; null: the document
    GumboVector* children;
    unsigned next;
    HtmlTreeNode::List* list;
  };
  std::vector<Frame> stack;
  stack.push_back({nullptr, &output->document->v.document.children, 0, &top_level});
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next == frame.children->length) {
      // Every child converted and released: the owner can go too.
      frame.children->length = 0;
      GumboNode* owner = frame.owner;
      stack.pop_back();
      if (owner != nullptr) releaser.Release(owner);
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
          stack.push_back({&node, &element.children, 0, &entry->Children()});
          continue;  // released when its children are done
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
    releaser.Release(&node);
  }
  tree.Assign(std::move(top_level), count, document_charset);
}

}  // namespace OrvelParser
