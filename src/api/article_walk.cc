#include "api/article_walk.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "api/url_resolver.h"
#include "builder/block_analysis.h"
#include "builder/block_signals.h"
#include "zestra/base/wide_chars.h"
#include "zestra/charset/charset_conversion.h"
#include "zestra/html/html_keyword_table.h"

namespace zestra {
namespace {

using OrvelParser::HtmlTreeNode;

// What the walk makes of an element.
enum class Kind : uint8_t {
  kUnnamed,  // decided by the blocks layout's role: skipped, boundary or transparent
  kTransparent,
  kSkip,
  kBoundary,
  kParagraph,
  kHeading,
  kPre,
  kList,
  kOrderedList,
  kListItem,
  kQuote,
  kTable,
  kTablePart,  // thead, tbody
  kTableFoot,
  kRow,
  kCell,
  kHeaderCell,
  kEmphasis,
  kStrong,
  kCode,
  kSubscript,
  kSuperscript,
  kLink,
  kBreak,
  kImage,
};

struct NamedKind {
  std::string_view name;
  Kind kind;
  uint8_t level;  // headings
};

constexpr NamedKind kNamedKinds[] = {
    {"p", Kind::kParagraph, 0},       {"h1", Kind::kHeading, 1},       {"h2", Kind::kHeading, 2},
    {"h3", Kind::kHeading, 3},        {"h4", Kind::kHeading, 4},       {"h5", Kind::kHeading, 5},
    {"h6", Kind::kHeading, 6},        {"pre", Kind::kPre, 0},          {"listing", Kind::kPre, 0},
    {"xmp", Kind::kPre, 0},           {"plaintext", Kind::kPre, 0},    {"ul", Kind::kList, 0},
    {"menu", Kind::kList, 0},         {"dir", Kind::kList, 0},         {"ol", Kind::kOrderedList, 0},
    {"li", Kind::kListItem, 0},       {"blockquote", Kind::kQuote, 0}, {"table", Kind::kTable, 0},
    {"thead", Kind::kTablePart, 0},   {"tbody", Kind::kTablePart, 0},  {"tfoot", Kind::kTableFoot, 0},
    {"tr", Kind::kRow, 0},            {"td", Kind::kCell, 0},          {"th", Kind::kHeaderCell, 0},
    {"em", Kind::kEmphasis, 0},       {"i", Kind::kEmphasis, 0},       {"cite", Kind::kEmphasis, 0},
    {"dfn", Kind::kEmphasis, 0},      {"var", Kind::kEmphasis, 0},     {"strong", Kind::kStrong, 0},
    {"b", Kind::kStrong, 0},          {"code", Kind::kCode, 0},        {"kbd", Kind::kCode, 0},
    {"samp", Kind::kCode, 0},         {"tt", Kind::kCode, 0},          {"sub", Kind::kSubscript, 0},
    {"sup", Kind::kSuperscript, 0},   {"a", Kind::kLink, 0},           {"br", Kind::kBreak, 0},
    {"img", Kind::kImage, 0},         {"image", Kind::kImage, 0},      {"picture", Kind::kTransparent, 0},
};

struct KindEntry {
  Kind kind = Kind::kUnnamed;
  uint8_t level = 0;
};

// The kinds of the element table's elements, by element number.
const std::vector<KindEntry>& KindsByElement() {
  static const std::vector<KindEntry> kinds = [] {
    std::vector<KindEntry> table(1);  // kNoElement
    for (OrvelParser::ElementNumber number = 1;; ++number) {
      const std::string_view name = OrvelParser::HtmlKeywordTable::ElementName(number);
      if (name.empty()) break;
      KindEntry entry;
      for (const NamedKind& named : kNamedKinds) {
        if (named.name == name) entry = {named.kind, named.level};
      }
      table.push_back(entry);
    }
    return table;
  }();
  return kinds;
}

KindEntry KindOf(const HtmlTreeNode& node) {
  const std::vector<KindEntry>& kinds = KindsByElement();
  const OrvelParser::ElementNumber element = node.Element();
  if (element < kinds.size() && kinds[element].kind != Kind::kUnnamed) return kinds[element];
  switch (ZestraNS::RoleOf(node)) {
    case ZestraNS::BlockRole::kSkip:
      return {Kind::kSkip, 0};
    case ZestraNS::BlockRole::kBlock:
    case ZestraNS::BlockRole::kPre:
    case ZestraNS::BlockRole::kTable:
      return {Kind::kBoundary, 0};
    default:
      return {Kind::kTransparent, 0};
  }
}

bool IsBlockKind(Kind kind) {
  switch (kind) {
    case Kind::kBoundary:
    case Kind::kParagraph:
    case Kind::kHeading:
    case Kind::kPre:
    case Kind::kList:
    case Kind::kOrderedList:
    case Kind::kListItem:
    case Kind::kQuote:
    case Kind::kTable:
    case Kind::kTablePart:
    case Kind::kTableFoot:
    case Kind::kRow:
    case Kind::kCell:
    case Kind::kHeaderCell:
      return true;
    default:
      return false;
  }
}

// Where the children of a frame stand.
enum class Context : uint8_t {
  kFlow,       // ordinary content
  kListItems,  // the children of a list: each becomes an item
  kTableRows,  // the rows of a data table
  kRowCells,   // the cells of a row of a data table
};

// What passes from an element to its children.
struct State {
  bool kept = true;  // false: no kept text below, only images are looked for
  bool pre = false;
  bool leaf = false;  // inside a paragraph, heading or preformatted block
  Context context = Context::kFlow;
  uint8_t spans = 0;  // bit (1 << SpanKind) per span open
};

// What to do once a frame's children are done.
enum class Close : uint8_t { kNothing, kEndBlock, kBoundary, kSpace, kEndSpan };

struct Frame {
  const HtmlTreeNode::List* list;       // the children walked; null: `own`
  std::vector<const HtmlTreeNode*> own;  // children in an order of the walk's own
  std::size_t next;
  State state;
  Close close;
  BlockKind block;  // kEndBlock
};

bool IsAllWhiteSpace(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
}

int IntAttribute(const HtmlTreeNode& node, std::string_view name, int fallback, int low, int high) {
  std::string_view value;
  if (!node.FindParam(name, value)) return fallback;
  while (!value.empty() && (value.front() == ' ' || value.front() == '\t')) value.remove_prefix(1);
  int number = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
  if (error != std::errc() || end == value.data()) return fallback;
  return std::clamp(number, low, high);
}

// The language a "language-x" or "lang-x" class names; empty when none.
std::string CodeLanguage(const HtmlTreeNode& node) {
  std::string_view classes;
  if (!node.FindParam("class", classes)) return {};
  while (!classes.empty()) {
    const std::size_t space = classes.find_first_of(" \t\n\f\r");
    const std::string_view token = classes.substr(0, space);
    classes.remove_prefix(space == std::string_view::npos ? classes.size() : space + 1);
    std::string_view name;
    if (token.starts_with("language-")) {
      name = token.substr(9);
    } else if (token.starts_with("lang-")) {
      name = token.substr(5);
    } else {
      continue;
    }
    std::string language;
    for (char c : name.substr(0, 32)) {
      const bool allowed = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
                           c == '+' || c == '-';
      if (!allowed) return {};
      language += c;
    }
    return language;
  }
  return {};
}

class Walk {
 public:
  Walk(const ZestraNS::KeptText& kept, const ArticleWalkSettings& settings, ArticleSink& sink)
      : kept_(kept), settings_(settings), sink_(sink) {}

