// SPRefCounter is the intrusive reference count of the library's counted
// objects, and RefCounted<Derived> the mixin that gives a class the
// AddRef/Release/NbRef trio on top of it.
//
// The count is a signed 32-bit integer that starts at 0 when the object is
// made; copying an object never copies its count and assigning never changes
// it. AddRef and Release change it atomically and return the new value; the
// Release that reaches 0 destroys the object (through its virtual destructor
// when it has one) and frees its memory through the memory pool.
//
// Thread-safety: AddRef, Release and NbRef may be called concurrently.
#ifndef ZESTRA_BASE_SP_REF_COUNTER_H_
#define ZESTRA_BASE_SP_REF_COUNTER_H_

#include <atomic>
#include <cstdint>

#include "zestra/base/memory_pool.h"
#include "zestra/export.h"

namespace Orvel {

class ZESTRA_EXPORT SPRefCounter {
 public:
  SPRefCounter() noexcept : count_(0) {}
  SPRefCounter(const SPRefCounter&) noexcept : count_(0) {}
  SPRefCounter& operator=(const SPRefCounter&) noexcept { return *this; }

  // Adds one; returns the new count.
  int32_t Increment() const noexcept { return count_.fetch_add(1, std::memory_order_relaxed) + 1; }
  // Subtracts one; returns the new count. The caller destroys the owner at 0.
  int32_t Decrement() const noexcept { return count_.fetch_sub(1, std::memory_order_acq_rel) - 1; }
  int32_t Count() const noexcept { return count_.load(std::memory_order_relaxed); }

 private:
  mutable std::atomic<int32_t> count_;
};

// RefCounted<Derived>: CRTP base holding the count as the object's first
// part. Objects are allocated through the memory pool (PoolObject).
template <class Derived>
class RefCounted : public OrvelMem::PoolObject {
 public:
  int32_t AddRef() const noexcept { return refs_.Increment(); }
  int32_t Release() const noexcept {
    const int32_t n = refs_.Decrement();
    if (n == 0) delete static_cast<const Derived*>(this);
    return n;
  }
  int32_t NbRef() const noexcept { return refs_.Count(); }

 protected:
  RefCounted() = default;
  RefCounted(const RefCounted&) = default;
  RefCounted& operator=(const RefCounted&) = default;
  ~RefCounted() = default;

 private:
  SPRefCounter refs_;
};

}  // namespace Orvel

#endif  // ZESTRA_BASE_SP_REF_COUNTER_H_
