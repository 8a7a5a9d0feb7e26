#include "zestra/platform/com/hglobal.h"

#include <cstring>
#include <new>

#include "zestra/base/memory_pool.h"

struct GlobalMemoryBlock {
  unsigned char* data;  // owned, from the memory pool; null when size is 0
  SIZE_T size;          // bytes at data
  ULONG locks;          // outstanding GlobalLock calls
};

HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes) {
  void* memory = OrvelMem::MemoryPool::New(sizeof(GlobalMemoryBlock));
  if (memory == nullptr) return nullptr;
  HGLOBAL block = new (memory) GlobalMemoryBlock{nullptr, 0, 0};
  if (bytes > 0 && GlobalReAlloc(block, bytes, flags) == nullptr) {
    OrvelMem::MemoryPool::Delete(memory);
    return nullptr;
  }
  return block;
}

HGLOBAL GlobalReAlloc(HGLOBAL block, SIZE_T bytes, UINT flags) {
  if (block == nullptr || block->locks > 0) return nullptr;
  if (bytes == block->size) return block;
  unsigned char* data = nullptr;
  if (bytes > 0) {
    data = static_cast<unsigned char*>(OrvelMem::MemoryPool::New(bytes));
    if (data == nullptr) return nullptr;
    const SIZE_T kept = bytes < block->size ? bytes : block->size;
    if (kept > 0) std::memcpy(data, block->data, kept);
    std::memset(data + kept, 0, bytes - kept);
  }
  OrvelMem::MemoryPool::Delete(block->data);
  block->data = data;
  block->size = bytes;
  return block;
}

void* GlobalLock(HGLOBAL block) {
  if (block == nullptr || block->size == 0) return nullptr;
  ++block->locks;
  return block->data;
}

BOOL GlobalUnlock(HGLOBAL block) {
  if (block == nullptr || block->locks == 0) return 0;
  --block->locks;
  return block->locks > 0 ? 1 : 0;
}

SIZE_T GlobalSize(HGLOBAL block) { return block == nullptr ? 0 : block->size; }

HGLOBAL GlobalFree(HGLOBAL block) {
  if (block != nullptr) {
    OrvelMem::MemoryPool::Delete(block->data);
    block->~GlobalMemoryBlock();
    OrvelMem::MemoryPool::Delete(block);
  }
  return nullptr;
}
