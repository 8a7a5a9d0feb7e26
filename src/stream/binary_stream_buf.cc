#include "zestra/stream/binary_stream_buf.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <typeinfo>

#include "zestra/stream/binary_stream.h"
#include "zestra/stream/stream_exceptions.h"

namespace Orvel {

BaseBinaryStreamBuf::~BaseBinaryStreamBuf() = default;

template <class T>
BinaryStreamBufT<T>::~BinaryStreamBufT() {
  DiscardLookAhead();
}

template <class T>
T BinaryStreamBufT<T>::Put(const void* data, T count) {
  return vPut(data, count);
}

template <class T>
T BinaryStreamBufT<T>::Get(void* destination, T count) {
  uint8_t* out = static_cast<uint8_t*>(destination);
  const T taken = DrainLookAhead(count, [out](const uint8_t* bytes, T n) { std::memcpy(out, bytes, n); });
  if (taken == count) return taken;
  return taken + vGet(out + taken, count - taken);
}

template <class T>
T BinaryStreamBufT<T>::PutExact(const void* data, T count) {
  if (Put(data, count) < count) throw BinaryStreamPutEOFException();
  return count;
}

template <class T>
T BinaryStreamBufT<T>::GetExact(void* destination, T count) {
  if (Get(destination, count) < count) throw BinaryStreamGetEOFException();
  return count;
}

template <class T>
T BinaryStreamBufT<T>::Copy(std::u16string& out, T count) {
  T taken = 0;
  const T available = std::min(count, LookAheadSize());
  if (available > 0) {
    const T whole = available & ~T{1};
    const uint8_t* bytes = look_ahead_ + look_ahead_position_;
    for (T i = 0; i < whole; i += 2) {
      out.push_back(static_cast<char16_t>(bytes[i] | (bytes[i + 1] << 8)));
    }
    ConsumeLookAhead(whole);
    taken = whole;
    // One look-ahead byte is left over; it is the low byte of a unit whose
    // high byte is the store's next byte, if the request reaches that far.
    if (whole < available && count - taken >= 2) {
      uint8_t high = 0;
      if (vGet(&high, 1) == 1) {
        out.push_back(static_cast<char16_t>(look_ahead_[look_ahead_position_] | (high << 8)));
        ConsumeLookAhead(1);
        taken += 2;
      }
    }
    if (LookAheadSize() > 0) return taken;
  }
  return taken + vCopy(out, count - taken);
}

template <class T>
T BinaryStreamBufT<T>::Copy(std::string& out, T count) {
  const T taken = DrainLookAhead(
      count, [&out](const uint8_t* bytes, T n) { out.append(reinterpret_cast<const char*>(bytes), n); });
  if (taken == count) return taken;
  return taken + vCopy(out, count - taken);
}

template <class T>
T BinaryStreamBufT<T>::Copy(BinaryStreamT<T>& destination, T count) {
  return Copy(static_cast<BaseBinaryStreamBuf&>(*destination.Buffer()), count);
}

template <class T>
T BinaryStreamBufT<T>::Copy(BaseBinaryStreamBuf& destination, T count) {
  BinaryStreamBufT& sink = AsSameKind(destination);
  const T taken = DrainLookAhead(count, [&sink](const uint8_t* bytes, T n) { sink.PutExact(bytes, n); });
  if (taken == count) return taken;
  return taken + vCopy(destination, count - taken);
}

template <class T>
void BinaryStreamBufT<T>::Flush() {
  vFlush();
}

template <class T>
void BinaryStreamBufT<T>::Clear() {
  DiscardLookAhead();
  vClear();
}

template <class T>
void BinaryStreamBufT<T>::ClearMemory() {
  Clear();
  vClearMemory();
}

template <class T>
void BinaryStreamBufT<T>::DiscardLookAhead() noexcept {
  OrvelMem::MemoryPool::Delete(look_ahead_);
  look_ahead_ = nullptr;
  look_ahead_size_ = 0;
  look_ahead_position_ = 0;
}

template <class T>
void BinaryStreamBufT<T>::FillLookAhead(const void* data, T size) {
  DiscardLookAhead();
  if (size == 0) return;
  look_ahead_ = static_cast<uint8_t*>(OrvelMem::MemoryPool::New(size));
  if (look_ahead_ == nullptr) throw std::bad_alloc();
  std::memcpy(look_ahead_, data, size);
  look_ahead_size_ = size;
}

template <class T>
BinaryStreamBufT<T>& BinaryStreamBufT<T>::AsSameKind(BaseBinaryStreamBuf& destination) {
  return dynamic_cast<BinaryStreamBufT&>(destination);
}

template <class T>
template <class Sink>
T BinaryStreamBufT<T>::DrainLookAhead(T count, Sink&& sink) {
  const T n = std::min(count, LookAheadSize());
  if (n == 0) return 0;
  sink(look_ahead_ + look_ahead_position_, n);
  ConsumeLookAhead(n);
  return n;
}

template <class T>
void BinaryStreamBufT<T>::ConsumeLookAhead(T n) noexcept {
  look_ahead_position_ += n;
  if (look_ahead_position_ == look_ahead_size_) DiscardLookAhead();
}

template class BinaryStreamBufT<unsigned int>;

}  // namespace Orvel
