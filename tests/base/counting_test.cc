#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "zestra/base/ref_count.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/base/sp_ref_counter.h"

namespace {

using Orvel::RefCount;
using Orvel::SmartPtr;

// Records its destruction so tests can see exactly when it happens.
class Probe : public Orvel::RefCounted<Probe> {
 public:
  explicit Probe(int* destroyed) : destroyed_(destroyed) {}
  ~Probe() { ++*destroyed_; }

 private:
  int* destroyed_;
};

TEST(SmartPtrTest, CountsStartAtZeroAndLastReleaseDestroys) {
  int destroyed = 0;
  Probe* raw = new Probe(&destroyed);
  EXPECT_EQ(raw->NbRef(), 0);
  {
    SmartPtr<Probe> a(raw);
    EXPECT_EQ(raw->NbRef(), 1);
    SmartPtr<Probe> b = a;
    EXPECT_EQ(raw->NbRef(), 2);
    b = a;  // the pointer already held: nothing changes
    EXPECT_EQ(raw->NbRef(), 2);
    b = nullptr;
    EXPECT_EQ(raw->NbRef(), 1);
    EXPECT_EQ(destroyed, 0);
  }
  EXPECT_EQ(destroyed, 1);
}

TEST(SmartPtrTest, AssigningAnotherPointerReleasesTheOld) {
  int destroyed_a = 0, destroyed_b = 0;
  SmartPtr<Probe> p(new Probe(&destroyed_a));
  Probe* b = new Probe(&destroyed_b);
  p = b;
  EXPECT_EQ(destroyed_a, 1);
  EXPECT_EQ(b->NbRef(), 1);
  SmartPtr<Probe> moved = std::move(p);
  EXPECT_TRUE(p.IsNull());
  EXPECT_EQ(b->NbRef(), 1);
  // Adopting without a new reference and detaching balance out.
  Probe* detached = moved.Detach();
  EXPECT_EQ(detached->NbRef(), 1);
  SmartPtr<Probe> adopted(detached, false);
  EXPECT_EQ(detached->NbRef(), 1);
  adopted = nullptr;
  EXPECT_EQ(destroyed_b, 1);
}

TEST(SmartPtrTest, ReleaseReturnsNewCountAndOrdersByAddress) {
  int destroyed = 0;
  Probe* p = new Probe(&destroyed);
  EXPECT_EQ(p->AddRef(), 1);
  EXPECT_EQ(p->AddRef(), 2);
  EXPECT_EQ(p->Release(), 1);
  EXPECT_EQ(p->Release(), 0);
  EXPECT_EQ(destroyed, 1);

  Probe* x = new Probe(&destroyed);
  Probe* y = new Probe(&destroyed);
  SmartPtr<Probe> sx(x), sy(y);
  EXPECT_EQ(sx < sy, x < y);
  EXPECT_TRUE(sx == SmartPtr<Probe>(x));
}

TEST(SmartPtrTest, ConcurrentCopiesKeepTheCountExact) {
  int destroyed = 0;
  SmartPtr<Probe> shared(new Probe(&destroyed));
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&shared] {
      for (int i = 0; i < 20000; ++i) SmartPtr<Probe> copy = shared;
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(shared->NbRef(), 1);
  shared = nullptr;
  EXPECT_EQ(destroyed, 1);
}

struct Tracked {
  explicit Tracked(int* destroyed) : destroyed(destroyed) {}
  virtual ~Tracked() { ++*destroyed; }
  int* destroyed;
};
struct TrackedChild : Tracked {
  TrackedChild(int* destroyed, int* child_destroyed) : Tracked(destroyed), child_destroyed(child_destroyed) {}
  ~TrackedChild() override { ++*child_destroyed; }
  int* child_destroyed;
};

TEST(RefCountTest, SharesAndDestroysOnceThroughVirtualDestructor) {
  int destroyed = 0, child_destroyed = 0;
  RefCount<Tracked> empty;
  EXPECT_EQ(empty.Count(), 0);
  EXPECT_FALSE(empty);
  {
    RefCount<Tracked> a(new TrackedChild(&destroyed, &child_destroyed));
    EXPECT_EQ(a.Count(), 1);
    RefCount<Tracked> b = a;
    EXPECT_EQ(a.Count(), 2);
    EXPECT_TRUE(a.SharesWith(b));
    b = b;  // self-assignment changes nothing
    EXPECT_EQ(a.Count(), 2);
    b = a;  // same counter: nothing changes
    EXPECT_EQ(a.Count(), 2);
    a.Reset();
    EXPECT_EQ(b.Count(), 1);
    EXPECT_EQ(destroyed, 0);
  }
  EXPECT_EQ(destroyed, 1);
  EXPECT_EQ(child_destroyed, 1);
}

TEST(RefCountTest, AssigningAnotherHolderGivesUpTheOldShare) {
  int d1 = 0, d2 = 0;
  RefCount<Tracked> a(new Tracked(&d1));
  RefCount<Tracked> b(new Tracked(&d2));
  a = b;
  EXPECT_EQ(d1, 1);
  EXPECT_EQ(b.Count(), 2);
  RefCount<Tracked> c = std::move(a);
  EXPECT_FALSE(a);
  EXPECT_EQ(c.Count(), 2);
}

}  // namespace
