// Small pages parsed into layout trees (GetDocumentTree) and extracted, to
// check the text that ranking, selection and writing give, byte for byte.
#include <gtest/gtest.h>

#include <string>

#include "zestra/api/document_tree.h"
#include "zestra/stream/memory_buffer.h"
#include "zestra/traversal/zestra_text_extractor.h"

namespace ZestraNS {
namespace {

using OrvelFile::MemoryBuffer;

std::u16string Extract(const std::string& html, bool whole_text) {
  MemoryBuffer in(html.data(), static_cast<unsigned int>(html.size()), MemoryBuffer::kReadInPlace);
  Orvel::SmartPtr<KTable> root = GetDocumentTree(in, Orvel::Utf8Charset);
  ZestraTextExtractor extractor(root, whole_text, nullptr);
  MemoryBuffer out(4096);
  extractor.GetText(&out);
  out.vSeekG(0, Orvel::kSeekBegin, Orvel::kSeekAbsolute);
  std::u16string text;
  out.Copy(text, MemoryBuffer::kAll);
  return text;
}

TEST(ExtractionEndToEndTest, TableLayoutKeepsTheContentColumn) {
  // Navigation links, a link list and the article, side by side. The table
  // and the root both win; only the article's cell is good.
  const std::string page =
      "<html><head><title>T</title></head><body><table><tr>"
      "<td><a href=\"/\">Home</a><br><a href=\"/news\">News</a><br><a href=\"/about\">About us</a></td>"
      "<td><ul><li><a href=\"/1\">First link</a></li><li><a href=\"/2\">Second link</a></li></ul></td>"
      "<td><p>The first paragraph holds the words a reader came for.</p>"
      "<p>The second paragraph adds a few more of them.</p></td>"
      "</tr></table></body></html>";
  EXPECT_EQ(Extract(page, false),
            u"The first paragraph holds the words a reader came for.\n\n"
            u"The second paragraph adds a few more of them.\n\n\n");
  EXPECT_EQ(Extract(page, true),
            u"Home\nNews\nAbout us\nFirst link\n\nSecond link\n\n\n"
            u"The first paragraph holds the words a reader came for.\n\n"
            u"The second paragraph adds a few more of them.\n\n\n");
}

TEST(ExtractionEndToEndTest, PageOfLinksOnly) {
  const std::string page =
      "<html><body><a href=\"/a\">Alpha</a> <a href=\"/b\">Beta</a> <a href=\"/c\">Gamma</a></body></html>";
  // Written whole, as a document of links is.
  EXPECT_EQ(Extract(page, true), u"Alpha Beta Gamma\n");
  // Ranked, no table has words outside links: nothing reaches a threshold.
  EXPECT_EQ(Extract(page, false), u"");
}

TEST(ExtractionEndToEndTest, ParagraphsWithoutTables) {
  const std::string page =
      "<html><body><h1>Heading of the page</h1>"
      "<p>One paragraph of text, with a <a href=\"/x\">link</a> inside.</p>"
      "<p>Another paragraph.</p></body></html>";
  const std::u16string expected =
      u"Heading of the page\n\nOne paragraph of text, with a link inside.\n\nAnother paragraph.\n\n";
  EXPECT_EQ(Extract(page, false), expected);
  EXPECT_EQ(Extract(page, true), expected);
}

}  // namespace
}  // namespace ZestraNS
