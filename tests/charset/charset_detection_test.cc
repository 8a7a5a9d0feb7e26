#include "zestra/charset/charset_detection.h"

#include <gtest/gtest.h>

#include <string>

#include "charset/charset_test_util.h"
#include "zestra/charset/charset_names.h"

namespace {

using Orvel::CHARSET;
using zestra_test::Convert;
using zestra_test::Cs;

const uint8_t* U8(const std::string& s) { return reinterpret_cast<const uint8_t*>(s.data()); }

CHARSET Prescan(const std::string& s) { return OrvelDetection::PrescanMetaCharset(U8(s), s.size()); }

CHARSET Detect(const std::string& s) {
  CHARSET charset = Cs(12345);
  EXPECT_EQ(OrvelDetection::DetectCharset(U8(s), s.size(), charset), 0);
  return charset;
}

TEST(ByteOrderMark, FindsTheThreeMarks) {
  const std::string utf8 = "\xEF\xBB\xBFx";
  const std::string le = "\xFF\xFE<\0";
  const std::string be = "\xFE\xFF\0<";
  const std::string none = "\xEF\xBB";
  EXPECT_EQ(OrvelDetection::DetectByteOrderMark(U8(utf8), utf8.size()).charset, Orvel::Utf8Charset);
  EXPECT_EQ(OrvelDetection::DetectByteOrderMark(U8(utf8), utf8.size()).length, 3u);
  EXPECT_EQ(OrvelDetection::DetectByteOrderMark(U8(le), le.size()).charset, Orvel::Utf16LECharset);
  EXPECT_EQ(OrvelDetection::DetectByteOrderMark(U8(be), be.size()).charset, OrvelCharset::Utf16BECharset);
  EXPECT_EQ(OrvelDetection::DetectByteOrderMark(U8(none), none.size()).length, 0u);
}

TEST(MetaPrescan, FindsDeclarationsAsBrowsersDo) {
  EXPECT_EQ(Prescan("<html><head><meta charset=\"koi8-r\">"), Cs(20866));
  EXPECT_EQ(Prescan("<META CHARSET=Windows-1251>"), Cs(1251));
  EXPECT_EQ(Prescan("<meta/charset='iso-8859-2'/>"), Cs(28592));
  EXPECT_EQ(Prescan("<meta http-equiv=\"Content-Type\" content=\"text/html; charset=windows-1251\">"), Cs(1251));
  EXPECT_EQ(Prescan("<meta content='text/html;charset = \"euc-jp\"' http-equiv=content-type>"), Cs(51932));
  // content without http-equiv="content-type" is not a declaration.
  EXPECT_EQ(Prescan("<meta content=\"text/html; charset=koi8-r\"><p>"), Orvel::UnknownCharset);
  EXPECT_EQ(Prescan("<meta http-equiv=refresh content=\"charset=koi8-r\">"), Orvel::UnknownCharset);
  // The first of repeated attributes counts.
  EXPECT_EQ(Prescan("<meta charset=koi8-r charset=utf-8>"), Cs(20866));
  // An unknown label is passed over for a later declaration.
  EXPECT_EQ(Prescan("<meta charset=klingon><meta charset=gbk>"), Cs(936));
  // A declaration of 16-bit text, readable as ASCII, means UTF-8;
  // x-user-defined means windows-1252.
  EXPECT_EQ(Prescan("<meta charset=utf-16le>"), Orvel::Utf8Charset);
  EXPECT_EQ(Prescan("<meta charset=x-user-defined>"), Orvel::Windows1252Charset);
  EXPECT_EQ(Prescan("no markup at all"), Orvel::UnknownCharset);
  EXPECT_EQ(Prescan(""), Orvel::UnknownCharset);
}

TEST(MetaPrescan, StepsOverCommentsAndOtherMarkup) {
  EXPECT_EQ(Prescan("<!-- <meta charset=koi8-r> --><meta charset=big5>"), Cs(950));
  EXPECT_EQ(Prescan("<!-- <meta charset=koi8-r>"), Orvel::UnknownCharset);
  // "<!-->" is a whole comment.
  EXPECT_EQ(Prescan("<!--><meta charset=big5>"), Cs(950));
  // A declaration inside another tag's attribute value is not one.
  EXPECT_EQ(Prescan("<div title=\"<meta charset=koi8-r>\"></div>"), Orvel::UnknownCharset);
  EXPECT_EQ(Prescan("<!DOCTYPE html><?xml x?></x><meta charset=sjis>"), Cs(932));
  EXPECT_EQ(Prescan("<metal charset=koi8-r>"), Orvel::UnknownCharset);
}

TEST(MetaPrescan, LooksOnlyAtTheFirst1024Bytes) {
  const std::string meta = "<meta charset=koi8-r>";  // 21 bytes
  EXPECT_EQ(Prescan(std::string(1003, ' ') + meta), Cs(20866));  // ends with the window
  EXPECT_EQ(Prescan(std::string(1004, ' ') + meta), Orvel::UnknownCharset);  // cut by it
  EXPECT_EQ(Prescan(std::string(1024, ' ') + meta), Orvel::UnknownCharset);
}

TEST(DetectCharset, AByteOrderMarkWinsOverADeclaration) {
  EXPECT_EQ(Detect("\xEF\xBB\xBF<meta charset=windows-1251>"), Orvel::Utf8Charset);
  EXPECT_EQ(Detect("<meta charset=windows-1251>"), Cs(1251));
}

TEST(DetectCharset, ValidUtf8WinsOverADeclaration) {
  // A page saved again as UTF-8 that still declares its old charset.
  EXPECT_EQ(Detect("<meta charset=gb2312><p>\xE4\xBA\xBA</p>"), Orvel::Utf8Charset);
  EXPECT_EQ(Detect("<meta charset=gb2312><p>\xC8\xCB</p>"), Cs(936));
  // A character cut off by the end of the document is invalid; one cut off
  // by the end of the sample is not.
  EXPECT_FALSE(OrvelDetection::IsNonAsciiUtf8(U8("abc\xC3"), 4));
  std::string long_text = std::string(OrvelDetection::kGuessBytes - 1, 'a') + "\xC3\xA9";
  EXPECT_TRUE(OrvelDetection::IsNonAsciiUtf8(U8(long_text), long_text.size()));
  EXPECT_FALSE(OrvelDetection::IsNonAsciiUtf8(U8("plain"), 5));
}

TEST(DetectCharset, TellsUnmarkedSixteenBitText) {
  const std::string page = "<html><head><title>Page</title></head><body>Text</body></html>";
  EXPECT_EQ(Detect(Convert(Orvel::Utf8Charset, Orvel::Utf16LECharset, page)), Orvel::Utf16LECharset);
  EXPECT_EQ(Detect(Convert(Orvel::Utf8Charset, OrvelCharset::Utf16BECharset, page)),
            OrvelCharset::Utf16BECharset);
  EXPECT_EQ(OrvelDetection::DetectUnmarkedUtf16(U8(std::string("<\0", 2)), 2), Orvel::UnknownCharset);
}

TEST(DetectCharset, GuessesUndeclaredCyrillicAndJapanese) {
  std::string russian = "<html><body><p>";
  for (int i = 0; i < 10; ++i) {
    russian +=
        "Все счастливые семьи похожи друг на друга, каждая несчастливая семья несчастлива "
        "по-своему. Всё смешалось в доме Облонских. ";
  }
  russian += "</p></body></html>";
  EXPECT_EQ(Detect(Convert(Orvel::Utf8Charset, Cs(1251), russian)), Cs(1251));
  EXPECT_EQ(Detect(Convert(Orvel::Utf8Charset, Cs(20866), russian)), Cs(20866));
  EXPECT_EQ(Detect(russian), Orvel::Utf8Charset);

  std::string japanese = "<html><body><p>";
  for (int i = 0; i < 10; ++i) {
    japanese += "吾輩は猫である。名前はまだ無い。どこで生れたかとんと見当がつかぬ。";
  }
  japanese += "</p></body></html>";
  EXPECT_EQ(Detect(Convert(Orvel::Utf8Charset, Cs(932), japanese)), Cs(932));
  EXPECT_EQ(Detect(Convert(Orvel::Utf8Charset, Cs(51932), japanese)), Cs(51932));
}

TEST(DetectCharset, LeavesUnknownWhenNothingTellsAndSniffDefaults) {
  EXPECT_EQ(Detect(""), Orvel::UnknownCharset);
  EXPECT_EQ(OrvelDetection::SniffCharset(nullptr, 0), Orvel::Windows1252Charset);
  const std::string ascii = "<p>Plain text</p>";
  EXPECT_EQ(OrvelDetection::SniffCharset(U8(ascii), ascii.size()), Orvel::Windows1252Charset);
  // A few 8-bit accented letters are too little to guess from; as UTF-8
  // they are plain.
  EXPECT_EQ(Detect("<p>caf\xE9 cr\xE8me</p>"), Orvel::UnknownCharset);
  EXPECT_EQ(Detect("<p>caf\xC3\xA9 \xEF\xBF\xBD</p>"), Orvel::Utf8Charset);
}

}  // namespace
