// The codecs that this library implements itself rather than through iconv:
// UTF-8, UTF-16 in both byte orders and Windows-1252. Each decoder reads one
// character from the front of a byte range and each encoder writes one; the
// converters in charset_conversion.cc are built from a pair of them.
//
// Decoding never fails: a byte sequence that is not valid becomes U+FFFD,
// replacing as much of it as the WHATWG Encoding Standard does (the maximal
// subpart of an ill-formed UTF-8 sequence; one unpaired UTF-16 surrogate;
// an odd byte at the end of UTF-16 text). A sequence that is a valid start but
// runs past the end of the range is "incomplete": the decoder asks for more
// bytes, unless the range is the end of the input, where it becomes U+FFFD.
//
// Thread-safety: stateless; any thread.
#ifndef ZESTRA_CHARSET_OWN_CODECS_H_
#define ZESTRA_CHARSET_OWN_CODECS_H_

#include <cstddef>
#include <cstdint>

namespace OrvelCharset {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

// What a decoder read: `length` bytes making the character `code_point`.
// Length 0 means the range ends inside a valid but incomplete sequence and
// more bytes are needed.
struct Decoded {
  uint32_t length;
  char32_t code_point;
};

// Windows-1252 bytes 0x80 to 0x9F, as the WHATWG index maps them; the five
// bytes Windows leaves undefined map to the C1 control of the same value.
inline constexpr char16_t kWindows1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// Each codec also says whether it has a byte-order mark (kHasSignature) and
// whether bytes below 0x80 are the ASCII characters (kAsciiCompatible).
struct Utf8Codec {
  static constexpr bool kHasSignature = true;
  static constexpr bool kAsciiCompatible = true;

  // REQUIRES: size > 0.
  static Decoded Decode(const uint8_t* p, size_t size, bool end_of_input) {
    const uint8_t lead = p[0];
    if (lead < 0x80) return {1, lead};
    uint32_t needed;
    uint8_t lower = 0x80;
    uint8_t upper = 0xBF;
    char32_t cp;
    if (lead >= 0xC2 && lead <= 0xDF) {
      needed = 1;
      cp = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      needed = 2;
      cp = lead & 0x0F;
      if (lead == 0xE0) lower = 0xA0;  // overlong
      if (lead == 0xED) upper = 0x9F;  // surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      needed = 3;
      cp = lead & 0x07;
      if (lead == 0xF0) lower = 0x90;  // overlong
      if (lead == 0xF4) upper = 0x8F;  // above U+10FFFF
    } else {
      return {1, kReplacementCharacter};
    }
    for (uint32_t i = 1; i <= needed; ++i) {
      if (i >= size) return {end_of_input ? i : 0, kReplacementCharacter};
      const uint8_t b = p[i];
      // The byte that breaks the sequence is not consumed: it starts the next.
      if (b < lower || b > upper) return {i, kReplacementCharacter};
      lower = 0x80;
      upper = 0xBF;
      cp = (cp << 6) | (b & 0x3F);
    }
    return {needed + 1, cp};
  }

  // Writes `cp` (a Unicode scalar value) to out; returns the bytes written,
  // or 0 when `room` is too small.
  static uint32_t Encode(char32_t cp, uint8_t* out, size_t room) {
    if (cp < 0x80) {
      if (room < 1) return 0;
      out[0] = static_cast<uint8_t>(cp);
      return 1;
    }
    if (cp < 0x800) {
      if (room < 2) return 0;
      out[0] = static_cast<uint8_t>(0xC0 | (cp >> 6));
      out[1] = static_cast<uint8_t>(0x80 | (cp & 0x3F));
      return 2;
    }
    if (cp < 0x10000) {
      if (room < 3) return 0;
      out[0] = static_cast<uint8_t>(0xE0 | (cp >> 12));
      out[1] = static_cast<uint8_t>(0x80 | ((cp >> 6) & 0x3F));
      out[2] = static_cast<uint8_t>(0x80 | (cp & 0x3F));
      return 3;
    }
    if (room < 4) return 0;
    out[0] = static_cast<uint8_t>(0xF0 | (cp >> 18));
    out[1] = static_cast<uint8_t>(0x80 | ((cp >> 12) & 0x3F));
    out[2] = static_cast<uint8_t>(0x80 | ((cp >> 6) & 0x3F));
    out[3] = static_cast<uint8_t>(0x80 | (cp & 0x3F));
    return 4;
  }
};

// UTF-16 in the byte order given by `kBigEndian`.
template <bool kBigEndian>
struct Utf16Codec {
  static constexpr bool kHasSignature = true;
  static constexpr bool kAsciiCompatible = false;

  static char16_t Unit(const uint8_t* p) {
    return kBigEndian ? static_cast<char16_t>((p[0] << 8) | p[1])
                      : static_cast<char16_t>((p[1] << 8) | p[0]);
  }
  static void PutUnit(char16_t unit, uint8_t* out) {
    out[kBigEndian ? 0 : 1] = static_cast<uint8_t>(unit >> 8);
    out[kBigEndian ? 1 : 0] = static_cast<uint8_t>(unit & 0xFF);
  }

  // REQUIRES: size > 0.
  static Decoded Decode(const uint8_t* p, size_t size, bool end_of_input) {
    if (size < 2) return {end_of_input ? 1u : 0u, kReplacementCharacter};
    const char16_t unit = Unit(p);
    if (unit < 0xD800 || unit > 0xDFFF) return {2, unit};
    if (unit >= 0xDC00) return {2, kReplacementCharacter};  // a low surrogate alone
    if (size < 4) return {end_of_input ? 2u : 0u, kReplacementCharacter};
    const char16_t low = Unit(p + 2);
    // A high surrogate without its low half is replaced alone; what follows
    // it is read afresh.
    if (low < 0xDC00 || low > 0xDFFF) return {2, kReplacementCharacter};
    return {4, 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) + (low - 0xDC00)};
  }

  static uint32_t Encode(char32_t cp, uint8_t* out, size_t room) {
    if (cp < 0x10000) {
      if (room < 2) return 0;
      PutUnit(static_cast<char16_t>(cp), out);
      return 2;
    }
    if (room < 4) return 0;
    cp -= 0x10000;
    PutUnit(static_cast<char16_t>(0xD800 + (cp >> 10)), out);
    PutUnit(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)), out + 2);
    return 4;
  }
};

using Utf16LECodec = Utf16Codec<false>;
using Utf16BECodec = Utf16Codec<true>;

struct Windows1252Codec {
  static constexpr bool kHasSignature = false;
  static constexpr bool kAsciiCompatible = true;

  static Decoded Decode(const uint8_t* p, size_t size, bool end_of_input) {
    const uint8_t b = p[0];
    return {1, b >= 0x80 && b <= 0x9F ? char32_t{kWindows1252High[b - 0x80]} : char32_t{b}};
  }

  // Characters that Windows-1252 lacks are written as '?'.
  static uint32_t Encode(char32_t cp, uint8_t* out, size_t room) {
    if (room < 1) return 0;
    out[0] = '?';
    if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) {
      out[0] = static_cast<uint8_t>(cp);
    } else {
      for (uint8_t i = 0; i < 32; ++i) {
        if (kWindows1252High[i] == cp) out[0] = static_cast<uint8_t>(0x80 + i);
      }
    }
    return 1;
  }
};

}  // namespace OrvelCharset

#endif  // ZESTRA_CHARSET_OWN_CODECS_H_
