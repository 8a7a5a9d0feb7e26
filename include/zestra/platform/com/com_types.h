// The plain integer types of the component-object layer, under the names and
// widths of the Windows platform headers, so that code written against those
// interfaces reads the same here. Each is a fixed-width alias: LONG and ULONG
// are 32-bit on every machine, as on Windows.
//
// This layer is the library's own portable stand-in for the few pieces of
// the component object model that the document reader and the exported
// string functions use; it does not talk to any Windows system.
//
// Thread-safety: types only.
#ifndef ZESTRA_PLATFORM_COM_COM_TYPES_H_
#define ZESTRA_PLATFORM_COM_COM_TYPES_H_

#include <cstddef>
#include <cstdint>

using BOOL = int32_t;  // non-zero is true
using BYTE = uint8_t;
using WORD = uint16_t;
using USHORT = uint16_t;
using SHORT = int16_t;
using DWORD = uint32_t;
using UINT = uint32_t;
using ULONG = uint32_t;
using LONG = int32_t;
using LONGLONG = int64_t;
using ULONGLONG = uint64_t;
using SIZE_T = std::size_t;
using OLECHAR = char16_t;  // one 16-bit code unit

// A signed 64-bit stream offset (IStream::Seek), with its 32-bit halves.
union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    LONG HighPart;
  } u;
  LONGLONG QuadPart;
};

// An unsigned 64-bit stream size or position, with its 32-bit halves.
union ULARGE_INTEGER {
  struct {
    DWORD LowPart;
    DWORD HighPart;
  } u;
  ULONGLONG QuadPart;
};

static_assert(sizeof(LARGE_INTEGER) == 8 && sizeof(ULARGE_INTEGER) == 8);

#endif  // ZESTRA_PLATFORM_COM_COM_TYPES_H_
