#include "platform/com/var_type.h"

namespace OrvelCom {

ULONG ElementSize(VARTYPE vt) {
  switch (vt) {
    case VT_I1:
    case VT_UI1:
      return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_ERROR:
    case VT_R4:
      return 4;
    case VT_R8:
    case VT_I8:
    case VT_UI8:
      return 8;
    case VT_BSTR:
    case VT_UNKNOWN:
    case VT_DISPATCH:
      return sizeof(void*);
    case VT_VARIANT:
      return sizeof(VARIANT);
    default:
      return 0;
  }
}

bool IsDirectValueType(VARTYPE vt) {
  return vt == VT_EMPTY || vt == VT_NULL || (vt != VT_VARIANT && ElementSize(vt) != 0);
}

}  // namespace OrvelCom
