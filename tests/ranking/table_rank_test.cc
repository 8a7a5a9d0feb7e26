#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "ranking/test_trees.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_table.h"
#include "zestra/ranking/k_rank_parameters.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;
using testing::AddCell;
using testing::AddTable;
using testing::AddText;
using testing::Bits;
using testing::NewTable;
using testing::PlainRank;

// Document statistics of the worked examples: 100 words, 20 in links, the
// wordiest table averaging 15 non-link words per cell.
KStatistics ExampleDocument() {
  KStatistics d;
  d.AddWords(100);
  d.AddWordsInLinksAndImages(20);
  d.MaxWordsPerCell(15.0);
  return d;
}

// T: one row of two cells, 30 words none in links and 10 words all in links.
SmartPtr<KTable> ExampleTable(SmartPtr<KCell>* wordy_cell = nullptr) {
  SmartPtr<KTable> t = NewTable(2, 1);
  SmartPtr<KCell> wordy = AddCell(t, 0, 0, 30, 0);
  AddText(wordy, u"w");
  AddText(AddCell(t, 1, 0, 10, 10), u"l");
  if (wordy_cell != nullptr) *wordy_cell = wordy;
  return t;
}

// A one-cell table below `cell` with `words` words, `link_words` in links.
SmartPtr<KTable> AddLeaf(const SmartPtr<KCell>& cell, uint32_t words, uint32_t link_words) {
  SmartPtr<KTable> u = AddTable(cell);
  AddText(AddCell(u, 0, 0, words, link_words), u"u");
  return u;
}

class TableRankTest : public ::testing::Test {
 protected:
  SmartPtr<KRankParameters> p_{new KRankParameters()};
  KStatistics d_ = ExampleDocument();
};

TEST_F(TableRankTest, SingleTableExample) {
  SmartPtr<KTable> t = ExampleTable();
  const double rank = t->Rank(d_, p_);
  EXPECT_NEAR(rank, 0.675, 1e-15);
  EXPECT_EQ(Bits(rank), Bits(PlainRank(t, d_, *p_)));
  EXPECT_EQ(t->NbRef(), 1);  // the walk's references are gone
}

TEST_F(TableRankTest, NestedLevelCountsHalf) {
  SmartPtr<KCell> wordy;
  SmartPtr<KTable> t = ExampleTable(&wordy);
  AddLeaf(wordy, 8, 0);
  const double rank = t->Rank(d_, p_);
  EXPECT_NEAR(rank, 0.925, 1e-15);
  EXPECT_EQ(Bits(rank), Bits(PlainRank(t, d_, *p_)));
}

TEST_F(TableRankTest, LevelStatisticsAccumulateInLevelOrder) {
  // U1 (8 words) before U2 (2 words, both in links): the level adds
  // (0.25 + 0.14) / 2 = 0.195.
  SmartPtr<KCell> wordy;
  SmartPtr<KTable> t = ExampleTable(&wordy);
  AddLeaf(wordy, 8, 0);
  AddLeaf(wordy, 2, 2);
  const double in_order = t->Rank(d_, p_);
  EXPECT_NEAR(in_order - 0.675, 0.195, 1e-15);
  EXPECT_EQ(Bits(in_order), Bits(PlainRank(t, d_, *p_)));

  // Swapped, U2's terms come first and are all 0; U1's then see both
  // tables: (0 + 0.12 + 0.08 + 0.02) / 2 = 0.11.
  SmartPtr<KCell> wordy2;
  SmartPtr<KTable> swapped = ExampleTable(&wordy2);
  AddLeaf(wordy2, 2, 2);
  AddLeaf(wordy2, 8, 0);
  const double out_of_order = swapped->Rank(d_, p_);
  EXPECT_NEAR(out_of_order - 0.675, 0.11, 1e-15);
  EXPECT_EQ(Bits(out_of_order), Bits(PlainRank(swapped, d_, *p_)));
}

