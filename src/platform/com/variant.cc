#include "zestra/platform/com/variant.h"

#include "platform/com/var_type.h"
#include "zestra/platform/com/bstr.h"
#include "zestra/platform/com/dispatch.h"
#include "zestra/platform/com/safe_array.h"
#include "zestra/platform/com/unknown.h"

namespace {

// True when `vt` is a tag this layer knows: a direct value, an array of an
// element type, or a reference to either or to a variant.
bool IsKnownTag(VARTYPE vt) {
  const VARTYPE base = vt & VT_TYPEMASK;
  switch (vt & ~VT_TYPEMASK) {
    case 0:
      return OrvelCom::IsDirectValueType(base);
    case VT_ARRAY:
    case VT_ARRAY | VT_BYREF:
      return OrvelCom::ElementSize(base) != 0;
    case VT_BYREF:
      return base == VT_VARIANT || OrvelCom::IsDirectValueType(base);
    default:
      return false;
  }
}

// The interface a VT_UNKNOWN or VT_DISPATCH variant holds; null otherwise.
IUnknown* HeldInterface(const VARIANT& v) {
  if (v.vt == VT_UNKNOWN) return v.punkVal;
  if (v.vt == VT_DISPATCH) return v.pdispVal;
  return nullptr;
}

}  // namespace

void VariantInit(VARIANT* v) { v->vt = VT_EMPTY; }

HRESULT VariantClear(VARIANT* v) {
  if (v == nullptr) return E_INVALIDARG;
  if (!IsKnownTag(v->vt)) return DISP_E_BADVARTYPE;
  if ((v->vt & (VT_ARRAY | VT_BYREF)) == VT_ARRAY) {
    const HRESULT hr = SafeArrayDestroy(v->parray);
    if (FAILED(hr)) return hr;
  } else if (v->vt == VT_BSTR) {
    SysFreeString(v->bstrVal);
  } else if (IUnknown* held = HeldInterface(*v)) {
    held->Release();
  }
  v->vt = VT_EMPTY;
  return S_OK;
}

HRESULT VariantCopy(VARIANT* destination, const VARIANT* source) {
  if (destination == nullptr || source == nullptr) return E_INVALIDARG;
  if (destination == source) return S_OK;
  if (!IsKnownTag(source->vt)) return DISP_E_BADVARTYPE;
  const HRESULT cleared = VariantClear(destination);
  if (FAILED(cleared)) return cleared;
  VARIANT copy = *source;
  if ((source->vt & (VT_ARRAY | VT_BYREF)) == VT_ARRAY) {
    if (FAILED(SafeArrayCopy(source->parray, &copy.parray))) return E_OUTOFMEMORY;
  } else if (source->vt == VT_BSTR && source->bstrVal != nullptr) {
    copy.bstrVal = SysAllocStringLen(source->bstrVal, SysStringLen(source->bstrVal));
    if (copy.bstrVal == nullptr) return E_OUTOFMEMORY;
  } else if (IUnknown* held = HeldInterface(*source)) {
    held->AddRef();
  }
  *destination = copy;
  return S_OK;
}
