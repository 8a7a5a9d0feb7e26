#include "zestra/traversal/zestra_visitor.h"

#include <utility>
#include <vector>

namespace ZestraNS {

// One table or cell being walked. A table frame has `table` set and `next`
// counts its slots: the grid slots, then the caption, then the summary. A
// cell frame has `cell` set and `next` counts its items; `item` holds the
// table item whose table is being walked below it.
struct ZestraVisitor::WalkFrame {
  Orvel::SmartPtr<KTable> table;
  Orvel::SmartPtr<KCell> cell;
  Orvel::SmartPtr<KCellItem> item;
  uint32_t next = 0;
  bool table_good = false;
  bool cell_good = false;
};

class ZestraVisitor::WalkStack : public std::vector<WalkFrame> {};

ZestraVisitor::~ZestraVisitor() = default;

int32_t ZestraVisitor::Release() const noexcept {
  const int32_t count = refs_.Decrement();
  if (count == 0) delete this;
  return count;
}

void ZestraVisitor::ParseTree(const Orvel::SmartPtr<KTable>& root) {
  // The walk keeps its own reference: a hook that installs another strategy
  // cannot free the one in use.
  const Orvel::SmartPtr<ZestraVisitorStrategy> strategy = strategy_;
  if (root.IsNull() || strategy.IsNull()) return;
  ParseTable(root, *strategy);
}

void ZestraVisitor::ParseTree(const Orvel::SmartPtr<KTable>& root,
                              const Orvel::SmartPtr<ZestraVisitorStrategy>& strategy) {
  Strategy(strategy);
  ParseTree(root);
}

void ZestraVisitor::ParseTable(const Orvel::SmartPtr<KTable>& root, const ZestraVisitorStrategy& strategy) {
  WalkStack stack;
  EnterTable(root, strategy, stack);
  while (!stack.empty()) {
    if (stack.back().table.IsNull()) {
      StepCell(strategy, stack);
    } else {
      StepTable(strategy, stack);
    }
  }
}

void ZestraVisitor::EnterTable(Orvel::SmartPtr<KTable> table, const ZestraVisitorStrategy& strategy,
                               WalkStack& stack) {
  const bool good = strategy.IsGoodTable(table);
  if (good) VisitTableInfix(table);
  WalkFrame& frame = stack.emplace_back();
  frame.table = std::move(table);
  frame.table_good = good;
}

void ZestraVisitor::EnterCell(Orvel::SmartPtr<KCell> cell, bool table_good, const ZestraVisitorStrategy& strategy,
                              WalkStack& stack) {
  const bool cell_good = strategy.IsGoodCell(cell);
  if (table_good && cell_good) VisitCellInfix(cell);
  WalkFrame& frame = stack.emplace_back();
  frame.cell = std::move(cell);
  frame.table_good = table_good;
  frame.cell_good = cell_good;
}

void ZestraVisitor::StepTable(const ZestraVisitorStrategy& strategy, WalkStack& stack) {
  WalkFrame& frame = stack.back();
  const KTable& table = *frame.table;
  const uint32_t slots = static_cast<uint32_t>(table.End() - table.Begin());
  while (frame.next <= slots + 1) {
    const uint32_t slot = frame.next++;
    const Orvel::SmartPtr<KCell>& cell = slot < slots    ? table.Begin()[slot]
                                         : slot == slots ? table.Caption()
                                                         : table.Summary();
    if (!cell.IsNull()) {
      EnterCell(cell, frame.table_good, strategy, stack);  // `frame` is invalid from here on
      return;
    }
  }
  const Orvel::SmartPtr<KTable> done = std::move(frame.table);
  const bool good = frame.table_good;
  stack.pop_back();
  if (good) VisitTablePostfix(done);
}

void ZestraVisitor::StepCell(const ZestraVisitorStrategy& strategy, WalkStack& stack) {
  WalkFrame& frame = stack.back();
  frame.item = nullptr;
  const KCell& cell = *frame.cell;
  const uint32_t items = static_cast<uint32_t>(cell.End() - cell.Begin());
  if (frame.next < items) {
    const Orvel::SmartPtr<KCellItem> item = cell.Begin()[frame.next++];
    if (frame.table_good && item->IsText() && frame.cell_good) {
      if (strategy.IsGoodCellItem(item)) VisitCellText(item);
    } else if (item->IsTable()) {
      frame.item = item;
      EnterTable(item->Table(), strategy, stack);  // `frame` is invalid from here on
    }
    return;
  }
  const Orvel::SmartPtr<KCell> done = std::move(frame.cell);
  const bool reported = frame.table_good && frame.cell_good;
  stack.pop_back();
  if (reported) VisitCellPostfix(done);
}

}  // namespace ZestraNS
