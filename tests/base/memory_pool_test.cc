#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <thread>

#include "zestra/base/memory_ceiling.h"
#include "zestra/base/memory_pool.h"

namespace {

using OrvelMem::MemoryCeiling;
using OrvelMem::MemoryPool;

TEST(MemoryPoolTest, ZeroBytesIsNullAndDeleteOfNullIsHarmless) {
  EXPECT_EQ(MemoryPool::New(0), nullptr);
  MemoryPool::Delete(nullptr);
  void* p = MemoryPool::New(24);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % alignof(std::max_align_t), 0u);
  MemoryPool::Delete(p);
}

// Failed requests are counted per thread; an injected failure takes exactly
// the request it names, whatever its size, and leaves the next ones alone.
TEST(MemoryPoolTest, InjectedFailuresAreCountedOnTheirThread) {
  const uint64_t before = MemoryPool::FailedRequests();
  EXPECT_EQ(MemoryPool::InjectFailure(3), 0u);
  void* first = MemoryPool::New(8);
  EXPECT_EQ(MemoryPool::New(0), nullptr);  // not a request: no count, no failure
  void* second = MemoryPool::New(16);
  void* third = MemoryPool::New(24);
  void* fourth = MemoryPool::New(32);
  EXPECT_NE(first, nullptr);
  EXPECT_NE(second, nullptr);
  EXPECT_EQ(third, nullptr);
  EXPECT_NE(fourth, nullptr);
  EXPECT_EQ(MemoryPool::FailedRequests(), before + 1);
  MemoryPool::NoteFailure();
  EXPECT_EQ(MemoryPool::FailedRequests(), before + 2);
  for (void* p : {first, second, fourth}) MemoryPool::Delete(p);

  // Another thread sees its own count only.
  uint64_t other = 1;
  std::thread([&] { other = MemoryPool::FailedRequests(); }).join();
  EXPECT_EQ(other, 0u);

  // A pending failure can be cancelled; the answer says how far it was.
  MemoryPool::InjectFailure(100);
  MemoryPool::Delete(MemoryPool::New(8));
  EXPECT_EQ(MemoryPool::InjectFailure(0), 99u);
  EXPECT_EQ(MemoryPool::FailedRequests(), before + 2);
}

#if !defined(__SANITIZE_ADDRESS__)
// Under AddressSanitizer an impossible request aborts by design, so the
// exhaustion path is checked in the plain build only.
int handler_calls = 0;
void CountingHandler() { ++handler_calls; }

TEST(MemoryPoolTest, ExhaustionCallsTheNewHandlerOnceAndYieldsNull) {
  handler_calls = 0;
  std::new_handler previous = std::set_new_handler(CountingHandler);
  void* p = MemoryPool::New(SIZE_MAX / 2);
  std::set_new_handler(previous);
  EXPECT_EQ(p, nullptr);
  EXPECT_EQ(handler_calls, 1);
}
#endif

// A ceiling counts what the pool hands out on its thread and gets back,
// refuses a request that would pass it (or an outer ceiling), and is gone
// with its scope.
TEST(MemoryPoolTest, CeilingCountsAndRefuses) {
  {
    MemoryCeiling outer(1 << 20);
    void* a = MemoryPool::New(100 << 10);
    ASSERT_NE(a, nullptr);
    EXPECT_GE(outer.Peak(), 100u << 10);
    {
      MemoryCeiling inner(64 << 10);
      EXPECT_EQ(MemoryPool::New(80 << 10), nullptr);  // passes the inner
      EXPECT_TRUE(inner.Reached());
      void* b = MemoryPool::New(32 << 10);
      ASSERT_NE(b, nullptr);
      EXPECT_GE(inner.Peak(), 32u << 10);
      MemoryPool::Delete(b);
    }
    EXPECT_FALSE(outer.Reached());
    EXPECT_EQ(MemoryPool::New(2 << 20), nullptr);  // passes the outer
    EXPECT_TRUE(outer.Reached());
    MemoryPool::Delete(a);
    // What came back is free again.
    void* c = MemoryPool::New(900 << 10);
    EXPECT_NE(c, nullptr);
    MemoryPool::Delete(c);
    EXPECT_LT(outer.Peak(), 1u << 20);
  }
  // No ceiling: nothing is refused, and a ceiling of 0 installs none.
  MemoryCeiling none(0);
  void* d = MemoryPool::New(2 << 20);
  EXPECT_NE(d, nullptr);
  EXPECT_FALSE(none.Reached());
  MemoryPool::Delete(d);
}

}  // namespace
