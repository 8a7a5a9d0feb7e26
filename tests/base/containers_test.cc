#include <gtest/gtest.h>

#include <vector>

#include "zestra/base/fast_vector.h"
#include "zestra/base/growth.h"
#include "zestra/base/ref_count_vector.h"
#include "zestra/base/sp_ref_counter.h"

namespace {

using Orvel::FastVector;
using Orvel::GrownCapacity;
using Orvel::RefCountVector;
using Orvel::SmartPtr;

TEST(GrowthTest, FollowsTheDoublingThenQuarterRule) {
  EXPECT_EQ(GrownCapacity(0), 16u);
  EXPECT_EQ(GrownCapacity(7), 16u);
  EXPECT_EQ(GrownCapacity(16), 32u);
  EXPECT_EQ(GrownCapacity(128), 256u);
  EXPECT_EQ(GrownCapacity(256), 512u);   // 256 is still doubled
  EXPECT_EQ(GrownCapacity(512), 640u);
  EXPECT_EQ(GrownCapacity(640), 800u);
  EXPECT_EQ(GrownCapacity(800), 1000u);
  EXPECT_EQ(GrownCapacity(1001), 1251u);  // 1251.25 truncated
  EXPECT_EQ(GrownCapacity(4294967295u), 4294967295u);
}

TEST(FastVectorTest, CapacitiesSeenByAppends) {
  FastVector<double> v;
  std::vector<uint32_t> seen;
  for (uint32_t i = 0; i < 1000; ++i) {
    v.Add(i);
    if (seen.empty() || seen.back() != v.Capacity()) seen.push_back(v.Capacity());
  }
  EXPECT_EQ(seen, (std::vector<uint32_t>{16, 32, 64, 128, 256, 512, 640, 800, 1000}));
  EXPECT_EQ(v[999], 999.0);
  v.Erase(0);
  EXPECT_EQ(v.Size(), 999u);
  EXPECT_EQ(v[0], 1.0);
  FastVector<double> copy = v;
  v.Clear();
  EXPECT_EQ(copy.Size(), 999u);
  EXPECT_EQ(copy[998], 999.0);
}

class Node : public Orvel::RefCounted<Node> {
 public:
  explicit Node(int* destroyed) : destroyed_(destroyed) {}
  ~Node() { ++*destroyed_; }

 private:
  int* destroyed_;
};

TEST(RefCountVectorTest, ElementsHoldReferencesAcrossGrowthAndErase) {
  int destroyed = 0;
  SmartPtr<Node> kept(new Node(&destroyed));
  {
    RefCountVector<Node> v;
    for (int i = 0; i < 300; ++i) v.Add(SmartPtr<Node>(new Node(&destroyed)));
    v.Add(kept);
    EXPECT_EQ(v.Capacity(), 512u);
    EXPECT_EQ(kept->NbRef(), 2);
    EXPECT_EQ(destroyed, 0);  // growth moved the pointers, released nothing
    v.Erase(0);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(v.Size(), 300u);
    EXPECT_EQ(v[299], kept);
    RefCountVector<Node> copy = v;
    EXPECT_EQ(kept->NbRef(), 3);
    copy.Append(v);
    EXPECT_EQ(copy.Size(), 600u);
    EXPECT_EQ(kept->NbRef(), 4);
  }
  EXPECT_EQ(destroyed, 300);
  EXPECT_EQ(kept->NbRef(), 1);
}

}  // namespace
