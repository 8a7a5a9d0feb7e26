#include "zestra/ranking/k_rank_parameters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace ZestraNS {

// Reaches the private comparison helper.
struct KRankParametersPeer {
  static bool EQ(double a, double b) { return KRankParameters::EQ(a, b); }
};

namespace {

TEST(KRankParametersTest, DefaultsAreTheBuiltInValues) {
  KRankParameters p;
  EXPECT_EQ(p.NbRef(), 0);
  EXPECT_EQ(p.MaxDepth(), 1u);
  EXPECT_EQ(p.LinkDensity(0), 0.3);
  EXPECT_EQ(p.WordsPerCell(0), 0.3);
  EXPECT_EQ(p.WordCount(0), 0.4);
  EXPECT_EQ(p.LowThreshold(), 0.2);
  EXPECT_EQ(p.HiThreshold(), 0.05);
  EXPECT_EQ(p.CellLowScore(), 0.5);
  EXPECT_EQ(p.WinnerLowThreshold(), 0.3);
}

TEST(KRankParametersTest, InitStoresThresholdsInArgumentOrderOnly) {
  KRankParameters p;
  p.Init(0.1, 0.2, 0.3, 0.4);
  EXPECT_EQ(p.LowThreshold(), 0.1);
  EXPECT_EQ(p.HiThreshold(), 0.2);
  EXPECT_EQ(p.CellLowScore(), 0.3);
  EXPECT_EQ(p.WinnerLowThreshold(), 0.4);
  EXPECT_EQ(p.MaxDepth(), 1u);
  EXPECT_EQ(p.LinkDensity(0), 0.3);
  EXPECT_EQ(p.WordsPerCell(0), 0.3);
  EXPECT_EQ(p.WordCount(0), 0.4);
}

TEST(KRankParametersTest, DepthFactorHalvesPerLevelAndVanishesAt1024) {
  KRankParameters p;
  EXPECT_EQ(p.DepthFactor(0), 1.0);
  EXPECT_EQ(p.DepthFactor(1), 0.5);
  EXPECT_EQ(p.DepthFactor(3), 0.125);
  // 2^1023 is the largest power of two a double holds; its inverse is a
  // subnormal, not zero. 2^1024 overflows to infinity, so the factor is 0.
  EXPECT_EQ(p.DepthFactor(1023), std::ldexp(1.0, -1023));
  EXPECT_GT(p.DepthFactor(1023), 0.0);
  EXPECT_EQ(p.DepthFactor(1024), 0.0);
  EXPECT_EQ(p.DepthFactor(1075), 0.0);
  EXPECT_EQ(p.DepthFactor(0x7FFFFFFFu), 0.0);
  // The level is taken as a signed 32-bit integer.
  EXPECT_EQ(p.DepthFactor(0xFFFFFFFFu), 2.0);
}

TEST(KRankParametersTest, EqIsStrictOnBothSidesAndFalseForNaN) {
  using Peer = KRankParametersPeer;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(Peer::EQ(1.0, 1.0));
  EXPECT_FALSE(Peer::EQ(1.0, 1.00002));
  EXPECT_FALSE(Peer::EQ(1.00002, 1.0));
  EXPECT_TRUE(Peer::EQ(1.0, 1.000009));
  EXPECT_FALSE(Peer::EQ(nan, 1.0));
  EXPECT_FALSE(Peer::EQ(1.0, nan));
  // Exactly on a bound is outside.
  EXPECT_FALSE(Peer::EQ(1.0 - 1e-05, 1.0));
  EXPECT_FALSE(Peer::EQ(1e-05 + 1.0, 1.0));
}

TEST(KRankParametersTest, WithWeightsKeepsTablesOfEqualLength) {
  const double link[] = {0.1, 0.2, 0.3};
  const double cell[] = {0.4, 0.5, 0.6};
  const double count[] = {0.7, 0.8, 0.9};
  Orvel::SmartPtr<KRankParameters> p = KRankParameters::WithWeights(link, cell, count, 3);
  ASSERT_FALSE(p.IsNull());
  EXPECT_EQ(p->NbRef(), 1);
  EXPECT_EQ(p->MaxDepth(), 3u);
  for (uint32_t i = 0; i < 3; ++i) {
    EXPECT_EQ(p->LinkDensity(i), link[i]);
    EXPECT_EQ(p->WordsPerCell(i), cell[i]);
    EXPECT_EQ(p->WordCount(i), count[i]);
  }
  EXPECT_EQ(p->LowThreshold(), 0.2);
  EXPECT_EQ(p->WinnerLowThreshold(), 0.3);
  EXPECT_TRUE(KRankParameters::WithWeights(link, cell, count, 0).IsNull());
}

TEST(KRankParametersTest, CopyKeepsValuesButNotTheCount) {
  Orvel::SmartPtr<KRankParameters> p(new KRankParameters());
  p->Init(0.1, 0.2, 0.3, 0.4);
  KRankParameters copy(*p);
  EXPECT_EQ(copy.NbRef(), 0);
  EXPECT_EQ(p->NbRef(), 1);
  EXPECT_EQ(copy.HiThreshold(), 0.2);
  EXPECT_EQ(copy.MaxDepth(), 1u);
  copy = KRankParameters();
  EXPECT_EQ(copy.HiThreshold(), 0.05);
}

}  // namespace
}  // namespace ZestraNS
