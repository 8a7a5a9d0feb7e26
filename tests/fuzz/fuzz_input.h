// What the fuzz targets share: how a fuzz input names a charset.
#ifndef ZESTRA_TESTS_FUZZ_FUZZ_INPUT_H_
#define ZESTRA_TESTS_FUZZ_FUZZ_INPUT_H_

#include <cstdint>
#include <iterator>

#include "zestra/base/charset.h"

namespace zestra_fuzz {

// The charsets a fuzz input may name with its first byte, which stays part
// of the document: unknown (the parser then detects), the three the library
// itself uses, and converters of multi-byte, stateful and 32-bit encodings.
// UTF-8 sits at index 12 so that a page beginning with '<' (0x3C) is read as
// UTF-8, and the pages of the starting corpus work as they are.
inline constexpr int32_t kCharsets[] = {
    -1, 1201, 1252, 932, 936, 949, 950, 51932, 50220, 54936, 12000, 12001, 65001, 1251, 20866, 28591,
};
static_assert(kCharsets['<' % std::size(kCharsets)] == 65001);

// The charset that `byte` names.
inline Orvel::CHARSET CharsetOf(uint8_t byte) {
  return static_cast<Orvel::CHARSET>(kCharsets[byte % std::size(kCharsets)]);
}

}  // namespace zestra_fuzz

#endif  // ZESTRA_TESTS_FUZZ_FUZZ_INPUT_H_
