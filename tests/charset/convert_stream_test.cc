#include "zestra/charset/convert_stream.h"

#include <gtest/gtest.h>

#include <string>

#include "charset/charset_test_util.h"
#include "zestra/base/exception.h"
#include "zestra/charset/charset_detection.h"
#include "zestra/charset/charset_names.h"
#include "zestra/stream/memory_buffer.h"

namespace {

using OrvelFile::MemoryBuffer;
using zestra_test::Convert;
using zestra_test::Cs;

std::string ReadAll(MemoryBuffer& buffer) {
  std::string out;
  buffer.Copy(out, MemoryBuffer::kAll);
  return out;
}

// Runs ConvertStream over `in`; sets `consumed` to its result.
std::string ConvertThroughStreams(Orvel::CHARSET from, Orvel::CHARSET to, const std::string& in,
                                  uint32_t& consumed) {
  MemoryBuffer source(in.data(), static_cast<unsigned int>(in.size()), MemoryBuffer::kReadInPlace);
  MemoryBuffer target(16384);
  consumed = OrvelCharset::ConvertStream(from, to, source, target);
  return ReadAll(target);
}

TEST(ConvertStream, ACharacterSplitByThe4096ByteBoundaryConvertsWhole) {
  // The euro sign's three bytes start at 4095, 4094 and 4093 in turn, so
  // the first buffer ends inside it or just after it.
  for (size_t lead = 4093; lead <= 4096; ++lead) {
    const std::string in = std::string(lead, 'a') + "\xE2\x82\xAC" + std::string(5000, 'b') + "\xC3\xA9";
    uint32_t consumed = 0;
    EXPECT_EQ(ConvertThroughStreams(Orvel::Utf8Charset, Orvel::Utf8Charset, in, consumed), in) << lead;
    EXPECT_EQ(consumed, in.size());
    // Through 16-bit text and back, both by way of the streams.
    const std::string wide = ConvertThroughStreams(Orvel::Utf8Charset, Orvel::Utf16LECharset, in, consumed);
    EXPECT_EQ(ConvertThroughStreams(Orvel::Utf16LECharset, Orvel::Utf8Charset, wide, consumed), in) << lead;
  }
  // A Shift_JIS character (two bytes) across the boundary goes through the
  // two-step converter.
  const std::string text = std::string(4095, 'a') + "\xE6\x97\xA5\xE6\x9C\xAC" + "z";
  const std::string sjis = Convert(Orvel::Utf8Charset, Cs(932), text);
  uint32_t consumed = 0;
  EXPECT_EQ(ConvertThroughStreams(Cs(932), Orvel::Utf8Charset, sjis, consumed), text);
  EXPECT_EQ(consumed, sjis.size());
}

TEST(ConvertStream, DropsAnIncompleteCharacterAtTheEndAndReplacesInvalidOnes) {
  uint32_t consumed = 0;
  EXPECT_EQ(ConvertThroughStreams(Orvel::Utf8Charset, Orvel::Utf8Charset, "ab\xE2\x82", consumed), "ab");
  EXPECT_EQ(consumed, 2u);
  EXPECT_EQ(ConvertThroughStreams(Orvel::Utf8Charset, Orvel::Utf8Charset, "a\xFF" "b", consumed),
            "a\xEF\xBF\xBD" "b");
  EXPECT_EQ(ConvertThroughStreams(Orvel::Utf8Charset, Orvel::Utf8Charset, "", consumed), "");
  EXPECT_EQ(consumed, 0u);
}

TEST(ConvertStream, ReadsFromTheGetPositionAndThrowsForUnknownCharsets) {
  MemoryBuffer source("skip\xE9t\xE9", 7, MemoryBuffer::kReadInPlace);
  char skipped[4];
  source.Get(skipped, 4);
  MemoryBuffer target(16);
  EXPECT_EQ(OrvelCharset::ConvertStream(Orvel::Windows1252Charset, Orvel::Utf8Charset, source, target), 3u);
  EXPECT_EQ(ReadAll(target), "\xC3\xA9t\xC3\xA9");
  MemoryBuffer again("x", 1, MemoryBuffer::kReadInPlace);
  EXPECT_THROW(OrvelCharset::ConvertStream(Orvel::UnknownCharset, Orvel::Utf8Charset, again, target),
               Orvel::Exception);
}

TEST(ConvertWideText, AppendsTheConvertedText) {
  std::string out = ">";
  const std::u16string text = u"caf\u00e9 \U0001F600";
  EXPECT_EQ(OrvelCharset::ConvertWideText(Orvel::Utf16LECharset, Orvel::Utf8Charset, text.data(),
                                          static_cast<uint32_t>(text.size()), out),
            text.size());
  EXPECT_EQ(out, ">caf\xC3\xA9 \xF0\x9F\x98\x80");
  // Longer than one output buffer.
  const std::u16string long_text(10000, u'\u20ac');
  out.clear();
  OrvelCharset::ConvertWideText(Orvel::Utf16LECharset, Orvel::Utf8Charset, long_text.data(), 10000, out);
  EXPECT_EQ(out.size(), 30000u);
  // A high surrogate at the end is incomplete in a plain conversion: left.
  const char16_t cut[] = {u'a', 0xD83D};
  out.clear();
  EXPECT_EQ(OrvelCharset::ConvertWideText(Orvel::Utf16LECharset, Orvel::Utf8Charset, cut, 2, out), 1u);
  EXPECT_EQ(out, "a");
  EXPECT_EQ(OrvelCharset::ConvertWideText(Orvel::Utf16LECharset, Orvel::Utf8Charset, nullptr, 0, out), 0u);
  EXPECT_THROW(OrvelCharset::ConvertWideText(Orvel::Utf16LECharset, Cs(3), cut, 2, out), Orvel::Exception);
}

TEST(CleanStreamFromJunkCharset, DropsControlBytesAndUndefinedBytes) {
  std::string all;
  for (int b = 0; b < 256; ++b) all.push_back(static_cast<char>(b));
  all += std::string(5000, 'x');  // more than one read
  MemoryBuffer source(all.data(), static_cast<unsigned int>(all.size()), MemoryBuffer::kReadInPlace);
  MemoryBuffer target(16);
  const uint32_t written = OrvelDetection::CharsetLanguageDetection::CleanStreamFromJunkCharset(source, target);
  std::string expected = "\t\n\f\r";
  for (int b = 0x20; b < 256; ++b) {
    if (b != 0x7F && b != 0x81 && b != 0x8D && b != 0x8F && b != 0x90 && b != 0x9D) {
      expected.push_back(static_cast<char>(b));
    }
  }
  expected += std::string(5000, 'x');
  EXPECT_EQ(ReadAll(target), expected);
  EXPECT_EQ(written, expected.size());
}

TEST(DetectCharsetOnAStream, LeavesTheGetPositionWhereItWas) {
  const std::string page = "<html><meta charset=koi8-r><body>x</body></html>";
  MemoryBuffer stream(page.data(), static_cast<unsigned int>(page.size()), MemoryBuffer::kReadInPlace);
  char first[6];
  stream.Get(first, 6);
  Orvel::CHARSET charset = Orvel::UnknownCharset;
  EXPECT_EQ(OrvelDetection::DetectCharset(stream, charset), 0);
  EXPECT_EQ(charset, Cs(20866));
  EXPECT_EQ(stream.vTellG(), 6u);
}

}  // namespace
