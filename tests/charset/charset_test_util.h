// Helpers shared by the charset tests.
#ifndef ZESTRA_TESTS_PLATFORM_CHARSET_TEST_UTIL_H_
#define ZESTRA_TESTS_PLATFORM_CHARSET_TEST_UTIL_H_

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zestra/charset/charset_conversion.h"

namespace zestra_test {

// Drives `f` over `in` as a caller with small buffers would: the input is
// offered `in_step` bytes more at a time, the output taken `out_capacity`
// bytes at a time, and end_of_input is set once all input is offered.
inline std::string ConvertAll(OrvelCharset::ConversionFunction& f, std::string_view in,
                              uint32_t in_step = 4096, uint32_t out_capacity = 4096) {
  std::string out;
  std::vector<uint8_t> buffer(out_capacity);
  const auto* bytes = reinterpret_cast<const uint8_t*>(in.data());
  size_t pos = 0;
  size_t end = std::min<size_t>(in_step, in.size());
  for (;;) {
    const bool end_of_input = end == in.size();
    uint32_t used = 0;
    uint32_t produced = 0;
    f.Convert(bytes + pos, static_cast<uint32_t>(end - pos), used, buffer.data(), out_capacity, produced,
              end_of_input, false);
    out.append(reinterpret_cast<const char*>(buffer.data()), produced);
    pos += used;
    if (used == 0 && produced == 0) {
      if (end_of_input) break;
      end = std::min<size_t>(end + in_step, in.size());
    }
  }
  return out;
}

// Converts `in` from one charset to another with MakeConversionFunction.
inline std::string Convert(Orvel::CHARSET from, Orvel::CHARSET to, std::string_view in,
                           uint32_t in_step = 4096, uint32_t out_capacity = 4096) {
  auto f = OrvelCharset::MakeConversionFunction(from, to);
  if (f == nullptr) return "<no converter>";
  return ConvertAll(*f, in, in_step, out_capacity);
}

inline std::string Bytes(std::initializer_list<int> values) {
  std::string s;
  for (int v : values) s.push_back(static_cast<char>(v));
  return s;
}

inline Orvel::CHARSET Cs(int32_t code_page) { return static_cast<Orvel::CHARSET>(code_page); }

}  // namespace zestra_test

#endif  // ZESTRA_TESTS_PLATFORM_CHARSET_TEST_UTIL_H_
