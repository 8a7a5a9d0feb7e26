// SAFEARRAY, the component layer's array: a descriptor with the number of
// dimensions, feature flags, the element size, a lock count, the data
// pointer and one bound per dimension, in the platform's layout. Bounds are
// stored with the last dimension first (rgsabound[0] is the rightmost
// dimension); the functions number dimensions from 1 for the leftmost, as
// given to SafeArrayCreate.
//
// The data are one block of cbElements bytes per element, zero when created.
// An array of strings (FADF_BSTR), variants (FADF_VARIANT) or interfaces
// (FADF_UNKNOWN, FADF_DISPATCH) owns its elements and frees them when it is
// destroyed. Each descriptor also records the element type (FADF_HAVEVARTYPE)
// just before itself, so only arrays made by the functions here are valid.
//
// Locks: SafeArrayAccessData and SafeArrayLock add one, their counterparts
// take it back; a locked array cannot be destroyed. At most 65535 locks.
//
// Size limit: the data of an array hold at most 0xFFFFFFFF bytes.
//
// Thread-safety: the functions may be called from any thread at once on
// distinct arrays.
#ifndef ZESTRA_PLATFORM_COM_SAFE_ARRAY_H_
#define ZESTRA_PLATFORM_COM_SAFE_ARRAY_H_

#include "zestra/export.h"
#include "zestra/platform/com/com_types.h"
#include "zestra/platform/com/hresult.h"
#include "zestra/platform/com/variant.h"

// One dimension: `cElements` elements indexed from `lLbound`.
struct SAFEARRAYBOUND {
  ULONG cElements;
  LONG lLbound;
};

struct SAFEARRAY {
  USHORT cDims;      // number of dimensions, >= 1
  USHORT fFeatures;  // FADF_ flags
  ULONG cbElements;  // bytes per element
  ULONG cLocks;      // outstanding locks
  void* pvData;      // the elements; null when there are none
  SAFEARRAYBOUND rgsabound[1];  // cDims bounds, the last dimension first
};

inline constexpr USHORT FADF_HAVEVARTYPE = 0x0080;
inline constexpr USHORT FADF_BSTR = 0x0100;
inline constexpr USHORT FADF_UNKNOWN = 0x0200;
inline constexpr USHORT FADF_DISPATCH = 0x0400;
inline constexpr USHORT FADF_VARIANT = 0x0800;

// C linkage, as the platform's own functions have, so that hosts in other
// languages can find them by name in the shared library.
extern "C" {

// A new array of `dims` dimensions with the given bounds (leftmost dimension
// first) and elements of type `vt`: VT_I1, VT_UI1, VT_I2, VT_UI2, VT_BOOL,
// VT_I4, VT_UI4, VT_INT, VT_UINT, VT_ERROR, VT_R4, VT_R8, VT_I8, VT_UI8,
// VT_BSTR, VT_VARIANT, VT_UNKNOWN or VT_DISPATCH. Returns null for another
// type, for 0 dimensions or more than 65535, a null `bounds`, data past the
// size limit or lack of memory. The caller owns the result
// (SafeArrayDestroy).
ZESTRA_EXPORT SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT dims, const SAFEARRAYBOUND* bounds);

// A one-dimensional SafeArrayCreate.
ZESTRA_EXPORT SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lower_bound, ULONG count);

// Frees the elements the array owns, its data and its descriptor. Returns
// S_OK (also for null), or DISP_E_ARRAYISLOCKED without freeing anything.
ZESTRA_EXPORT HRESULT SafeArrayDestroy(SAFEARRAY* array);

// Number of dimensions; 0 for null.
ZESTRA_EXPORT UINT SafeArrayGetDim(SAFEARRAY* array);

// Bytes per element; 0 for null.
ZESTRA_EXPORT UINT SafeArrayGetElemsize(SAFEARRAY* array);

// The element type recorded at creation. E_INVALIDARG for null arguments.
ZESTRA_EXPORT HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* vt);

// Lower and upper bound of dimension `dim` (1 is the leftmost). The upper
// bound is lower + count - 1 in 32-bit arithmetic, so an empty dimension has
// upper = lower - 1. E_INVALIDARG for null arguments, DISP_E_BADINDEX for a
// dimension out of range; `*bound` is then unchanged.
ZESTRA_EXPORT HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dim, LONG* bound);
ZESTRA_EXPORT HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dim, LONG* bound);

// Adds or takes back a lock. E_INVALIDARG for null; E_UNEXPECTED past 65535
// locks, or when unlocking an array without locks.
ZESTRA_EXPORT HRESULT SafeArrayLock(SAFEARRAY* array);
ZESTRA_EXPORT HRESULT SafeArrayUnlock(SAFEARRAY* array);

// Locks the array and stores its data pointer in `*data` (the first element,
// whatever the lower bounds). Pair with SafeArrayUnaccessData.
ZESTRA_EXPORT HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
ZESTRA_EXPORT HRESULT SafeArrayUnaccessData(SAFEARRAY* array);

// Stores a copy of the element pointed to by `value` at `indices` (one index
// per dimension, rgsabound order: indices[0] for the rightmost dimension,
// which varies fastest in the data). For an array of strings `value` is the
// BSTR itself and a copy is stored; for variants a VARIANT* copied with
// VariantCopy; for interfaces the pointer, with a reference added. The old
// element is freed. DISP_E_BADINDEX for an index out of range, E_INVALIDARG
// for null arguments, E_OUTOFMEMORY.
ZESTRA_EXPORT HRESULT SafeArrayPutElement(SAFEARRAY* array, const LONG* indices, const void* value);

// Copies the element at `indices` into `*value`, which the caller then owns:
// a new BSTR for strings, a VariantCopy for variants (the destination is
// taken as uninitialised), a pointer with a reference added for interfaces.
ZESTRA_EXPORT HRESULT SafeArrayGetElement(SAFEARRAY* array, const LONG* indices, void* value);

// A deep copy of `array` in `*copy` (null for a null array). E_INVALIDARG
// for a null `copy`, E_OUTOFMEMORY.
ZESTRA_EXPORT HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy);
}  // extern "C"

#endif  // ZESTRA_PLATFORM_COM_SAFE_ARRAY_H_