  void Run(const OrvelParser::HtmlDocTree& tree) {
    MarkKeptElements(tree.TopLevel());
    frames_.push_back(Frame{&tree.TopLevel(), {}, 0, State(), Close::kNothing, BlockKind::kParagraph});
    while (!frames_.empty()) {
      Frame& frame = frames_.back();
      const std::size_t count = frame.list != nullptr ? frame.list->size() : frame.own.size();
      if (frame.next == count) {
        const Close close = frame.close;
        const BlockKind block = frame.block;
        frames_.pop_back();
        Finish(close, block);
        continue;
      }
      const HtmlTreeNode* node = frame.list != nullptr ? (*frame.list)[frame.next].Get() : frame.own[frame.next];
      ++frame.next;
      const State state = frame.state;  // Visit may push and so move the frame
      if (node->IsText()) {
        VisitText(*node, state);
      } else {
        VisitElement(*node, state);
      }
    }
    sink_.Finish();
  }

 private:
  bool IsKeptText(const HtmlTreeNode& node) const {
    return kept_.Find(node.SourcePosition(), node.SourceLength()) != nullptr;
  }

  // Marks every element with a kept text node below it.
  void MarkKeptElements(const HtmlTreeNode::List& top) {
    struct Entry {
      const HtmlTreeNode::List* children;
      std::size_t next;
      const HtmlTreeNode* node;  // null for the top level
      bool marked;
    };
    std::vector<Entry> stack{{&top, 0, nullptr, true}};
    while (!stack.empty()) {
      Entry& entry = stack.back();
      if (entry.next == entry.children->size()) {
        stack.pop_back();
        continue;
      }
      const HtmlTreeNode& child = *(*entry.children)[entry.next++];
      if (child.IsText()) {
        if (!IsKeptText(child)) continue;
        for (std::size_t i = stack.size(); i-- > 0 && !stack[i].marked;) {
          stack[i].marked = true;
          kept_elements_.Insert(reinterpret_cast<uintptr_t>(stack[i].node), 0);
        }
      } else if (!child.Children().empty()) {
        stack.push_back({&child.Children(), 0, &child, false});
      }
    }
  }

