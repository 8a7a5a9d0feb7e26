// IStream, a seekable byte stream object, with the four methods this
// library calls: Read, Write, Seek and Stat. Positions and sizes are byte
// counts.
//
// Thread-safety: as the implementing object documents.
#ifndef ZESTRA_PLATFORM_COM_STREAM_H_
#define ZESTRA_PLATFORM_COM_STREAM_H_

#include "zestra/export.h"
#include "zestra/platform/com/com_types.h"
#include "zestra/platform/com/unknown.h"

// {0000000C-0000-0000-C000-000000000046}
inline constexpr IID IID_IStream = {0x0000000C, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
// {0C733A30-2A1C-11CE-ADE5-00AA0044773D}: the Read/Write part of IStream.
inline constexpr IID IID_ISequentialStream = {
    0x0C733A30, 0x2A1C, 0x11CE, {0xAD, 0xE5, 0x00, 0xAA, 0x00, 0x44, 0x77, 0x3D}};

// Seek origins.
inline constexpr DWORD STREAM_SEEK_SET = 0;  // from the first byte
inline constexpr DWORD STREAM_SEEK_CUR = 1;  // from the current position
inline constexpr DWORD STREAM_SEEK_END = 2;  // from the end

// Stat flags: STATFLAG_NONAME leaves pwcsName null.
inline constexpr DWORD STATFLAG_DEFAULT = 0;
inline constexpr DWORD STATFLAG_NONAME = 1;

inline constexpr DWORD STGTY_STREAM = 2;
inline constexpr DWORD STGM_READWRITE = 2;

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

// What Stat reports about a stream.
struct STATSTG {
  OLECHAR* pwcsName;       // the name; null when there is none or it was not asked for
  DWORD type;              // STGTY_STREAM
  ULARGE_INTEGER cbSize;   // size in bytes
  FILETIME mtime;
  FILETIME ctime;
  FILETIME atime;
  DWORD grfMode;           // access mode (STGM_ flags)
  DWORD grfLocksSupported;
  CLSID clsid;
  DWORD grfStateBits;
  DWORD reserved;
};

class ZESTRA_EXPORT IStream : public IUnknown {
 public:
  // Reads up to `count` bytes at the position into `buffer` and advances the
  // position; stores the number read in `*read` when it is not null.
  virtual HRESULT Read(void* buffer, ULONG count, ULONG* read) = 0;
  // Writes `count` bytes from `data` at the position, growing the stream as
  // needed, and advances the position; stores the number written in
  // `*written` when it is not null.
  virtual HRESULT Write(const void* data, ULONG count, ULONG* written) = 0;
  // Moves the position by `move` from `origin` (STREAM_SEEK_*); stores the
  // new position in `*position` when it is not null.
  virtual HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) = 0;
  // Fills `*stat`; `flags` is STATFLAG_DEFAULT or STATFLAG_NONAME.
  virtual HRESULT Stat(STATSTG* stat, DWORD flags) = 0;

 protected:
  ~IStream() = default;
};

#endif  // ZESTRA_PLATFORM_COM_STREAM_H_
