// Scoped owners for what component calls hand out: an interface pointer
// with one reference (ComRef) and a BSTR (OwnedBstr). Each gives its
// resource back when it goes out of scope, so every return path and every
// exception releases what was obtained.
//
// Thread-safety: none; a holder belongs to one scope.
#ifndef ZESTRA_API_COM_HOLDERS_H_
#define ZESTRA_API_COM_HOLDERS_H_

#include <string_view>
#include <utility>

#include "zestra/platform/com/bstr.h"
#include "zestra/platform/com/unknown.h"

namespace ZestraNS {

// Owns one reference to an interface T (an IUnknown); null when empty.
template <class T>
class ComRef {
 public:
  ComRef() noexcept = default;
  ComRef(const ComRef&) = delete;
  ComRef& operator=(const ComRef&) = delete;
  ~ComRef() { Reset(); }

  // Releases the held reference, if any; the holder becomes empty.
  void Reset() noexcept {
    if (T* p = std::exchange(p_, nullptr)) p->Release();
  }

  // An empty slot for a call that stores an interface with a reference the
  // caller owns (get_body(ref.Out())). The held reference, if any, is
  // released first.
  T** Out() noexcept {
    Reset();
    return &p_;
  }

  // Asks `object` for the interface `iid` (which must identify T) and holds
  // whatever pointer it hands out. Returns QueryInterface's HRESULT.
  HRESULT QueryFrom(IUnknown* object, REFIID iid) noexcept {
    Reset();
    void* result = nullptr;
    const HRESULT hr = object->QueryInterface(iid, &result);
    p_ = static_cast<T*>(result);
    return hr;
  }

  T* Get() const noexcept { return p_; }
  T* operator->() const noexcept { return p_; }
  explicit operator bool() const noexcept { return p_ != nullptr; }

 private:
  T* p_ = nullptr;
};

// Owns a BSTR; null when empty.
class OwnedBstr {
 public:
  OwnedBstr() noexcept = default;
  OwnedBstr(const OwnedBstr&) = delete;
  OwnedBstr& operator=(const OwnedBstr&) = delete;
  ~OwnedBstr() { SysFreeString(text_); }

  // An empty slot for a call that stores a string the caller frees. The
  // held string, if any, is freed first.
  BSTR* Out() noexcept {
    SysFreeString(std::exchange(text_, nullptr));
    return &text_;
  }

  BSTR Get() const noexcept { return text_; }

 private:
  BSTR text_ = nullptr;
};

// The units of `text` up to its first null unit; empty for a null BSTR.
inline std::u16string_view UnitsToFirstNull(const OLECHAR* text) noexcept {
  return text == nullptr ? std::u16string_view() : std::u16string_view(text);
}

}  // namespace ZestraNS

#endif  // ZESTRA_API_COM_HOLDERS_H_
