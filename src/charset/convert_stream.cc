#include "zestra/charset/convert_stream.h"

#include <cstring>
#include <memory>

#include "zestra/base/exception.h"
#include "zestra/charset/charset_conversion.h"

namespace OrvelCharset {
namespace {

constexpr uint32_t kBufferSize = 4096;

std::unique_ptr<ConversionFunction> ConverterOrThrow(Orvel::CHARSET from, Orvel::CHARSET to) {
  std::unique_ptr<ConversionFunction> converter = MakeConversionFunction(from, to);
  if (converter == nullptr) throw Orvel::Exception(u"unsupported charset", {__FILE__, __LINE__});
  return converter;
}

// Converts in[0, count) through `output` (kBufferSize bytes), handing each
// produced piece to `write(bytes, n)`, until all is used or a call uses
// nothing (an incomplete character at the end). Returns the bytes used.
template <class Write>
uint32_t ConvertBuffer(ConversionFunction& converter, const uint8_t* in, uint32_t count, uint8_t* output,
                       Write&& write) {
  uint32_t position = 0;
  while (position < count) {
    uint32_t used = 0;
    uint32_t produced = 0;
    converter.Convert(in + position, count - position, used, output, kBufferSize, produced, false, false);
    if (produced > 0) write(output, produced);
    if (used == 0) break;
    position += used;
  }
  return position;
}

}  // namespace

uint32_t ConvertStream(Orvel::CHARSET from, Orvel::CHARSET to, Orvel::BinaryStreamBufT<unsigned int>& in,
                       Orvel::BinaryStreamBufT<unsigned int>& out) {
  const std::unique_ptr<ConversionFunction> converter = ConverterOrThrow(from, to);
  uint8_t input[kBufferSize];
  uint8_t output[kBufferSize];
  uint32_t carry = 0;
  uint32_t consumed = 0;
  for (;;) {
    const uint32_t got = in.Get(input + carry, kBufferSize - carry);
    if (got == 0) break;
    const uint32_t available = carry + got;
    const uint32_t used = ConvertBuffer(*converter, input, available, output,
                                        [&out](const uint8_t* bytes, uint32_t n) { out.PutExact(bytes, n); });
    std::memmove(input, input + used, available - used);
    carry = available - used;
    consumed += used;
  }
  return consumed;
}

uint32_t ConvertWideText(Orvel::CHARSET from, Orvel::CHARSET to, const char16_t* text, uint32_t count,
                         std::string& out) {
  const std::unique_ptr<ConversionFunction> converter = ConverterOrThrow(from, to);
  out.reserve(out.size() + count);
  uint8_t output[kBufferSize];
  const uint32_t used = ConvertBuffer(*converter, reinterpret_cast<const uint8_t*>(text), count * 2, output,
                                      [&out](const uint8_t* bytes, uint32_t n) {
                                        out.append(reinterpret_cast<const char*>(bytes), n);
                                      });
  return used / 2;
}

}  // namespace OrvelCharset
