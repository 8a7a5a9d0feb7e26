// Watches the order in which a tree's nodes are freed by replacing the C
// library's free() in this test program (glibc keeps the original reachable
// as __libc_free). Sanitizers bring their own free(), so there the tests
// are skipped.
#include <gtest/gtest.h>

#include <algorithm>
#include <unordered_set>
#include <cstddef>
#include <cstdlib>
#include <vector>

#include "model/tree_builders.h"
#include "zestra/model/k_table.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZESTRA_WATCH_FREES 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define ZESTRA_WATCH_FREES 0
#endif
#endif
#if !defined(ZESTRA_WATCH_FREES)
#if defined(__GLIBC__)
#define ZESTRA_WATCH_FREES 1
#else
#define ZESTRA_WATCH_FREES 0
#endif
#endif

namespace {

// The addresses freed while `recording` is set. free() must not allocate,
// so the log is a fixed array; this program runs one test at a time.
struct FreeLog {
  bool recording = false;
  std::size_t size = 0;
  void* entries[1 << 20];
};
FreeLog free_log;

}  // namespace

#if ZESTRA_WATCH_FREES
extern "C" void __libc_free(void* p);
extern "C" void free(void* p) noexcept {
  if (free_log.recording && p != nullptr && free_log.size < std::size(free_log.entries)) {
    free_log.entries[free_log.size++] = p;
  }
  __libc_free(p);
}
#endif

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;
using testing::AddTable;
using testing::AddText;
using testing::NewTable;

// Frees `root` and returns, in order, those of the freed addresses that are
// in `watched`.
std::vector<const void*> FreeAndWatch(SmartPtr<KTable>& root, const std::vector<const void*>& watched) {
  free_log.size = 0;
  free_log.recording = true;
  root = nullptr;
  free_log.recording = false;
  const std::unordered_set<const void*> watched_set(watched.begin(), watched.end());
  std::vector<const void*> seen;
  for (std::size_t i = 0; i < free_log.size; ++i) {
    if (watched_set.count(free_log.entries[i]) != 0) seen.push_back(free_log.entries[i]);
  }
  return seen;
}

class ReleaseOrderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!ZESTRA_WATCH_FREES) GTEST_SKIP() << "free() cannot be watched in this build";
  }
};

TEST_F(ReleaseOrderTest, SummaryThenCaptionThenSlotsEachSubtreeFirst) {
  SmartPtr<KTable> table = NewTable(2, 1);
  SmartPtr<KCell> caption = table->CreateCaption();
  SmartPtr<KTable> nested = AddTable(*caption);
  SmartPtr<KCell> nested_cell = nested->CreateCell(0, 0);
  SmartPtr<KCellItem> nested_text = AddText(*nested_cell, u"nested");
  SmartPtr<KCell> summary = table->CreateSummary();
  SmartPtr<KCellItem> summary_text = AddText(*summary, u"summary");
  SmartPtr<KCell> x = table->CreateCell(0, 0);
  // Long enough that the record keeps its own buffer when the next item
  // compacts it.
  SmartPtr<KCellItem> x_text = AddText(*x, u"x, a text of some words");
  SmartPtr<KCellItem> x_empty = x->AddCellItem();
  SmartPtr<KCell> y = table->CreateCell(1, 0);
  SmartPtr<KCellItem> caption_item = caption->Begin()[0];
  // A text record frees its string's buffer just before itself.
  const void* nested_buffer = nested_text->Text().data();
  const void* summary_buffer = summary_text->Text().data();
  const void* x_buffer = x_text->Text().data();

  const std::vector<const void*> expected = {
      summary_buffer, summary_text.Get(), summary.Get(),
      nested_buffer, nested_text.Get(), nested_cell.Get(), nested.Get(), caption_item.Get(), caption.Get(),
      x_buffer, x_text.Get(), x_empty.Get(), x.Get(),
      y.Get(),
      table.Get()};
  for (SmartPtr<KCell>* cell : {&caption, &nested_cell, &summary, &x, &y}) *cell = nullptr;
  for (SmartPtr<KCellItem>* item : {&nested_text, &summary_text, &x_text, &x_empty, &caption_item}) *item = nullptr;
  nested = nullptr;

  EXPECT_EQ(FreeAndWatch(table, expected), expected);
}

TEST_F(ReleaseOrderTest, NodesHeldElsewhereAreOnlyReleased) {
  SmartPtr<KTable> table = NewTable(1, 2);
  SmartPtr<KCell> kept = table->CreateCell(0, 0);
  SmartPtr<KTable> kept_nested = AddTable(*kept);
  SmartPtr<KCell> freed = table->CreateCell(0, 1);
  const std::vector<const void*> watched = {kept.Get(), kept_nested.Get(), freed.Get(), table.Get()};
  freed = nullptr;
  EXPECT_EQ(FreeAndWatch(table, watched), (std::vector<const void*>{watched[2], watched[3]}));
  EXPECT_EQ(kept->NbRef(), 1);
  EXPECT_EQ(kept_nested->NbRef(), 2);
}

TEST_F(ReleaseOrderTest, DeepChainFreesInnermostFirst) {
  // table, cell, item, table, ...: every node is freed after everything
  // below it, exactly as a recursive teardown would.
  constexpr int kLevels = 20000;
  SmartPtr<KTable> root = NewTable(1, 1);
  std::vector<const void*> expected;
  KTable* table = root.Get();
  for (int level = 0; level < kLevels; ++level) {
    KCell* cell = table->CreateCell(0, 0).Get();
    expected.push_back(table);
    expected.push_back(cell);
    if (level + 1 == kLevels) break;
    KTable* next = AddTable(*cell).Get();
    expected.push_back(cell->Begin()[0].Get());
    table = next;
  }
  std::reverse(expected.begin(), expected.end());
  EXPECT_EQ(FreeAndWatch(root, expected), expected);
}

}  // namespace
}  // namespace ZestraNS
