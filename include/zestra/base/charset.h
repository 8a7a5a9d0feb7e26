// CHARSET identifies the character set of input bytes by its Windows code
// page number. The values the library itself produces and tests are named;
// every other code page number (1251, 932, 20866, ...) is valid too and is
// converted by the charset layer.
#ifndef ZESTRA_BASE_CHARSET_H_
#define ZESTRA_BASE_CHARSET_H_

#include <cstdint>

namespace Orvel {

enum CHARSET : int32_t {
  UnknownCharset = -1,        // not known; detection leaves this when it cannot tell
  Utf16LECharset = 1201,      // 16-bit text, little-endian: the order of wide strings in memory
  Windows1252Charset = 1252,  // Windows-1252
  Utf8Charset = 65001,        // UTF-8
};

}  // namespace Orvel

#endif  // ZESTRA_BASE_CHARSET_H_
