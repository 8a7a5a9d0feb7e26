// TreeTeardown frees the subtree below a layout node whose destructor is
// running, without one stack frame per nesting level.
//
// A destructor hands its node to ReleaseChildren. The node's child links are
// then visited in their release order (table: summary, caption, grid slots
// in storage order; cell: items in order; item: text record, then table).
// A child that someone else also holds is simply released. A child held
// only by this link is detached and walked the same way on an explicit
// stack on the heap; when all its children are gone it is released, and its
// own destructor then finds nothing left to free.
//
// The releases and frees therefore happen in exactly the order of a plain
// recursive teardown (each child's whole subtree before the next sibling,
// a node freed after its children), however deep the tree. The only
// difference is invisible from outside: a detached node's parent link is
// cleared when the node itself is released, after its children, since no
// one else can reach the node by then.
//
// If the explicit stack cannot grow (memory exhausted), the child is
// released at once instead, which frees its subtree from within its own
// destructor: still correct, one extra native frame for that child.
#ifndef ZESTRA_MODEL_TREE_TEARDOWN_H_
#define ZESTRA_MODEL_TREE_TEARDOWN_H_

#include <cstddef>

#include "zestra/base/fast_vector.h"
#include "zestra/base/smart_ptr.h"

namespace ZestraNS {

class KCell;
class KCellItem;
class KTable;

class TreeTeardown {
 public:
  TreeTeardown() = delete;

  // Release every child link of the node and free what only it held.
  // Postcondition: all the node's child links are null.
  static void ReleaseChildren(KTable& table) noexcept;
  static void ReleaseChildren(KCell& cell) noexcept;
  static void ReleaseChildren(KCellItem& item) noexcept;

 private:
  enum class Kind { kTable, kCell, kItem };

  // A node whose child links are being released; `next` counts the links
  // already handled.
  struct Frame {
    Kind kind;
    void* node;
    std::size_t next;
  };

  static void Run(Frame bottom) noexcept;
  static bool TakeNextChild(Frame& frame, Frame* child) noexcept;
  static void Release(const Frame& frame) noexcept;

  template <class T>
  static bool Take(Orvel::SmartPtr<T>& link, Kind kind, Frame* child) noexcept;
};

}  // namespace ZestraNS

#endif  // ZESTRA_MODEL_TREE_TEARDOWN_H_
