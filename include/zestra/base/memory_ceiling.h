// MemoryCeiling bounds the memory that one piece of work, such as the
// extraction of one page, takes on the thread that runs it.
//
// While a ceiling is installed on a thread, the library's allocators count
// what they hand out on that thread and what comes back: MemoryPool, through
// which come every node of the layout tree with its counters and lists, and
// the chunks of the parsed tree (its nodes, lists, text and attributes). A request that would take the count above
// the ceiling is refused as if memory had run out, and the ceiling records
// that it was reached; the work then fails as it does when memory runs out,
// and its owner reports the ceiling (zestra::MemoryLimitExceeded). Memory of
// the standard library's containers outside those (the text the layout
// tree holds, output buffers) is not counted: a ceiling is a bound on the
// trees, which are what grows with a hostile page.
//
// Thread-safety: a ceiling belongs to the thread that made it and counts
// only that thread's allocations. Memory freed on another thread, or after
// the ceiling is gone, is not counted back.
#ifndef ZESTRA_BASE_MEMORY_CEILING_H_
#define ZESTRA_BASE_MEMORY_CEILING_H_

#include <cstddef>

#include "zestra/export.h"

namespace OrvelMem {

class ZESTRA_EXPORT MemoryCeiling {
 public:
  // Installs a ceiling of `limit_bytes` on this thread until destruction; 0
  // installs none (the ceiling then only reports nothing reached). A
  // ceiling made while another is installed counts inside it: a request is
  // refused when it passes either.
  explicit MemoryCeiling(std::size_t limit_bytes) noexcept;
  ~MemoryCeiling();
  MemoryCeiling(const MemoryCeiling&) = delete;
  MemoryCeiling& operator=(const MemoryCeiling&) = delete;

  // Whether a request was refused because of this ceiling.
  bool Reached() const noexcept { return reached_; }
  // The most memory counted at once, in bytes.
  std::size_t Peak() const noexcept { return peak_; }
  std::size_t Limit() const noexcept { return limit_; }

  // For allocators. Take counts `bytes` about to be handed out on this
  // thread; it returns false, counting nothing, when that would pass an
  // installed ceiling (true when none is installed). Give counts `bytes`
  // handed back.
  static bool Take(std::size_t bytes) noexcept;
  // Whether a ceiling is installed on this thread: allocators skip the
  // counting when none is.
  static bool Installed() noexcept;
  static void Give(std::size_t bytes) noexcept;

 private:
  std::size_t limit_;
  std::size_t used_ = 0;
  std::size_t peak_ = 0;
  bool reached_ = false;
  MemoryCeiling* outer_;
};

}  // namespace OrvelMem

#endif  // ZESTRA_BASE_MEMORY_CEILING_H_
