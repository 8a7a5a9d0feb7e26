// NodeArena hands out the memory of a parsed tree: its nodes, their child
// lists and their text and attributes. Blocks are cut one after another
// from chunks of 256 KiB, so a node costs neither an allocator call nor an
// allocator header.
//
// Each chunk counts the blocks cut from it that are still in use, plus one
// while an arena cuts from it. Release(block) gives a block back, and the
// chunk returns to the memory pool when its count reaches zero. So a tree
// can be given back part by part (a reader that releases the subtrees it is
// done with shrinks it, since a document's nodes are cut in document order)
// and a tree may outlive the arena that made it. A block given back is not
// reused: its bytes stay taken until its whole chunk goes, so a tree that
// keeps one node of a chunk keeps the chunk.
//
// Memory comes from OrvelMem::MemoryPool, so the per-thread memory ceiling
// and the failure counting apply.
//
// Thread-safety: one thread at a time cuts blocks from an arena. Release
// may be called from any thread, for blocks of any arena, at any time.
#ifndef ZESTRA_HTML_NODE_ARENA_H_
#define ZESTRA_HTML_NODE_ARENA_H_

#include <cstddef>
#include <cstdint>

#include "zestra/export.h"

namespace OrvelParser {

class ZESTRA_EXPORT NodeArena {
  struct Chunk;

 public:
  // Blocks are aligned to this many bytes.
  static constexpr std::size_t kAlignment = 8;
  // A block larger than this gets a chunk of its own, which goes as soon as
  // the block does.
  static constexpr std::size_t kLargeBlock = 64 * 1024;

  NodeArena() noexcept = default;
  NodeArena(const NodeArena&) = delete;
  NodeArena& operator=(const NodeArena&) = delete;
  // Stops cutting: the chunk in use goes when its last block does.
  ~NodeArena();

  // Returns a block of at least `bytes` bytes (rounded up to kAlignment),
  // aligned to kAlignment, or null when memory cannot be had or `bytes` is
  // 0. The block stays valid until Release(block).
  void* Allocate(std::size_t bytes) noexcept;

  // Grows the block `block` of `old_bytes` bytes to `new_bytes` where it
  // lies, when it is the last block cut and its chunk has room; returns
  // whether it did. A block that did not grow is unchanged.
  // REQUIRES: `block` came from this arena with `old_bytes` and is in use.
  bool Extend(void* block, std::size_t old_bytes, std::size_t new_bytes) noexcept;

  // Gives back a block from Allocate of any arena. Null does nothing.
  static void Release(void* block) noexcept;

  // Gives back many blocks at a lower cost: each run of consecutive blocks
  // of one chunk costs one atomic operation instead of one per block. The
  // blocks go back at the latest when the batch is flushed or destroyed;
  // until then they must not be used.
  class ZESTRA_EXPORT ReleaseBatch {
   public:
    ReleaseBatch() noexcept = default;
    ReleaseBatch(const ReleaseBatch&) = delete;
    ReleaseBatch& operator=(const ReleaseBatch&) = delete;
    ~ReleaseBatch() { Flush(); }
    // Null does nothing.
    void Add(void* block) noexcept;
    void Flush() noexcept;

   private:
    Chunk* chunk_ = nullptr;
    uint32_t count_ = 0;
  };

 private:
  Chunk* chunk_ = nullptr;  // where blocks are cut; the arena holds a count on it
  char* cursor_ = nullptr;  // the next free byte of chunk_
  char* end_ = nullptr;     // one past the last byte of chunk_
};

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_NODE_ARENA_H_
