#include <gtest/gtest.h>

#include "model/tree_builders.h"
#include "zestra/model/k_statistics.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;
using testing::AddTable;
using testing::AddText;
using testing::AddWordsCell;
using testing::NewTable;

constexpr uint32_t kFullDepth = 0xFFFFFFFFu;

TEST(StatisticsTest, OneCellTable) {
  SmartPtr<KTable> table = NewTable(2, 2);
  SmartPtr<KCell> cell = AddWordsCell(*table, 1, 0, 10, 4);
  cell->AddLinks(3);
  cell->AddImages(2);
  EXPECT_EQ(table->WordsPerCell(), 6.0);

  KStatistics record;
  table->Statistics(record, 0);
  EXPECT_EQ(record.Words(), 10u);
  EXPECT_EQ(record.WordsInLinksAndImages(), 4u);
  EXPECT_EQ(record.Links(), 3u);
  EXPECT_EQ(record.Images(), 2u);
  EXPECT_EQ(record.Tables(), 0u);
  EXPECT_EQ(record.Cells(), 1u);
  EXPECT_EQ(record.MaxWordsPerCell(), 6.0);

  // Statistics adds to what the record holds; a larger maximum stays.
  record.MaxWordsPerCell(7.0);
  table->Statistics(record, 0);
  EXPECT_EQ(record.Words(), 20u);
  EXPECT_EQ(record.Cells(), 2u);
  EXPECT_EQ(record.MaxWordsPerCell(), 7.0);
}

TEST(StatisticsTest, EmptyCellsAddNothing) {
  SmartPtr<KTable> table = NewTable(3, 1);
  table->CreateCell(0, 0)->AddWords(50);  // no items: an empty cell
  table->CreateCell(2, 0);
  EXPECT_EQ(table->WordsPerCell(), 0.0);
  KStatistics record;
  table->Statistics(record, kFullDepth);
  EXPECT_EQ(record.Words(), 0u);
  EXPECT_EQ(record.Cells(), 0u);
  EXPECT_EQ(record.MaxWordsPerCell(), 0.0);

  // A cell with only an empty item is non-empty.
  table->GetCell(2, 0)->AddCellItem();
  table->GetCell(2, 0)->AddWords(5);
  EXPECT_EQ(table->WordsPerCell(), 5.0);
}

// root: one cell r (5 words) holding table A; A's cell a (8 words, 2 in
// links) holds table B; B's cell b has 20 words.
class NestedStatisticsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    root_ = NewTable(1, 1);
    SmartPtr<KCell> r = AddWordsCell(*root_, 0, 0, 5);
    a_ = AddTable(*r);
    SmartPtr<KCell> a = AddWordsCell(*a_, 0, 0, 8, 2);
    a->AddLinks(1);
    b_ = AddTable(*a);
    AddWordsCell(*b_, 0, 0, 20);
  }

  KStatistics Sum(uint32_t depth) {
    KStatistics record;
    root_->Statistics(record, depth);
    return record;
  }

  SmartPtr<KTable> root_, a_, b_;
};

TEST_F(NestedStatisticsTest, DepthLimitsTheDescent) {
  KStatistics d0 = Sum(0);
  EXPECT_EQ(d0.Words(), 5u);
  EXPECT_EQ(d0.Tables(), 1u);  // A, through r's own counter
  EXPECT_EQ(d0.Cells(), 1u);
  EXPECT_EQ(d0.Links(), 0u);
  EXPECT_EQ(d0.MaxWordsPerCell(), 5.0);

  KStatistics d1 = Sum(1);
  EXPECT_EQ(d1.Words(), 13u);
  EXPECT_EQ(d1.WordsInLinksAndImages(), 2u);
  EXPECT_EQ(d1.Links(), 1u);
  EXPECT_EQ(d1.Tables(), 2u);
  EXPECT_EQ(d1.Cells(), 2u);
  EXPECT_EQ(d1.MaxWordsPerCell(), 6.0);

  KStatistics full = Sum(kFullDepth);
  EXPECT_EQ(full.Words(), 33u);
  EXPECT_EQ(full.Tables(), 2u);  // the tables below the root
  EXPECT_EQ(full.Cells(), 3u);
  EXPECT_EQ(full.MaxWordsPerCell(), 20.0);
  EXPECT_EQ(Sum(2).Words(), 33u);

  // A cell descends one level less than its depth.
  KStatistics cell_d1;
  root_->GetCell(0, 0)->Statistics(cell_d1, 1);
  EXPECT_EQ(cell_d1.Words(), 13u);
  EXPECT_EQ(cell_d1.Cells(), 2u);
  EXPECT_EQ(cell_d1.MaxWordsPerCell(), 6.0);  // A's average; the cell has none
  KStatistics cell_d0;
  root_->GetCell(0, 0)->Statistics(cell_d0, 0);
  EXPECT_EQ(cell_d0.Words(), 5u);
  EXPECT_EQ(cell_d0.Cells(), 1u);
  EXPECT_EQ(cell_d0.MaxWordsPerCell(), 0.0);
}

