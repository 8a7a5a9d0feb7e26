#include "zestra/charset/charset_conversion.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "charset/charset_table.h"
#include "charset/charset_test_util.h"
#include "zestra/charset/charset_names.h"

namespace {

using Orvel::CHARSET;
using OrvelCharset::Conv;
using zestra_test::Bytes;
using zestra_test::Convert;
using zestra_test::Cs;

const std::string kFffd = "\xEF\xBF\xBD";

std::string FromUtf8(std::string_view in) { return Convert(Orvel::Utf8Charset, Orvel::Utf8Charset, in); }

TEST(Utf8Validation, ReplacesMaximalSubpartsOfInvalidSequences) {
  struct Case {
    std::string in;
    std::string out;
  };
  const Case cases[] = {
      {"plain ascii", "plain ascii"},
      {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {"a\x80" "b", "a" + kFffd + "b"},                       // lone continuation byte
      {"\xC0\xAF", kFffd + kFffd},                             // overlong lead bytes are invalid alone
      {"\xE0\x80\xAF", kFffd + kFffd + kFffd},                 // E0 needs A0..BF next
      {"\xED\xA0\x80", kFffd + kFffd + kFffd},                 // a surrogate
      {"\xF4\x90\x80\x80", kFffd + kFffd + kFffd + kFffd},     // above U+10FFFF
      {"\xE2\x82" "A", kFffd + "A"},                           // broken three-byte sequence: one U+FFFD
      {"\xF0\x9F\x98" "A", kFffd + "A"},
      {"\xFE\xFF", kFffd + kFffd},
      {"x\xF0\x9F\x98", "x" + kFffd},                         // truncated at the end of the input
      {"x\xC3", "x" + kFffd},
      {std::string("a\0b", 3), std::string("a\0b", 3)},        // NUL is a character
  };
  for (const Case& c : cases) EXPECT_EQ(FromUtf8(c.in), c.out) << "input " << c.in;
}

TEST(Utf8Validation, LeavesAnIncompleteSequenceForTheNextCall) {
  auto f = Conv::FastConversionFunction(Orvel::Utf8Charset, Orvel::Utf8Charset);
  ASSERT_NE(f, nullptr);
  const std::string in = "ab\xE2\x82";
  uint8_t out[16];
  uint32_t used = 99;
  uint32_t produced = 99;
  f->Convert(reinterpret_cast<const uint8_t*>(in.data()), 4, used, out, sizeof out, produced, false, false);
  EXPECT_EQ(used, 2u);
  EXPECT_EQ(produced, 2u);
  f->Convert(reinterpret_cast<const uint8_t*>(in.data()) + 2, 2, used, out, sizeof out, produced, false, false);
  EXPECT_EQ(used, 0u);
  EXPECT_EQ(produced, 0u);
  // An output too small for the next character takes nothing either.
  const std::string euro = "\xE2\x82\xAC";
  f->Convert(reinterpret_cast<const uint8_t*>(euro.data()), 3, used, out, 2, produced, true, false);
  EXPECT_EQ(used, 0u);
  EXPECT_EQ(produced, 0u);
}

TEST(Utf8Validation, SplitsAnywhereWithTheSameResult) {
  const std::string in = "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xE2\x82 z";
  const std::string whole = FromUtf8(in);
  for (uint32_t step = 1; step <= 5; ++step) {
    for (uint32_t capacity = 4; capacity <= 6; ++capacity) {
      EXPECT_EQ(Convert(Orvel::Utf8Charset, Orvel::Utf8Charset, in, step, capacity), whole)
          << step << " " << capacity;
    }
  }
}

TEST(Windows1252, MapsEveryByteAndBack) {
  const char32_t high[32] = {0x20AC, 0x81,   0x201A, 0x192,  0x201E, 0x2026, 0x2020, 0x2021,
                             0x2C6,  0x2030, 0x160,  0x2039, 0x152,  0x8D,   0x17D,  0x8F,
                             0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                             0x2DC,  0x2122, 0x161,  0x203A, 0x153,  0x9D,   0x17E,  0x178};
  std::string all;
  for (int b = 0; b < 256; ++b) all.push_back(static_cast<char>(b));
  const std::string wide = Convert(Orvel::Windows1252Charset, Orvel::Utf16LECharset, all);
  ASSERT_EQ(wide.size(), 512u);
  for (int b = 0; b < 256; ++b) {
    const char32_t unit = static_cast<uint8_t>(wide[2 * b]) | static_cast<uint8_t>(wide[2 * b + 1]) << 8;
    const char32_t expected = b >= 0x80 && b <= 0x9F ? high[b - 0x80] : static_cast<char32_t>(b);
    EXPECT_EQ(unit, expected) << "byte " << b;
  }
  const std::string utf8 = Convert(Orvel::Windows1252Charset, Orvel::Utf8Charset, all);
  EXPECT_EQ(Convert(Orvel::Utf8Charset, Orvel::Windows1252Charset, utf8), all);
  EXPECT_EQ(Convert(Orvel::Windows1252Charset, Orvel::Utf8Charset, "\x80\x93x\x94"),
            "\xE2\x82\xAC\xE2\x80\x9Cx\xE2\x80\x9D");
  // Characters the charset lacks are written as '?'.
  EXPECT_EQ(Convert(Orvel::Utf8Charset, Orvel::Windows1252Charset, "\xD0\x96\xC3\xA9"), "?\xE9");
}

TEST(Utf16, DecodesBothByteOrdersAndReplacesUnpairedSurrogates) {
  // "A", U+1F600, "B" in both orders.
  EXPECT_EQ(Convert(Orvel::Utf16LECharset, Orvel::Utf8Charset, Bytes({0x41, 0, 0x3D, 0xD8, 0x00, 0xDE, 0x42, 0})),
            "A\xF0\x9F\x98\x80" "B");
  EXPECT_EQ(Convert(OrvelCharset::Utf16BECharset, Orvel::Utf8Charset,
                    Bytes({0, 0x41, 0xD8, 0x3D, 0xDE, 0x00, 0, 0x42})),
            "A\xF0\x9F\x98\x80" "B");
  // A high surrogate followed by a letter, a low surrogate alone, a high
  // surrogate at the end, an odd byte at the end.
  EXPECT_EQ(Convert(Orvel::Utf16LECharset, Orvel::Utf8Charset, Bytes({0x00, 0xD8, 0x41, 0x00})), kFffd + "A");
  EXPECT_EQ(Convert(Orvel::Utf16LECharset, Orvel::Utf8Charset, Bytes({0x00, 0xDC, 0x41, 0x00})), kFffd + "A");
  EXPECT_EQ(Convert(Orvel::Utf16LECharset, Orvel::Utf8Charset, Bytes({0x41, 0x00, 0x00, 0xD8})), "A" + kFffd);
  EXPECT_EQ(Convert(Orvel::Utf16LECharset, Orvel::Utf8Charset, Bytes({0x41, 0x00, 0x42})), "A" + kFffd);
  // 1200, the Windows number of the same text, is a synonym.
  EXPECT_EQ(Convert(Cs(1200), Orvel::Utf8Charset, Bytes({0x41, 0x00})), "A");
  // A surrogate pair split between two offers of input.
  EXPECT_EQ(Convert(Orvel::Utf16LECharset, Orvel::Utf8Charset, Bytes({0x3D, 0xD8, 0x00, 0xDE}), 1, 8),
            "\xF0\x9F\x98\x80");
  EXPECT_EQ(Convert(Orvel::Utf8Charset, Orvel::Utf16LECharset, "A\xF0\x9F\x98\x80"),
            Bytes({0x41, 0, 0x3D, 0xD8, 0x00, 0xDE}));
}

TEST(Utf16, WideStringHelpersRoundTrip) {
  const std::u16string wide = u"caf\u00e9 \U0001F600 \u20ac";
  std::string utf8;
  OrvelCharset::AppendUtf8(wide.data(), wide.size(), utf8);
  EXPECT_EQ(utf8, "caf\xC3\xA9 \xF0\x9F\x98\x80 \xE2\x82\xAC");
  std::u16string back = u">";
  OrvelCharset::AppendUtf16(utf8.data(), utf8.size(), back);
  EXPECT_EQ(back, u">" + wide);
  const char16_t unpaired[] = {u'a', 0xD800, u'b', 0xDC00};
  utf8.clear();
  OrvelCharset::AppendUtf8(unpaired, 4, utf8);
  EXPECT_EQ(utf8, "a" + kFffd + "b" + kFffd);
  back.clear();
  OrvelCharset::AppendUtf16("a\xE2\x82", 3, back);
  EXPECT_EQ(back, u"a\uFFFD");
}

TEST(ConversionFunction, WritesTheSignatureOnce) {
  auto f = Conv::FastConversionFunction(Orvel::Windows1252Charset, Orvel::Utf8Charset);
  ASSERT_NE(f, nullptr);
  uint8_t out[8];
  uint32_t used = 0;
  uint32_t produced = 0;
  f->Convert(reinterpret_cast<const uint8_t*>("ab"), 2, used, out, sizeof out, produced, false, true);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(out), produced), "\xEF\xBB\xBF" "ab");
  f->Convert(reinterpret_cast<const uint8_t*>("c"), 1, used, out, sizeof out, produced, false, true);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(out), produced), "c");
}

