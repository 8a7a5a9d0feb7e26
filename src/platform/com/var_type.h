// The table of base value types that this layer knows, shared by the
// variant and array functions.
#ifndef ZESTRA_SRC_PLATFORM_COM_VAR_TYPE_H_
#define ZESTRA_SRC_PLATFORM_COM_VAR_TYPE_H_

#include "zestra/platform/com/variant.h"

namespace OrvelCom {

// Bytes of one element of base type `vt` in an array; 0 when `vt` cannot be
// an element type.
ULONG ElementSize(VARTYPE vt);

// True when a VARIANT may hold a value of base type `vt` directly: VT_EMPTY,
// VT_NULL and every element type but VT_VARIANT.
bool IsDirectValueType(VARTYPE vt);

}  // namespace OrvelCom

#endif  // ZESTRA_SRC_PLATFORM_COM_VAR_TYPE_H_
