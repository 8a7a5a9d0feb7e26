#include "html/char_ref.h"

#include <algorithm>
#include <iterator>

namespace OrvelParser {
namespace {

struct NamedRef {
  std::string_view name;  // with its ';' where the standard has one
  uint32_t code_point;
  uint32_t second;  // 0: a single code point
};

constexpr NamedRef kNamedRefs[] = {
#include "html/named_char_refs.inc"
};
static_assert(std::size(kNamedRefs) == 2231);

// The longest name (with ';') and the longest legacy name (without).
constexpr uint32_t kLongestName = 32;
constexpr uint32_t kLongestLegacyName = 6;

// What the numeric references 0x80-0x9F stand for (Windows-1252); 0 where
// the code point stays as it is.
constexpr uint16_t kC1Replacements[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

bool IsAsciiAlnum(unsigned char c) {
  return (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'z');
}

int HexValue(unsigned char c) {
  if (c >= '0' && c <= '9') return c - '0';
  c |= 0x20;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

const NamedRef* FindNamed(std::string_view name) {
  const auto* found = std::lower_bound(std::begin(kNamedRefs), std::end(kNamedRefs), name,
                                       [](const NamedRef& row, std::string_view key) { return row.name < key; });
  return found != std::end(kNamedRefs) && found->name == name ? found : nullptr;
}

void Fill(CharRef& ref, uint32_t end, uint32_t first, uint32_t second) {
  ref.end = end;
  ref.size = static_cast<uint8_t>(EncodeUtf8(first, ref.utf8));
  if (second != 0) ref.size = static_cast<uint8_t>(ref.size + EncodeUtf8(second, ref.utf8 + ref.size));
}

bool DecodeNumeric(std::string_view input, uint32_t amp, CharRef& ref) {
  const auto n = static_cast<uint32_t>(input.size());
  uint32_t pos = amp + 2;  // past "&#"
  const bool hex = pos < n && (input[pos] | 0x20) == 'x';
  if (hex) ++pos;
  const uint32_t digits_begin = pos;
  uint32_t value = 0;
  bool too_large = false;
  for (; pos < n; ++pos) {
    const auto c = static_cast<unsigned char>(input[pos]);
    const int digit = hex ? HexValue(c) : (c >= '0' && c <= '9' ? c - '0' : -1);
    if (digit < 0) break;
    value = value * (hex ? 16 : 10) + static_cast<uint32_t>(digit);
    if (value > 0x10FFFF) {
      too_large = true;
      value = 0x110000;  // stays above the range however many digits follow
    }
  }
  if (pos == digits_begin) return false;  // "&#" or "&#x" without digits: text
  if (pos < n && input[pos] == ';') ++pos;
  if (too_large || value == 0 || (value >= 0xD800 && value <= 0xDFFF)) {
    value = 0xFFFD;
  } else if (value >= 0x80 && value <= 0x9F && kC1Replacements[value - 0x80] != 0) {
    value = kC1Replacements[value - 0x80];
  }
  Fill(ref, pos, value, 0);
  return true;
}

}  // namespace

int EncodeUtf8(uint32_t cp, char* out) noexcept {
  if (cp < 0x80) {
    out[0] = static_cast<char>(cp);
    return 1;
  }
  if (cp < 0x800) {
    out[0] = static_cast<char>(0xC0 | (cp >> 6));
    out[1] = static_cast<char>(0x80 | (cp & 0x3F));
    return 2;
  }
  if (cp < 0x10000) {
    out[0] = static_cast<char>(0xE0 | (cp >> 12));
    out[1] = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out[2] = static_cast<char>(0x80 | (cp & 0x3F));
    return 3;
  }
  out[0] = static_cast<char>(0xF0 | (cp >> 18));
  out[1] = static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
  out[2] = static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
  out[3] = static_cast<char>(0x80 | (cp & 0x3F));
  return 4;
}

bool DecodeCharRef(std::string_view input, uint32_t amp, bool in_attribute, CharRef& ref) noexcept {
  const auto n = static_cast<uint32_t>(input.size());
  const uint32_t start = amp + 1;
  if (start >= n) return false;
  if (input[start] == '#') return DecodeNumeric(input, amp, ref);

  // Named: the letters and digits that follow, then the longest name among
  // them. A name with ';' can only end where the run does (the ';' follows
  // it); a shorter match must be one of the legacy names without ';'.
  uint32_t run_end = start;
  while (run_end < n && run_end - start < kLongestName && IsAsciiAlnum(static_cast<unsigned char>(input[run_end])))
    ++run_end;
  if (run_end == start) return false;
  if (run_end < n && input[run_end] == ';') {
    if (const NamedRef* found = FindNamed(input.substr(start, run_end + 1 - start))) {
      Fill(ref, run_end + 1, found->code_point, found->second);
      return true;
    }
  }
  for (uint32_t len = std::min(run_end - start, kLongestLegacyName); len >= 2; --len) {
    const NamedRef* found = FindNamed(input.substr(start, len));
    if (found == nullptr) continue;
    const uint32_t end = start + len;
    if (in_attribute && end < n && (input[end] == '=' || IsAsciiAlnum(static_cast<unsigned char>(input[end]))))
      return false;
    Fill(ref, end, found->code_point, found->second);
    return true;
  }
  return false;
}

}  // namespace OrvelParser
