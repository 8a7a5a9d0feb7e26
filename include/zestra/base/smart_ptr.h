// SmartPtr<T> is the intrusive counted pointer of the library. T provides
// AddRef() and Release() (see sp_ref_counter.h); the pointer holds one
// reference while it is not null.
//
// Assigning a different pointer releases the old pointee and adds a
// reference to the new one; assigning the pointer already held does nothing.
// Pointers order and compare by address, so SmartPtr can key ordered sets.
//
// Thread-safety: one SmartPtr object must not be changed by two threads at
// once; distinct SmartPtrs to the same object may be used concurrently.
#ifndef ZESTRA_BASE_SMART_PTR_H_
#define ZESTRA_BASE_SMART_PTR_H_

#include <compare>
#include <cstddef>
#include <utility>

namespace Orvel {

template <class T>
class SmartPtr {
 public:
  SmartPtr() noexcept : p_(nullptr) {}
  SmartPtr(std::nullptr_t) noexcept : p_(nullptr) {}
  // Takes `p`; adds a reference when `add_ref` is true (the system always
  // passes true; false adopts a reference the caller already owns).
  explicit SmartPtr(T* p, bool add_ref = true) noexcept : p_(p) {
    if (p_ != nullptr && add_ref) p_->AddRef();
  }
  SmartPtr(const SmartPtr& other) noexcept : SmartPtr(other.p_) {}
  SmartPtr(SmartPtr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
  template <class U>
  SmartPtr(const SmartPtr<U>& other) noexcept : SmartPtr(other.Get()) {}
  ~SmartPtr() {
    if (p_ != nullptr) p_->Release();
  }

  SmartPtr& operator=(const SmartPtr& other) noexcept { return Assign(other.p_); }
  SmartPtr& operator=(SmartPtr&& other) noexcept {
    if (this != &other) {
      T* old = std::exchange(p_, std::exchange(other.p_, nullptr));
      if (old != nullptr) old->Release();
    }
    return *this;
  }
  SmartPtr& operator=(T* p) noexcept { return Assign(p); }
  SmartPtr& operator=(std::nullptr_t) noexcept { return Assign(nullptr); }

  T* Get() const noexcept { return p_; }
  T* operator->() const noexcept { return p_; }
  T& operator*() const noexcept { return *p_; }
  explicit operator bool() const noexcept { return p_ != nullptr; }
  bool IsNull() const noexcept { return p_ == nullptr; }

  // Gives up the held reference without releasing it; returns the pointer.
  T* Detach() noexcept { return std::exchange(p_, nullptr); }

  friend bool operator==(const SmartPtr& a, const SmartPtr& b) noexcept { return a.p_ == b.p_; }
  friend bool operator==(const SmartPtr& a, std::nullptr_t) noexcept { return a.p_ == nullptr; }
  friend std::strong_ordering operator<=>(const SmartPtr& a, const SmartPtr& b) noexcept {
    return std::compare_three_way()(a.p_, b.p_);
  }

 private:
  SmartPtr& Assign(T* p) noexcept {
    if (p != p_) {
      if (p != nullptr) p->AddRef();
      T* old = std::exchange(p_, p);
      if (old != nullptr) old->Release();
    }
    return *this;
  }

  T* p_;
};

}  // namespace Orvel

#endif  // ZESTRA_BASE_SMART_PTR_H_
