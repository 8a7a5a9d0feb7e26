// MemoryPool is the allocator through which the library's counted objects
// and growable arrays get their memory.
//
// Contract: a request for 0 bytes yields null. When memory cannot be had,
// the installed new-handler (std::get_new_handler), if any, is called once
// and the request yields null; nothing throws. Memory from New is returned
// with Delete; Delete(nullptr) does nothing. A request that would pass the
// MemoryCeiling installed on the calling thread yields null as well
// (without the new-handler; see memory_ceiling.h).
//
// Failure accounting: much of the library copes with a null from New by
// doing without (a cell that is not made, a text that is not kept), so a
// result built while memory ran out can lack parts without any error. Every
// request that yields null for lack of memory is counted, per thread, and a
// caller that must not hand out such a result compares FailedRequests()
// before and after its work.
//
// Thread-safety: all functions may be called from any thread at once.
// FailedRequests counts the calling thread's requests only; the fault
// injection of InjectFailure is process-wide.
#ifndef ZESTRA_BASE_MEMORY_POOL_H_
#define ZESTRA_BASE_MEMORY_POOL_H_

#include <cstddef>
#include <cstdint>

#include "zestra/export.h"

namespace OrvelMem {

class ZESTRA_EXPORT MemoryPool {
 public:
  MemoryPool() = delete;

  // Returns `size` bytes aligned for any fundamental type, or null (see the
  // contract above).
  static void* New(std::size_t size) noexcept;
  // Returns `size` bytes of fresh pages, zero-filled, whose address is a
  // multiple of `alignment`, or null (see the contract above); returned
  // with Unmap(p, size). The pages come straight from the system and go
  // straight back to it: for blocks freed in an order unrelated to the
  // other allocations, which would leave holes in the C library's heap.
  // Only touched pages take memory.
  // REQUIRES: `size` and `alignment` are multiples of the page size (4096)
  // and `alignment` is a power of two.
  static void* Map(std::size_t size, std::size_t alignment) noexcept;
  // Returns pages from Map. REQUIRES: `p` and `size` are as Map gave them.
  static void Unmap(void* p, std::size_t size) noexcept;

  // Frees memory obtained from New. REQUIRES: `p` is null or came from New.
  static void Delete(void* p) noexcept;

  // The number of requests of the calling thread that yielded null for
  // lack of memory (requests for 0 bytes do not count), plus the failures
  // reported with NoteFailure, since the thread started. Only differences
  // mean something.
  static uint64_t FailedRequests() noexcept;

  // Counts one failure on the calling thread: for code that caught
  // std::bad_alloc from another allocator and did without what it could
  // not allocate.
  static void NoteFailure() noexcept;

  // Fault injection, for tests of how callers cope with exhausted memory:
  // the `n`-th request for a nonzero size from now on, on any thread, yields
  // null as if memory had run out (1: the next one); the requests after it
  // are served again. 0 cancels a pending failure. Returns how many requests
  // the previous setting still had to go (0 when none was pending), so that
  // setting a large n, running a piece of work and setting 0 tells how many
  // requests the work made.
  static uint64_t InjectFailure(uint64_t n) noexcept;
};

// PoolObject is an empty base whose class-level operators route `new` and
// `delete` of the derived class through MemoryPool. Its `new` is noexcept,
// so a failed allocation makes the new-expression yield null instead of
// throwing.
class ZESTRA_EXPORT PoolObject {
 public:
  static void* operator new(std::size_t size) noexcept { return MemoryPool::New(size); }
  static void operator delete(void* p) noexcept { MemoryPool::Delete(p); }
};

}  // namespace OrvelMem

#endif  // ZESTRA_BASE_MEMORY_POOL_H_
