// ParseArena is the memory that one parse of the HTML parser library
// allocates from. The library makes a great many small allocations (one per
// node, attribute, name and short text) and frees them without giving their
// size; from the C library's allocator each would cost at least 32 bytes.
// Here a request of up to kMaxSmallBytes is rounded up to a multiple of 8
// and served, without a per-object header, from a 64 KiB chunk that holds
// objects of that size only. Chunks are carved from one reservation of
// address space made for the parse; a chunk whose objects have all been
// freed gives its pages back to the operating system at once, so taking the
// parse's tree apart lowers the resident size as it goes. Larger requests,
// and every request once the reservation is used up or could not be made,
// go to the C library with a 16-byte header.
//
// Destroying the arena frees everything still allocated from it, so a
// parse's tree can be dropped whole without walking it.
//
// Memory: one empty chunk per size class keeps its pages (so that an object
// allocated and freed over and over does not fault pages in each time);
// every other empty chunk gives them back.
//
// Thread-safety: none. One arena serves one parse on one thread.
#ifndef ZESTRA_HTML_PARSE_ARENA_H_
#define ZESTRA_HTML_PARSE_ARENA_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace OrvelParser {

class ParseArena {
 public:
  // Requests of up to this many bytes are served from chunks.
  static constexpr size_t kMaxSmallBytes = 256;
  // The size of a chunk, and the alignment of its start.
  static constexpr size_t kChunkBytes = size_t{64} << 10;

  // An arena whose chunks come from a reservation of `reserve_bytes` of
  // address space (rounded up to whole chunks; 0 reserves nothing, so every
  // request goes to the C library). Reserved address space costs no memory
  // until a chunk is used.
  explicit ParseArena(size_t reserve_bytes) noexcept;
  ParseArena(const ParseArena&) = delete;
  ParseArena& operator=(const ParseArena&) = delete;
  // Frees every allocation still live and releases the reservation.
  ~ParseArena();

  // Returns `size` bytes (at least 1), aligned to 8 bytes when served from
  // a chunk and to 16 otherwise; null when memory cannot be had.
  void* Allocate(size_t size) noexcept;

  // Frees an allocation. REQUIRES: `p` is null, or came from Allocate of
  // this arena and was not freed since.
  void Free(void* p) noexcept;

  // Number of chunks holding live objects, or kept for reuse: the memory
  // the arena has resident, in chunks (for tests and measurements).
  size_t ChunksInUse() const noexcept { return chunks_in_use_; }
  // Number of allocations served by the C library and still live.
  size_t LargeAllocations() const noexcept { return large_count_; }

  // The parser library's allocation hooks; `arena` is the ParseArena.
  static void* AllocateHook(void* arena, size_t size);
  static void FreeHook(void* arena, void* p);

 private:
  // One chunk's bookkeeping, kept outside the chunk so that giving its
  // pages back loses nothing.
  struct Chunk {
    void* free_list = nullptr;  // freed objects, linked through their first word
    uint32_t fresh = 0;         // bytes from the start never handed out yet
    uint32_t live = 0;          // objects handed out and not freed
    uint32_t size_class = 0;
    int32_t prev = -1;  // neighbours in the class's list of chunks with room
    int32_t next = -1;
    bool listed = false;  // whether the chunk is in its class's list
  };
  // The header of an allocation served by the C library: the live list.
  struct LargeHeader {
    LargeHeader* prev;
    LargeHeader* next;
  };
  static constexpr size_t kClassCount = kMaxSmallBytes / 8;

  char* ChunkStart(int32_t index) const noexcept { return base_ + static_cast<size_t>(index) * kChunkBytes; }
  bool InReservation(const void* p) const noexcept;
  void* AllocateSmall(size_t size_class) noexcept;
  void FreeSmall(void* p) noexcept;
  int32_t NewChunk(size_t size_class) noexcept;
  void Link(int32_t index) noexcept;
  void Unlink(int32_t index) noexcept;
  void* AllocateLarge(size_t size) noexcept;
  void FreeLarge(void* p) noexcept;

  char* base_ = nullptr;       // the reservation; null when none was made
  size_t reserved_chunks_ = 0;
  std::vector<Chunk> chunks_;  // one per chunk carved so far, in address order
  int32_t empty_ = -1;         // chunks whose pages were given back, linked by next
  int32_t with_room_[kClassCount];   // first chunk with room per class, -1 none
  int32_t kept_empty_[kClassCount];  // the empty chunk kept per class, -1 none
  size_t chunks_in_use_ = 0;
  LargeHeader* large_ = nullptr;  // live allocations of the C library
  size_t large_count_ = 0;
};

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_PARSE_ARENA_H_
