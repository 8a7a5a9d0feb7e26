// RefCountVector<T, P> is a growable array of counted pointers P (by default
// SmartPtr<T>); every element holds one reference to its object. It grows by
// the rule in growth.h and allocates through the memory pool. Used for the
// item list of a cell and for lists of tables.
//
// Thread-safety: none; one thread at a time.
#ifndef ZESTRA_BASE_REF_COUNT_VECTOR_H_
#define ZESTRA_BASE_REF_COUNT_VECTOR_H_

#include <cassert>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

#include "zestra/base/growth.h"
#include "zestra/base/memory_pool.h"
#include "zestra/base/smart_ptr.h"

namespace Orvel {

template <class T, class P = SmartPtr<T>>
class RefCountVector {
 public:
  RefCountVector() noexcept = default;
  RefCountVector(const RefCountVector& other) {
    Reserve(other.size_);
    for (const P& p : other) Add(p);
  }
  RefCountVector(RefCountVector&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)),
        size_(std::exchange(other.size_, 0)),
        capacity_(std::exchange(other.capacity_, 0)) {}
  RefCountVector& operator=(const RefCountVector& other) {
    if (this != &other) {
      RefCountVector copy(other);
      Swap(copy);
    }
    return *this;
  }
  RefCountVector& operator=(RefCountVector&& other) noexcept {
    Swap(other);
    return *this;
  }
  ~RefCountVector() {
    Clear();
    OrvelMem::MemoryPool::Delete(data_);
  }

  uint32_t Size() const noexcept { return size_; }
  uint32_t Capacity() const noexcept { return capacity_; }
  bool Empty() const noexcept { return size_ == 0; }

  // REQUIRES: index < Size().
  const P& operator[](uint32_t index) const noexcept {
    assert(index < size_);
    return data_[index];
  }
  P& operator[](uint32_t index) noexcept {
    assert(index < size_);
    return data_[index];
  }
  const P* Begin() const noexcept { return data_; }
  const P* End() const noexcept { return data_ + size_; }
  const P* begin() const noexcept { return data_; }
  const P* end() const noexcept { return data_ + size_; }
  P* begin() noexcept { return data_; }
  P* end() noexcept { return data_ + size_; }

  // Appends `p` (one more reference to its object). Throws std::bad_alloc
  // when memory cannot be had.
  void Add(const P& p) {
    if (size_ == capacity_) Reallocate(GrownCapacity(size_));
    new (data_ + size_) P(p);
    ++size_;
  }
  void Add(P&& p) {
    if (size_ == capacity_) Reallocate(GrownCapacity(size_));
    new (data_ + size_) P(std::move(p));
    ++size_;
  }

  // Appends every element of `other`, in order.
  void Append(const RefCountVector& other) {
    Reserve(size_ + other.size_);
    for (uint32_t i = 0, n = other.size_; i < n; ++i) Add(other.data_[i]);
  }

  // Removes the element at `index` (releasing its reference); the ones after
  // it move up one place. REQUIRES: index < Size().
  void Erase(uint32_t index) noexcept {
    assert(index < size_);
    std::move(data_ + index + 1, data_ + size_, data_ + index);
    data_[--size_].~P();
  }

  // Removes the last element. REQUIRES: !Empty().
  void PopBack() noexcept {
    assert(size_ > 0);
    data_[--size_].~P();
  }

  // Ensures room for `capacity` elements without changing the size.
  void Reserve(uint32_t capacity) {
    if (capacity > capacity_) Reallocate(capacity);
  }

  // Reduces the capacity to the size when that frees a quarter of the
  // storage or more; the elements are unchanged. When memory for the
  // smaller array cannot be had, the capacity stays.
  void ShrinkToFit() noexcept {
    if (capacity_ - size_ < capacity_ / 4 || capacity_ == 0) return;
    if (size_ == 0) {
      OrvelMem::MemoryPool::Delete(data_);
      data_ = nullptr;
      capacity_ = 0;
      return;
    }
    try {
      Reallocate(size_);
    } catch (const std::bad_alloc&) {
      // The array keeps its room: it only costs memory.
    }
  }

  // Releases every element; keeps the storage.
  void Clear() noexcept {
    while (size_ > 0) data_[--size_].~P();
  }

  void Swap(RefCountVector& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

 private:
  // Moves the elements to an array of `capacity`. REQUIRES: capacity >= size_.
  void Reallocate(uint32_t capacity) {
    P* data = static_cast<P*>(OrvelMem::MemoryPool::New(sizeof(P) * static_cast<std::size_t>(capacity)));
    if (data == nullptr) throw std::bad_alloc();
    std::uninitialized_move(data_, data_ + size_, data);
    std::destroy(data_, data_ + size_);
    OrvelMem::MemoryPool::Delete(data_);
    data_ = data;
    capacity_ = capacity;
  }

  P* data_ = nullptr;
  uint32_t size_ = 0;
  uint32_t capacity_ = 0;
};

}  // namespace Orvel

#endif  // ZESTRA_BASE_REF_COUNT_VECTOR_H_
