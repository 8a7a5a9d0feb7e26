#include <gtest/gtest.h>

#include <cstdint>
#include <new>

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
