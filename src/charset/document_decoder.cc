#include "charset/document_decoder.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "zestra/charset/charset_conversion.h"
#include "zestra/charset/charset_detection.h"
#include "zestra/charset/charset_names.h"

namespace OrvelParser {
namespace {

using Orvel::CHARSET;

// Input is read this many bytes at a time after the first read, which takes
// as much as charset detection looks at.
constexpr size_t kReadChunk = 64 * 1024;
// Converted text is appended this many bytes at a time.
constexpr uint32_t kOutputChunk = 64 * 1024;

// Reads from `input` until `buffer[have, size)` is full or the input ends;
// returns the new `have`.
size_t Fill(Orvel::BinaryStreamBufT<unsigned int>& input, std::vector<uint8_t>& buffer, size_t have) {
  while (have < buffer.size()) {
    const unsigned int got = input.Get(buffer.data() + have, static_cast<unsigned int>(buffer.size() - have));
    if (got == 0) break;
    have += got;
  }
  return have;
}

// Appends `bytes` to `utf8` up to `max_bytes` in all, cutting before a
// character that would not fit whole; returns false when it had to cut.
bool AppendLimited(const uint8_t* bytes, size_t count, size_t max_bytes, std::string& utf8) {
  if (utf8.size() + count <= max_bytes) {
    utf8.append(reinterpret_cast<const char*>(bytes), count);
    return true;
  }
  size_t fits = max_bytes - utf8.size();
  while (fits > 0 && (bytes[fits] & 0xC0) == 0x80) --fits;  // bytes[fits] continues a character
  utf8.append(reinterpret_cast<const char*>(bytes), fits);
  return false;
}

}  // namespace

CHARSET DecodeDocument(Orvel::BinaryStreamBufT<unsigned int>& input, CHARSET charset, std::string& utf8,
                       size_t max_bytes) {
  utf8.clear();
  std::vector<uint8_t> buffer(std::max(OrvelDetection::kGuessBytes, kReadChunk));
  size_t have = Fill(input, buffer, 0);
  bool end_of_input = have < buffer.size();

  const OrvelDetection::ByteOrderMark mark = OrvelDetection::DetectByteOrderMark(buffer.data(), have);
  if (mark.charset != Orvel::UnknownCharset) {
    charset = mark.charset;
  } else if (!OrvelCharset::IsSupportedCharset(charset)) {
    charset = OrvelDetection::SniffCharset(buffer.data(), have);
  }
  charset = OrvelCharset::CanonicalCharset(charset);
  auto converter = OrvelCharset::MakeConversionFunction(charset, Orvel::Utf8Charset);
  if (converter == nullptr) {  // a charset the detector names but this system lacks
    charset = Orvel::Windows1252Charset;
    converter = OrvelCharset::MakeConversionFunction(charset, Orvel::Utf8Charset);
  }

  // Most documents are about as long in UTF-8 as in their own charset;
  // reserving that spares most of the growing.
  const size_t remaining = input.vSize() > input.vTellG() ? input.vSize() - input.vTellG() : 0;
  utf8.reserve(std::min(max_bytes, have + remaining));

  std::vector<uint8_t> output(kOutputChunk);
  size_t pos = mark.length;
  for (;;) {
    for (;;) {
      uint32_t used = 0;
      uint32_t produced = 0;
      converter->Convert(buffer.data() + pos, static_cast<uint32_t>(have - pos), used, output.data(),
                         kOutputChunk, produced, end_of_input, false);
      if (!AppendLimited(output.data(), produced, max_bytes, utf8)) return charset;
      pos += used;
      if (used == 0 && produced == 0) break;
    }
    if (end_of_input) break;
    // Keep the incomplete character at the end for the next read.
    const size_t carry = have - pos;
    std::memmove(buffer.data(), buffer.data() + pos, carry);
    buffer.resize(carry + kReadChunk);
    have = Fill(input, buffer, carry);
    end_of_input = have < buffer.size();
    pos = 0;
  }
  return charset;
}

}  // namespace OrvelParser
