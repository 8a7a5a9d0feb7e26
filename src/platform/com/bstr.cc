#include "zestra/platform/com/bstr.h"

#include <cstring>

#include "zestra/base/memory_pool.h"

// Memory layout of a BSTR of n units: [uint32 byte count 2n][n units][0].
// The BSTR points at the first unit, 4 bytes into the block.

namespace {

constexpr std::size_t kPrefix = sizeof(uint32_t);

unsigned char* BlockOf(BSTR text) { return reinterpret_cast<unsigned char*>(text) - kPrefix; }

uint32_t ByteCount(BSTR text) {
  uint32_t count;
  std::memcpy(&count, BlockOf(text), sizeof(count));
  return count;
}

}  // namespace

BSTR SysAllocString(const OLECHAR* text) {
  if (text == nullptr) return nullptr;
  std::size_t length = 0;
  while (text[length] != 0) ++length;
  if (length > kMaxBstrLength) return nullptr;
  return SysAllocStringLen(text, static_cast<UINT>(length));
}

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
  if (length > kMaxBstrLength) return nullptr;
  const uint32_t bytes = 2 * length;
  void* block = OrvelMem::MemoryPool::New(kPrefix + bytes + sizeof(OLECHAR));
  if (block == nullptr) return nullptr;
  std::memcpy(block, &bytes, kPrefix);
  BSTR result = reinterpret_cast<BSTR>(static_cast<unsigned char*>(block) + kPrefix);
  if (text != nullptr) {
    std::memcpy(result, text, bytes);
  } else {
    std::memset(result, 0, bytes);
  }
  result[length] = 0;
  return result;
}

UINT SysStringLen(BSTR text) { return text == nullptr ? 0 : ByteCount(text) / 2; }

UINT SysStringByteLen(BSTR text) { return text == nullptr ? 0 : ByteCount(text); }

void SysFreeString(BSTR text) {
  if (text != nullptr) OrvelMem::MemoryPool::Delete(BlockOf(text));
}
