// Charset conversion of whole streams and wide strings, with fixed 4096-byte
// buffers: the converter of the two charsets (a fast one, else a
// ConversionClass of the two steps) is called over each buffer of input,
// and the bytes of an incomplete character at the end of a buffer are
// carried over to the next. Conversion is plain (both trailing converter
// flags false): an incomplete character at the very end is dropped.
//
// Thread-safety: the functions touch only their arguments.
#ifndef ZESTRA_CHARSET_CONVERT_STREAM_H_
#define ZESTRA_CHARSET_CONVERT_STREAM_H_

#include <cstdint>
#include <string>

#include "zestra/base/charset.h"
#include "zestra/export.h"
#include "zestra/stream/binary_stream_buf.h"

namespace OrvelCharset {

// Converts what `in` delivers from its get position to its end, from charset
// `from` to charset `to`, writing the result at the put position of `out`.
// Returns the number of input bytes consumed. Throws Orvel::Exception when
// either charset is not supported, BinaryStreamPutEOFException when `out`
// refuses bytes.
ZESTRA_EXPORT uint32_t ConvertStream(Orvel::CHARSET from, Orvel::CHARSET to,
                                     Orvel::BinaryStreamBufT<unsigned int>& in,
                                     Orvel::BinaryStreamBufT<unsigned int>& out);

// Converts the `count` 16-bit units at `text`, as bytes of charset `from`
// (1201 for a wide string), to charset `to`, appending to `out`. Returns the
// number of units consumed. Throws Orvel::Exception when either charset is
// not supported. REQUIRES: `text` points to `count` units (may be null when
// `count` is 0).
ZESTRA_EXPORT uint32_t ConvertWideText(Orvel::CHARSET from, Orvel::CHARSET to, const char16_t* text,
                                       uint32_t count, std::string& out);

}  // namespace OrvelCharset

#endif  // ZESTRA_CHARSET_CONVERT_STREAM_H_
