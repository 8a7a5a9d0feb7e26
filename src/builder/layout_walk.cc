#include "builder/layout_walk.h"

#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "builder/table_cells.h"
#include "builder/text_items.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;

// Siblings still to walk into a cell.
struct SiblingRange {
  NodeIterator next;
  NodeIterator end;
  SmartPtr<KCell> cell;
  bool in_link;
  bool pre;
  OrvelParser::HtmlTreeNode* owner;  // whose children these are; null: the top level
  NodeIterator released;              // the first walked entry not yet released
};

// A paragraph to close once an element's children are done.
struct CloseAfter {
  SmartPtr<KCell> cell;
};

// A nested table whose cells are being filled.
struct FillTable {
  std::unique_ptr<TableCells> cells;
  OrvelParser::HtmlTreeNode* table;
};

using Task = std::variant<SiblingRange, CloseAfter, FillTable>;

class Walk {
 public:
  Walk(const TreatmentTable& treatment, WalkedNodes walked) : treatment_(treatment), walked_(walked) {}

  void Run(NodeIterator first, NodeIterator end, SmartPtr<KCell>& cell, bool in_link, bool pre) {
    stack_.push_back(SiblingRange{first, end, cell, in_link, pre, nullptr, first});
    while (!stack_.empty()) {
      Task& top = stack_.back();
      if (SiblingRange* range = std::get_if<SiblingRange>(&top)) {
        // Whatever the siblings walked so far pushed is done.
        range->released = DoneWithChildren(range->owner, range->released, range->next, walked_);
        if (range->next == range->end) {
          OrvelParser::HtmlTreeNode* owner = range->owner;
          stack_.pop_back();
          DoneWithChildren(owner, walked_);
          continue;
        }
        const NodeIterator node = range->next++;
        // Visit may push and so move the stack: it gets copies.
        SmartPtr<KCell> current = range->cell;
        Visit(node, current, range->in_link, range->pre);
      } else if (CloseAfter* close = std::get_if<CloseAfter>(&top)) {
        CloseParagraph(*close->cell);
        stack_.pop_back();
      } else {
        TableCells& cells = *std::get<FillTable>(top).cells;
        NodeIterator table_cell;
        SmartPtr<KCell> target;
        if (cells.Next(table_cell, target)) {
          PushChildren(table_cell, target, false, false);
        } else {
          OrvelParser::HtmlTreeNode* table = std::get<FillTable>(top).table;
          stack_.pop_back();
          DoneWithChildren(table, walked_);
        }
      }
    }
  }

 private:
  void PushChildren(NodeIterator node, const SmartPtr<KCell>& cell, bool in_link, bool pre) {
    if (!HasChildren(*node)) return;
    stack_.push_back(
        SiblingRange{ChildrenBegin(*node), ChildrenEnd(*node), cell, in_link, pre, node->Get(), ChildrenBegin(*node)});
  }

  void Visit(NodeIterator node, SmartPtr<KCell>& cell, bool in_link, bool pre) {
    const ElementTreatment t = treatment_.Classify(KeywordWord(*node));
    switch (t.action) {
      case NodeAction::kPreformatted:
        PushChildren(node, cell, in_link, true);
        return;
      case NodeAction::kText: {
        std::u16string text;
        GetText(*node, text);
        if (text.empty()) return;
        if (pre) {
          AddPreformattedRun(text, SourcePosition(*node), SourceLength(*node), cell, in_link);
        } else {
          AddTextRun(text, SourcePosition(*node), SourceLength(*node), cell, in_link);
        }
        return;
      }
      case NodeAction::kLineBreak:
        AddLineBreak(cell);
        return;
      case NodeAction::kLink:
        if (!(in_link && t.anchor)) cell->AddLinks(1);
        PushChildren(node, cell, t.anchor, pre);
        return;
      case NodeAction::kTable:
        if (std::unique_ptr<TableCells> cells = StartTable(ChildrenBegin(*node), ChildrenEnd(*node), cell, treatment_, tables_)) {
          stack_.push_back(FillTable{std::move(cells), node->Get()});
        } else {
          DoneWithChildren(node->Get(), walked_);
        }
        return;
      case NodeAction::kWalk:
      case NodeAction::kSkip:
        break;
    }
    if (t.close_before) CloseParagraph(*cell);
    if (t.action == NodeAction::kSkip) {
      DoneWithChildren(node->Get(), walked_);
      return;
    }
    if (!HasChildren(*node)) {
      if (t.close_after) CloseParagraph(*cell);
      return;
    }
    if (t.close_after) stack_.push_back(CloseAfter{cell});
    PushChildren(node, cell, in_link, false);
  }

  const TreatmentTable& treatment_;
  const WalkedNodes walked_;
  TableBudget tables_;  // the slots and span work of this document's tables
  std::vector<Task> stack_;
};

}  // namespace

bool AddNodesToCell(NodeIterator first, NodeIterator end, SmartPtr<KCell>& cell, bool in_link, bool pre,
                    const TreatmentTable& treatment, WalkedNodes walked) {
  Walk(treatment, walked).Run(first, end, cell, in_link, pre);
  return true;
}

}  // namespace ZestraNS
