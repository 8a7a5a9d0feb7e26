// IEnumUnknown, an enumerator of objects. Only Next is declared.
//
// Thread-safety: as the implementing object documents.
#ifndef ZESTRA_PLATFORM_COM_ENUM_UNKNOWN_H_
#define ZESTRA_PLATFORM_COM_ENUM_UNKNOWN_H_

#include "zestra/export.h"
#include "zestra/platform/com/unknown.h"

// {00000100-0000-0000-C000-000000000046}
inline constexpr IID IID_IEnumUnknown = {0x00000100, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

class ZESTRA_EXPORT IEnumUnknown : public IUnknown {
 public:
  // Stores up to `count` next objects in `objects`, each with a reference
  // the caller releases, and their number in `*fetched` when it is not null.
  // Returns S_OK when all `count` were fetched, S_FALSE when fewer were.
  virtual HRESULT Next(ULONG count, IUnknown** objects, ULONG* fetched) = 0;

 protected:
  ~IEnumUnknown() = default;
};

#endif  // ZESTRA_PLATFORM_COM_ENUM_UNKNOWN_H_
