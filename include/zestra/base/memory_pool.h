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
// Thread-safety: all functions may be called from any thread at once.
#ifndef ZESTRA_BASE_MEMORY_POOL_H_
#define ZESTRA_BASE_MEMORY_POOL_H_

#include <cstddef>

#include "zestra/export.h"

namespace OrvelMem {

class ZESTRA_EXPORT MemoryPool {
 public:
  MemoryPool() = delete;

  // Returns `size` bytes aligned for any fundamental type, or null (see the
  // contract above).
  static void* New(std::size_t size) noexcept;

  // Frees memory obtained from New. REQUIRES: `p` is null or came from New.
  static void Delete(void* p) noexcept;
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
