#include "zestra/zestra.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "zestra/api/beautify.h"
#include "zestra/charset/charset_conversion.h"
#include "development_set.h"
#include "zestra/stream/memory_buffer.h"

namespace zestra {
namespace {

// A navigation table of links beside a long article: the ranking keeps only
// the article.
const char kArticle[] =
    "<html><head><title> The  Article </title></head><body>"
    "<table><tr><td><a href=/a>Home</a><br><a href=/b>News</a><br><a href=/c>About us</a></td>"
    "<td><p>The first paragraph of the article tells a long story about rivers, hills and the small "
    "towns that lie between them, with enough words to outweigh the links.</p>"
    "<p>A second paragraph adds more plain words, none of them inside a link, so that this cell wins.</p>"
    "</td></tr></table></body></html>";
const char kArticleText[] =
    "The first paragraph of the article tells a long story about rivers, hills and the small towns that lie "
    "between them, with enough words to outweigh the links.\n\n"
    "A second paragraph adds more plain words, none of them inside a link, so that this cell wins.\n\n\n";

// What Beautify over the same bytes gives, in UTF-8.
struct Reference {
  std::string text;
  std::string title;
  ZestraNS::DocumentType type;
};

Reference Beautified(const std::string& bytes) {
  OrvelFile::MemoryBuffer in(bytes.data(), static_cast<unsigned int>(bytes.size()),
                             OrvelFile::MemoryBuffer::kReadInPlace);
  std::u16string text;
  std::u16string title;
  Reference reference;
  ZestraNS::Beautify(in, Orvel::UnknownCharset, text, &title, &reference.type);
  OrvelCharset::AppendUtf8(text.data(), text.size(), reference.text);
  OrvelCharset::AppendUtf8(title.data(), title.size(), reference.title);
  return reference;
}

TEST(ExtractTest, ArticleTextTitleTypeAndCharset) {
  Options tables;
  tables.layout = Layout::kTables;
  const Result result = Extract(kArticle, tables);
  EXPECT_EQ(result.text, kArticleText);
  EXPECT_EQ(result.title, "The Article");
  EXPECT_EQ(result.type, DocumentType::kContent);
  EXPECT_EQ(result.charset, 1252);  // pure ASCII without a declaration
  EXPECT_EQ(result.charset_name, "windows-1252");
  EXPECT_EQ(result.layout, Layout::kTables);

  // The blocks layout, the default, reads the article cell as a block of
  // two paragraphs: a table of its own, whose last text is a paragraph's.
  const Result blocks = Extract(kArticle);
  EXPECT_EQ(blocks.layout, Layout::kBlocks);
  EXPECT_EQ(blocks.text + "\n", kArticleText);
  EXPECT_EQ(blocks.title, "The Article");

  // The whole text keeps the navigation; the type is still the document's.
  Options whole = tables;
  whole.whole_text = true;
  const Result everything = Extract(kArticle, whole);
  EXPECT_EQ(everything.text.rfind("Home\nNews\nAbout us\n", 0), 0u) << everything.text;
  EXPECT_NE(everything.text.find(kArticleText), std::string::npos);
  EXPECT_EQ(everything.type, DocumentType::kContent);
  EXPECT_EQ(everything.title, "The Article");
}

TEST(ExtractTest, EmptyAndTextlessInputs) {
  const Result empty = Extract("");
  EXPECT_EQ(empty.text, "");
  EXPECT_EQ(empty.title, "");
  EXPECT_EQ(empty.type, DocumentType::kLinks);
  EXPECT_EQ(empty.charset_name, "windows-1252");

  const Result title_only = Extract("<title>Only a title</title><body></body>");
  EXPECT_EQ(title_only.text, "");
  EXPECT_EQ(title_only.title, "Only a title");
  EXPECT_EQ(title_only.type, DocumentType::kLinks);

  // NUL and control bytes are a page like any other: the parser drops NULs
  // in body text, as the HTML standard's tree construction does, and the
  // text clean-up drops the other controls.
  const Result binary = Extract(std::string_view("\0\x01\xff\xfe\0\0<p>\0x</p>", 14));
  EXPECT_EQ(binary.text, "\u00ff\u00fe\n\nx\n\n");
  EXPECT_EQ(binary.charset_name, "windows-1252");
}

TEST(ExtractTest, CharsetIsTheOneTheParserUsed) {
  // Windows-1252 bytes without a declaration: sniffed, and converted.
  const std::string latin = "<p>Caf\xe9 cr\xe8me br\xfbl\xe9" "e, na\xefve fa\xe7" "ade, d\xe9j\xe0 vu, r\xe9sum\xe9 "
                            "\xe9l\xe8ve \xe0 l'\xe9" "cole, \xe9t\xe9 pr\xe9" "f\xe9r\xe9.</p>";
  const Result sniffed = Extract(latin);
  EXPECT_EQ(sniffed.charset, 1252);
  EXPECT_EQ(sniffed.text.rfind("Caf\u00e9 cr\u00e8me", 0), 0u) << sniffed.text;

  // The caller's charset is used as given: é is no UTF-8.
  Options utf8;
  utf8.charset = 65001;
  const Result forced = Extract(latin, utf8);
  EXPECT_EQ(forced.charset, 65001);
  EXPECT_EQ(forced.charset_name, "utf-8");
  EXPECT_EQ(forced.text.rfind("Caf\ufffd cr\ufffdme", 0), 0u) << forced.text;

  // A <meta> declaration is followed when the bytes are not UTF-8.
  const Result declared = Extract("<meta charset=windows-1251><p>\xcf\xf0\xe8\xe2\xe5\xf2</p>");
  EXPECT_EQ(declared.charset_name, "windows-1251");
  EXPECT_EQ(declared.text, "\u041f\u0440\u0438\u0432\u0435\u0442\n\n");

  // A byte-order mark overrides the caller's charset.
  const std::string utf16{"\xff\xfe<\0p\0>\0h\0i\0", 12};
  Options latin_option;
  latin_option.charset = 1252;
  const Result marked = Extract(utf16, latin_option);
  EXPECT_EQ(marked.charset, 1201);
  EXPECT_EQ(marked.charset_name, "utf-16le");
  EXPECT_EQ(marked.text, "hi\n\n");

  // A code page the library cannot convert is sniffed.
  Options unknown;
  unknown.charset = 4242;
  EXPECT_EQ(Extract(latin, unknown).charset, 1252);
}

TEST(ExtractTest, CharsetLabelsAndNames) {
  EXPECT_EQ(CharsetFromLabel("utf-8"), 65001);
  EXPECT_EQ(CharsetFromLabel(" Latin1 "), 1252);
  EXPECT_EQ(CharsetFromLabel("Shift_JIS"), 932);
  EXPECT_EQ(CharsetFromLabel("1251"), 1251);
  EXPECT_EQ(CharsetFromLabel("1200"), 1201);  // a synonym gives its charset
  EXPECT_EQ(CharsetFromLabel("866"), 866);    // a label that is also a number
  for (const char* bad : {"", "nonsense", "12x", "-1", "99999", "99999999999999999999", "utf-7"}) {
    EXPECT_EQ(CharsetFromLabel(bad), kSniffCharset) << bad;
  }

  EXPECT_EQ(CharsetName(65001), "utf-8");
  EXPECT_EQ(CharsetName(932), "shift_jis");
  EXPECT_EQ(CharsetName(28591), "windows-1252");
  EXPECT_EQ(CharsetName(kSniffCharset), "");
  EXPECT_EQ(CharsetName(4242), "");
}

TEST(ExtractTest, LayoutNames) {
  EXPECT_STREQ(LayoutName(Layout::kTables), "tables");
  EXPECT_STREQ(LayoutName(Layout::kBlocks), "blocks");
  Layout layout = Layout::kTables;
  EXPECT_TRUE(LayoutFromName("blocks", &layout));
  EXPECT_EQ(layout, Layout::kBlocks);
  EXPECT_TRUE(LayoutFromName("tables", &layout));
  EXPECT_EQ(layout, Layout::kTables);
  for (const char* bad : {"", "Blocks", "table", "blocks ", "grid"}) {
    EXPECT_FALSE(LayoutFromName(bad, &layout)) << bad;
    EXPECT_EQ(layout, Layout::kTables) << bad;
  }
  EXPECT_EQ(Options().layout, Layout::kBlocks);
}

TEST(ExtractTest, VersionIsTheProjectVersion) {
  EXPECT_STREQ(Version(), ZESTRA_PROJECT_VERSION);
}

// Extract in the tables layout gives Beautify's text, title and type on
// every page of the development set.
TEST(ExtractTest, SameAsBeautifyOnDevelopmentSet) {
  const std::vector<zestra_testing::DevelopmentPage> dev_pages = zestra_testing::DevelopmentPages();
  if (dev_pages.empty()) GTEST_SKIP() << "no development set beside the source tree";
  int pages = 0;
  for (const zestra_testing::DevelopmentPage& page : dev_pages) {
    const std::filesystem::path& source = page.source;
    const Reference reference = Beautified(page.bytes);
    Options tables;
    tables.layout = Layout::kTables;
    const Result result = Extract(page.bytes, tables);
    SCOPED_TRACE(source.string());
    EXPECT_EQ(result.text, reference.text);
    EXPECT_EQ(result.title, reference.title);
    EXPECT_EQ(static_cast<int>(result.type), static_cast<int>(reference.type));
    EXPECT_FALSE(result.charset_name.empty());
    ++pages;
  }
  EXPECT_GT(pages, 100);
}

}  // namespace
}  // namespace zestra
