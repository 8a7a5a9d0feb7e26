// BinaryStreamBufT<T> is an abstract byte buffer with independent get (read)
// and put (write) positions; positions, sizes and counts are byte counts of
// the unsigned type T. Writing stores bytes at the put position, reading
// starts at the get position, which is 0 in a new buffer. The library
// instantiates it for T = unsigned int only; its in-memory implementation is
// OrvelFile::MemoryBuffer.
//
// The operations come in two layers. The v-prefixed ones are the store
// interface that an implementation provides. The others are the callers'
// interface: they serve a look-ahead area first and then call the store.
//
// The look-ahead area holds bytes already taken from the store but not yet
// consumed. Every read-type operation (Get and the Copy family) delivers
// these bytes before anything from the store, and Clear, DiscardLookAhead
// and every seek of the get position drop them. Only a subclass can fill it
// (FillLookAhead); MemoryBuffer never does, so for it the area stays empty.
//
// A count of 0xFFFFFFFF (all bits of T set) asks for everything that remains;
// since reads stop at the end of the data, any count larger than what remains
// behaves the same.
//
// Thread-safety: none; a buffer is used by one thread at a time.
#ifndef ZESTRA_STREAM_BINARY_STREAM_BUF_H_
#define ZESTRA_STREAM_BINARY_STREAM_BUF_H_

#include <cstdint>
#include <string>

#include "zestra/base/memory_pool.h"
#include "zestra/export.h"

namespace Orvel {

// Where a seek counts its offset from (the `origin` argument of vSeekG and
// vSeekP).
enum SeekOrigin : int {
  kSeekBegin = 0,    // the first byte of the data
  kSeekCurrent = 1,  // the position being moved
  kSeekEnd = 2,      // just past the last byte of the data
};

// Which way a seek runs from its origin (the `direction` argument).
enum SeekDirection : int {
  kSeekAbsolute = -2,  // the offset is the new position; only with kSeekBegin
  kSeekBackward = -1,  // new position = origin - offset
  kSeekForward = 1,    // new position = origin + offset
};

// Root of the stream buffers. It only gives the family a common type: a Copy
// destination is named through it.
class ZESTRA_EXPORT BaseBinaryStreamBuf : public OrvelMem::PoolObject {
 public:
  BaseBinaryStreamBuf() = default;
  BaseBinaryStreamBuf(const BaseBinaryStreamBuf&) = delete;
  BaseBinaryStreamBuf& operator=(const BaseBinaryStreamBuf&) = delete;
  virtual ~BaseBinaryStreamBuf();
};

template <class T>
class BinaryStreamT;

template <class T>
class ZESTRA_EXPORT BinaryStreamBufT : public BaseBinaryStreamBuf {
 public:
  // The count that asks for everything that remains.
  static constexpr T kAll = static_cast<T>(~T{0});

  BinaryStreamBufT() noexcept = default;
  // Frees the look-ahead area; the subclass frees its store.
  ~BinaryStreamBufT() override;

  // Writes `count` bytes from `data` at the put position (vPut). Returns the
  // number of bytes written, which is less than `count` only when the store
  // refuses (out of memory, or the size would pass the largest T).
  // REQUIRES: `data` points to `count` readable bytes (may be null when
  // `count` is 0).
  virtual T Put(const void* data, T count);

  // Reads up to `count` bytes into `destination`: the look-ahead first, then
  // the store (vGet). Returns the number of bytes delivered; 0 at the end.
  // REQUIRES: `destination` has room for min(count, bytes remaining).
  virtual T Get(void* destination, T count);

  // Put, then throws BinaryStreamPutEOFException when fewer than `count`
  // bytes were written (those that were written stay written). Returns
  // `count`.
  virtual T PutExact(const void* data, T count);

  // Get, then throws BinaryStreamGetEOFException when fewer than `count`
  // bytes were delivered (those that were delivered are consumed). Returns
  // `count`.
  virtual T GetExact(void* destination, T count);

  // Appends up to `count` bytes from the get position to `out` as 16-bit
  // little-endian units, the look-ahead first (an odd look-ahead byte is the
  // low byte of a unit whose high byte is the next byte of the store), then
  // the store (vCopy). Only whole units are taken: a last byte without a
  // partner, because `count` is odd or the data ends, stays unread. Returns
  // the number of bytes taken (always even).
  virtual T Copy(std::u16string& out, T count);

