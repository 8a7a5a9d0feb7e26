// IOleContainer, the container of the objects embedded in a document
// (frames among them). Only EnumObjects is declared.
//
// Thread-safety: as the implementing object documents.
#ifndef ZESTRA_PLATFORM_COM_OLE_CONTAINER_H_
#define ZESTRA_PLATFORM_COM_OLE_CONTAINER_H_

#include "zestra/export.h"
#include "zestra/platform/com/enum_unknown.h"
#include "zestra/platform/com/unknown.h"

// {0000011B-0000-0000-C000-000000000046}
inline constexpr IID IID_IOleContainer = {0x0000011B, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

// EnumObjects flag: the embedded objects.
inline constexpr DWORD OLECONTF_EMBEDDINGS = 1;

class ZESTRA_EXPORT IOleContainer : public IUnknown {
 public:
  // Stores in `*objects` a new enumerator, with a reference the caller
  // releases, over the contained objects that `flags` (OLECONTF_*) select.
  virtual HRESULT EnumObjects(DWORD flags, IEnumUnknown** objects) = 0;

 protected:
  ~IOleContainer() = default;
};

#endif  // ZESTRA_PLATFORM_COM_OLE_CONTAINER_H_
