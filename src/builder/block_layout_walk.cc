#include "builder/block_layout_walk.h"

#include <memory>
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
};

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
  BlockWalk(const HtmlTreeNode::List& top, uint32_t node_count, WalkedNodes walked)
      : analysis_(top, node_count), walked_(walked) {}

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
        flags.boilerplate = flags.boilerplate || IsBoilerplate(node, info);
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
    flags.boilerplate = flags.boilerplate || IsBoilerplate(node, info);
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

  // Read only where the words are not boilerplate already: inside a nav or
  // a footer nothing more needs to be known.
  bool IsBoilerplate(const HtmlTreeNode& node, const BlockNodeInfo& info) const {
    // The document's own elements hold the whole page, whatever their
    // classes say (sites put feature flags such as "f_comment_x_on" there).
    if (node.Id() == OrvelParser::kIdDocument) return false;
    switch (SignalOf(node)) {
      case ElementSignal::kNone:
        return false;
      case ElementSignal::kComments:
        return true;
      case ElementSignal::kBoilerplate:
        // More than a fifth of the page is a wrapper, whatever its name.
        return static_cast<uint64_t>(info.Words()) * 5 <= analysis_.PageWords();
    }
    return false;
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
  TableBudget tables_;  // the slots and span work of this document's tables
  std::vector<Task> stack_;
};

}  // namespace

void AddNodesToBlocks(const HtmlTreeNode::List& top, SmartPtr<KCell>& cell, WalkedNodes walked,
                      uint32_t node_count) {
  BlockWalk(top, node_count, walked).Run(top, cell);
}

}  // namespace ZestraNS
