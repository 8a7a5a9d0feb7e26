// MemoryBuffer is the in-memory byte buffer: a growable store with
// independent get and put positions (see binary_stream_buf.h for the
// contract). Put writes at the put position, overwriting what lies there and
// extending the data past its end; Get reads at the get position. Both start
// at 0, so bytes put into a new buffer are read back from the first one.
//
// The store is allocated through the memory pool on the first write, with
// the initial capacity or more, and doubles whenever it is full. The data
// may hold at most 0xFFFFFFFF bytes; a write that would pass that limit, or
// that cannot get memory, stores nothing and returns 0.
//
// Seeks (vSeekG, vSeekP) accept:
//   origin kSeekBegin (0), kSeekCurrent (1) or kSeekEnd (2), with direction
//   kSeekForward (1) or kSeekBackward (-1); and origin kSeekBegin with
//   direction kSeekAbsolute (-2), which moves to the absolute offset.
// A target before the first byte stops at 0, one past the end of the data
// stops at the end. Any other origin or direction leaves the position as it
// was. Every get seek discards the look-ahead.
//
// Thread-safety: none; one thread at a time.
#ifndef ZESTRA_STREAM_MEMORY_BUFFER_H_
#define ZESTRA_STREAM_MEMORY_BUFFER_H_

#include <cstdint>
#include <string>

#include "zestra/export.h"
#include "zestra/stream/binary_stream_buf.h"

namespace OrvelFile {

class ZESTRA_EXPORT MemoryBuffer : public Orvel::BinaryStreamBufT<unsigned int> {
 public:
  // The third argument of the constructor over existing memory.
  static constexpr int kReadInPlace = 0;  // read the caller's bytes where they are
  static constexpr int kCopyBytes = 1;    // copy them into a store of the buffer's own

  // An empty buffer whose first allocation will hold at least
  // `initial_capacity` bytes. Nothing is allocated until the first write.
  explicit MemoryBuffer(unsigned int initial_capacity) noexcept;

  // A buffer whose data are the `size` bytes at `data`, readable from get
  // position 0; the put position is at the end. With kReadInPlace the bytes
  // are read where they lie and the caller keeps them valid and unchanged
  // until the buffer is destroyed, cleared or first written to; the first
  // write copies them into a store of the buffer's own. With kCopyBytes (any
  // value other than kReadInPlace) they are copied now; throws
  // std::bad_alloc when that copy cannot be allocated.
  // REQUIRES: `data` points to `size` readable bytes (may be null when `size`
  // is 0).
  MemoryBuffer(const void* data, unsigned int size, int mode);

  ~MemoryBuffer() override;

  unsigned int vPut(const void* data, unsigned int count) override;
  unsigned int vTellP() override { return put_; }
  unsigned int vSeekP(unsigned int offset, int origin, int direction) override;
  unsigned int vGet(void* destination, unsigned int count) override;
  unsigned int vTellG() override { return get_; }
  unsigned int vSeekG(unsigned int offset, int origin, int direction) override;
  // Nothing is pending in memory.
  void vFlush() override {}
  // Keeps the store for reuse.
  void vClear() override;
  void vClearMemory() override;
  // The put position moves back to the new end when it lay beyond it.
  void vClearEnd() override;
  unsigned int vSize() override { return size_; }
  bool vEndOfFile() override { return get_ >= size_; }
  unsigned int vCopy(std::u16string& out, unsigned int count) override;
  unsigned int vCopy(std::string& out, unsigned int count) override;
  unsigned int vCopy(Orvel::BaseBinaryStreamBuf& destination, unsigned int count) override;

  // Bytes allocated for the store; 0 while the buffer reads in place or has
  // not been written to.
  unsigned int Capacity() const noexcept { return capacity_; }
  // True while the data are the caller's memory, read in place.
  bool ReadsInPlace() const noexcept { return bytes_ != nullptr && store_ == nullptr; }

 private:
  // Makes the store the buffer's own and able to hold `needed` bytes,
  // keeping the data. `*source` (bytes about to be written) is moved along
  // when it points into the old store. Returns false when memory cannot be
  // had; nothing changes then.
  bool Reserve(unsigned int needed, const uint8_t** source) noexcept;
  // The new get or put position for a seek from `current`, or `current`
  // itself for an unsupported origin or direction.
  unsigned int SeekTarget(unsigned int current, unsigned int offset, int origin, int direction) const noexcept;
  // Bytes from the get position to the end, at most `count`.
  unsigned int Readable(unsigned int count) const noexcept;

  const uint8_t* bytes_ = nullptr;  // the data: store_ or the caller's memory; null when neither
  uint8_t* store_ = nullptr;        // owned, from the memory pool; null until the first write
  unsigned int capacity_ = 0;       // bytes allocated at store_
  unsigned int initial_capacity_;   // least size of the first allocation
  unsigned int size_ = 0;           // bytes of data
  unsigned int get_ = 0;            // get position, <= size_
  unsigned int put_ = 0;            // put position, <= size_
};

}  // namespace OrvelFile

#endif  // ZESTRA_STREAM_MEMORY_BUFFER_H_
