// FastVector<T> is a growable array of plain values (doubles, unsigned
// integers, small trivially copyable structs) that moves its elements by
// plain copying. It grows by the rule in growth.h and allocates through the
// memory pool.
//
// Thread-safety: none; one thread at a time.
#ifndef ZESTRA_BASE_FAST_VECTOR_H_
#define ZESTRA_BASE_FAST_VECTOR_H_

#include <cassert>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include "zestra/base/growth.h"
#include "zestra/base/memory_pool.h"

namespace Orvel {

template <class T>
class FastVector {
  static_assert(std::is_trivially_copyable_v<T>, "FastVector holds plain values only");

 public:
  FastVector() noexcept = default;
  FastVector(const FastVector& other) { Append(other.data_, other.size_); }
  FastVector(FastVector&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)),
        size_(std::exchange(other.size_, 0)),
        capacity_(std::exchange(other.capacity_, 0)) {}
  FastVector& operator=(const FastVector& other) {
    if (this != &other) {
      size_ = 0;
      Append(other.data_, other.size_);
    }
    return *this;
  }
  FastVector& operator=(FastVector&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
    return *this;
  }
  ~FastVector() { OrvelMem::MemoryPool::Delete(data_); }

  uint32_t Size() const noexcept { return size_; }
  uint32_t Capacity() const noexcept { return capacity_; }
  bool Empty() const noexcept { return size_ == 0; }

  // REQUIRES: index < Size().
  T& operator[](uint32_t index) noexcept {
    assert(index < size_);
    return data_[index];
  }
  const T& operator[](uint32_t index) const noexcept {
    assert(index < size_);
    return data_[index];
  }
  T* Data() noexcept { return data_; }
  const T* Data() const noexcept { return data_; }
  T* begin() noexcept { return data_; }
  T* end() noexcept { return data_ + size_; }
  const T* begin() const noexcept { return data_; }
  const T* end() const noexcept { return data_ + size_; }

  // Appends `value`, growing by the shared rule when full. Throws
  // std::bad_alloc when memory cannot be had.
  void Add(const T& value) {
    if (size_ == capacity_) Grow(GrownCapacity(size_));
    data_[size_++] = value;
  }

  // Appends `count` values from `values`.
  void Append(const T* values, uint32_t count) {
    if (count == 0) return;
    if (capacity_ - size_ < count) Grow(size_ + count);
    std::memcpy(data_ + size_, values, sizeof(T) * count);
    size_ += count;
  }

  // Removes the element at `index`; the ones after it move up one place.
  // REQUIRES: index < Size().
  void Erase(uint32_t index) noexcept {
    assert(index < size_);
    std::memmove(data_ + index, data_ + index + 1, sizeof(T) * (size_ - index - 1));
    --size_;
  }

  // Ensures room for `capacity` elements without changing the size.
  void Reserve(uint32_t capacity) {
    if (capacity > capacity_) Grow(capacity);
  }

  // Removes every element; keeps the storage.
  void Clear() noexcept { size_ = 0; }

 private:
  void Grow(uint32_t capacity) {
    T* data = static_cast<T*>(OrvelMem::MemoryPool::New(sizeof(T) * static_cast<std::size_t>(capacity)));
    if (data == nullptr) throw std::bad_alloc();
    if (size_ != 0) std::memcpy(data, data_, sizeof(T) * size_);
    OrvelMem::MemoryPool::Delete(data_);
    data_ = data;
    capacity_ = capacity;
  }

  T* data_ = nullptr;
  uint32_t size_ = 0;
  uint32_t capacity_ = 0;
};

}  // namespace Orvel

#endif  // ZESTRA_BASE_FAST_VECTOR_H_
