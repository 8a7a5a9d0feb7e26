// RefCount<T> is a shared holder of a T with a separately allocated counter.
// Copying a holder raises the counter atomically; the last holder to let go
// destroys the object (through its virtual destructor when T has one) and
// frees the counter. An empty holder has neither object nor counter.
//
// Thread-safety: distinct holders of one object may be copied and destroyed
// concurrently; one holder must not be changed by two threads at once.
#ifndef ZESTRA_BASE_REF_COUNT_H_
#define ZESTRA_BASE_REF_COUNT_H_

#include <atomic>
#include <cstdint>
#include <new>
#include <utility>

#include "zestra/base/memory_pool.h"

namespace Orvel {

template <class T>
class RefCount {
 public:
  RefCount() noexcept : count_(nullptr), object_(nullptr) {}

  // Takes ownership of `object` (which may be null: an empty holder). If the
  // counter cannot be allocated, the object is destroyed and the holder is
  // empty.
  explicit RefCount(T* object) noexcept : count_(nullptr), object_(nullptr) {
    if (object == nullptr) return;
    void* memory = OrvelMem::MemoryPool::New(sizeof(Counter));
    if (memory == nullptr) {
      delete object;
      return;
    }
    count_ = new (memory) Counter(1);
    object_ = object;
  }

  RefCount(const RefCount& other) noexcept : count_(other.count_), object_(other.object_) {
    if (count_ != nullptr) count_->fetch_add(1, std::memory_order_relaxed);
  }
  RefCount(RefCount&& other) noexcept
      : count_(std::exchange(other.count_, nullptr)), object_(std::exchange(other.object_, nullptr)) {}
  ~RefCount() { Reset(); }

  // Shares `other`'s object; assigning a holder of the same counter (itself
  // included) changes nothing.
  RefCount& operator=(const RefCount& other) noexcept {
    if (count_ != other.count_) {
      RefCount copy(other);
      Swap(copy);
    }
    return *this;
  }
  RefCount& operator=(RefCount&& other) noexcept {
    if (this != &other) {
      Reset();
      Swap(other);
    }
    return *this;
  }

  // Gives up this holder's share; the holder becomes empty.
  void Reset() noexcept {
    if (count_ != nullptr && count_->fetch_sub(1, std::memory_order_acq_rel) == 1) {
      delete object_;
      count_->~Counter();
      OrvelMem::MemoryPool::Delete(count_);
    }
    count_ = nullptr;
    object_ = nullptr;
  }

  void Swap(RefCount& other) noexcept {
    std::swap(count_, other.count_);
    std::swap(object_, other.object_);
  }

  T* Get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  // Number of holders sharing the object; 0 for an empty holder.
  int32_t Count() const noexcept { return count_ == nullptr ? 0 : count_->load(std::memory_order_relaxed); }

  // True when both hold the same counter (and so the same object).
  bool SharesWith(const RefCount& other) const noexcept { return count_ == other.count_; }

 private:
  using Counter = std::atomic<int32_t>;
  Counter* count_;
  T* object_;
};

}  // namespace Orvel

#endif  // ZESTRA_BASE_REF_COUNT_H_
