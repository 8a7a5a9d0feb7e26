#include "zestra/charset/charset_detection.h"

namespace OrvelDetection {
namespace {

// True for the bytes CleanStreamFromJunkCharset leaves out.
constexpr bool IsJunk(uint8_t b) {
  if (b < 0x20) return b != '\t' && b != '\n' && b != '\f' && b != '\r';
  return b == 0x7F || b == 0x81 || b == 0x8D || b == 0x8F || b == 0x90 || b == 0x9D;
}

}  // namespace

uint32_t CharsetLanguageDetection::CleanStreamFromJunkCharset(Orvel::BinaryStreamBufT<unsigned int>& in,
                                                              Orvel::BinaryStreamBufT<unsigned int>& out) {
  uint8_t buffer[4096];
  uint32_t written = 0;
  for (;;) {
    const unsigned int got = in.Get(buffer, sizeof buffer);
    if (got == 0) break;
    unsigned int kept = 0;
    for (unsigned int i = 0; i < got; ++i) {
      if (!IsJunk(buffer[i])) buffer[kept++] = buffer[i];
    }
    if (kept > 0) out.PutExact(buffer, kept);
    written += kept;
  }
  return written;
}

}  // namespace OrvelDetection
