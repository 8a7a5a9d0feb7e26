// The fast ranks and selection (levels past a zero depth factor skipped,
// ranks computed once per selection, subtrees walked once below winners)
// against their plain definitions, bit for bit.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <vector>

#include "ranking/test_trees.h"
#include "zestra/ranking/find_winning_tables.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;
using testing::Bits;
using testing::Lcg;
using testing::PlainFindWinningTables;
using testing::PlainRank;

// Every table the selection ranks: the root and its FindAllTables.
Orvel::RefCountVector<KTable> Candidates(const SmartPtr<KTable>& root) {
  Orvel::RefCountVector<KTable> all;
  all.Add(root);
  root->FindAllTables(all);
  return all;
}

double RandomWeight(Lcg& random) { return static_cast<double>(random.Below(1000)) / 997.0; }

SmartPtr<KRankParameters> RandomParameters(Lcg& random) {
  const uint32_t levels = 1 + random.Below(3);
  std::vector<double> link, cell, count;
  for (uint32_t i = 0; i < levels; ++i) {
    link.push_back(RandomWeight(random));
    cell.push_back(RandomWeight(random));
    count.push_back(RandomWeight(random));
  }
  SmartPtr<KRankParameters> p = KRankParameters::WithWeights(link.data(), cell.data(), count.data(), levels);
  p->Init(RandomWeight(random) * 0.8, RandomWeight(random), 0.5, RandomWeight(random) * 0.8);
  return p;
}

void ExpectSameRanks(const SmartPtr<KTable>& root, const KStatistics& d, const SmartPtr<KRankParameters>& p) {
  for (const SmartPtr<KTable>& table : Candidates(root)) {
    const double fast = table->Rank(d, p);
    const double plain = PlainRank(table, d, *p);
    ASSERT_EQ(Bits(fast), Bits(plain)) << fast << " vs " << plain;
  }
}

// With `memo`, each table's plain rank is computed once: below a long chain
// of winners the plain selection would otherwise recompute it once per
// winner above it.
// Returns the number of tables in the set.
size_t ExpectSameWinners(const SmartPtr<KTable>& root, const KStatistics& d, const SmartPtr<KRankParameters>& p,
                         bool memo = false) {
  KWinners fast(new KTableSet());
  FindWinningTables(root, d, p, fast);
  KTableSet plain;
  if (memo) {
    std::map<const KTable*, double> ranks;
    PlainFindWinningTables(root, d, *p, plain,
                           [&ranks](const SmartPtr<KTable>& t, const KStatistics& d, const KRankParameters& p) {
                             const auto [it, added] = ranks.emplace(t.Get(), 0.0);
                             if (added) it->second = PlainRank(t, d, p);
                             return it->second;
                           });
  } else {
    PlainFindWinningTables(root, d, *p, plain);
  }
  EXPECT_EQ(*fast, plain);
  return fast->size();
}

TEST(RankEquivalenceTest, RandomTrees) {
  Lcg random(20240611);
  SmartPtr<KRankParameters> defaults(new KRankParameters());
  int several_winners = 0;
  for (int round = 0; round < 300; ++round) {
    SCOPED_TRACE(round);
    SmartPtr<KTable> root = testing::RandomTree(random, 40, 6);
    const KStatistics d = testing::DocumentStatistics(root);
    const SmartPtr<KRankParameters> p = round % 3 == 0 ? defaults : RandomParameters(random);
    ExpectSameRanks(root, d, p);
    if (ExpectSameWinners(root, d, p) > 1) ++several_winners;
  }
  // The trees are varied enough to exercise the whole selection.
  EXPECT_GT(several_winners, 100);
}

TEST(RankEquivalenceTest, RandomTreesWithTiedSiblings) {
  // Identical sibling chains rank identically: ties in the sort.
  Lcg random(77);
  for (int round = 0; round < 50; ++round) {
    SCOPED_TRACE(round);
    SmartPtr<KTable> root = testing::NewTable(3, 1);
    const uint32_t depth = 1 + random.Below(5);
    const uint32_t words = random.Below(30);
    for (uint32_t col = 0; col < 3; ++col) {
      SmartPtr<KCell> cell = testing::AddCell(root, col, 0, 1, 0);
      testing::AddText(cell, u"r");
      SmartPtr<KTable> below = testing::AddTable(cell);
      for (uint32_t level = 0; level < depth; ++level) {
        SmartPtr<KCell> inner = testing::AddCell(below, 0, 0, words, words / 3);
        testing::AddText(inner, u"i");
        if (level + 1 < depth) below = testing::AddTable(inner);
      }
    }
    const KStatistics d = testing::DocumentStatistics(root);
    const SmartPtr<KRankParameters> p = RandomParameters(random);
    ExpectSameRanks(root, d, p);
    ExpectSameWinners(root, d, p);
  }
}

