#include "zestra/platform/charset_detection.h"

#include <uchardet/uchardet.h>

#include <algorithm>
#include <memory>

#include "zestra/platform/charset_names.h"

namespace OrvelDetection {

using Orvel::CHARSET;

ByteOrderMark DetectByteOrderMark(const uint8_t* data, size_t size) {
  if (size >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF) return {Orvel::Utf8Charset, 3};
  if (size >= 2 && data[0] == 0xFF && data[1] == 0xFE) return {Orvel::Utf16LECharset, 2};
  if (size >= 2 && data[0] == 0xFE && data[1] == 0xFF) return {OrvelCharset::Utf16BECharset, 2};
  return {Orvel::UnknownCharset, 0};
}

CHARSET DetectUnmarkedUtf16(const uint8_t* data, size_t size) {
  const size_t pairs = std::min(size, kPrescanBytes) / 2;
  // Too few units to tell text from chance.
  if (pairs < 8) return Orvel::UnknownCharset;
  size_t zeros_first = 0;
  size_t zeros_second = 0;
  for (size_t i = 0; i < pairs; ++i) {
    zeros_first += data[2 * i] == 0;
    zeros_second += data[2 * i + 1] == 0;
  }
  // Markup is ASCII: in 16-bit text at least seven units in ten have a zero
  // high byte, while a zero low byte (a character U+xx00) is rare. Text in
  // any 8-bit charset has no zero bytes at all.
  const auto mostly = [pairs](size_t n) { return n * 10 >= pairs * 7; };
  const auto rarely = [pairs](size_t n) { return n * 20 <= pairs; };
  if (mostly(zeros_second) && rarely(zeros_first)) return Orvel::Utf16LECharset;
  if (mostly(zeros_first) && rarely(zeros_second)) return OrvelCharset::Utf16BECharset;
  return Orvel::UnknownCharset;
}

CHARSET GuessCharset(const uint8_t* data, size_t size) {
  if (size == 0) return Orvel::UnknownCharset;
  const std::unique_ptr<uchardet, void (*)(uchardet_t)> detector(uchardet_new(), uchardet_delete);
  if (detector == nullptr) return Orvel::UnknownCharset;
  if (uchardet_handle_data(detector.get(), reinterpret_cast<const char*>(data), std::min(size, kGuessBytes)) != 0) {
    return Orvel::UnknownCharset;
  }
  uchardet_data_end(detector.get());
  const char* name = uchardet_get_charset(detector.get());
  return name == nullptr ? Orvel::UnknownCharset : OrvelCharset::CharsetFromName(name);
}

int DetectCharset(const uint8_t* data, size_t size, CHARSET& charset) {
  charset = DetectByteOrderMark(data, size).charset;
  if (charset == Orvel::UnknownCharset) charset = DetectUnmarkedUtf16(data, size);
  if (charset == Orvel::UnknownCharset) charset = PrescanMetaCharset(data, size);
  if (charset == Orvel::UnknownCharset) charset = GuessCharset(data, size);
  return 0;
}

CHARSET SniffCharset(const uint8_t* data, size_t size) {
  CHARSET charset = Orvel::UnknownCharset;
  DetectCharset(data, size, charset);
  return charset == Orvel::UnknownCharset ? Orvel::Windows1252Charset : charset;
}

}  // namespace OrvelDetection
