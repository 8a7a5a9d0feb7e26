#include "zestra/base/memory_pool.h"

#include <cstdlib>
#include <new>

namespace OrvelMem {

void* MemoryPool::New(std::size_t size) noexcept {
  if (size == 0) return nullptr;
  void* p = std::malloc(size);
  if (p == nullptr) {
    if (std::new_handler handler = std::get_new_handler()) handler();
  }
  return p;
}

void MemoryPool::Delete(void* p) noexcept { std::free(p); }

}  // namespace OrvelMem