  void Push(const HtmlTreeNode& node, const State& state, Close close, BlockKind block = BlockKind::kParagraph) {
    frames_.push_back(Frame{&node.Children(), {}, 0, state, close, block});
  }
  void PushOwn(std::vector<const HtmlTreeNode*> nodes, const State& state, Close close, BlockKind block) {
    frames_.push_back(Frame{nullptr, std::move(nodes), 0, state, close, block});
  }

  void Finish(Close close, BlockKind block) {
    switch (close) {
      case Close::kNothing:
        return;
      case Close::kEndBlock:
        sink_.EndBlock(block);
        return;
      case Close::kBoundary:
        sink_.Boundary();
        return;
      case Close::kSpace:
        sink_.Text(" ");
        return;
      case Close::kEndSpan:
        sink_.EndSpan();
        return;
    }
  }

  void Begin(BlockKind kind) {
    Block block;
    block.kind = kind;
    sink_.BeginBlock(block);
  }

  void VisitText(const HtmlTreeNode& node, const State& state) {
    if (!state.kept || state.context == Context::kTableRows || state.context == Context::kRowCells) return;
    const std::u16string* text = kept_.Find(node.SourcePosition(), node.SourceLength());
    if (state.pre) {
      // As written: the layout may have joined its white space.
      if (text != nullptr || IsAllWhiteSpace(node.Utf8Text())) sink_.Text(PreText(node.Utf8Text()));
      return;
    }
    if (text == nullptr) return;
    if (state.context == Context::kListItems) Begin(BlockKind::kListItem);
    sink_.Text(FlowText(*text));
    if (state.context == Context::kListItems) sink_.EndBlock(BlockKind::kListItem);
  }

  static std::string PreText(std::string_view raw) {
    std::string text;
    text.reserve(raw.size());
    for (std::size_t i = 0; i < raw.size(); ++i) {
      if (raw[i] != '\r') {
        text += raw[i];
      } else if (i + 1 == raw.size() || raw[i + 1] != '\n') {
        text += '\n';
      }
    }
    return text;
  }

  // The written text with every run of white space one space.
  static std::string FlowText(const std::u16string& text) {
    std::u16string flat;
    flat.reserve(text.size());
    for (char16_t c : text) {
      if (Orvel::IsWhiteSpace(c)) {
        if (flat.empty() || flat.back() != u' ') flat += u' ';
      } else {
        flat += c;
      }
    }
    std::string utf8;
    OrvelCharset::AppendUtf8(flat.data(), flat.size(), utf8);
    return utf8;
  }