TEST(ConversionFunction, FastPathsOnlyForOwnCodecs) {
  EXPECT_NE(Conv::FastConversionFunction(Orvel::Utf8Charset, Orvel::Utf16LECharset), nullptr);
  EXPECT_NE(Conv::FastConversionFunction(OrvelCharset::Utf16BECharset, Orvel::Windows1252Charset), nullptr);
  EXPECT_EQ(Conv::FastConversionFunction(Cs(1251), Orvel::Utf8Charset), nullptr);
  EXPECT_EQ(Conv::FastConversionFunction(Cs(12345), Orvel::Utf8Charset), nullptr);
  EXPECT_EQ(OrvelCharset::MakeConversionFunction(Cs(12345), Orvel::Utf8Charset), nullptr);
  EXPECT_EQ(Conv::MbToWcConversionFunction(Orvel::UnknownCharset), nullptr);
  EXPECT_NE(Conv::MbToWcConversionFunction(Cs(1251)), nullptr);
  EXPECT_NE(Conv::WcToMbConversionFunction(Cs(932)), nullptr);
}

// A page's worth of text in the script of each charset family.
struct Family {
  int32_t code_page;
  const char* text;  // UTF-8
  std::string sample_bytes;  // how a part of the text looks in the charset
};

const Family kFamilies[] = {
    {28592, "Zażółć gęślą jaźń. Łódź", Bytes({0xA3, 0xF3, 0x64, 0xBC})},
    {28595, "Съешь же ещё этих мягких булок", Bytes({0xC1, 0xEA, 0xD5, 0xE8, 0xEC})},
    {28597, "Ξεσκεπάζω την ψυχοφθόρα βδελυγμία", Bytes({0xCE, 0xE5})},
    {28605, "Œuvre à €5, ça coûte", Bytes({0xBC})},
    {1250, "Příliš žluťoučký kůň", Bytes({0x50, 0xF8, 0xED})},
    {1251, "Съешь же ещё этих мягких булок", Bytes({0xD1, 0xFA, 0xE5, 0xF8, 0xFC})},
    {1253, "Ξεσκεπάζω την ψυχοφθόρα", Bytes({0xCE, 0xE5})},
    {1254, "Pijamalı hasta yağız şoföre çabucak güvendi", Bytes({0xFD})},
    {1255, "דג סקרן שט בים", Bytes({0xE3, 0xE2})},
    {1256, "صِف خَلقَ خَودِ", Bytes({0xD5})},
    {1257, "Įlinkdama fechtuotojo špaga", Bytes({0xC1})},
    {1258, "Tiếng Việt", Bytes({0x54, 0x69})},
    {874, "เป็นมนุษย์สุดประเสริฐเลิศคุณค่า", Bytes({0xE0, 0xBB})},
    {866, "Съешь же ещё", Bytes({0x91, 0xEA})},
    {20866, "Съешь же ещё этих мягких булок", Bytes({0xF3, 0xDF, 0xC5, 0xDB, 0xD8})},
    {21866, "Чуєш їх, доцю, га? Кумедна ж ти", Bytes({0xFE, 0xD5, 0xA4})},
    {932, "いろはにほへと ちりぬるを 日本語", Bytes({0x82, 0xA2, 0x82, 0xEB})},
    {51932, "いろはにほへと ちりぬるを 日本語", Bytes({0xA4, 0xA4, 0xA4, 0xED})},
    {50220, "いろはにほへと 日本語 abc", Bytes({0x1B, 0x24, 0x42})},
    {936, "我能吞下玻璃而不伤身体", Bytes({0xCE, 0xD2})},
    {54936, "我能吞下玻璃而不伤身体 \xF0\x9F\x98\x80", Bytes({0xCE, 0xD2})},
    {950, "我能吞下玻璃而不傷身體", Bytes({0xA7, 0xDA})},
    {949, "나는 유리를 먹을 수 있어요", Bytes({0xB3, 0xAA})},
    {10007, "Съешь же ещё", Bytes({0x91, 0xFA})},
};

