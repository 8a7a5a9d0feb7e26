#include "model/tree_teardown.h"

#include <new>

#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {

void TreeTeardown::ReleaseChildren(KTable& table) noexcept { Run(Frame{Kind::kTable, &table, 0}); }
void TreeTeardown::ReleaseChildren(KCell& cell) noexcept { Run(Frame{Kind::kCell, &cell, 0}); }
void TreeTeardown::ReleaseChildren(KCellItem& item) noexcept { Run(Frame{Kind::kItem, &item, 0}); }

void TreeTeardown::Run(Frame bottom) noexcept {
  // Frames above `bottom`; stays unallocated while no child has to be
  // walked, which is the case for every node released from this loop.
  Orvel::FastVector<Frame> stack;
  for (;;) {
    Frame& top = stack.Empty() ? bottom : stack[stack.Size() - 1];
    Frame child;
    if (TakeNextChild(top, &child)) {
      try {
        stack.Add(child);
      } catch (const std::bad_alloc&) {
        Release(child);
      }
      continue;
    }
    if (stack.Empty()) return;  // `bottom` is the node being destroyed
    const Frame done = top;
    stack.Erase(stack.Size() - 1);
    Release(done);
  }
}

// Handles one non-null link: releases it when another holder remains, or
// detaches it into `child` when this link is its last reference.
template <class T>
bool TreeTeardown::Take(Orvel::SmartPtr<T>& link, Kind kind, Frame* child) noexcept {
  if (link.IsNull()) return false;
  if (link->NbRef() > 1) {
    link = nullptr;
    return false;
  }
  *child = Frame{kind, link.Detach(), 0};
  return true;
}

bool TreeTeardown::TakeNextChild(Frame& frame, Frame* child) noexcept {
  switch (frame.kind) {
    case Kind::kTable: {
      KTable& table = *static_cast<KTable*>(frame.node);
      const std::size_t slots = table.SlotCount();
      while (frame.next < slots + 2) {
        const std::size_t link = frame.next++;
        Orvel::SmartPtr<KCell>& cell =
            link == 0 ? table.summary_ : link == 1 ? table.caption_ : table.grid_[link - 2];
        if (Take(cell, Kind::kCell, child)) return true;
      }
      return false;
    }
    case Kind::kCell: {
      KCell& cell = *static_cast<KCell*>(frame.node);
      while (frame.next < cell.items_.Size()) {
        if (Take(cell.items_[static_cast<uint32_t>(frame.next++)], Kind::kItem, child)) return true;
      }
      return false;
    }
    case Kind::kItem: {
      KCellItem& item = *static_cast<KCellItem*>(frame.node);
      // A text record holds nothing, so releasing it never nests.
      item.text_ = nullptr;
      return Take(item.table_, Kind::kTable, child);
    }
  }
  return false;
}

void TreeTeardown::Release(const Frame& frame) noexcept {
  switch (frame.kind) {
    case Kind::kTable:
      static_cast<KTable*>(frame.node)->Release();
      break;
    case Kind::kCell:
      static_cast<KCell*>(frame.node)->Release();
      break;
    case Kind::kItem:
      static_cast<KCellItem*>(frame.node)->Release();
      break;
  }
}

}  // namespace ZestraNS
