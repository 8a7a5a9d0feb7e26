#include "zestra/stream/memory_buffer.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <new>

namespace OrvelFile {

namespace {

constexpr unsigned int kMaxSize = std::numeric_limits<unsigned int>::max();

// True when `p` lies inside the `size` bytes at `block`.
bool PointsInto(const uint8_t* p, const uint8_t* block, unsigned int size) {
  std::less_equal<const uint8_t*> le;
  std::less<const uint8_t*> lt;
  return block != nullptr && le(block, p) && lt(p, block + size);
}

}  // namespace

MemoryBuffer::MemoryBuffer(unsigned int initial_capacity) noexcept : initial_capacity_(initial_capacity) {}

MemoryBuffer::MemoryBuffer(const void* data, unsigned int size, int mode) : initial_capacity_(size) {
  if (size == 0) return;
  const uint8_t* source = static_cast<const uint8_t*>(data);
  if (mode == kReadInPlace) {
    bytes_ = source;
  } else {
    if (!Reserve(size, &source)) throw std::bad_alloc();
    std::memcpy(store_, source, size);
  }
  size_ = size;
  put_ = size;
}

MemoryBuffer::~MemoryBuffer() { OrvelMem::MemoryPool::Delete(store_); }

unsigned int MemoryBuffer::vPut(const void* data, unsigned int count) {
  if (count == 0 || count > kMaxSize - put_) return 0;
  const uint8_t* source = static_cast<const uint8_t*>(data);
  if (!Reserve(std::max(size_, put_ + count), &source)) return 0;
  // The source may be this buffer's own data (a copy into itself).
  std::memmove(store_ + put_, source, count);
  put_ += count;
  size_ = std::max(size_, put_);
  return count;
}

unsigned int MemoryBuffer::vSeekP(unsigned int offset, int origin, int direction) {
  put_ = SeekTarget(put_, offset, origin, direction);
  return put_;
}

unsigned int MemoryBuffer::vGet(void* destination, unsigned int count) {
  const unsigned int n = Readable(count);
  if (n > 0) std::memcpy(destination, bytes_ + get_, n);
  get_ += n;
  return n;
}

unsigned int MemoryBuffer::vSeekG(unsigned int offset, int origin, int direction) {
  DiscardLookAhead();
  get_ = SeekTarget(get_, offset, origin, direction);
  return get_;
}

void MemoryBuffer::vClear() {
  // Borrowed memory is let go: a later write starts an own store.
  if (store_ == nullptr) bytes_ = nullptr;
  size_ = get_ = put_ = 0;
}

void MemoryBuffer::vClearMemory() {
  vClear();
  OrvelMem::MemoryPool::Delete(store_);
  store_ = nullptr;
  bytes_ = nullptr;
  capacity_ = 0;
}

void MemoryBuffer::vClearEnd() {
  size_ = get_;
  put_ = std::min(put_, size_);
}

unsigned int MemoryBuffer::vCopy(std::u16string& out, unsigned int count) {
  const unsigned int n = Readable(count) & ~1u;
  const uint8_t* bytes = bytes_ + get_;
  const std::size_t start = out.size();
  out.resize(start + n / 2);
  for (unsigned int i = 0; i < n / 2; ++i) {
    out[start + i] = static_cast<char16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
  }
  get_ += n;
  return n;
}

unsigned int MemoryBuffer::vCopy(std::string& out, unsigned int count) {
  const unsigned int n = Readable(count);
  if (n > 0) out.append(reinterpret_cast<const char*>(bytes_ + get_), n);
  get_ += n;
  return n;
}

unsigned int MemoryBuffer::vCopy(Orvel::BaseBinaryStreamBuf& destination, unsigned int count) {
  BinaryStreamBufT& sink = AsSameKind(destination);
  const unsigned int n = Readable(count);
  if (n == 0) return 0;
  // When the destination is this buffer, vPut may replace the store; it
  // notices that the source lies in the old store and reads from the new.
  sink.PutExact(bytes_ + get_, n);
  get_ += n;
  return n;
}

bool MemoryBuffer::Reserve(unsigned int needed, const uint8_t** source) noexcept {
  if (store_ != nullptr && needed <= capacity_) return true;
  const uint64_t doubled = 2 * static_cast<uint64_t>(capacity_);
  const uint64_t wanted = std::max<uint64_t>({needed, initial_capacity_, doubled});
  const unsigned int capacity = static_cast<unsigned int>(std::min<uint64_t>(wanted, kMaxSize));
  uint8_t* store = static_cast<uint8_t*>(OrvelMem::MemoryPool::New(capacity));
  if (store == nullptr) return false;
  if (size_ > 0) std::memcpy(store, bytes_, size_);
  if (store_ != nullptr && PointsInto(*source, store_, capacity_)) *source = store + (*source - store_);
  OrvelMem::MemoryPool::Delete(store_);
  store_ = store;
  bytes_ = store;
  capacity_ = capacity;
  return true;
}

unsigned int MemoryBuffer::SeekTarget(unsigned int current, unsigned int offset, int origin,
                                      int direction) const noexcept {
  if (direction == Orvel::kSeekAbsolute) {
    return origin == Orvel::kSeekBegin ? std::min(offset, size_) : current;
  }
  unsigned int from;
  switch (origin) {
    case Orvel::kSeekBegin: from = 0; break;
    case Orvel::kSeekCurrent: from = current; break;
    case Orvel::kSeekEnd: from = size_; break;
    default: return current;
  }
  switch (direction) {
    case Orvel::kSeekForward: return offset >= size_ - from ? size_ : from + offset;
    case Orvel::kSeekBackward: return offset >= from ? 0 : from - offset;
    default: return current;
  }
}

unsigned int MemoryBuffer::Readable(unsigned int count) const noexcept { return std::min(count, size_ - get_); }

}  // namespace OrvelFile
