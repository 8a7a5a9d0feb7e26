#include "zestra/base/memory_pool.h"

#include <malloc.h>
#include <sys/mman.h>

#include <atomic>
#include <cstdint>
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

// Fails `p` (a fresh block of the C library, or null for a failed request)
// as MemoryPool's contract says: counts a failure and calls the
// new-handler; or frees it when it would pass the thread's ceiling.
void* Admit(void* p) noexcept {
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

}  // namespace

void* MemoryPool::New(std::size_t size) noexcept {
  if (size == 0) return nullptr;
  return Admit(InjectedFailure() ? nullptr : std::malloc(size));
}

void* MemoryPool::Map(std::size_t size, std::size_t alignment) noexcept {
  if (size == 0) return nullptr;
  void* region = MAP_FAILED;
  const std::size_t span = size + alignment;
  if (span > size && !InjectedFailure()) {
    region = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  }
  if (region == MAP_FAILED) {
    ++failed_requests;
    if (std::new_handler handler = std::get_new_handler()) handler();
    return nullptr;
  }
  // The aligned part of a mapping one alignment longer; the rest goes back.
  const auto base = reinterpret_cast<std::uintptr_t>(region);
  const std::uintptr_t start = (base + alignment - 1) & ~static_cast<std::uintptr_t>(alignment - 1);
  const std::size_t head = start - base;
  if (head != 0) munmap(region, head);
  if (span - head - size != 0) munmap(reinterpret_cast<char*>(start) + size, span - head - size);
  void* p = reinterpret_cast<void*>(start);
  if (MemoryCeiling::Installed() && !MemoryCeiling::Take(size)) {
    munmap(p, size);
    return nullptr;
  }
  return p;
}

void MemoryPool::Unmap(void* p, std::size_t size) noexcept {
  if (p == nullptr) return;
  if (MemoryCeiling::Installed()) MemoryCeiling::Give(size);
  munmap(p, size);
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
