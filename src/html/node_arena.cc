#include "zestra/html/node_arena.h"

#include <atomic>
#include <cstdint>
#include <new>

#include <sys/mman.h>

#include "zestra/base/memory_ceiling.h"
#include "zestra/base/memory_pool.h"

namespace OrvelParser {
namespace {

// Chunks start at multiples of kChunkAlignment, and every block starts
// within the first kChunkAlignment bytes of its chunk, so a block's chunk
// is its address rounded down. A regular chunk is as large as the
// alignment (kLargeBlock plus a header fits in any); a large block's own
// chunk may be larger, but its block starts right after the header.
//
// Chunks are pages of their own (MemoryPool::Map), not blocks of the C
// library's heap: a walk frees them in document order while the layout
// tree grows in small blocks, and in the heap the freed chunks left holes
// that the peak resident size kept. Only the touched pages of a chunk take
// memory, so a small document's one chunk costs a page or two.
//
// Regular chunks that go are kept for reuse, a few per thread, so that a
// run over many documents does not map and unmap pages for each.
constexpr std::size_t kChunkAlignment = 256 * 1024;
constexpr std::size_t kPageBytes = 4096;
constexpr int kCachedChunks = 16;

// Regular chunks that went on this thread and wait for reuse. Their pages
// are counted by no memory ceiling while they wait.
class ChunkCache {
 public:
  ChunkCache() = default;
  ChunkCache(const ChunkCache&) = delete;
  ChunkCache& operator=(const ChunkCache&) = delete;
  ~ChunkCache() {
    while (size_ > 0) munmap(chunks_[--size_], kChunkAlignment);
  }
  // A regular chunk's pages, or null when none waits.
  void* Take() noexcept {
    if (size_ == 0) return nullptr;
    if (OrvelMem::MemoryCeiling::Installed() && !OrvelMem::MemoryCeiling::Take(kChunkAlignment)) return nullptr;
    return chunks_[--size_];
  }
  // Keeps a regular chunk's pages; false when the cache is full.
  bool Keep(void* chunk) noexcept {
    if (size_ == kCachedChunks) return false;
    if (OrvelMem::MemoryCeiling::Installed()) OrvelMem::MemoryCeiling::Give(kChunkAlignment);
    chunks_[size_++] = chunk;
    return true;
  }

 private:
  void* chunks_[kCachedChunks];
  int size_ = 0;
};

thread_local ChunkCache chunk_cache;

std::size_t RoundUp(std::size_t bytes) {
  return (bytes + NodeArena::kAlignment - 1) & ~(NodeArena::kAlignment - 1);
}

}  // namespace

struct NodeArena::Chunk {
  // Blocks in use, plus one while an arena cuts from the chunk.
  std::atomic<uint32_t> count;
  std::size_t bytes;  // the chunk's size, header included: a multiple of the page size
  char* Blocks() { return reinterpret_cast<char*>(this) + kHeaderBytes; }
  static constexpr std::size_t kHeaderBytes = 16;
  static_assert(kHeaderBytes % NodeArena::kAlignment == 0, "blocks stay aligned");

  // A chunk with room for `bytes` of blocks and the count `count`, or null.
  static Chunk* Make(std::size_t bytes, uint32_t count) noexcept {
    if (bytes > SIZE_MAX - kHeaderBytes - kPageBytes) return nullptr;
    const std::size_t size = (kHeaderBytes + bytes + kPageBytes - 1) & ~(kPageBytes - 1);
    void* memory = size == kChunkAlignment ? chunk_cache.Take() : nullptr;
    if (memory == nullptr) memory = OrvelMem::MemoryPool::Map(size, kChunkAlignment);
    return memory == nullptr ? nullptr : new (memory) Chunk{{count}, size};
  }
  static Chunk* Of(const void* block) {
    return reinterpret_cast<Chunk*>(reinterpret_cast<std::uintptr_t>(block) & ~(kChunkAlignment - 1));
  }
  char* End() { return reinterpret_cast<char*>(this) + bytes; }
  // Drops `n` counts; the last one frees the chunk.
  void Drop(uint32_t n = 1) noexcept {
    if (count.fetch_sub(n, std::memory_order_acq_rel) == n) {
      const std::size_t size = bytes;
      this->~Chunk();
      if (size != kChunkAlignment || !chunk_cache.Keep(this)) OrvelMem::MemoryPool::Unmap(this, size);
    }
  }
};

NodeArena::~NodeArena() {
  if (chunk_ != nullptr) chunk_->Drop();
}

void* NodeArena::Allocate(std::size_t bytes) noexcept {
  if (bytes == 0) return nullptr;
  bytes = RoundUp(bytes);
  if (bytes > kLargeBlock) {
    Chunk* own = Chunk::Make(bytes, 1);
    return own == nullptr ? nullptr : own->Blocks();
  }
  if (static_cast<std::size_t>(end_ - cursor_) < bytes) {
    Chunk* chunk = Chunk::Make(kChunkAlignment - Chunk::kHeaderBytes, 1);
    if (chunk == nullptr) return nullptr;
    if (chunk_ != nullptr) chunk_->Drop();
    chunk_ = chunk;
    cursor_ = chunk->Blocks();
    end_ = chunk->End();
  }
  // The arena's own count keeps the chunk alive, so a relaxed increment
  // cannot race with the chunk's end.
  chunk_->count.fetch_add(1, std::memory_order_relaxed);
  void* block = cursor_;
  cursor_ += bytes;
  return block;
}

bool NodeArena::Extend(void* block, std::size_t old_bytes, std::size_t new_bytes) noexcept {
  char* const start = static_cast<char*>(block);
  if (start == nullptr) return false;
  const std::size_t old_rounded = RoundUp(old_bytes);
  if (start + old_rounded != cursor_ || new_bytes > kLargeBlock) return false;
  const std::size_t new_rounded = RoundUp(new_bytes);
  if (new_rounded < old_rounded || static_cast<std::size_t>(end_ - start) < new_rounded) return false;
  cursor_ = start + new_rounded;
  return true;
}

void NodeArena::Release(void* block) noexcept {
  if (block != nullptr) Chunk::Of(block)->Drop();
}

void NodeArena::ReleaseBatch::Add(void* block) noexcept {
  if (block == nullptr) return;
  Chunk* chunk = Chunk::Of(block);
  if (chunk != chunk_) {
    Flush();
    chunk_ = chunk;
  }
  ++count_;
}

void NodeArena::ReleaseBatch::Flush() noexcept {
  if (count_ != 0) chunk_->Drop(count_);
  chunk_ = nullptr;
  count_ = 0;
}

}  // namespace OrvelParser
