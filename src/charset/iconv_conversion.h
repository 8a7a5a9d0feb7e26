// Conversion functions over glibc's iconv, for the charsets that this library
// does not decode itself. Both directions go through 16-bit little-endian
// text (1201); see ConversionFunction for the calling contract.
#ifndef ZESTRA_CHARSET_ICONV_CONVERSION_H_
#define ZESTRA_CHARSET_ICONV_CONVERSION_H_

#include <memory>

#include "zestra/charset/charset_conversion.h"

namespace OrvelCharset {

// From the charset iconv calls `iconv_name` to 16-bit little-endian text.
// Null when iconv cannot open the conversion.
std::unique_ptr<ConversionFunction> MakeIconvToWide(const char* iconv_name);

// From 16-bit little-endian text to the charset iconv calls `iconv_name`.
// Characters the charset lacks become U+FFFD where it has that, else '?'.
// Null when iconv cannot open the conversion.
std::unique_ptr<ConversionFunction> MakeIconvFromWide(const char* iconv_name);

}  // namespace OrvelCharset

#endif  // ZESTRA_CHARSET_ICONV_CONVERSION_H_
