// Releasing a parsed tree must work when memory has run out: the release
// happens in destructors, where a failed allocation would end the process.
// This test program replaces the global operator new with one that can be
// made to fail.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "zestra/html/html_keyword_table.h"
#include "zestra/html/html_tree_node.h"

namespace {

std::atomic<bool> allocations_fail{false};

}  // namespace

// The replacement pair allocates with malloc and frees with free, which the
// compiler cannot see through.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"

void* operator new(std::size_t size) {
  if (allocations_fail.load(std::memory_order_relaxed)) throw std::bad_alloc();
  if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
  throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace OrvelParser {
namespace {

using Entry = HtmlTreeNode::Entry;

Entry NewNode() { return Entry(new HtmlTreeNode(kIdDivision, 0, 0)); }

// A root with `width` children, each with `width` children, each with a
// chain of two: freeing it in one pass needs arrays larger than any the
// tree has.
Entry WideTree(int width, Entry& deep_leaf) {
  Entry root = NewNode();
  for (int i = 0; i < width; ++i) {
    Entry child = NewNode();
    for (int j = 0; j < width; ++j) {
      Entry grandchild = NewNode();
      Entry leaf = NewNode();
      grandchild->Children().push_back(leaf);
      if (i == width - 1 && j == width - 1) deep_leaf = leaf;
      child->Children().push_back(grandchild);
    }
    root->Children().push_back(child);
  }
  return root;
}

TEST(HtmlTreeNodeRelease, FreesEverythingWhenNoMemoryIsLeft) {
  Entry deep_leaf;
  Entry root = WideTree(300, deep_leaf);
  ASSERT_EQ(deep_leaf.Count(), 2);
  allocations_fail = true;
  root.Reset();
  allocations_fail = false;
  EXPECT_EQ(deep_leaf.Count(), 1);  // the tree let go of it

  // ReleaseChildren likewise, and the node stays usable.
  Entry other = WideTree(50, deep_leaf);
  allocations_fail = true;
  other->ReleaseChildren();
  allocations_fail = false;
  EXPECT_TRUE(other->Children().empty());
  EXPECT_EQ(deep_leaf.Count(), 1);
  other->Children().push_back(NewNode());
  EXPECT_EQ(other->Children().size(), 1u);
}

}  // namespace
}  // namespace OrvelParser
