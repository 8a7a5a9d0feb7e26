#include "zestra/ranking/find_winning_tables.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <vector>

#include "ranking/table_graph.h"
#include "ranking/test_trees.h"
#include "ranking/winner_selection.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;
using ranking_internal::ChooseWinners;
using ranking_internal::SelectWinningTables;
using ranking_internal::TableGraph;
using testing::AddCell;
using testing::AddTable;
using testing::AddText;
using testing::NewTable;

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// The selection over `root` with the ranks given per table (0.0 for tables
// not named).
KTableSet SelectWith(const SmartPtr<KTable>& root, const std::map<const KTable*, double>& given,
                     const KRankParameters& p, KTableSet winners = {}) {
  const TableGraph graph(root);
  std::vector<double> ranks(graph.Size(), 0.0);
  for (uint32_t id = 0; id < graph.Size(); ++id) {
    const auto it = given.find(graph.Table(id).Get());
    if (it != given.end()) ranks[id] = it->second;
  }
  SelectWinningTables(graph, ranks.data(), p, winners);
  return winners;
}

// Root with children A and B; A has A1, B has B1.
struct Family {
  SmartPtr<KTable> root = NewTable(2, 1);
  SmartPtr<KTable> a, b, a1, b1;
  Family() {
    a = AddTable(AddCell(root, 0, 0));
    b = AddTable(AddCell(root, 1, 0));
    a1 = AddTable(AddCell(a, 0, 0));
    b1 = AddTable(AddCell(b, 0, 0));
  }
};

TEST(ChooseWinnersTest, KeepsRanksWithinTheMarginBestFirst) {
  KRankParameters p;  // Low 0.2, Hi 0.05
  const double ranks[] = {0.5, 0.6, 0.15, 0.58, kNaN, 0.35};
  Orvel::FastVector<uint32_t> winners;
  ChooseWinners(ranks, 6, p, winners);
  ASSERT_EQ(winners.Size(), 2u);
  EXPECT_EQ(winners[0], 1u);
  EXPECT_EQ(winners[1], 3u);
}

TEST(ChooseWinnersTest, BoundsPassAndNaNMarginTakesEverythingKept) {
  KRankParameters p;
  p.Init(0.2, 0.25, 0.5, 0.3);
  const double best = 0.8;
  const double cutoff = best - 0.25 * best;
  const double ranks[] = {0.2, best, cutoff, std::nextafter(cutoff, 0.0), best, 0.19999};
  Orvel::FastVector<uint32_t> winners;
  ChooseWinners(ranks, 6, p, winners);
  ASSERT_EQ(winners.Size(), 3u);  // both best ranks and the one equal to the cutoff
  EXPECT_EQ(winners[2], 2u);

  // A margin that is not a number makes a cutoff nothing is below.
  p.Init(0.2, kNaN, 0.5, 0.3);
  winners.Clear();
  ChooseWinners(ranks, 6, p, winners);
  EXPECT_EQ(winners.Size(), 5u);

  // Nothing reaches LowThreshold: nothing at all.
  p.Init(0.9, 0.05, 0.5, 0.3);
  winners.Clear();
  ChooseWinners(ranks, 6, p, winners);
  EXPECT_EQ(winners.Size(), 0u);
}

TEST(SelectWinningTablesTest, WorkedExample) {
  Family f;
  KRankParameters p;
  const KTableSet winners =
      SelectWith(f.root, {{f.root.Get(), 0.5}, {f.a.Get(), 0.6}, {f.b.Get(), 0.58}, {f.a1.Get(), 0.35},
                          {f.b1.Get(), 0.25}},
                 p);
  EXPECT_EQ(winners, (KTableSet{f.a, f.b, f.a1}));
}

TEST(SelectWinningTablesTest, RootAlone) {
  SmartPtr<KTable> root = NewTable(1, 1);
  KRankParameters p;
  EXPECT_TRUE(SelectWith(root, {{root.Get(), 0.15}}, p).empty());
  EXPECT_EQ(SelectWith(root, {{root.Get(), 0.25}}, p), KTableSet{root});
  EXPECT_EQ(SelectWith(root, {{root.Get(), 0.2}}, p), KTableSet{root});
  EXPECT_TRUE(SelectWith(root, {{root.Get(), kNaN}}, p).empty());
}