TEST(CharsetFamilies, EveryFamilyRoundTripsASamplePage) {
  for (const Family& family : kFamilies) {
    std::string page = "<html><head><title>t</title></head><body><p>";
    for (int i = 0; i < 300; ++i) page += std::string(family.text) + " ";  // spans several chunks
    page += "</p></body></html>";
    const CHARSET charset = Cs(family.code_page);
    const std::string encoded = Convert(Orvel::Utf8Charset, charset, page);
    EXPECT_NE(encoded.find(family.sample_bytes), std::string::npos) << family.code_page;
    EXPECT_EQ(Convert(charset, Orvel::Utf8Charset, encoded), page) << family.code_page;
    // Small buffers on both sides give the same bytes.
    EXPECT_EQ(Convert(charset, Orvel::Utf8Charset, encoded, 7, 64), page) << family.code_page;
    EXPECT_EQ(Convert(charset, Orvel::Utf8Charset, encoded, 4096, 5), page) << family.code_page;
  }
}

TEST(CharsetFamilies, InvalidBytesNeverStopConversion) {
  // 0x98 is unassigned in windows-1251; 0x82 0x20 is not Shift_JIS; a
  // truncated EUC-KR pair at the end.
  EXPECT_EQ(Convert(Cs(1251), Orvel::Utf8Charset, "a\x98" "b"), "a" + kFffd + "b");
  EXPECT_EQ(Convert(Cs(932), Orvel::Utf8Charset, "a\x82 b"), "a" + kFffd + " b");
  EXPECT_EQ(Convert(Cs(949), Orvel::Utf8Charset, "a\xB3"), "a" + kFffd);
  // A character the target lacks becomes '?' (and a stateful target still
  // returns to ASCII at the end).
  EXPECT_EQ(Convert(Orvel::Utf8Charset, Cs(1251), "a\xE4\xB8\x80" "b"), "a?b");
  const std::string jis = Convert(Orvel::Utf8Charset, Cs(50220), "\xE6\x97\xA5");
  EXPECT_EQ(jis.substr(jis.size() - 3), "\x1B(B");
  EXPECT_EQ(Convert(Cs(50220), Orvel::Utf8Charset, jis), "\xE6\x97\xA5");
}