TEST_F(TableRankTest, LevelsFollowColumnMajorChildOrder) {
  // U2 (2 link words) stands first in storage order, U1 (8 words) first in
  // column order; the level takes U1 first and so adds 0.195, not 0.11.
  SmartPtr<KTable> t = NewTable(2, 2);
  AddText(AddCell(t, 0, 0, 10, 0), u"a");
  AddLeaf(AddCell(t, 1, 0), 2, 2);
  AddLeaf(AddCell(t, 0, 1), 8, 0);
  const double level0 = 0.3 + 10.0 / 3.0 * 0.3 / 15.0 + 10.0 / 80.0 * 0.4;
  const double rank = t->Rank(d_, p_);
  EXPECT_NEAR(rank - level0, 0.195, 1e-15);
  EXPECT_EQ(Bits(rank), Bits(PlainRank(t, d_, *p_)));
}

TEST_F(TableRankTest, TablesWithoutWordsOrWithOnlyLinkWords) {
  SmartPtr<KTable> empty = NewTable(2, 2);
  AddCell(empty, 0, 0);
  AddCell(empty, 1, 1);
  EXPECT_EQ(Bits(empty->Rank(d_, p_)), Bits(0.0));

  // All its words in links: only the nested table counts.
  SmartPtr<KTable> links = NewTable(1, 1);
  SmartPtr<KCell> cell = AddCell(links, 0, 0, 12, 12);
  AddText(cell, u"l");
  EXPECT_EQ(Bits(links->Rank(d_, p_)), Bits(0.0));
  AddLeaf(cell, 8, 0);
  EXPECT_NEAR(links->Rank(d_, p_), 0.25, 1e-15);
  EXPECT_EQ(Bits(links->Rank(d_, p_)), Bits(PlainRank(links, d_, *p_)));

  // A document of link words only gives no count term.
  KStatistics all_links;
  all_links.AddWords(40);
  all_links.AddWordsInLinksAndImages(40);
  all_links.MaxWordsPerCell(15.0);
  SmartPtr<KTable> t = ExampleTable();
  EXPECT_NEAR(t->Rank(all_links, p_), 0.225 + 0.3, 1e-15);
}

TEST_F(TableRankTest, CaptionCountsInStatisticsButItsTablesAreNoLevel) {
  SmartPtr<KTable> t = ExampleTable();
  const double without = t->Rank(d_, p_);
  const SmartPtr<KCell>& caption = t->CreateCaption();
  AddLeaf(caption, 8, 0);
  // The caption has no words of its own but is non-empty: one more cell.
  EXPECT_NE(Bits(t->Rank(d_, p_)), Bits(without));
  EXPECT_EQ(Bits(t->Rank(d_, p_)), Bits(PlainRank(t, d_, *p_)));
}

TEST_F(TableRankTest, LevelsCycleThroughWeightTables) {
  const double link[] = {0.3, 0.1, 0.7};
  const double cell[] = {0.2, 0.9, 0.05};
  const double count[] = {0.4, 0.6, 1.5};
  SmartPtr<KRankParameters> p = KRankParameters::WithWeights(link, cell, count, 3);
  SmartPtr<KTable> chain = testing::Chain(7, 6, 1, u"c");
  const KStatistics d = testing::DocumentStatistics(chain);
  EXPECT_EQ(Bits(chain->Rank(d, p)), Bits(PlainRank(chain, d, *p)));
  EXPECT_NE(Bits(chain->Rank(d, p)), Bits(chain->Rank(d, p_)));
}

TEST(CellRankTest, ShareOfWordsOutsideLinks) {
  SmartPtr<KTable> t = NewTable(3, 1);
  EXPECT_EQ(AddCell(t, 0, 0, 0, 0)->Rank(), 0.0);
  EXPECT_EQ(AddCell(t, 1, 0, 10, 4)->Rank(), 1.0 - 4.0 / 10.0);
  EXPECT_NEAR(AddCell(t, 1, 0, 10, 4)->Rank(), 0.6, 1e-15);
  EXPECT_EQ(AddCell(t, 2, 0, 7, 7)->Rank(), 0.0);
  // Counters are unsigned: more link words than words gives a negative share.
  EXPECT_EQ(AddCell(t, 2, 0, 2, 4)->Rank(), -1.0);
}

}  // namespace
}  // namespace ZestraNS
