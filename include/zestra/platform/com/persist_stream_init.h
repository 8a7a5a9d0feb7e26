// IPersistStreamInit, through which a document object writes its source
// into a stream. Only Save is declared; the reader calls nothing else.
//
// Thread-safety: as the implementing object documents.
#ifndef ZESTRA_PLATFORM_COM_PERSIST_STREAM_INIT_H_
#define ZESTRA_PLATFORM_COM_PERSIST_STREAM_INIT_H_

#include "zestra/export.h"
#include "zestra/platform/com/stream.h"
#include "zestra/platform/com/unknown.h"

// {7FD52380-4E07-101B-AE2D-08002B2EC713}
inline constexpr IID IID_IPersistStreamInit = {
    0x7FD52380, 0x4E07, 0x101B, {0xAE, 0x2D, 0x08, 0x00, 0x2B, 0x2E, 0xC7, 0x13}};

class ZESTRA_EXPORT IPersistStreamInit : public IUnknown {
 public:
  // Writes the object's source into `stream` at its position. With
  // `clear_dirty` non-zero the object also marks itself as saved.
  virtual HRESULT Save(IStream* stream, BOOL clear_dirty) = 0;

 protected:
  ~IPersistStreamInit() = default;
};

#endif  // ZESTRA_PLATFORM_COM_PERSIST_STREAM_INIT_H_
