// BinaryStreamT<T> is a handle on a stream buffer (binary_stream_buf.h): it
// forwards Put, Get, PutExact and GetExact to the buffer and, when it owns
// the buffer, deletes it in its destructor. Handles are shared between
// objects through RefCount<BinaryStreamT<unsigned int>>, so the buffer lives
// as long as the last holder of the handle.
//
// BaseBinaryStream is the root of the handles: the same operations, all
// abstract. Its counts are unsigned 32-bit, the one position type of the
// library, so BinaryStreamT is instantiated for T = unsigned int only.
//
// Thread-safety: none; a handle and its buffer are used by one thread at a
// time.
#ifndef ZESTRA_STREAM_BINARY_STREAM_H_
#define ZESTRA_STREAM_BINARY_STREAM_H_

#include "zestra/base/memory_pool.h"
#include "zestra/export.h"
#include "zestra/stream/binary_stream_buf.h"

namespace Orvel {

class ZESTRA_EXPORT BaseBinaryStream : public OrvelMem::PoolObject {
 public:
  BaseBinaryStream() = default;
  BaseBinaryStream(const BaseBinaryStream&) = delete;
  BaseBinaryStream& operator=(const BaseBinaryStream&) = delete;
  virtual ~BaseBinaryStream();

  virtual unsigned int Put(const void* data, unsigned int count) = 0;
  virtual unsigned int Get(void* destination, unsigned int count) = 0;
  virtual unsigned int PutExact(const void* data, unsigned int count) = 0;
  virtual unsigned int GetExact(void* destination, unsigned int count) = 0;
  virtual BaseBinaryStreamBuf* Buffer() = 0;
};

template <class T>
class ZESTRA_EXPORT BinaryStreamT : public BaseBinaryStream {
 public:
  // A handle on `buffer`; with `owns` the handle deletes the buffer when it
  // is destroyed. A null buffer makes a handle whose Buffer() is null and
  // whose other operations must not be called.
  BinaryStreamT(BinaryStreamBufT<T>* buffer, bool owns) noexcept : owns_(owns), buffer_(buffer) {}
  // Deletes the buffer when the handle owns it.
  ~BinaryStreamT() override;

  // Each forwards to the same operation of the buffer (see
  // binary_stream_buf.h). REQUIRES: Buffer() is not null.
  T Put(const void* data, T count) override { return buffer_->Put(data, count); }
  T Get(void* destination, T count) override { return buffer_->Get(destination, count); }
  T PutExact(const void* data, T count) override { return buffer_->PutExact(data, count); }
  T GetExact(void* destination, T count) override { return buffer_->GetExact(destination, count); }
  // The buffer; still owned as before the call.
  BinaryStreamBufT<T>* Buffer() override { return buffer_; }

  bool OwnsBuffer() const noexcept { return owns_; }

 private:
  bool owns_;
  BinaryStreamBufT<T>* buffer_;
};

extern template class BinaryStreamT<unsigned int>;

}  // namespace Orvel

#endif  // ZESTRA_STREAM_BINARY_STREAM_H_
