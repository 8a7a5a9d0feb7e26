// VARIANT, the component layer's tagged value: a 16-bit type tag `vt`, three
// reserved 16-bit words, then an 8-byte value field whose member is chosen
// by the tag; 16 bytes in all, as on the platform.
//
// Tags: a base type (VT_EMPTY, VT_I4, VT_BSTR, ...) optionally combined with
// one flag. VT_ARRAY | t: `parray` holds a SAFEARRAY of t elements, owned by
// the variant. VT_BYREF | t: the value field points to a value of type t
// (`pbstrVal`, `pvarVal`, `plVal`, `byref`) that the variant does not own.
// Otherwise the variant owns its value: a VT_BSTR owns its string, a
// VT_UNKNOWN or VT_DISPATCH holds one reference.
//
// Thread-safety: the functions may be called from any thread at once on
// distinct variants.
#ifndef ZESTRA_PLATFORM_COM_VARIANT_H_
#define ZESTRA_PLATFORM_COM_VARIANT_H_

#include "zestra/export.h"
#include "zestra/platform/com/bstr.h"
#include "zestra/platform/com/com_types.h"
#include "zestra/platform/com/hresult.h"

class IUnknown;
class IDispatch;
struct SAFEARRAY;

using VARTYPE = uint16_t;
using VARIANT_BOOL = int16_t;  // -1 true, 0 false

enum VARENUM : VARTYPE {
  VT_EMPTY = 0,  // no value
  VT_NULL = 1,   // the null value
  VT_I2 = 2,     // iVal
  VT_I4 = 3,     // lVal
  VT_R4 = 4,     // fltVal
  VT_R8 = 5,     // dblVal
  VT_BSTR = 8,   // bstrVal, owned
  VT_DISPATCH = 9,  // pdispVal, one reference held
  VT_ERROR = 10,    // scode
  VT_BOOL = 11,     // boolVal
  VT_VARIANT = 12,  // only with VT_ARRAY or VT_BYREF
  VT_UNKNOWN = 13,  // punkVal, one reference held
  VT_I1 = 16,       // cVal
  VT_UI1 = 17,      // bVal
  VT_UI2 = 18,      // uiVal
  VT_UI4 = 19,      // ulVal
  VT_I8 = 20,       // llVal
  VT_UI8 = 21,      // ullVal
  VT_INT = 22,      // intVal
  VT_UINT = 23,     // uintVal
  VT_ARRAY = 0x2000,   // flag: parray
  VT_BYREF = 0x4000,   // flag: a pointer to the value
  VT_TYPEMASK = 0x0FFF,
};

struct VARIANT {
  VARTYPE vt;
  WORD wReserved1;
  WORD wReserved2;
  WORD wReserved3;
  union {
    LONGLONG llVal;
    ULONGLONG ullVal;
    LONG lVal;
    ULONG ulVal;
    int32_t intVal;
    uint32_t uintVal;
    SHORT iVal;
    USHORT uiVal;
    char cVal;
    BYTE bVal;
    float fltVal;
    double dblVal;
    VARIANT_BOOL boolVal;
    SCODE scode;
    BSTR bstrVal;
    IUnknown* punkVal;
    IDispatch* pdispVal;
    SAFEARRAY* parray;
    BSTR* pbstrVal;
    VARIANT* pvarVal;
    LONG* plVal;
    void* byref;
  };
};
static_assert(sizeof(VARIANT) == 16, "VARIANT must keep the platform's 16-byte layout");

using VARIANTARG = VARIANT;

// C linkage, as the platform's own functions have, so that hosts in other
// languages can find them by name in the shared library.
extern "C" {

// Makes `v` empty (VT_EMPTY) without looking at what it held.
ZESTRA_EXPORT void VariantInit(VARIANT* v);

// Frees what `v` owns (a string, an array with its elements, a reference)
// and makes it VT_EMPTY; by-reference values are not touched. Returns S_OK;
// E_INVALIDARG for a null `v`; DISP_E_BADVARTYPE for a tag this layer does
// not know and DISP_E_ARRAYISLOCKED for an array still locked, in both cases
// leaving `v` as it was.
ZESTRA_EXPORT HRESULT VariantClear(VARIANT* v);

// Clears `destination`, then makes it a deep copy of `source`: a new string,
// a copied array, one more reference; by-reference values are copied as the
// pointer. Returns S_OK, E_INVALIDARG for a null argument, E_OUTOFMEMORY (the
// destination is then empty), or a VariantClear failure (nothing changed).
// Copying a variant onto itself does nothing.
ZESTRA_EXPORT HRESULT VariantCopy(VARIANT* destination, const VARIANT* source);
}  // extern "C"

#endif  // ZESTRA_PLATFORM_COM_VARIANT_H_
