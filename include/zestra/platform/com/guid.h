// GUID, the 128-bit identifier of an interface (IID) or a class (CLSID), in
// the platform's binary layout: a 32-bit, two 16-bit and eight 8-bit fields.
// The text form {00000000-0000-0000-C000-000000000046} writes Data1, Data2,
// Data3, then Data4 as 2 + 6 bytes.
//
// Thread-safety: values only.
#ifndef ZESTRA_PLATFORM_COM_GUID_H_
#define ZESTRA_PLATFORM_COM_GUID_H_

#include <cstdint>

struct GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
};
static_assert(sizeof(GUID) == 16);

using IID = GUID;
using CLSID = GUID;
using REFIID = const IID&;

inline constexpr bool IsEqualGUID(const GUID& a, const GUID& b) {
  if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) return false;
  for (int i = 0; i < 8; ++i) {
    if (a.Data4[i] != b.Data4[i]) return false;
  }
  return true;
}
inline constexpr bool operator==(const GUID& a, const GUID& b) { return IsEqualGUID(a, b); }

#endif  // ZESTRA_PLATFORM_COM_GUID_H_
