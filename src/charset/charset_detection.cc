#include "zestra/charset/charset_detection.h"

#include <uchardet/uchardet.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "charset/own_codecs.h"
#include "zestra/base/memory_pool.h"
#include "zestra/charset/charset_names.h"

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

bool IsNonAsciiUtf8(const uint8_t* data, size_t size) {
  // Only a sample cut from longer input may end inside a character.
  const bool whole = size <= kGuessBytes;
  size = std::min(size, kGuessBytes);
  bool non_ascii = false;
  size_t i = 0;
  while (i < size) {
    if (data[i] < 0x80) {
      ++i;
      // Eight bytes at a time while none has its high bit set.
      for (uint64_t word; i + 8 <= size; i += 8) {
        std::memcpy(&word, data + i, 8);
        if ((word & 0x8080808080808080u) != 0) break;
      }
      continue;
    }
    const OrvelCharset::Decoded decoded = OrvelCharset::Utf8Codec::Decode(data + i, size - i, whole);
    non_ascii = true;
    if (decoded.length == 0) break;
    // The decoder reads invalid bytes as U+FFFD; the character itself is
    // written EF BF BD.
    const bool literal = decoded.length == 3 && data[i] == 0xEF && data[i + 1] == 0xBF && data[i + 2] == 0xBD;
    if (decoded.code_point == OrvelCharset::kReplacementCharacter && !literal) return false;
    i += decoded.length;
  }
  return non_ascii;
}

CHARSET GuessCharset(const uint8_t* data, size_t size) {
  size = std::min(size, kGuessBytes);
  const size_t non_ascii = std::count_if(data, data + size, [](uint8_t b) { return b >= 0x80; });
  if (non_ascii == 0) return size == 0 ? Orvel::UnknownCharset : Orvel::Windows1252Charset;
  if (IsNonAsciiUtf8(data, size)) return Orvel::Utf8Charset;
  // A few accented letters fit many 8-bit charsets equally well; the
  // detector's guess means something only with more evidence.
  if (non_ascii < kMinGuessEvidence) return Orvel::UnknownCharset;
  const std::unique_ptr<uchardet, void (*)(uchardet_t)> detector(uchardet_new(), uchardet_delete);
  // The detector fails only for lack of memory; no guess then, which the
  // pool's failure count tells the callers.
  if (detector == nullptr || uchardet_handle_data(detector.get(), reinterpret_cast<const char*>(data), size) != 0) {
    OrvelMem::MemoryPool::NoteFailure();
    return Orvel::UnknownCharset;
  }
  uchardet_data_end(detector.get());
  const char* name = uchardet_get_charset(detector.get());
  return name == nullptr ? Orvel::UnknownCharset : OrvelCharset::CharsetFromName(name);
}

int DetectCharset(const uint8_t* data, size_t size, CHARSET& charset) {
  charset = DetectByteOrderMark(data, size).charset;
  if (charset == Orvel::UnknownCharset) charset = DetectUnmarkedUtf16(data, size);
  if (charset == Orvel::UnknownCharset && IsNonAsciiUtf8(data, size)) charset = Orvel::Utf8Charset;
  if (charset == Orvel::UnknownCharset) charset = PrescanMetaCharset(data, size);
  if (charset == Orvel::UnknownCharset) charset = GuessCharset(data, size);
  return 0;
}

int DetectCharset(Orvel::BinaryStreamBufT<unsigned int>& stream, CHARSET& charset) {
  charset = Orvel::UnknownCharset;
  const unsigned int start = stream.vTellG() - stream.LookAheadSize();
  std::vector<uint8_t> bytes;
  try {
    bytes.resize(kGuessBytes);
  } catch (const std::bad_alloc&) {
    // The charset falls back to the default: a result read with it may be
    // wrong, which the pool's failure count tells its callers.
    OrvelMem::MemoryPool::NoteFailure();
    return 1;
  }
  size_t have = 0;
  while (have < bytes.size()) {
    const unsigned int got = stream.Get(bytes.data() + have, static_cast<unsigned int>(bytes.size() - have));
    if (got == 0) break;
    have += got;
  }
  stream.DiscardLookAhead();
  stream.vSeekG(start, Orvel::kSeekBegin, Orvel::kSeekAbsolute);
  return DetectCharset(bytes.data(), have, charset);
}

CHARSET SniffCharset(const uint8_t* data, size_t size) {
  CHARSET charset = Orvel::UnknownCharset;
  DetectCharset(data, size, charset);
  return charset == Orvel::UnknownCharset ? Orvel::Windows1252Charset : charset;
}

}  // namespace OrvelDetection
