// ZestraVisitor walks a layout tree from its root table, depth first and in
// document order, and calls five hooks on the way: before and after each
// good table, before and after each good cell of a good table, and once for
// each good text item of such a cell. The installed strategy
// (ZestraVisitorStrategy) says what is good. The walk never stops at a node
// that is not good: it descends into every cell and every nested table, so
// a good table inside a table or cell that is not good is still reported.
//
// Walk order for a table: ask IsGoodTable; if good, VisitTableInfix; walk
// the cells of the grid slots in storage order (row 0 from column 0, then
// row 1, ...; empty slots skipped, a cell in two slots walked twice), then
// the caption, then the summary; if good, VisitTablePostfix.
// For a cell of a table (good or not): ask IsGoodCell (always); if both are
// good, VisitCellInfix; for each item in order: a text item of a good cell
// of a good table is offered to IsGoodCellItem and, if good, to
// VisitCellText; otherwise a table item's table is walked as above, judged
// by its own IsGoodTable; anything else is skipped. If both are good,
// VisitCellPostfix.
//
// The walk keeps its position in an explicit stack on the heap, not in one
// call frame per nesting level, so any depth of nesting is fine. While a
// node is being visited the walk holds a reference to it (and to the table
// item of a nested table being walked), so a hook cannot free the node it
// is given.
//
// Visitors are reference counted like strategies (AddRef, Release, NbRef;
// the count is a member starting at 0 that is never copied or assigned).
//
// Thread-safety: one walk at a time per visitor; counts change atomically.
#ifndef ZESTRA_TRAVERSAL_ZESTRA_VISITOR_H_
#define ZESTRA_TRAVERSAL_ZESTRA_VISITOR_H_

#include <cstdint>

#include "zestra/base/memory_pool.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/base/sp_ref_counter.h"
#include "zestra/export.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_table.h"
#include "zestra/traversal/zestra_visitor_strategy.h"

namespace ZestraNS {

class ZESTRA_EXPORT ZestraVisitor : public OrvelMem::PoolObject {
 public:
  // No strategy installed.
  ZestraVisitor() noexcept = default;
  // Shares `strategy` (which may be null).
  explicit ZestraVisitor(const Orvel::SmartPtr<ZestraVisitorStrategy>& strategy) noexcept
      : strategy_(strategy) {}
  // Shares the other visitor's strategy; count 0.
  ZestraVisitor(const ZestraVisitor& other) noexcept : strategy_(other.strategy_) {}
  // Installs the other visitor's strategy as Strategy(...) does; the count
  // is untouched.
  ZestraVisitor& operator=(const ZestraVisitor& other) noexcept {
    Strategy(other.strategy_);
    return *this;
  }
  // Releases the strategy.
  virtual ~ZestraVisitor();

  int32_t AddRef() const noexcept { return refs_.Increment(); }
  // Drops one reference and deletes the visitor when none is left; returns
  // the new count.
  int32_t Release() const noexcept;
  int32_t NbRef() const noexcept { return refs_.Count(); }

 protected:
  // The installed strategy (a new reference); null when none.
  Orvel::SmartPtr<ZestraVisitorStrategy> Strategy() const noexcept { return strategy_; }
  // Installs `strategy`, releasing the old one; nothing happens when it is
  // already installed.
  void Strategy(const Orvel::SmartPtr<ZestraVisitorStrategy>& strategy) noexcept { strategy_ = strategy; }

  // Walks the tree under `root` with the installed strategy. Does nothing
  // when `root` is null or no strategy is installed. Exceptions from hooks
  // and strategies pass through; the walk's references are released on the
  // way out.
  void ParseTree(const Orvel::SmartPtr<KTable>& root);
  // Installs `strategy`, then walks; the strategy stays installed.
  void ParseTree(const Orvel::SmartPtr<KTable>& root, const Orvel::SmartPtr<ZestraVisitorStrategy>& strategy);

  // Before the cells of a good table.
  virtual void VisitTableInfix(const Orvel::SmartPtr<KTable>& table) = 0;
  // After the cells of a good table.
  virtual void VisitTablePostfix(const Orvel::SmartPtr<KTable>& table) = 0;
  // Before the items of a good cell of a good table.
  virtual void VisitCellInfix(const Orvel::SmartPtr<KCell>& cell) = 0;
  // For each good text item of a good cell of a good table.
  virtual void VisitCellText(const Orvel::SmartPtr<KCellItem>& item) = 0;
  // After the items of a good cell of a good table.
  virtual void VisitCellPostfix(const Orvel::SmartPtr<KCell>& cell) = 0;

 private:
  struct WalkFrame;
  class WalkStack;

  // The walk of ParseTree, from `root` with `strategy`.
  void ParseTable(const Orvel::SmartPtr<KTable>& root, const ZestraVisitorStrategy& strategy);
  // Asks about `table`, calls its opening hook and pushes its frame.
  void EnterTable(Orvel::SmartPtr<KTable> table, const ZestraVisitorStrategy& strategy, WalkStack& stack);
  // Asks about `cell`, calls its opening hook and pushes its frame.
  void EnterCell(Orvel::SmartPtr<KCell> cell, bool table_good, const ZestraVisitorStrategy& strategy,
                 WalkStack& stack);
  // Takes the next step inside the top cell frame: one item, or leaving the
  // cell.
  void StepCell(const ZestraVisitorStrategy& strategy, WalkStack& stack);
  // Takes the next step inside the top table frame: entering its next cell,
  // or leaving the table.
  void StepTable(const ZestraVisitorStrategy& strategy, WalkStack& stack);

  Orvel::SPRefCounter refs_;
  Orvel::SmartPtr<ZestraVisitorStrategy> strategy_;
};

}  // namespace ZestraNS

#endif  // ZESTRA_TRAVERSAL_ZESTRA_VISITOR_H_