  // Appends up to `count` bytes from the get position to `out`, the
  // look-ahead first, then the store (vCopy). Returns the bytes taken.
  virtual T Copy(std::string& out, T count);

  // Copy into the buffer of `destination`, at its put position.
  // REQUIRES: destination.Buffer() is not null.
  virtual T Copy(BinaryStreamT<T>& destination, T count);

  // Writes up to `count` bytes from the get position into `destination` at
  // its put position: the look-ahead with destination.PutExact, then the
  // store (vCopy). Returns the bytes taken. Throws
  // BinaryStreamPutEOFException when the destination refuses bytes.
  // `destination` may be this buffer. REQUIRES: `destination` is a
  // BinaryStreamBufT<T> (every buffer of this library is); any other type
  // throws std::bad_cast.
  virtual T Copy(BaseBinaryStreamBuf& destination, T count);

  // Commits pending writes (vFlush).
  virtual void Flush();
  // Discards the look-ahead, then empties the store (vClear).
  virtual void Clear();
  // Clear, then releases the store's memory (vClearMemory).
  virtual void ClearMemory();

  // Store interface.

  // Stores `count` bytes at the put position, overwriting bytes already
  // there and growing the data past its end as needed; advances the put
  // position. Returns the count stored.
  virtual T vPut(const void* data, T count) = 0;
  virtual T vTellP() = 0;
  // Moves the put position; see SeekOrigin and SeekDirection for the values.
  // Returns the new position.
  virtual T vSeekP(T offset, int origin, int direction) = 0;
  // Reads up to `count` bytes at the get position and advances it. Returns
  // the bytes read.
  virtual T vGet(void* destination, T count) = 0;
  // The get position in the store (look-ahead bytes lie before it).
  virtual T vTellG() = 0;
  // Moves the get position and discards the look-ahead, whose bytes belong
  // to the old position. vSeekG(p, kSeekBegin, kSeekAbsolute) moves it to
  // the absolute offset p. Returns the new position.
  virtual T vSeekG(T offset, int origin, int direction) = 0;
  virtual void vFlush() = 0;
  // Empties the data; both positions return to 0.
  virtual void vClear() = 0;
  // vClear, and releases the memory of the store.
  virtual void vClearMemory() = 0;
  // Truncates the data at the get position.
  virtual void vClearEnd() = 0;
  // Number of bytes the store holds, whatever the positions.
  virtual T vSize() = 0;
  // True when the get position is at the end of the data.
  virtual bool vEndOfFile() = 0;
  // Store-level parts of the Copy operations above: the same effect, without
  // the look-ahead.
  virtual T vCopy(std::u16string& out, T count) = 0;
  virtual T vCopy(std::string& out, T count) = 0;
  virtual T vCopy(BaseBinaryStreamBuf& destination, T count) = 0;

  // Drops the look-ahead bytes. Callers that rewind a buffer call this
  // before seeking the get position.
  void DiscardLookAhead() noexcept;
  // Look-ahead bytes not yet consumed.
  T LookAheadSize() const noexcept { return look_ahead_size_ - look_ahead_position_; }

 protected:
  // Replaces the look-ahead with a copy of `size` bytes at `data` (none when
  // `size` is 0). Throws std::bad_alloc when the copy cannot be allocated.
  void FillLookAhead(const void* data, T size);

  // `destination` seen as a buffer of this family; throws std::bad_cast
  // otherwise.
  static BinaryStreamBufT& AsSameKind(BaseBinaryStreamBuf& destination);

 private:
  // Hands up to `count` look-ahead bytes to `sink(bytes, n)`, oldest first,
  // and consumes them; returns n.
  template <class Sink>
  T DrainLookAhead(T count, Sink&& sink);
  // Consumes `n` look-ahead bytes; frees the area when all are consumed.
  void ConsumeLookAhead(T n) noexcept;

  uint8_t* look_ahead_ = nullptr;  // owned, from the memory pool; null when empty
  T look_ahead_size_ = 0;          // bytes in the area
  T look_ahead_position_ = 0;      // bytes of the area already consumed
};

extern template class BinaryStreamBufT<unsigned int>;

}  // namespace Orvel

#endif  // ZESTRA_STREAM_BINARY_STREAM_BUF_H_
