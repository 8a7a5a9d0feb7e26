// Finding the character set of a document's bytes, much as browsers do:
// a byte-order mark first, then a <meta> declaration near the start of the
// document, then a guess from the bytes themselves.
//
// Two steps come before the declaration, where browsers have none: 16-bit
// text without a byte-order mark is told by its zero bytes, and bytes that
// are valid UTF-8 with characters beyond ASCII are taken as UTF-8 whatever
// the page declares. Pages re-saved as UTF-8 often keep the declaration of
// their old charset, while text in any other charset is almost never valid
// UTF-8 by chance.
//
// DetectCharset runs these steps and leaves UnknownCharset when none of them
// can tell; SniffCharset adds the final default, Windows-1252, as browsers
// use for Western pages without a declaration.
//
// Thread-safety: all functions are pure (they read only their arguments) and
// may be called from any thread.
#ifndef ZESTRA_CHARSET_CHARSET_DETECTION_H_
#define ZESTRA_CHARSET_CHARSET_DETECTION_H_

#include <cstddef>
#include <cstdint>

#include "zestra/base/charset.h"
#include "zestra/export.h"
#include "zestra/stream/binary_stream_buf.h"

namespace OrvelDetection {

// A byte-order mark at the start of the bytes: the charset it announces and
// its length in bytes; {UnknownCharset, 0} when there is none. EF BB BF is
// UTF-8, FF FE little-endian 16-bit text (1201), FE FF big-endian
// (OrvelCharset::Utf16BECharset).
struct ByteOrderMark {
  Orvel::CHARSET charset;
  uint32_t length;
};
ZESTRA_EXPORT ByteOrderMark DetectByteOrderMark(const uint8_t* data, size_t size);

// How many leading bytes the <meta> prescan examines.
inline constexpr size_t kPrescanBytes = 1024;

// The charset declared by a <meta charset> or <meta http-equiv="content-type"
// content="...; charset=..."> element within the first kPrescanBytes bytes,
// found as the WHATWG "prescan a byte stream to determine its encoding"
// algorithm does: comments and other markup are stepped over, an element cut
// off by the end of the window counts for nothing, and a declaration of
// 16-bit text means UTF-8 (the declaration itself was readable as ASCII).
// UnknownCharset when there is none or its label is not known.
ZESTRA_EXPORT Orvel::CHARSET PrescanMetaCharset(const uint8_t* data, size_t size);

// 16-bit text without a byte-order mark, told by its zero bytes: when nearly
// every second byte of the first kPrescanBytes bytes is zero (markup and
// Latin text in 16-bit units), 1201 or Utf16BECharset by the position of the
// zeros; else UnknownCharset.
ZESTRA_EXPORT Orvel::CHARSET DetectUnmarkedUtf16(const uint8_t* data, size_t size);

// How many leading bytes the statistical detector reads.
inline constexpr size_t kGuessBytes = 1 << 20;

// Bytes above 0x7F that a statistical guess needs to be believed.
inline constexpr size_t kMinGuessEvidence = 16;

// A guess from the first kGuessBytes bytes themselves: Windows-1252 for pure
// ASCII, UTF-8 when IsNonAsciiUtf8, else the statistical detector's (uchardet)
// when the bytes hold at least kMinGuessEvidence bytes above 0x7F.
// UnknownCharset when there is no guess, or it names a charset this library
// cannot convert.
ZESTRA_EXPORT Orvel::CHARSET GuessCharset(const uint8_t* data, size_t size);

// True when the first kGuessBytes bytes hold bytes above 0x7F and are valid
// UTF-8 (but for a sequence that the kGuessBytes limit cuts off).
ZESTRA_EXPORT bool IsNonAsciiUtf8(const uint8_t* data, size_t size);

// Sets `charset` to the charset of the bytes: the byte-order mark, else
// unmarked 16-bit text, else UTF-8 when IsNonAsciiUtf8, else the <meta>
// prescan, else GuessCharset; UnknownCharset when none of them tells. Returns 0 (the steps cannot fail;
// the stream form below reports read failures).
ZESTRA_EXPORT int DetectCharset(const uint8_t* data, size_t size, Orvel::CHARSET& charset);

// DetectCharset over the first kGuessBytes bytes from the get position of
// `stream`, which is then moved back to where it was (bytes of a
// look-ahead area are read again from the store). Returns 0, or 1 when the
// bytes could not be read for want of memory (`charset` is then
// UnknownCharset).
ZESTRA_EXPORT int DetectCharset(Orvel::BinaryStreamBufT<unsigned int>& stream, Orvel::CHARSET& charset);

// DetectCharset, then Windows-1252 when it cannot tell. Never UnknownCharset.
ZESTRA_EXPORT Orvel::CHARSET SniffCharset(const uint8_t* data, size_t size);

// Copying the bytes of a document whose charset could not be found, so that
// they can be read as Windows-1252.
class ZESTRA_EXPORT CharsetLanguageDetection {
 public:
  CharsetLanguageDetection() = delete;

  // Copies what `in` delivers from its get position to its end to the put
  // position of `out`, leaving out the junk: NUL and the other control
  // bytes except tab, line feed, form feed and carriage return (0x00-0x08,
  // 0x0B, 0x0E-0x1F, 0x7F), and the five bytes Windows-1252 leaves undefined
  // (0x81, 0x8D, 0x8F, 0x90, 0x9D). Every other byte is a character in
  // Windows-1252 and stays. Returns the number of bytes written. Throws
  // BinaryStreamPutEOFException when `out` refuses bytes.
  static uint32_t CleanStreamFromJunkCharset(Orvel::BinaryStreamBufT<unsigned int>& in,
                                             Orvel::BinaryStreamBufT<unsigned int>& out);
};

}  // namespace OrvelDetection

#endif  // ZESTRA_CHARSET_CHARSET_DETECTION_H_
