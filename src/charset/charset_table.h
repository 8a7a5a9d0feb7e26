// The charset table: one row per supported character set, giving its code
// page number, its canonical name, how its bytes are decoded (one of our own
// codecs, or glibc's iconv under a given name), the WHATWG labels that name
// it, and the other code page numbers that mean the same bytes.
//
// Thread-safety: the table is constant.
#ifndef ZESTRA_CHARSET_CHARSET_TABLE_H_
#define ZESTRA_CHARSET_CHARSET_TABLE_H_

#include <cstdint>
#include <span>

#include "zestra/base/charset.h"

namespace OrvelCharset {

// How the bytes of a charset are converted.
enum class Codec : uint8_t {
  kIconv,        // glibc iconv, under CharsetEntry::iconv_name
  kUtf8,         // our own codecs, below
  kUtf16LE,
  kUtf16BE,
  kWindows1252,
};

struct CharsetEntry {
  Orvel::CHARSET code_page;  // the number this system uses for the charset
  const char* name;          // canonical name (the WHATWG name where there is one)
  Codec codec;
  const char* iconv_name;    // glibc iconv's name for the charset; never null
  const char* labels;        // WHATWG labels, lower case, one space apart; "" for none
  int32_t synonyms[3];       // other code pages for the same bytes; 0 ends the list
};

// Every row of the table.
std::span<const CharsetEntry> CharsetTable();

// The row of a charset or of one of its synonyms; null when unsupported.
const CharsetEntry* FindCharset(Orvel::CHARSET charset);

}  // namespace OrvelCharset

#endif  // ZESTRA_CHARSET_CHARSET_TABLE_H_
