#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <thread>

#include "zestra/base/memory_pool.h"

namespace {

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

}  // namespace
