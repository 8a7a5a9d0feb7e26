#include "platform/parse_arena.h"

#include <malloc.h>
#include <sys/mman.h>

#include <cstdlib>
#include <limits>
#include <new>

#include "zestra/base/memory_ceiling.h"

#if defined(__SANITIZE_ADDRESS__)
#define ZESTRA_ARENA_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZESTRA_ARENA_ASAN 1
#endif
#endif

#ifdef ZESTRA_ARENA_ASAN
#include <sanitizer/asan_interface.h>
// Freed objects and unused chunk space are poisoned, so that the address
// sanitizer sees a use after free inside the arena as it would with malloc.
#define ARENA_POISON(p, n) ASAN_POISON_MEMORY_REGION((p), (n))
#define ARENA_UNPOISON(p, n) ASAN_UNPOISON_MEMORY_REGION((p), (n))
#else
#define ARENA_POISON(p, n) ((void)(p), (void)(n))
#define ARENA_UNPOISON(p, n) ((void)(p), (void)(n))
#endif

namespace OrvelParser {
namespace {

size_t ClassBytes(size_t size_class) { return (size_class + 1) * 8; }

}  // namespace

ParseArena::ParseArena(size_t reserve_bytes) noexcept {
  for (int32_t& head : with_room_) head = -1;
  for (int32_t& kept : kept_empty_) kept = -1;
  const size_t max_chunks = static_cast<size_t>(std::numeric_limits<int32_t>::max());
  size_t chunks = reserve_bytes / kChunkBytes + (reserve_bytes % kChunkBytes != 0 ? 1 : 0);
  if (chunks > max_chunks) chunks = max_chunks;
  if (chunks == 0) return;
  try {
    chunks_.reserve(chunks);  // so that carving a chunk never allocates
  } catch (const std::bad_alloc&) {
    return;
  }
  // Map one chunk more than needed and trim both ends, so that the start
  // is aligned to the chunk size. MAP_NORESERVE: only pages touched count.
  const size_t bytes = chunks * kChunkBytes;
  void* mapped = mmap(nullptr, bytes + kChunkBytes, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (mapped == MAP_FAILED) return;
  const auto start = reinterpret_cast<uintptr_t>(mapped);
  const uintptr_t aligned = (start + kChunkBytes - 1) & ~(uintptr_t{kChunkBytes} - 1);
  if (aligned > start) munmap(mapped, aligned - start);
  const size_t tail = start + bytes + kChunkBytes - (aligned + bytes);
  if (tail > 0) munmap(reinterpret_cast<void*>(aligned + bytes), tail);
  base_ = reinterpret_cast<char*>(aligned);
  reserved_chunks_ = chunks;
}

ParseArena::~ParseArena() {
  while (large_ != nullptr) {
    LargeHeader* next = large_->next;
    OrvelMem::MemoryCeiling::Give(malloc_usable_size(large_));
    std::free(large_);
    large_ = next;
  }
  OrvelMem::MemoryCeiling::Give(chunks_in_use_ * kChunkBytes);
  if (base_ == nullptr) return;
  // Only the carved part was ever poisoned.
  ARENA_UNPOISON(base_, chunks_.size() * kChunkBytes);
  munmap(base_, reserved_chunks_ * kChunkBytes);
}

void* ParseArena::Allocate(size_t size) noexcept {
  if (size == 0) size = 1;
  if (size > kMaxSmallBytes) return AllocateLarge(size);
  void* p = AllocateSmall((size - 1) / 8);
  return p != nullptr ? p : AllocateLarge(size);
}

void ParseArena::Free(void* p) noexcept {
  if (p == nullptr) return;
  if (InReservation(p)) {
    FreeSmall(p);
  } else {
    FreeLarge(p);
  }
}

void* ParseArena::AllocateHook(void* arena, size_t size) {
  void* p = static_cast<ParseArena*>(arena)->Allocate(size);
  // The parser library does not check for null. Every byte it holds comes
  // from the arena, so unwinding it loses nothing: the arena's owner frees
  // all of it.
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

void ParseArena::FreeHook(void* arena, void* p) { static_cast<ParseArena*>(arena)->Free(p); }

bool ParseArena::InReservation(const void* p) const noexcept {
  const auto address = reinterpret_cast<uintptr_t>(p);
  const auto base = reinterpret_cast<uintptr_t>(base_);
  return base_ != nullptr && address >= base && address - base < chunks_.size() * kChunkBytes;
}

void* ParseArena::AllocateSmall(size_t size_class) noexcept {
  int32_t index = with_room_[size_class];
  if (index < 0) {
    index = NewChunk(size_class);
    if (index < 0) return nullptr;
  }
  Chunk& chunk = chunks_[index];
  const size_t bytes = ClassBytes(size_class);
  void* p;
  if (chunk.free_list != nullptr) {
    p = chunk.free_list;
    ARENA_UNPOISON(p, bytes);
    chunk.free_list = *static_cast<void**>(p);
  } else {
    p = ChunkStart(index) + chunk.fresh;
    chunk.fresh += static_cast<uint32_t>(bytes);
    ARENA_UNPOISON(p, bytes);
  }
  if (chunk.live++ == 0 && kept_empty_[size_class] == index) kept_empty_[size_class] = -1;
  if (chunk.free_list == nullptr && chunk.fresh + bytes > kChunkBytes) Unlink(index);
  return p;
}

void ParseArena::FreeSmall(void* p) noexcept {
  const auto index = static_cast<int32_t>((static_cast<char*>(p) - base_) / kChunkBytes);
  Chunk& chunk = chunks_[index];
  *static_cast<void**>(p) = chunk.free_list;
  chunk.free_list = p;
  ARENA_POISON(p, ClassBytes(chunk.size_class));
  --chunk.live;
  if (chunk.live > 0) {
    if (!chunk.listed) Link(index);
    return;
  }
  // One empty chunk per class stays, ready for the next request; any other
  // gives its pages back.
  int32_t& kept = kept_empty_[chunk.size_class];
  if (kept < 0) {
    kept = index;
    if (!chunk.listed) Link(index);
    return;
  }
  if (chunk.listed) Unlink(index);
  madvise(ChunkStart(index), kChunkBytes, MADV_DONTNEED);
  OrvelMem::MemoryCeiling::Give(kChunkBytes);
  chunk = Chunk();
  chunk.next = empty_;
  empty_ = index;
  --chunks_in_use_;
}

int32_t ParseArena::NewChunk(size_t size_class) noexcept {
  // A chunk in use counts whole against the thread's ceiling, as its pages
  // are soon all touched.
  if (!OrvelMem::MemoryCeiling::Take(kChunkBytes)) return -1;
  int32_t index;
  if (empty_ >= 0) {
    index = empty_;
    empty_ = chunks_[index].next;
    chunks_[index] = Chunk();
  } else if (chunks_.size() < reserved_chunks_) {
    index = static_cast<int32_t>(chunks_.size());
    chunks_.emplace_back();  // within the capacity reserved at construction
    ARENA_POISON(ChunkStart(index), kChunkBytes);
  } else {
    OrvelMem::MemoryCeiling::Give(kChunkBytes);
    return -1;
  }
  chunks_[index].size_class = static_cast<uint32_t>(size_class);
  ++chunks_in_use_;
  Link(index);
  return index;
}

void ParseArena::Link(int32_t index) noexcept {
  Chunk& chunk = chunks_[index];
  int32_t& head = with_room_[chunk.size_class];
  chunk.prev = -1;
  chunk.next = head;
  if (head >= 0) chunks_[head].prev = index;
  head = index;
  chunk.listed = true;
}

void ParseArena::Unlink(int32_t index) noexcept {
  Chunk& chunk = chunks_[index];
  if (chunk.prev >= 0) {
    chunks_[chunk.prev].next = chunk.next;
  } else {
    with_room_[chunk.size_class] = chunk.next;
  }
  if (chunk.next >= 0) chunks_[chunk.next].prev = chunk.prev;
  chunk.prev = -1;
  chunk.next = -1;
  chunk.listed = false;
}

void* ParseArena::AllocateLarge(size_t size) noexcept {
  if (size > std::numeric_limits<size_t>::max() - sizeof(LargeHeader)) return nullptr;
  auto* header = static_cast<LargeHeader*>(std::malloc(sizeof(LargeHeader) + size));
  if (header == nullptr) return nullptr;
  if (!OrvelMem::MemoryCeiling::Take(malloc_usable_size(header))) {
    std::free(header);
    return nullptr;
  }
  header->prev = nullptr;
  header->next = large_;
  if (large_ != nullptr) large_->prev = header;
  large_ = header;
  ++large_count_;
  return header + 1;
}

void ParseArena::FreeLarge(void* p) noexcept {
  LargeHeader* header = static_cast<LargeHeader*>(p) - 1;
  if (header->prev != nullptr) {
    header->prev->next = header->next;
  } else {
    large_ = header->next;
  }
  if (header->next != nullptr) header->next->prev = header->prev;
  --large_count_;
  OrvelMem::MemoryCeiling::Give(malloc_usable_size(header));
  std::free(header);
}

}  // namespace OrvelParser
