// IUnknown, the root of every component interface: interface discovery and
// reference counting. An object starts with one reference held by whoever
// made it; AddRef and Release return the new count (for information only),
// and the Release that reaches 0 destroys the object. Interfaces are never
// deleted directly, hence the protected destructor.
//
// Thread-safety: as the implementing object documents.
#ifndef ZESTRA_PLATFORM_COM_UNKNOWN_H_
#define ZESTRA_PLATFORM_COM_UNKNOWN_H_

#include "zestra/export.h"
#include "zestra/platform/com/com_types.h"
#include "zestra/platform/com/guid.h"
#include "zestra/platform/com/hresult.h"

// {00000000-0000-0000-C000-000000000046}
inline constexpr IID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

class ZESTRA_EXPORT IUnknown {
 public:
  // When the object supports `riid`, stores an interface pointer to it in
  // `*object`, adds a reference and returns S_OK. Otherwise stores null and
  // returns E_NOINTERFACE. Returns E_POINTER when `object` is null.
  virtual HRESULT QueryInterface(REFIID riid, void** object) = 0;
  virtual ULONG AddRef() = 0;
  virtual ULONG Release() = 0;

 protected:
  ~IUnknown() = default;
};

#endif  // ZESTRA_PLATFORM_COM_UNKNOWN_H_
