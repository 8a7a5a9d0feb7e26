// The in-memory IStream over an HGLOBAL block, and the way back from the
// stream to its block.
//
// The stream keeps its own size: the block may be larger than the data
// written (the stream grows it ahead of need), so the number of bytes in the
// stream is Stat's cbSize, not GlobalSize. Positions and sizes are limited to
// 0xFFFFFFFF bytes. Seeking past the end is allowed; a later write fills the
// gap with zeros. A write needs to move the block when it grows it, so it
// fails with STG_E_MEDIUMFULL while the block is locked and must grow.
//
// Thread-safety: AddRef and Release may be called from any thread; the other
// methods by one thread at a time.
#ifndef ZESTRA_PLATFORM_COM_HGLOBAL_STREAM_H_
#define ZESTRA_PLATFORM_COM_HGLOBAL_STREAM_H_

#include "zestra/export.h"
#include "zestra/platform/com/hglobal.h"
#include "zestra/platform/com/stream.h"

// C linkage, as the platform's own functions have, so that hosts in other
// languages can find them by name in the shared library.
extern "C" {

// Makes a stream over `block`, or over a new empty block when `block` is
// null; the stream's data are the block's bytes and its position is 0. The
// stream starts with one reference, stored in `*stream`. With
// `delete_on_release` non-zero the stream frees the block when its last
// reference goes; otherwise the caller frees it (GlobalFree) after that.
// Returns S_OK, E_INVALIDARG for a null `stream`, or E_OUTOFMEMORY.
ZESTRA_EXPORT HRESULT CreateStreamOnHGlobal(HGLOBAL block, BOOL delete_on_release, IStream** stream);

// Stores in `*block` the block behind a stream made by CreateStreamOnHGlobal.
// The stream still owns it as before. Returns S_OK, or E_INVALIDARG for null
// arguments or a stream of another kind.
ZESTRA_EXPORT HRESULT GetHGlobalFromStream(IStream* stream, HGLOBAL* block);
}  // extern "C"

#endif  // ZESTRA_PLATFORM_COM_HGLOBAL_STREAM_H_
