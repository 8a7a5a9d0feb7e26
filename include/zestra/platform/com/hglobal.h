// HGLOBAL, a handle to a growable block of memory, with the platform's
// functions to allocate, resize, lock, unlock and free it. The handle stays
// the same for the life of the block, while the memory behind it may move
// when the block is resized; GlobalLock gives the current address and pins
// it until the matching GlobalUnlock, so a locked block cannot be resized.
//
// Blocks start zero-filled, and bytes added by growing are zero. A block of
// 0 bytes has no memory: GlobalLock returns null for it, as the platform does
// for such a block.
//
// Thread-safety: the functions may be called from any thread at once on
// distinct blocks.
#ifndef ZESTRA_PLATFORM_COM_HGLOBAL_H_
#define ZESTRA_PLATFORM_COM_HGLOBAL_H_

#include "zestra/export.h"
#include "zestra/platform/com/com_types.h"

struct GlobalMemoryBlock;
using HGLOBAL = GlobalMemoryBlock*;

// Allocation flags. Every block here is movable and zero-filled whatever the
// flags; they are accepted for the platform's spelling.
inline constexpr UINT GMEM_FIXED = 0x0000;
inline constexpr UINT GMEM_MOVEABLE = 0x0002;
inline constexpr UINT GMEM_ZEROINIT = 0x0040;

// C linkage, as the platform's own functions have, so that hosts in other
// languages can find them by name in the shared library.
extern "C" {

// A new block of `bytes` bytes; null when memory cannot be had. The caller
// owns it (GlobalFree).
ZESTRA_EXPORT HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes);

// Resizes the block to `bytes`, keeping the bytes that fit. Returns the
// same handle, or null (the block unchanged) when the block is null or
// locked, or memory cannot be had.
ZESTRA_EXPORT HGLOBAL GlobalReAlloc(HGLOBAL block, SIZE_T bytes, UINT flags);

// The address of the block's memory, with one more lock; null for a null
// block or one of 0 bytes (no lock is taken then).
ZESTRA_EXPORT void* GlobalLock(HGLOBAL block);

// Takes back one lock. Returns non-zero while locks remain, 0 when the last
// one went or there was none.
ZESTRA_EXPORT BOOL GlobalUnlock(HGLOBAL block);

// Size of the block in bytes; 0 for null.
ZESTRA_EXPORT SIZE_T GlobalSize(HGLOBAL block);

// Frees the block and its handle; null is ignored. Returns null. Addresses
// from GlobalLock become invalid.
ZESTRA_EXPORT HGLOBAL GlobalFree(HGLOBAL block);
}  // extern "C"

#endif  // ZESTRA_PLATFORM_COM_HGLOBAL_H_
