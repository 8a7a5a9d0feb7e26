#include "builder/block_layout_walk.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "builder/block_analysis.h"
#include "builder/block_signals.h"
#include "builder/block_word_count.h"
#include "builder/constant_strings.h"
#include "builder/element_treatment.h"
#include "builder/table_cells.h"
#include "builder/text_items.h"
#include "zestra/base/wide_chars.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_table.h"
#include "zestra/html/html_keyword_table.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;
using OrvelParser::HtmlKeywordTable;
using OrvelParser::HtmlTreeNode;

// What passes from an element to its content.
struct Flags {
  bool in_link = false;      // inside an anchor: words are link words
  bool pre = false;          // text is taken as it stands
  bool boilerplate = false;  // words count as link words
  bool math = false;         // inside a formula: every text is a token of its own
  uint16_t marks = 0;        // KCellMarks kind bits of the elements around
};

// An element of more words than this is no byline, credit or caption,
// whatever its class says.
constexpr uint32_t kMaxLineWords = 50;

// The KCellMarks bits that say what kind of line a cell holds.
constexpr uint16_t kKindMarks = KCellMarks::kComments | KCellMarks::kByline | KCellMarks::kCredit |
                                KCellMarks::kFurniture | KCellMarks::kCaption | KCellMarks::kForm;

// Notes that `cell` received a text inside elements of the kinds `marks`:
// a kind bit stays only while every text of the cell has it.
void NoteText(KCell& cell, uint16_t marks) {
  KCellMarks& m = cell.Marks();
  if ((m.flags & KCellMarks::kHasText) == 0) {
    m.flags = static_cast<uint16_t>((m.flags & ~kKindMarks) | KCellMarks::kHasText | marks);
  } else {
    m.flags = static_cast<uint16_t>(m.flags & ~(kKindMarks & ~marks));
  }
}

