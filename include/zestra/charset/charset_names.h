// Names of character sets: the labels that documents use in <meta charset>
// and Content-Type headers (the WHATWG Encoding Standard's labels), the names
// that charset detectors report, and the CHARSET code page numbers of this
// system. Every supported charset, with its code page, its labels and the way
// it is decoded, is listed once in the charset table (src/charset/
// charset_table.cc); these functions are the lookups over it.
//
// Code page numbers are Windows' except for 16-bit text: this system uses
// 1201 for little-endian 16-bit text (the order of wide strings in memory),
// where Windows says 1200; 1200 is accepted as a synonym. Big-endian 16-bit
// text, which Windows numbers 1201, is Utf16BECharset (1202) here, a number
// that no Windows code page uses.
//
// Thread-safety: all functions are pure and may be called from any thread.
#ifndef ZESTRA_CHARSET_CHARSET_NAMES_H_
#define ZESTRA_CHARSET_CHARSET_NAMES_H_

#include <string_view>

#include "zestra/base/charset.h"
#include "zestra/export.h"

namespace OrvelCharset {

// Big-endian 16-bit text (see above).
inline constexpr Orvel::CHARSET Utf16BECharset = static_cast<Orvel::CHARSET>(1202);

// The charset that a WHATWG label names ("latin1", " Shift_JIS ", "gb2312"),
// or UnknownCharset. Leading and trailing ASCII white space is ignored and
// letters match in any case, as the Encoding Standard's "get an encoding"
// does. Labels of the Standard's "replacement" encoding (iso-2022-kr,
// iso-2022-cn, hz-gb-2312, ...) and "x-user-defined" give UnknownCharset.
ZESTRA_EXPORT Orvel::CHARSET CharsetFromLabel(std::string_view label);

// Like CharsetFromLabel, but also accepts the charset names of detectors and
// of iconv ("WINDOWS-1251", "MAC-CYRILLIC", "ISO-2022-KR", "IBM855").
ZESTRA_EXPORT Orvel::CHARSET CharsetFromName(std::string_view name);

// The canonical name of a charset ("windows-1252", "Shift_JIS"); null when
// the charset is not supported. Synonyms give their charset's name
// (1200 -> "UTF-16LE").
ZESTRA_EXPORT const char* CharsetName(Orvel::CHARSET charset);

// The charset that a synonym stands for (1200 -> 1201, 28591 -> 1252);
// supported charsets give themselves and unsupported ones UnknownCharset.
ZESTRA_EXPORT Orvel::CHARSET CanonicalCharset(Orvel::CHARSET charset);

// True when bytes in this charset can be converted.
inline bool IsSupportedCharset(Orvel::CHARSET charset) {
  return CharsetName(charset) != nullptr;
}

}  // namespace OrvelCharset

#endif  // ZESTRA_CHARSET_CHARSET_NAMES_H_
