// Trees nested far deeper than the native stack could follow one frame per
// level: building, summing, listing and freeing must all work on the
// default 8 MiB stack, sanitizers included.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "model/tree_builders.h"
#include "zestra/base/ref_count_vector.h"
#include "zestra/model/k_statistics.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {
namespace {

using Orvel::RefCountVector;
using Orvel::SmartPtr;
using testing::AddTable;
using testing::AddText;
using testing::NewTable;

constexpr uint32_t kLevels = 1000000;

// Words and link words of the cell of chain table `level`.
uint32_t WordsAt(uint32_t level) { return level % 7 + 1; }
uint32_t LinkWordsAt(uint32_t level) { return level % 3 == 0 ? 1 : 0; }

// A chain table, cell, item, table, ... of `levels` tables, each cell also
// holding one text item; `tables` receives every table in nesting order.
SmartPtr<KTable> BuildChain(uint32_t levels, std::vector<KTable*>* tables) {
  SmartPtr<KTable> root = NewTable(1, 1);
  KTable* table = root.Get();
  for (uint32_t level = 0; level < levels; ++level) {
    tables->push_back(table);
    SmartPtr<KCell> cell = table->CreateCell(0, 0);
    AddText(*cell, u"words", WordsAt(level), LinkWordsAt(level));
    if (level + 1 < levels) table = AddTable(*cell).Get();  // held by its item
  }
  return root;
}

TEST(DeepTreeTest, MillionLevelChain) {
  std::vector<KTable*> tables;
  tables.reserve(kLevels);
  SmartPtr<KTable> root = BuildChain(kLevels, &tables);
  ASSERT_EQ(tables.size(), kLevels);
  EXPECT_EQ(tables.back()->Level(), kLevels - 1);

  uint64_t words = 0, link_words = 0;
  double best = 0.0;
  for (uint32_t level = 0; level < kLevels; ++level) {
    words += WordsAt(level);
    link_words += LinkWordsAt(level);
    best = std::max(best, static_cast<double>(WordsAt(level) - LinkWordsAt(level)));
  }

  KStatistics full;
  root->Statistics(full, 0xFFFFFFFFu);
  EXPECT_EQ(full.Words(), static_cast<uint32_t>(words));
  EXPECT_EQ(full.WordsInLinksAndImages(), static_cast<uint32_t>(link_words));
  EXPECT_EQ(full.Cells(), kLevels);
  EXPECT_EQ(full.Tables(), kLevels - 1);
  EXPECT_EQ(full.MaxWordsPerCell(), best);

  // A depth reaches that many tables below the one it starts at.
  KStatistics shallow;
  tables[10]->Statistics(shallow, 5);
  EXPECT_EQ(shallow.Cells(), 6u);
  KStatistics from_cell;
  tables[kLevels - 3]->GetCell(0, 0)->Statistics(from_cell, 0xFFFFFFFFu);
  EXPECT_EQ(from_cell.Cells(), 3u);

  RefCountVector<KTable> all;
  root->FindAllTables(all);
  ASSERT_EQ(all.Size(), kLevels - 1);
  for (uint32_t i : {0u, 1u, 2u, 499999u, 777777u, kLevels - 2}) EXPECT_EQ(all[i].Get(), tables[i + 1]) << i;
  all.Clear();

  // Freeing the root frees the upper half; a table held from outside keeps
  // the lower half alive until it is let go as well.
  SmartPtr<KTable> middle(tables[kLevels / 2]);
  root = nullptr;
  EXPECT_EQ(middle->NbRef(), 1);
  KStatistics lower;
  middle->Statistics(lower, 0xFFFFFFFFu);
  EXPECT_EQ(lower.Cells(), kLevels / 2);
  middle = nullptr;
}

TEST(DeepTreeTest, DeepCellAndItemTeardown) {
  // Dropping a lone cell or item at the top of a deep chain frees it too.
  std::vector<KTable*> tables;
  SmartPtr<KTable> root = BuildChain(200000, &tables);
  SmartPtr<KCell> cell = root->GetCell(0, 0);
  SmartPtr<KCellItem> item = cell->Begin()[1];
  root = nullptr;
  cell = nullptr;
  EXPECT_EQ(item->NbRef(), 1);
  EXPECT_TRUE(item->IsTable());
  item = nullptr;
}

}  // namespace
}  // namespace ZestraNS
