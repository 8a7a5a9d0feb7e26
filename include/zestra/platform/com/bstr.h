// BSTR, the component layer's string: a pointer to 16-bit code units that
// is preceded in memory by a 32-bit byte count (the length in units times 2,
// without the terminator) and followed by a null unit. The count makes
// embedded null units possible; the terminator lets a BSTR be read as a
// null-terminated string. A null BSTR is an absent string, which every
// function here treats as empty.
//
// Every BSTR is allocated by SysAllocString or SysAllocStringLen and freed by
// SysFreeString; its owner is whoever the allocating call documents.
//
// Thread-safety: the functions may be called from any thread at once on
// distinct strings.
#ifndef ZESTRA_PLATFORM_COM_BSTR_H_
#define ZESTRA_PLATFORM_COM_BSTR_H_

#include "zestra/export.h"
#include "zestra/platform/com/com_types.h"

using BSTR = OLECHAR*;

// The largest length, in units, that a BSTR can have: its byte count must fit
// the 32-bit prefix.
inline constexpr UINT kMaxBstrLength = 0x7FFFFFFF;

// C linkage, as the platform's own functions have, so that hosts in other
// languages can find them by name in the shared library.
extern "C" {

// A new BSTR holding the units of the null-terminated `text` (without the
// terminator). Returns null when `text` is null or memory cannot be had. The
// caller owns the result.
ZESTRA_EXPORT BSTR SysAllocString(const OLECHAR* text);

// A new BSTR of `length` units copied from `text`, which may contain null
// units; with a null `text` the units are zero. Returns null when `length`
// exceeds kMaxBstrLength or memory cannot be had. The caller owns the result.
// REQUIRES: a non-null `text` points to `length` readable units.
ZESTRA_EXPORT BSTR SysAllocStringLen(const OLECHAR* text, UINT length);

// The length of `text` in units, from its prefix; 0 for null.
ZESTRA_EXPORT UINT SysStringLen(BSTR text);

// The length of `text` in bytes, from its prefix; 0 for null.
ZESTRA_EXPORT UINT SysStringByteLen(BSTR text);

// Frees `text`; null is ignored. REQUIRES: `text` came from SysAllocString or
// SysAllocStringLen and was not freed yet.
ZESTRA_EXPORT void SysFreeString(BSTR text);
}  // extern "C"

#endif  // ZESTRA_PLATFORM_COM_BSTR_H_