TEST(SelectWinningTablesTest, MarginsAndThresholdsAreInclusive) {
  Family f;
  KRankParameters p;
  // A winner nested below another winner is in the set once; B1 equal to
  // WinnerLowThreshold joins below B.
  std::map<const KTable*, double> ranks{
      {f.root.Get(), 0.1}, {f.a.Get(), 0.7}, {f.a1.Get(), 0.7}, {f.b.Get(), 0.7 - 0.05 * 0.7}, {f.b1.Get(), 0.3}};
  EXPECT_EQ(SelectWith(f.root, ranks, p), (KTableSet{f.a, f.a1, f.b, f.b1}));

  // Margin 0: only the tables sharing the best rank.
  p.Init(0.2, 0.0, 0.5, 0.8);
  EXPECT_EQ(SelectWith(f.root, ranks, p), (KTableSet{f.a, f.a1}));

  // Margin 1: the cutoff is 0 and everything that reaches LowThreshold wins.
  p.Init(0.2, 1.0, 0.5, 0.8);
  EXPECT_EQ(SelectWith(f.root, ranks, p), (KTableSet{f.a, f.a1, f.b, f.b1}));

  // A table dropped for LowThreshold still joins below a winner when
  // WinnerLowThreshold is lower.
  ranks[f.a1.Get()] = 0.15;
  p.Init(0.2, 0.0, 0.5, 0.1);
  EXPECT_EQ(SelectWith(f.root, ranks, p), (KTableSet{f.a, f.a1}));
  // ... but not when its rank is not a number.
  ranks[f.a1.Get()] = kNaN;
  EXPECT_EQ(SelectWith(f.root, ranks, p), (KTableSet{f.a}));
}

TEST(SelectWinningTablesTest, AddsToWhatTheSetHeld) {
  Family f;
  KRankParameters p;
  std::map<const KTable*, double> ranks{{f.root.Get(), 0.9}, {f.a.Get(), 0.25}, {f.b.Get(), 0.25}};
  p.Init(0.2, 0.05, 0.5, 2.0);
  KTableSet first = SelectWith(f.root, ranks, p);
  EXPECT_EQ(first, KTableSet{f.root});
  p.Init(0.2, 0.05, 0.5, 0.3);
  ranks[f.root.Get()] = 0.1;
  EXPECT_EQ(SelectWith(f.root, ranks, p, first), (KTableSet{f.root, f.a, f.b}));
}

TEST(SelectWinningTablesTest, TablesInCaptionsAreNeverCandidates) {
  SmartPtr<KTable> root = NewTable(1, 1);
  AddCell(root, 0, 0);
  SmartPtr<KTable> hidden = AddTable(root->CreateCaption());
  KRankParameters p;
  EXPECT_EQ(SelectWith(root, {{root.Get(), 0.3}, {hidden.Get(), 0.9}}, p), KTableSet{root});
}

TEST(FindWinningTablesTest, RanksTheTreeAndSharesTheSet) {
  const testing::NavigationAndContent page(20, u"n", 200, 3, u"c");
  const SmartPtr<KTable>& root = page.root;
  const KStatistics d = testing::DocumentStatistics(root);
  SmartPtr<KRankParameters> p(new KRankParameters());

  KWinners winners(new KTableSet());
  KWinners shared = winners;
  FindWinningTables(root, d, p, winners);
  KTableSet expected;
  testing::PlainFindWinningTables(root, d, *p, expected);
  EXPECT_EQ(*shared, expected);
  EXPECT_EQ(expected.count(page.content), 1u);
  EXPECT_EQ(expected.count(page.nav), 0u);
  EXPECT_EQ(winners.Count(), 2);
  EXPECT_EQ(p->NbRef(), 1);

  // A holder without a set is left alone.
  KWinners none;
  FindWinningTables(root, d, p, none);
  EXPECT_FALSE(none);
}

}  // namespace
}  // namespace ZestraNS