TEST_F(NestedStatisticsTest, CaptionAndSummaryCountLikeGridCells) {
  SmartPtr<KCell> caption = a_->CreateCaption();
  AddText(*caption, u"c", 4, 0);
  SmartPtr<KTable> in_caption = AddTable(*caption);
  AddWordsCell(*in_caption, 0, 0, 100, 10);
  AddText(*a_->CreateSummary(), u"s", 2, 2);
  // A: caption 4, summary 0, grid 6 non-link words over 3 cells.
  EXPECT_EQ(a_->WordsPerCell(), 10.0 / 3.0);

  KStatistics full = Sum(kFullDepth);
  EXPECT_EQ(full.Words(), 33u + 4 + 100 + 2);
  EXPECT_EQ(full.WordsInLinksAndImages(), 2u + 10 + 2);
  EXPECT_EQ(full.Tables(), 3u);
  EXPECT_EQ(full.Cells(), 6u);
  EXPECT_EQ(full.MaxWordsPerCell(), 90.0);
}

TEST(StatisticsTest, ACellInTwoSlotsCountsTwice) {
  SmartPtr<KTable> table = NewTable(2, 2);
  SmartPtr<KCell> cell = AddWordsCell(*table, 0, 0, 9, 1);
  table->SetCell(1, 1, cell);
  AddWordsCell(*table, 1, 0, 2);
  EXPECT_EQ(table->WordsPerCell(), 18.0 / 3.0);
  KStatistics record;
  table->Statistics(record, 0);
  EXPECT_EQ(record.Words(), 20u);
  EXPECT_EQ(record.WordsInLinksAndImages(), 2u);
  EXPECT_EQ(record.Cells(), 3u);
  EXPECT_EQ(record.MaxWordsPerCell(), 6.0);
}

TEST(StatisticsTest, NonLinkWordsAreUnsignedDifferences) {
  // Counters a caller set inconsistently: more link words than words.
  SmartPtr<KTable> table = NewTable(1, 1);
  AddWordsCell(*table, 0, 0, 1, 2);
  EXPECT_EQ(table->WordsPerCell(), 4294967295.0);
  KStatistics record;
  table->Statistics(record, 0);
  EXPECT_EQ(record.MaxWordsPerCell(), 4294967295.0);
}

TEST(StatisticsTest, EveryTableVisitedCompetesForTheMaximum) {
  // Two siblings and a nested table; the best average is the first
  // sibling's, which a later, smaller one must not overwrite.
  SmartPtr<KTable> root = NewTable(2, 1);
  SmartPtr<KCell> left = AddWordsCell(*root, 0, 0, 1);
  SmartPtr<KCell> right = AddWordsCell(*root, 1, 0, 1);
  AddWordsCell(*AddTable(*left), 0, 0, 40);
  SmartPtr<KTable> low = AddTable(*right, 2, 1);
  AddWordsCell(*low, 0, 0, 3);
  AddWordsCell(*low, 1, 0, 5);
  KStatistics record;
  root->Statistics(record, kFullDepth);
  EXPECT_EQ(record.MaxWordsPerCell(), 40.0);
  EXPECT_EQ(record.Cells(), 5u);
  EXPECT_EQ(record.Tables(), 2u);
  EXPECT_EQ(low->WordsPerCell(), 4.0);
}

}  // namespace
}  // namespace ZestraNS