// Mixes `text` into the FNV-1a hash `hash`.
uint32_t Mix(uint32_t hash, std::string_view text) {
  for (char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
  return (hash ^ 0xFFu) * 16777619u;
}

// The shape of the unit [first, last): for each of its nodes (at most
// kShapeNodes) the element and class, and the elements of its children.
// Never 0. `boxed` tells whether its first node is a box rather than a
// plain item: an element with a class, or with a heading or an image among
// its children.
uint32_t UnitSignature(NodeIterator first, NodeIterator last, bool& boxed) {
  boxed = false;
  constexpr int kShapeNodes = 24;
  uint32_t hash = 2166136261u;
  int budget = kShapeNodes;
  for (NodeIterator at = first; at != last && budget > 0; ++at, --budget) {
    const HtmlTreeNode& node = **at;
    hash = Mix(hash, node.Name());
    std::string_view class_names;
    if (node.FindParam("class", class_names)) hash = Mix(hash, class_names);
    if (at == first) boxed = !class_names.empty();
    for (const auto& child : node.Children()) {
      if (budget-- <= 0) break;
      if (child->IsText()) continue;
      hash = Mix(hash, child->Name());
      const uint32_t id = child->Id();
      if (at == first && (id == OrvelParser::kIdHeading || id == OrvelParser::kIdGraphics)) boxed = true;
    }
  }
  return hash == 0 ? 1 : hash;
}

// The letters and digits of UTF-8 `text`, ASCII in lower case, with one
// space between words; appended to `out`.
void AppendFolded(std::string_view text, std::string& out) {
  for (char c : text) {
    const unsigned char u = static_cast<unsigned char>(c);
    const bool word = u >= 0x80 || (u >= '0' && u <= '9') || (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z');
    if (!word) {
      if (!out.empty() && out.back() != ' ') out.push_back(' ');
      continue;
    }
    out.push_back((u >= 'A' && u <= 'Z') ? static_cast<char>(u + ('a' - 'A')) : c);
  }
}

std::string Folded(std::string_view text) {
  std::string out;
  AppendFolded(text, out);
  while (!out.empty() && out.back() == ' ') out.pop_back();
  return out;
}

// Whether the folded text of a heading names the article, judged by the
// document's folded <title>, which often adds the site's name before or
// after the article's ("Title | Site", "Site - Title"): the two are equal,
// or the title begins or ends with the heading and the heading is at least
// half of it, or the title begins with a heading of four words or more.
bool NamesArticle(const std::string& heading, const std::string& title) {
  if (heading.empty() || heading.size() > title.size()) return false;
  if (heading == title) return true;
  const bool starts = title.starts_with(heading) && title[heading.size()] == ' ';
  const bool ends = title.ends_with(heading) && title[title.size() - heading.size() - 1] == ' ';
  if ((starts || ends) && heading.size() * 2 >= title.size()) return true;
  return starts && std::count(heading.begin(), heading.end(), ' ') >= 3;
}

// The folded text of the subtree of `node`, at most kMaxHeadingBytes of it.
std::string HeadingText(const HtmlTreeNode& node) {
  constexpr std::size_t kMaxHeadingBytes = 1024;
  std::string out;
  std::vector<const HtmlTreeNode*> stack{&node};
  while (!stack.empty() && out.size() < kMaxHeadingBytes) {
    const HtmlTreeNode* at = stack.back();
    stack.pop_back();
    if (at->IsText()) {
      AppendFolded(at->Utf8Text(), out);
      continue;
    }
    const auto& children = at->Children();
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
      if (*child) stack.push_back(child->Get());
    }
  }
  while (!out.empty() && out.back() == ' ') out.pop_back();
  if (!out.empty() && out.front() == ' ') out.erase(0, 1);
  return out;
}

// Siblings still to walk into a cell.
struct Flow {
  BlockCursor next;
  NodeIterator end;
  SmartPtr<KCell> cell;
  Flags flags;
  HtmlTreeNode* owner;  // whose children these are, all of them; else null
  NodeIterator released;  // the first walked entry not yet released
};

// A paragraph to close once an element's children are done.
struct CloseAfter {
  SmartPtr<KCell> cell;
};

// A block table whose rows are being filled, one unit per row.
struct FillBlocks {
  BlockCursor next;
  NodeIterator end;
  SmartPtr<KTable> table;
  uint32_t row;
  SmartPtr<KCell> filled;  // the cell of the unit walked last
  Flags flags;
  HtmlTreeNode* owner;  // whose children the units are
  NodeIterator released;  // the first entry of a walked unit not yet released
};

// An HTML table whose cells are being filled.
struct FillHtmlTable {
  std::unique_ptr<TableCells> cells;
  Flags flags;
  HtmlTreeNode* table;
};

using Task = std::variant<Flow, CloseAfter, FillBlocks, FillHtmlTable>;

class BlockWalk {
 public:
  BlockWalk(const HtmlTreeNode::List& top, uint32_t node_count, WalkedNodes walked, std::string_view title)
      : analysis_(top, node_count), walked_(walked), title_(Folded(title)) {}

  void Run(const HtmlTreeNode::List& top, SmartPtr<KCell>& cell) {
    stack_.push_back(Flow{{top.begin(), 0}, top.end(), cell, Flags(), nullptr, top.begin()});
    while (!stack_.empty()) {
      Task& task = stack_.back();
      if (Flow* flow = std::get_if<Flow>(&task)) {
        // Whatever the siblings walked so far pushed is done.
        flow->released = DoneWithChildren(flow->owner, flow->released, flow->next.node, walked_);
        if (flow->next.node == flow->end) {
          HtmlTreeNode* owner = flow->owner;
          stack_.pop_back();
          DoneWithChildren(owner, walked_);
          continue;
        }
        const BlockCursor at = flow->next;
        analysis_.Next(flow->next);
        // Visit may push and so move the stack: it gets copies.
        SmartPtr<KCell> current = flow->cell;
        Visit(at, current, flow->flags);
      } else if (CloseAfter* close = std::get_if<CloseAfter>(&task)) {
        CloseParagraph(*close->cell);
        stack_.pop_back();
      } else if (FillBlocks* fill = std::get_if<FillBlocks>(&task)) {
        StepBlocks(*fill);
      } else {
        StepHtmlTable(std::get<FillHtmlTable>(task));
      }
    }
  }

 private:
  void Visit(const BlockCursor& at, SmartPtr<KCell>& cell, Flags flags) {
    HtmlTreeNode* const owner = at.node->Get();
    const BlockNodeInfo& info = analysis_.Info(at);
    if (!info.Visible()) {
      DoneWithChildren(owner, walked_);
      return;
    }
    const HtmlTreeNode& node = *owner;
    const BlockRole role = RoleOf(node);
    switch (role) {
      case BlockRole::kSkip:  // never visible; listed for the switch
        return;
      case BlockRole::kText: {
        std::u16string text;
        node.GetText(text);
        if (text.empty()) return;
        const bool counted_in_link = flags.in_link || flags.boilerplate;
        NoteText(*cell, flags.marks);
        // A formula's tokens (<mi>x</mi><mn>2</mn>) are separate symbols:
        // one space before each that does not bring its own.
        if (flags.math && !Orvel::IsWhiteSpace(text.front())) AddTextRun(RunSeparatorText(), 0, 0, cell, false);
        if (flags.pre) {
          AddPreformattedRun(text, node.SourcePosition(), node.SourceLength(), cell, counted_in_link,
                             CountBlockWords);
        } else {
          AddTextRun(text, node.SourcePosition(), node.SourceLength(), cell, counted_in_link, CountBlockWords);
        }
        return;
      }
      case BlockRole::kLineBreak:
        AddLineBreak(cell);
        return;
      case BlockRole::kTable:
        if (!info.HasText()) {
          DoneWithChildren(owner, walked_);
          return;
        }
        ReadSignals(node, info, flags);
        flags.in_link = flags.pre = false;
        if (std::unique_ptr<TableCells> cells =
                StartTable(ChildrenBegin(*at.node), ChildrenEnd(*at.node), cell, TablesLayoutTreatment(), tables_)) {
          stack_.push_back(FillHtmlTable{std::move(cells), flags, owner});
        } else {
          DoneWithChildren(owner, walked_);
        }
        return;
      case BlockRole::kPre:
      case BlockRole::kBlock:
      case BlockRole::kInline:
        break;
    }
    if (node.HasAttribute(HtmlKeywordTable::kLinkAtt)) {
      // As in the tables layout: one link, not for an anchor in an anchor;
      // only an anchor's text is in-link; preformatting passes through.
      const bool anchor = node.Id() == OrvelParser::kIdAnchor;
      if (!(flags.in_link && anchor)) cell->AddLinks(1);
      flags.in_link = anchor;
    } else {
      flags.pre = role == BlockRole::kPre;
    }
    ReadSignals(node, info, flags);
    if (node.Id() == OrvelParser::kIdHeading && !title_found_ && !title_.empty()) NoteTitle(node, *cell);
    flags.math = flags.math || (node.Id() == OrvelParser::kIdGraphics && !IsSvgRoot(node));  // <math>
    if (node.Children().empty()) return;
    const BlockCursor children = analysis_.FirstChild(at);
    if (!info.IsBlock()) {
      stack_.push_back(Flow{children, ChildrenEnd(*at.node), cell, flags, owner, children.node});
      return;
    }
    if (!info.HasText()) {
      DoneWithChildren(owner, walked_);
      return;
    }
    CloseParagraph(*cell);
    if (info.Units() >= 2 && !flags.pre) {
      StartBlocks(children, ChildrenEnd(*at.node), info.Units(), cell, flags, owner);
      return;
    }
    stack_.push_back(CloseAfter{cell});
    stack_.push_back(Flow{children, ChildrenEnd(*at.node), cell, flags, owner, children.node});
  }

  // Adds what the element's markup says to `flags`: whether its words are
  // boilerplate, and the kinds of line it holds. Read only where the words
  // are not boilerplate already: inside a nav or a footer nothing more
  // needs to be known.
  void ReadSignals(const HtmlTreeNode& node, const BlockNodeInfo& info, Flags& flags) const {
    // The document's own elements hold the whole page, whatever their
    // classes say (sites put feature flags such as "f_comment_x_on" there).
    if (flags.boilerplate || node.Id() == OrvelParser::kIdDocument) return;
    const ElementSignals signals = SignalsOf(node);
    // A byline, credit or caption is a line: a wrapper so named ("date-outer"
    // around a whole post) holds more than lines.
    if (info.Words() <= kMaxLineWords) ReadLines(signals.lines, flags);
    if ((signals.lines & kLineForm) != 0) flags.marks |= KCellMarks::kForm;
    switch (signals.signal) {
      case ElementSignal::kNone:
        return;
      case ElementSignal::kComments:
        flags.boilerplate = true;
        flags.marks |= KCellMarks::kComments | KCellMarks::kFurniture;
        return;
      case ElementSignal::kBoilerplate:
        // More than a fifth of the page is a wrapper, whatever its name.
        if (static_cast<uint64_t>(info.Words()) * 5 <= analysis_.PageWords()) {
          flags.boilerplate = true;
          flags.marks |= KCellMarks::kFurniture;
        }
        return;
    }
  }

  // Adds the KCellMarks of the LineSignal bits `lines` to `flags`.
  static void ReadLines(uint8_t lines, Flags& flags) {
    if ((lines & kLineByline) != 0) flags.marks |= KCellMarks::kByline;
    if ((lines & kLineCredit) != 0) flags.marks |= KCellMarks::kCredit;
    if ((lines & kLineCaption) != 0) flags.marks |= KCellMarks::kCaption;
  }

  // Marks `cell` as the title's when `node`, a heading, is the first h1 or
  // h2 whose text names the article.
  void NoteTitle(const HtmlTreeNode& node, KCell& cell) {
    const std::string_view name = node.Name();
    if (name != "h1" && name != "h2") return;
    if (!NamesArticle(HeadingText(node), title_)) return;
    title_found_ = true;
    cell.Marks().flags |= KCellMarks::kTitle;
  }

  // Hangs a table of one column and `units` rows into `cell` and queues the
  // filling of its rows from the children of `owner`.
  void StartBlocks(const BlockCursor& first, NodeIterator end, uint32_t units, SmartPtr<KCell>& cell,
                   const Flags& flags, HtmlTreeNode* owner) {
    KTable* parent = cell->ParentTable();
    const uint32_t level = parent != nullptr ? parent->Level() + 1 : 0;
    SmartPtr<KTable> table(new KTable(parent, 1, units, level));
    SmartPtr<KCellItem> item;
    if (table && table->Rows() == units) item = cell->AddCellItem();
    if (!item) {  // out of memory: the content is dropped
      DoneWithChildren(owner, walked_);
      return;
    }
    item->Table(table);
    cell->AddTables(1);
    stack_.push_back(FillBlocks{first, end, std::move(table), 0, nullptr, flags, owner, first.node});
  }

  void StepBlocks(FillBlocks& fill) {
    // The units walked so far, and what lay between them, are done.
    fill.released = DoneWithChildren(fill.owner, fill.released, fill.next.node, walked_);
    if (fill.filled) {
      CloseParagraph(*fill.filled);
      // The unit is complete: its cell gives back the room kept for appends
      // (a list of a million one-line items is a million such cells).
      fill.filled->Compact();
      fill.filled = nullptr;
    }
    BlockCursor first;
    NodeIterator last;
    if (fill.row == fill.table->Rows() || !analysis_.NextUnit(fill.next, fill.end, first, last)) {
      HtmlTreeNode* owner = fill.owner;
      stack_.pop_back();
      DoneWithChildren(owner, walked_);
      return;
    }
    SmartPtr<KCell> cell = fill.table->CreateCell(0, fill.row++);
    if (!cell) return;  // out of memory: the unit is dropped
    bool boxed = false;
    cell->Marks().signature = UnitSignature(first.node, last, boxed);
    if (boxed) cell->Marks().flags |= KCellMarks::kBoxed;
    fill.filled = cell;
    const Flags flags = fill.flags;
    stack_.push_back(Flow{first, last, std::move(cell), flags, nullptr, first.node});
  }

  void StepHtmlTable(FillHtmlTable& fill) {
    NodeIterator table_cell;
    SmartPtr<KCell> target;
    if (!fill.cells->Next(table_cell, target)) {
      HtmlTreeNode* table = fill.table;
      stack_.pop_back();
      DoneWithChildren(table, walked_);
      return;
    }
    uint32_t record = 0;
    if (!analysis_.FindTableCell(table_cell->Get(), record)) return;
    const Flags flags = fill.flags;
    Visit(BlockCursor{table_cell, record}, target, flags);
  }

  BlockAnalysis analysis_;
  const WalkedNodes walked_;
  const std::string title_;  // the article's title, folded; empty: unknown
  bool title_found_ = false;
  TableBudget tables_;  // the slots and span work of this document's tables
  std::vector<Task> stack_;
};

}  // namespace

void AddNodesToBlocks(const HtmlTreeNode::List& top, SmartPtr<KCell>& cell, WalkedNodes walked,
                      uint32_t node_count, std::string_view title) {
  BlockWalk(top, node_count, walked, title).Run(top, cell);
}

}  // namespace ZestraNS
