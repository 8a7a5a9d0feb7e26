// ZestraVisitorStrategy decides which nodes of a layout tree a visitor
// (ZestraVisitor) reports: only the tables, cells and text items it calls
// good reach the visitor's hooks. This class calls everything good, so a
// visitor that uses it sees the whole text of the tree; subclasses
// (ZestraRankedStrategy) filter.
//
// Strategies are reference counted (AddRef, Release, NbRef; the count is a
// member that starts at 0 in every constructor and is never copied or
// assigned) and are allocated through the memory pool; the Release that
// reaches 0 deletes the object through its virtual destructor.
//
// Thread-safety: the predicates only read, so one strategy may serve
// several visitors on several threads; counts change atomically.
#ifndef ZESTRA_TRAVERSAL_ZESTRA_VISITOR_STRATEGY_H_
#define ZESTRA_TRAVERSAL_ZESTRA_VISITOR_STRATEGY_H_

#include <cstdint>

#include "zestra/base/memory_pool.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/base/sp_ref_counter.h"
#include "zestra/export.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {

class ZESTRA_EXPORT ZestraVisitorStrategy : public OrvelMem::PoolObject {
 public:
  ZestraVisitorStrategy() noexcept = default;
  // Copying and assigning leave the reference counts as they are: a copy
  // starts at 0.
  ZestraVisitorStrategy(const ZestraVisitorStrategy&) noexcept = default;
  ZestraVisitorStrategy& operator=(const ZestraVisitorStrategy&) noexcept = default;
  virtual ~ZestraVisitorStrategy();

  // Adds one reference; returns the new count.
  int32_t AddRef() const noexcept { return refs_.Increment(); }
  // Drops one reference and deletes the object when none is left; returns
  // the new count.
  int32_t Release() const noexcept;
  int32_t NbRef() const noexcept { return refs_.Count(); }

  // Whether the table's hooks are called. Here: always true.
  virtual bool IsGoodTable(const Orvel::SmartPtr<KTable>& table) const;
  // Whether the hooks of a cell (of a good table) are called and its text
  // items are offered. Here: always true.
  virtual bool IsGoodCell(const Orvel::SmartPtr<KCell>& cell) const;
  // Whether a text item of a good cell of a good table is reported. Here:
  // always true.
  virtual bool IsGoodCellItem(const Orvel::SmartPtr<KCellItem>& item) const;

 private:
  Orvel::SPRefCounter refs_;
};

}  // namespace ZestraNS

#endif  // ZESTRA_TRAVERSAL_ZESTRA_VISITOR_STRATEGY_H_
