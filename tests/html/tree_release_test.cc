// Releasing a parsed tree must work when memory has run out (the release
// happens in destructors, where a failed allocation would end the process)
// and must give the tree's memory back, chunk by chunk, as its nodes go.
// This test program replaces the global operator new with one that can be
// made to fail.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "zestra/base/memory_ceiling.h"
#include "zestra/html/html_keyword_table.h"
#include "zestra/html/html_tree_node.h"
#include "zestra/html/node_arena.h"

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

Entry NewNode(NodeArena& arena) {
  Entry node = HtmlTreeNode::Make(arena, kIdDivision, 0, 0);
  if (!node) throw std::bad_alloc();
  node->AddParam(arena, "class", "wide");
  return node;
}

// A root with `width` children, each with `width` children, each with a
// chain of two.
Entry WideTree(NodeArena& arena, int width, Entry& deep_leaf) {
  Entry root = NewNode(arena);
  for (int i = 0; i < width; ++i) {
    Entry child = NewNode(arena);
    for (int j = 0; j < width; ++j) {
      Entry grandchild = NewNode(arena);
      Entry leaf = NewNode(arena);
      grandchild->Children().PushBack(arena, leaf);
      if (i == width - 1 && j == width - 1) deep_leaf = leaf;
      child->Children().PushBack(arena, grandchild);
    }
    root->Children().PushBack(arena, child);
  }
  return root;
}

TEST(HtmlTreeNodeRelease, FreesEverythingWhenNoMemoryIsLeft) {
  NodeArena arena;
  Entry deep_leaf;
  Entry root = WideTree(arena, 300, deep_leaf);
  ASSERT_EQ(deep_leaf.Count(), 2);
  allocations_fail = true;
  root.Reset();
  allocations_fail = false;
  EXPECT_EQ(deep_leaf.Count(), 1);  // the tree let go of it
  std::string_view value;
  EXPECT_TRUE(deep_leaf->FindParam("class", value));  // and it is whole
  EXPECT_EQ(value, "wide");

  // ReleaseChildren likewise, and the node stays usable.
  Entry other = WideTree(arena, 50, deep_leaf);
  allocations_fail = true;
  other->ReleaseChildren();
  allocations_fail = false;
  EXPECT_TRUE(other->Children().empty());
  EXPECT_EQ(deep_leaf.Count(), 1);
  other->Children().PushBack(arena, NewNode(arena));
  EXPECT_EQ(other->Children().size(), 1u);
}

// A tree of about 4 MB is built and dropped ten times under a ceiling of
// 6 MB: only if every chunk goes back with its last node do the
// later rounds fit. A tree that outlives its arena frees its chunks too.
TEST(HtmlTreeNodeRelease, GivesChunksBackAsTheirNodesGo) {
  OrvelMem::MemoryCeiling ceiling(6u << 20);
  for (int round = 0; round < 10; ++round) {
    Entry deep_leaf;
    Entry root;
    {
      NodeArena arena;
      root = WideTree(arena, 150, deep_leaf);
    }
    ASSERT_FALSE(ceiling.Reached()) << "round " << round;
    deep_leaf.Reset();
    root.Reset();
  }
  EXPECT_GT(ceiling.Peak(), 3u << 20);

  // Released part by part, as a layout walk releases what it has read: the
  // first subtrees' chunks go while the root still holds the rest.
  NodeArena arena;
  Entry deep_leaf;
  Entry root = WideTree(arena, 150, deep_leaf);
  deep_leaf.Reset();
  HtmlTreeNode::List& children = root->Children();
  for (Entry& child : children) child.Reset();
  Entry again = WideTree(arena, 150, deep_leaf);
  EXPECT_FALSE(ceiling.Reached());
}

TEST(NodeArena, CutsAlignedBlocksAndGivesLargeOnesTheirOwnChunk) {
  OrvelMem::MemoryCeiling ceiling(1u << 30);
  NodeArena arena;
  EXPECT_EQ(arena.Allocate(0), nullptr);
  void* small = arena.Allocate(3);
  void* next = arena.Allocate(8);
  ASSERT_NE(small, nullptr);
  EXPECT_EQ(static_cast<char*>(next) - static_cast<char*>(small), 8);  // rounded to the alignment
  // The last block grows in place; an earlier one does not.
  EXPECT_TRUE(arena.Extend(next, 8, 64));
  EXPECT_FALSE(arena.Extend(small, 8, 16));
  EXPECT_FALSE(arena.Extend(next, 64, NodeArena::kLargeBlock + 1));
  void* large = arena.Allocate(NodeArena::kLargeBlock + 1);
  ASSERT_NE(large, nullptr);
  const std::size_t with_large = ceiling.Peak();
  NodeArena::Release(large);
  void* large_again = arena.Allocate(NodeArena::kLargeBlock + 1);
  EXPECT_EQ(ceiling.Peak(), with_large);  // the first large block's chunk went back
  NodeArena::Release(large_again);
  NodeArena::Release(small);
  NodeArena::Release(next);
  NodeArena::Release(nullptr);
}

}  // namespace
}  // namespace OrvelParser
