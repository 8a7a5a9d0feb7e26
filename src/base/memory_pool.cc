#include "zestra/base/memory_pool.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "zestra/base/memory_ceiling.h"

namespace OrvelMem {
namespace {

// Requests still to go before the injected failure; 0: none pending. Read
// with one relaxed load per request, so that it costs nothing when unused.
std::atomic<uint64_t> requests_before_failure{0};

thread_local uint64_t failed_requests = 0;

// True when this request is the one InjectFailure chose.
bool InjectedFailure() noexcept {
  uint64_t left = requests_before_failure.load(std::memory_order_relaxed);
  while (left != 0) {
    if (requests_before_failure.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) {
      return left == 1;
    }
  }
  return false;
}

}  // namespace

void* MemoryPool::New(std::size_t size) noexcept {
  if (size == 0) return nullptr;
  void* p = InjectedFailure() ? nullptr : std::malloc(size);
  if (p == nullptr) {
    ++failed_requests;
    if (std::new_handler handler = std::get_new_handler()) handler();
    return nullptr;
  }
  // Counted at the size the C library really gave, as Delete counts it back.
  if (MemoryCeiling::Installed() && !MemoryCeiling::Take(malloc_usable_size(p))) {
    std::free(p);
    return nullptr;
  }
  return p;
}

void MemoryPool::Delete(void* p) noexcept {
  if (p == nullptr) return;
  if (MemoryCeiling::Installed()) MemoryCeiling::Give(malloc_usable_size(p));
  std::free(p);
}

uint64_t MemoryPool::FailedRequests() noexcept { return failed_requests; }

void MemoryPool::NoteFailure() noexcept { ++failed_requests; }

uint64_t MemoryPool::InjectFailure(uint64_t n) noexcept {
  return requests_before_failure.exchange(n, std::memory_order_relaxed);
}

}  // namespace OrvelMem
