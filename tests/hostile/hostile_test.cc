// The hostile corpus: inputs built here, in code, that aim at the limits of
// the parser adapter, the builder and the walks. Each case runs one
// extraction (Beautify over bytes) in a child process and checks that it
// ends normally, that its output is the documented result, and that it
// needed at most 20 times the input's size plus kFixedBytes of memory.
// The cases that scale an input to check the parser's time are in
// linear_parse_test.cc. The ctest timeout of each case fails a hang; it is generous, not a speed
// target.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>

#include "hostile/hostile_case.h"
#include "hostile/hostile_pages.h"
#include "hostile/isolated_run.h"
#include "zestra/base/charset.h"

namespace zestra_hostile {
namespace {

using Orvel::CHARSET;

// Builds the input with `build`, extracts its text in a child process with
// `charset`, and checks the outcome with `check` (empty string: passed).
void ExpectHostile(const std::function<void(std::string&)>& build, CHARSET charset,
                   const std::function<std::string(const Extraction&)>& check,
                   uint64_t bytes_per_input_byte = kBytesPerInputByte) {
  std::string input;
  const IsolatedResult result = RunIsolated(
      [&] {
        build(input);
        return static_cast<uint64_t>(input.size());
      },
      [&] { return check(Extract(input, charset)); });
  EXPECT_TRUE(result.exited_cleanly) << result.failure;
  EXPECT_EQ(result.failure, "");
  ExpectPeakWithin(result, bytes_per_input_byte);
}

// Lists nested 20,000 deep: the worst case of Gumbo's time, which grows
// with the square of the depth (a minute for 40,000 levels). The parser
// flattens everything past 512 levels, so the deepest text is still there.
TEST(HostileTest, TwentyThousandNestedListsAreFlattened) {
  ExpectHostile(
      BuildNestedLists,
      Orvel::Utf8Charset, [](const Extraction& e) { return ExpectContains(e, u"deepest item"); });
}

TEST(HostileTest, HugeSpansAreCapped) {
  ExpectHostile(
      BuildHugeSpans,
      Orvel::Utf8Charset,
      [](const Extraction& e) {
        std::string failure = ExpectContains(e, u"wide cell");
        if (failure.empty()) failure = ExpectContains(e, u"next cell");
        if (failure.empty()) failure = ExpectContains(e, u"lower cell");
        return failure;
      });
}

TEST(HostileTest, FiftyMegabyteTextNode) {
  constexpr size_t kWords = kTextNodeWords;
  ExpectHostile(
      BuildTextNode,
      Orvel::Utf8Charset,
      [](const Extraction& e) -> std::string {
        // White space runs inside a text item are kept as written; the
        // paragraph ends in its separator.
        if (e.text.size() < 8 * kWords - 1) return "text too short: " + Describe(e.text);
        return e.text.compare(0, 16, u"abcdefg abcdefg ") == 0 ? "" : "unexpected text: " + Describe(e.text);
      });
}

TEST(HostileTest, MillionLinks) {
  ExpectHostile(
      BuildMillionLinks,
      Orvel::Utf8Charset,
      [](const Extraction& e) -> std::string {
        if (e.type != ZestraNS::LinkDocument) return "not a link document";
        std::string failure = ExpectContains(e, u"Item 0 ");
        return failure.empty() ? ExpectContains(e, u"Item 999999") : failure;
      });
}

// All 256 byte values, in order, many times over, in the charsets that read
// them differently: every value must be converted or replaced, never stop
// the parse.
TEST(HostileTest, EveryByteValue) {
  for (const int32_t charset : {-1, 1201, 1252, 65001, 932, 50220, 12000}) {
    SCOPED_TRACE(charset);
    ExpectHostile(
        BuildEveryByteValue,
        static_cast<CHARSET>(charset), [](const Extraction&) { return std::string(); });
  }
}

// NUL bytes inside tag names, attribute names and values, and text: a NUL
// in a tag becomes U+FFFD, one in text is dropped, as browsers do, and the
// parse goes on.
TEST(HostileTest, NulBytesInTagsAndText) {
  ExpectHostile(
      BuildNulBytes,
      Orvel::Utf8Charset,
      [](const Extraction& e) {
        std::string failure = ExpectContains(e, u"before");
        return failure.empty() ? ExpectContains(e, u"tail\n") : failure;
      });
}

TEST(HostileTest, TruncatedMultiByteSequences) {
  // UTF-8: a three-byte sequence cut inside the text and at the end.
  ExpectHostile(BuildTruncatedUtf8, Orvel::Utf8Charset,
                [](const Extraction& e) { return ExpectContains(e, u"one \uFFFD two \uFFFD"); });
  // Shift_JIS: a lead byte without its trail byte at the end.
  ExpectHostile([](std::string& in) { in = "<p>\x82\xa0 end \x82"; }, static_cast<CHARSET>(932),
                [](const Extraction& e) { return ExpectContains(e, u"\u3042 end \uFFFD"); });
  // UTF-16: an odd byte count, and a high surrogate without its low half.
  ExpectHostile(
      [](std::string& in) {
        const std::u16string text = u"<p>wide text \xD83D";
        in.assign(reinterpret_cast<const char*>(text.data()), text.size() * 2);
        in.push_back('x');
      },
      Orvel::Utf16LECharset, [](const Extraction& e) { return ExpectContains(e, u"wide text \uFFFD"); });
}

// A page that declares one charset and is written in another: valid UTF-8
// beyond ASCII wins over the declaration when no charset is given.
TEST(HostileTest, MetaCharsetThatLies) {
  ExpectHostile(
      BuildLyingCharset,
      Orvel::UnknownCharset, [](const Extraction& e) { return ExpectContains(e, u"caf\u00E9 na\u00EFve \u2014 \u65E5\u672C"); });
  // A declaration of UTF-16 in a page of 8-bit bytes is read as UTF-8, as
  // browsers do.
  ExpectHostile(
      [](std::string& in) { in = "<meta charset=utf-16><p>plain caf\xC3\xA9</p>"; }, Orvel::UnknownCharset,
      [](const Extraction& e) { return ExpectContains(e, u"plain caf\u00E9"); });
}

}  // namespace
}  // namespace zestra_hostile