  void VisitElement(const HtmlTreeNode& node, const State& parent) {
    const KindEntry kind = KindOf(node);
    if (kind.kind == Kind::kBreak) {
      if (parent.kept && parent.context == Context::kFlow) {
        if (parent.pre) {
          sink_.Text("\n");
        } else {
          sink_.LineBreak();
        }
      }
      return;
    }
    if (kind.kind == Kind::kImage) {
      if (parent.context == Context::kFlow) Image(node);
      return;
    }
    // Inside preformatted text every element is walked: its white space
    // (line feeds in the spans of highlighted code) is part of the text.
    const bool kept = parent.kept && (parent.pre || kept_elements_.Find(reinterpret_cast<uintptr_t>(&node)) != nullptr);
    switch (parent.context) {
      case Context::kFlow:
        break;
      case Context::kTableRows:
        if (kept) {
          Begin(BlockKind::kRow);
          PushOwn(Children(node, {Kind::kCell, Kind::kHeaderCell}), State{true, false, false, Context::kRowCells, 0},
                  Close::kEndBlock, BlockKind::kRow);
        }
        return;
      case Context::kRowCells: {
        Block cell;
        cell.kind = BlockKind::kCell;
        cell.header = kind.kind == Kind::kHeaderCell;
        cell.colspan = IntAttribute(node, "colspan", 1, 1, 1000);
        sink_.BeginBlock(cell);
        if (kept) {
          Push(node, State(), Close::kEndBlock, BlockKind::kCell);
        } else {
          sink_.EndBlock(BlockKind::kCell);
        }
        return;
      }
      case Context::kListItems:
        if (kind.kind != Kind::kListItem) {
          if (!kept) return;
          Begin(BlockKind::kListItem);
          State item = parent;
          item.context = Context::kFlow;
          PushOwn({&node}, item, Close::kEndBlock, BlockKind::kListItem);
          return;
        }
        break;
    }
    if (!kept) {
      if (settings_.images && parent.context == Context::kFlow) LookForImages(node, kind.kind, parent);
      return;
    }
    State child = parent;
    child.context = Context::kFlow;
    switch (kind.kind) {
      case Kind::kUnnamed:
      case Kind::kSkip:
      case Kind::kBreak:
      case Kind::kImage:
        return;
      case Kind::kTransparent:
        Push(node, child, Close::kNothing);
        return;
      case Kind::kParagraph:
      case Kind::kHeading:
      case Kind::kPre: {
        if (parent.leaf) break;
        Block block;
        block.kind = kind.kind == Kind::kParagraph ? BlockKind::kParagraph
                     : kind.kind == Kind::kHeading ? BlockKind::kHeading
                                                   : BlockKind::kPre;
        block.level = kind.level;
        if (kind.kind == Kind::kPre) {
          block.language = CodeLanguage(node);
          for (const HtmlTreeNode::Entry& inner : node.Children()) {
            if (block.language.empty() && KindOf(*inner).kind == Kind::kCode) block.language = CodeLanguage(*inner);
          }
        }
        sink_.BeginBlock(block);
        child.leaf = true;
        child.pre = kind.kind == Kind::kPre;
        Push(node, child, Close::kEndBlock, block.kind);
        return;
      }
      case Kind::kList:
      case Kind::kOrderedList: {
        if (parent.leaf) break;
        Block list;
        list.kind = BlockKind::kList;
        list.ordered = kind.kind == Kind::kOrderedList;
        list.start = list.ordered ? IntAttribute(node, "start", 1, 0, 999999999) : 1;
        sink_.BeginBlock(list);
        child.context = Context::kListItems;
        Push(node, child, Close::kEndBlock, BlockKind::kList);
        return;
      }
      case Kind::kListItem:
        if (parent.leaf || parent.context != Context::kListItems) break;
        Begin(BlockKind::kListItem);
        Push(node, child, Close::kEndBlock, BlockKind::kListItem);
        return;
      case Kind::kQuote:
        if (parent.leaf) break;
        Begin(BlockKind::kQuote);
        Push(node, child, Close::kEndBlock, BlockKind::kQuote);
        return;
      case Kind::kTable:
        if (!parent.leaf && IsDataTable(node)) {
          Begin(BlockKind::kTable);
          child.context = Context::kTableRows;
          PushOwn(Rows(node), child, Close::kEndBlock, BlockKind::kTable);
          return;
        }
        OpenBoundary(parent);
        PushOwn(FooterLast(node), child, parent.leaf ? Close::kSpace : Close::kBoundary, BlockKind::kParagraph);
        return;
      case Kind::kEmphasis:
        OpenSpan(node, child, SpanKind::kEmphasis);
        return;
      case Kind::kStrong:
        OpenSpan(node, child, SpanKind::kStrong);
        return;
      case Kind::kCode:
        OpenSpan(node, child, SpanKind::kCode);
        return;
      case Kind::kSubscript:
        OpenSpan(node, child, SpanKind::kSubscript);
        return;
      case Kind::kSuperscript:
        OpenSpan(node, child, SpanKind::kSuperscript);
        return;
      case Kind::kLink:
        OpenLink(node, child);
        return;
      case Kind::kBoundary:
      case Kind::kTablePart:
      case Kind::kTableFoot:
      case Kind::kRow:
      case Kind::kCell:
      case Kind::kHeaderCell:
        break;
    }
    // A block the writers do not render, or one that cannot stand where it
    // is: its content is set apart from the text around it.
    OpenBoundary(parent);
    Push(node, child, parent.leaf ? Close::kSpace : Close::kBoundary);
  }

