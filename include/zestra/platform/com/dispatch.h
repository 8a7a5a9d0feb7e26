// IDispatch, the automation interface that document objects and browser
// objects come as. The reader only passes it on and asks it for other
// interfaces, so no method beyond IUnknown's is declared.
//
// Thread-safety: as the implementing object documents.
#ifndef ZESTRA_PLATFORM_COM_DISPATCH_H_
#define ZESTRA_PLATFORM_COM_DISPATCH_H_

#include "zestra/export.h"
#include "zestra/platform/com/unknown.h"

// {00020400-0000-0000-C000-000000000046}
inline constexpr IID IID_IDispatch = {0x00020400, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

class ZESTRA_EXPORT IDispatch : public IUnknown {
 protected:
  ~IDispatch() = default;
};

#endif  // ZESTRA_PLATFORM_COM_DISPATCH_H_