TEST(CharsetTable, LabelsAndNamesFindTheirCharsets) {
  using OrvelCharset::CharsetFromLabel;
  using OrvelCharset::CharsetFromName;
  EXPECT_EQ(CharsetFromLabel("latin1"), Orvel::Windows1252Charset);
  EXPECT_EQ(CharsetFromLabel(" ISO-8859-1\t"), Orvel::Windows1252Charset);
  EXPECT_EQ(CharsetFromLabel("us-ascii"), Orvel::Windows1252Charset);
  EXPECT_EQ(CharsetFromLabel("x-sjis"), Cs(932));
  EXPECT_EQ(CharsetFromLabel("gb2312"), Cs(936));
  EXPECT_EQ(CharsetFromLabel("iso-8859-9"), Cs(1254));
  EXPECT_EQ(CharsetFromLabel("utf-16"), Orvel::Utf16LECharset);
  EXPECT_EQ(CharsetFromLabel("UTF8"), Orvel::Utf8Charset);
  EXPECT_EQ(CharsetFromLabel("iso-2022-kr"), Orvel::UnknownCharset);
  EXPECT_EQ(CharsetFromLabel("windows-12"), Orvel::UnknownCharset);
  EXPECT_EQ(CharsetFromLabel(""), Orvel::UnknownCharset);
  EXPECT_EQ(CharsetFromName("WINDOWS-1251"), Cs(1251));
  EXPECT_EQ(CharsetFromName("MAC-CYRILLIC"), Cs(10007));
  EXPECT_EQ(CharsetFromName("ISO-2022-KR"), Cs(50225));
  EXPECT_EQ(CharsetFromName("SHIFT_JIS"), Cs(932));
  EXPECT_EQ(CharsetFromName("nonsense"), Orvel::UnknownCharset);
  EXPECT_EQ(OrvelCharset::CanonicalCharset(Cs(1200)), Orvel::Utf16LECharset);
  EXPECT_EQ(OrvelCharset::CanonicalCharset(Cs(28591)), Orvel::Windows1252Charset);
  EXPECT_EQ(OrvelCharset::CanonicalCharset(Cs(7)), Orvel::UnknownCharset);
  EXPECT_STREQ(OrvelCharset::CharsetName(OrvelCharset::Utf16BECharset), "UTF-16BE");
  EXPECT_EQ(OrvelCharset::CharsetName(Orvel::UnknownCharset), nullptr);
}

TEST(CharsetTable, EveryRowIsUsableAndEveryLabelNamesOneCharset) {
  std::set<std::string> labels;
  std::set<int32_t> code_pages;
  for (const OrvelCharset::CharsetEntry& entry : OrvelCharset::CharsetTable()) {
    EXPECT_TRUE(code_pages.insert(entry.code_page).second) << entry.name;
    for (int32_t synonym : entry.synonyms) {
      if (synonym != 0) {
        EXPECT_TRUE(code_pages.insert(synonym).second) << synonym;
      }
    }
    EXPECT_NE(Conv::MbToWcConversionFunction(entry.code_page), nullptr) << entry.name;
    EXPECT_NE(Conv::WcToMbConversionFunction(entry.code_page), nullptr) << entry.name;
    std::string_view rest = entry.labels;
    while (!rest.empty()) {
      const size_t space = rest.find(' ');
      const std::string label(rest.substr(0, space));
      EXPECT_TRUE(labels.insert(label).second) << label;
      EXPECT_EQ(OrvelCharset::CharsetFromLabel(label), entry.code_page) << label;
      rest = space == std::string_view::npos ? std::string_view() : rest.substr(space + 1);
    }
  }
}

}  // namespace