  void OpenBoundary(const State& parent) {
    if (parent.leaf) {
      sink_.Text(parent.pre ? "\n" : " ");
    } else {
      sink_.Boundary();
    }
  }

  void OpenSpan(const HtmlTreeNode& node, State& child, SpanKind kind) {
    const uint8_t bit = static_cast<uint8_t>(1u << static_cast<unsigned>(kind));
    if (child.pre || (child.spans & bit) != 0) {
      Push(node, child, Close::kNothing);
      return;
    }
    child.spans |= bit;
    sink_.BeginSpan(kind, std::string());
    Push(node, child, Close::kEndSpan);
  }

  void OpenLink(const HtmlTreeNode& node, State& child) {
    const uint8_t bit = static_cast<uint8_t>(1u << static_cast<unsigned>(SpanKind::kLink));
    std::string_view href;
    std::string address;
    if (!child.pre && (child.spans & bit) == 0 && node.FindParam("href", href)) {
      address = ResolveUrl(settings_.base_url, href);
    }
    if (!IsSafeUrl(address)) {
      Push(node, child, Close::kNothing);
      return;
    }
    child.spans |= bit;
    sink_.BeginSpan(SpanKind::kLink, address);
    Push(node, child, Close::kEndSpan);
  }

  void Image(const HtmlTreeNode& node) {
    if (!settings_.images || ZestraNS::IsHiddenElement(node)) return;
    std::string_view src;
    if (!node.FindParam("src", src) || src.empty() || UrlScheme(src) == "data") {
      if (!node.FindParam("data-src", src)) return;
    }
    const std::string address = ResolveUrl(settings_.base_url, src);
    const std::string scheme = UrlScheme(address);
    if (scheme != "http" && scheme != "https") return;
    std::string alt;
    node.GetParam("alt", alt);
    std::string flat;
    for (char c : alt) {
      const bool space = c == ' ' || (c >= '\t' && c <= '\r');
      if (!space) {
        flat += c;
      } else if (!flat.empty() && flat.back() != ' ') {
        flat += ' ';
      }
    }
    sink_.Image(flat, address);
  }

  // Below an element without kept text: only images, set apart as the
  // blocks around them are.
  void LookForImages(const HtmlTreeNode& node, Kind kind, const State& parent) {
    if (kind == Kind::kSkip || node.Children().empty() || ZestraNS::IsHiddenElement(node) ||
        ZestraNS::SignalOf(node) != ZestraNS::ElementSignal::kNone) {
      return;
    }
    State child = parent;
    child.kept = false;
    if (IsBlockKind(kind) && !parent.leaf) {
      sink_.Boundary();
      Push(node, child, Close::kBoundary);
    } else {
      Push(node, child, Close::kNothing);
    }
  }