// Chains longer than 1024 levels reach the levels whose factor is 0.0.
TEST(RankEquivalenceTest, ChainsPastTheLastNonZeroFactor) {
  SmartPtr<KRankParameters> defaults(new KRankParameters());
  for (uint32_t levels : {1023u, 1024u, 1025u, 1100u, 1200u}) {
    SCOPED_TRACE(levels);
    SmartPtr<KTable> root = testing::Chain(levels, 5, 1, u"w");
    const KStatistics d = testing::DocumentStatistics(root);
    ExpectSameRanks(root, d, defaults);
    ExpectSameWinners(root, d, defaults, true);
  }
}

// A chain whose only words lie past level 1024: every shallow level adds 0,
// every deep level (q * w) * 0.0, which is 0 only for finite q * w.
SmartPtr<KTable> ChainWithDeepWordsOnly(uint32_t levels, uint32_t first_wordy_level) {
  SmartPtr<KTable> root = testing::NewTable(1, 1);
  SmartPtr<KTable> table = root;
  for (uint32_t level = 0; level < levels; ++level) {
    SmartPtr<KCell> cell = testing::AddCell(table, 0, 0, level >= first_wordy_level ? 7 : 0, 0);
    testing::AddText(cell, u"w");
    if (level + 1 < levels) table = testing::AddTable(cell);
  }
  return root;
}

TEST(RankEquivalenceTest, DeepLevelsThatWouldNotAddZeroAreWalked) {
  SmartPtr<KTable> root = ChainWithDeepWordsOnly(1100, 1050);
  const KStatistics d = testing::DocumentStatistics(root);
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double huge = 1e300;

  // Ordinary weights: the deep words add nothing.
  SmartPtr<KRankParameters> defaults(new KRankParameters());
  EXPECT_EQ(Bits(root->Rank(d, defaults)), Bits(0.0));
  EXPECT_EQ(Bits(root->Rank(d, defaults)), Bits(PlainRank(root, d, *defaults)));

  // A cell weight whose product with the deep tables' 7 words per cell
  // overflows, or that is infinite or NaN: the deep levels make the rank
  // NaN, and must be walked to find that out.
  for (double w : {1e308, -1e308, inf, nan}) {
    SCOPED_TRACE(w);
    const double link[] = {0.3}, cell[] = {w}, count[] = {0.4};
    SmartPtr<KRankParameters> p = KRankParameters::WithWeights(link, cell, count, 1);
    const double plain = PlainRank(root, d, *p);
    EXPECT_TRUE(std::isnan(plain));
    EXPECT_EQ(Bits(root->Rank(d, p)), Bits(plain));
    ExpectSameWinners(root, d, p, true);
  }
  // A weight too large to rule out an overflow, whose products happen to
  // stay finite: the levels are walked and still add nothing.
  const double link[] = {0.3}, cell[] = {0.3}, count[] = {huge};
  SmartPtr<KRankParameters> large = KRankParameters::WithWeights(link, cell, count, 1);
  EXPECT_EQ(Bits(root->Rank(d, large)), Bits(0.0));
  EXPECT_EQ(Bits(root->Rank(d, large)), Bits(PlainRank(root, d, *large)));

  // Statistics whose largest average is 0 (not those of this tree): the
  // deep cell terms divide 0 by 0.
  KStatistics foreign = d;
  foreign.MaxWordsPerCell(0.0);
  const double plain = PlainRank(root, foreign, *defaults);
  EXPECT_TRUE(std::isnan(plain));
  EXPECT_EQ(Bits(root->Rank(foreign, defaults)), Bits(plain));
  foreign.MaxWordsPerCell(nan);
  EXPECT_EQ(Bits(root->Rank(foreign, defaults)), Bits(PlainRank(root, foreign, *defaults)));
}

TEST(RankEquivalenceTest, SharedTablesCountOncePerPlace) {
  // One table held by two items: listed twice on its level and twice among
  // the candidates, as the plain definition does.
  SmartPtr<KTable> root = testing::NewTable(2, 1);
  SmartPtr<KTable> shared = testing::NewTable(1, 1, root.Get(), 1);
  testing::AddText(testing::AddCell(shared, 0, 0, 9, 1), u"s");
  for (uint32_t col = 0; col < 2; ++col) {
    SmartPtr<KCell> cell = testing::AddCell(root, col, 0, 3, 0);
    testing::AddText(cell, u"c");
    cell->AddCellItem()->Table(shared);
  }
  const KStatistics d = testing::DocumentStatistics(root);
  SmartPtr<KRankParameters> p(new KRankParameters());
  ExpectSameRanks(root, d, p);
  ExpectSameWinners(root, d, p);
}

}  // namespace
}  // namespace ZestraNS
