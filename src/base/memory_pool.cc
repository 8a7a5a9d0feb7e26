#include "zestra/base/memory_pool.h"

#include <malloc.h>

#include <cstdlib>
#include <new>

#include "zestra/base/memory_ceiling.h"

namespace OrvelMem {

void* MemoryPool::New(std::size_t size) noexcept {
  if (size == 0) return nullptr;
  void* p = std::malloc(size);
  if (p == nullptr) {
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

}  // namespace OrvelMem
