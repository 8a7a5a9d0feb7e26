// What the hostile cases share: the memory bounds they hold an extraction
// to, one extraction (Beautify over bytes) of an input, and the helpers that
// check its text and describe it in a failure.
#ifndef ZESTRA_TESTS_HOSTILE_HOSTILE_CASE_H_
#define ZESTRA_TESTS_HOSTILE_HOSTILE_CASE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "hostile/isolated_run.h"

#include "zestra/api/beautify.h"
#include "zestra/base/charset.h"
#include "zestra/stream/memory_buffer.h"

namespace zestra_hostile {

// An extraction needs at most kBytesPerInputByte times its input plus
// kFixedBytes (buffers of fixed size, the keyword table's share, allocator
// slack).
inline constexpr uint64_t kBytesPerInputByte = 20;
inline constexpr uint64_t kFixedBytes = 8u << 20;
// The bound for markup denser than one element per 20 bytes, which
// kBytesPerInputByte does not cover: an extraction of 100 MB of <b>x</b>,
// an element and a text node per 8 bytes, peaks at 20 times the input,
// about 160 bytes per element with its text in the two trees.
inline constexpr uint64_t kDenseMarkupFactor = 24;

// Checks the peak memory of a child's run against `bytes_per_input_byte`
// times its input plus kFixedBytes, where the build can measure it.
inline void ExpectPeakWithin(const IsolatedResult& result, uint64_t bytes_per_input_byte) {
  if (SanitizedBuild()) {
    std::printf("memory not checked: the sanitizers' shadow memory and quarantine dwarf the library's own\n");
  } else if (!result.memory_measured) {
    std::printf("memory not checked: this system cannot reset the peak resident size\n");
  } else {
    const uint64_t bound = bytes_per_input_byte * result.input_bytes + kFixedBytes;
    // The ratio only where the input, not the fixed part, dominates.
    std::printf("input %.1f MB, extraction peak %.1f MB", result.input_bytes / 1048576.0,
                result.peak_bytes / 1048576.0);
    if (result.input_bytes >= kFixedBytes) {
      std::printf(", %.1f times the input", static_cast<double>(result.peak_bytes) / result.input_bytes);
    }
    std::printf(" (bound %.1f MB)\n", bound / 1048576.0);
    EXPECT_LE(result.peak_bytes, bound) << "input of " << result.input_bytes << " bytes";
  }
}

// The result of one extraction.
struct Extraction {
  bool produced = false;
  ZestraNS::DocumentType type = ZestraNS::LinkDocument;
  std::u16string text;
};

// Extracts the text of `input`, read in `charset`, as Beautify over bytes
// does.
inline Extraction Extract(const std::string& input, Orvel::CHARSET charset) {
  Extraction e;
  OrvelFile::MemoryBuffer in(input.data(), static_cast<unsigned int>(input.size()),
                             OrvelFile::MemoryBuffer::kReadInPlace);
  e.produced = ZestraNS::Beautify(in, charset, e.text, nullptr, &e.type);
  return e;
}

// `text` with units beyond ASCII written as \uXXXX.
inline std::string Utf8(const std::u16string& text) {
  std::string out;
  for (char16_t unit : text) {
    if (unit < 0x80) {
      out.push_back(static_cast<char>(unit));
    } else {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\u%04X", static_cast<unsigned>(unit));
      out += hex;
    }
  }
  return out;
}

// Describes `text` for a failure message: its length and its two ends.
inline std::string Describe(const std::u16string& text) {
  const size_t shown = 80;
  if (text.size() <= 2 * shown) return "\"" + Utf8(text) + "\"";
  return std::to_string(text.size()) + " units: \"" + Utf8(text.substr(0, shown)) + "...\" ... \"" +
         Utf8(text.substr(text.size() - shown)) + "\"";
}

// Empty when the text holds `part`, else what is wrong.
inline std::string ExpectContains(const Extraction& e, const std::u16string& part) {
  if (e.text.find(part) != std::u16string::npos) return "";
  return "the text lacks \"" + Utf8(part) + "\": " + Describe(e.text);
}

// Empty when the text lacks `part`, else what is wrong.
inline std::string ExpectLacks(const Extraction& e, const std::u16string& part) {
  if (e.text.find(part) == std::u16string::npos) return "";
  return "the text holds \"" + Utf8(part) + "\": " + Describe(e.text);
}

// `part` written `count` times.
inline std::string Repeat(const std::string& part, size_t count) {
  std::string out;
  out.reserve(part.size() * count);
  for (size_t i = 0; i < count; ++i) out += part;
  return out;
}

}  // namespace zestra_hostile

#endif  // ZESTRA_TESTS_HOSTILE_HOSTILE_CASE_H_