  // The children of `node` of the given kinds, in order.
  static std::vector<const HtmlTreeNode*> Children(const HtmlTreeNode& node, std::initializer_list<Kind> kinds) {
    std::vector<const HtmlTreeNode*> found;
    for (const HtmlTreeNode::Entry& child : node.Children()) {
      const Kind kind = KindOf(*child).kind;
      if (std::find(kinds.begin(), kinds.end(), kind) != kinds.end()) found.push_back(child.Get());
    }
    return found;
  }

  // The rows of a table in the layout's order: rows and head and body
  // groups as written, footer groups last.
  static std::vector<const HtmlTreeNode*> Rows(const HtmlTreeNode& table) {
    std::vector<const HtmlTreeNode*> rows;
    std::vector<const HtmlTreeNode*> footer;
    for (const HtmlTreeNode::Entry& child : table.Children()) {
      const Kind kind = KindOf(*child).kind;
      if (kind == Kind::kRow) rows.push_back(child.Get());
      if (kind != Kind::kTablePart && kind != Kind::kTableFoot) continue;
      for (const HtmlTreeNode* row : Children(*child, {Kind::kRow})) {
        (kind == Kind::kTableFoot ? footer : rows).push_back(row);
      }
    }
    rows.insert(rows.end(), footer.begin(), footer.end());
    return rows;
  }

  // A table's children with its footer groups moved last.
  static std::vector<const HtmlTreeNode*> FooterLast(const HtmlTreeNode& table) {
    std::vector<const HtmlTreeNode*> children;
    std::vector<const HtmlTreeNode*> footer;
    for (const HtmlTreeNode::Entry& child : table.Children()) {
      (KindOf(*child).kind == Kind::kTableFoot ? footer : children).push_back(child.Get());
    }
    children.insert(children.end(), footer.begin(), footer.end());
    return children;
  }

  // Whether a table reads as data (see article_walk.h).
  static bool IsDataTable(const HtmlTreeNode& table) {
    bool blocked = false;
    uint32_t cells = 0;
    uint32_t blocks = 0;
    int columns = 0;
    OrvelParser::WalkNodes(table.Children(), [&](const HtmlTreeNode& node) {
      if (blocked || node.IsText()) return false;
      switch (KindOf(node).kind) {
        case Kind::kTable:
        case Kind::kHeading:
        case Kind::kList:
        case Kind::kOrderedList:
        case Kind::kQuote:
        case Kind::kPre:
          blocked = true;
          return false;
        case Kind::kSkip:
          return false;
        case Kind::kRow: {
          int row_columns = 0;
          for (const HtmlTreeNode::Entry& cell : node.Children()) {
            const Kind kind = KindOf(*cell).kind;
            if (kind == Kind::kCell || kind == Kind::kHeaderCell) row_columns += IntAttribute(*cell, "colspan", 1, 1, 1000);
          }
          columns = std::max(columns, row_columns);
          return true;
        }
        case Kind::kCell:
        case Kind::kHeaderCell:
          ++cells;
          return true;
        case Kind::kParagraph:
        case Kind::kBoundary:
        case Kind::kListItem:
          ++blocks;
          return true;
        default:
          return true;
      }
    });
    return !blocked && columns >= 2 && blocks <= cells;
  }

  const ZestraNS::KeptText& kept_;
  const ArticleWalkSettings& settings_;
  ArticleSink& sink_;
  ZestraNS::FlatKeyMap kept_elements_;  // the elements with kept text below, by address
  std::vector<Frame> frames_;
};

}  // namespace

void WalkArticle(const OrvelParser::HtmlDocTree& tree, const ZestraNS::KeptText& kept,
                 const ArticleWalkSettings& settings, ArticleSink& sink) {
  Walk(kept, settings, sink).Run(tree);
}

std::string DocumentBaseUrl(const OrvelParser::HtmlDocTree& tree, const std::string& page_url) {
  std::string base = page_url;
  bool found = false;
  OrvelParser::WalkNodes(tree.TopLevel(), [&](const HtmlTreeNode& node) {
    if (found || node.IsText()) return false;
    std::string_view href;
    if (node.Name() == "base" && node.FindParam("href", href)) {
      base = ResolveUrl(page_url, href);
      found = true;
    }
    return !found && node.Name() != "body";
  });
  return base;
}

}  // namespace zestra
