#include "zestra/api/beautify.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "api/partition_stream.h"
#include "builder/keyword_table.h"
#include "zestra/html/html_doc_parser.h"
#include "zestra/html/html_doc_tree.h"
#include "zestra/stream/memory_buffer.h"

namespace ZestraNS {
namespace {

using OrvelFile::MemoryBuffer;
using OrvelParser::HtmlDocTree;

// A content page: a navigation table of links beside a long article. The
// ranking keeps the article; its cell's text ends in a paragraph break and
// the line feed that ends every table cell.
const char kArticle[] =
    "<html><head><title>The Article</title></head><body>"
    "<table><tr><td><a href=/a>Home</a><br><a href=/b>News</a><br><a href=/c>About us</a></td>"
    "<td><p>The first paragraph of the article tells a long story about rivers, hills and the small "
    "towns that lie between them, with enough words to outweigh the links.</p>"
    "<p>A second paragraph adds more plain words, none of them inside a link, so that this cell wins.</p>"
    "</td></tr></table></body></html>";
const char16_t kArticleText[] =
    u"The first paragraph of the article tells a long story about rivers, hills and the small towns that lie "
    u"between them, with enough words to outweigh the links.\n\n"
    u"A second paragraph adds more plain words, none of them inside a link, so that this cell wins.\n\n\n";

// A page of links only: written whole.
const char kLinks[] = "<p><a href=/x>First link</a> <a href=/y>Second link</a></p>";
const char16_t kLinksText[] = u"First link Second link\n\n";

// A page with a title and no text.
const char kTitleOnly[] = "<html><head><title>Lonely title</title></head><body></body></html>";

// A memory buffer holding `bytes`.
void Fill(MemoryBuffer& buffer, const char* bytes) { buffer.Put(bytes, static_cast<unsigned int>(std::strlen(bytes))); }

// The units a stream holds, from its first byte.
std::u16string Units(Orvel::BinaryStreamBufT<unsigned int>& buffer) {
  buffer.DiscardLookAhead();
  buffer.vSeekG(0, Orvel::kSeekBegin, Orvel::kSeekAbsolute);
  std::u16string units;
  buffer.Copy(units, MemoryBuffer::kAll);
  return units;
}

// `bytes` parsed as UTF-8 into `tree`.
void Parse(const char* bytes, HtmlDocTree& tree) {
  MemoryBuffer input(4096);
  Fill(input, bytes);
  OrvelParser::HtmlDocParser(input, KeywordTable(), tree).Parse();
}

// A partition holding `html` as UTF-8.
HtmlDocPartitions::Holder Partition(const std::u16string& html) {
  return HtmlDocPartitions::Holder(
      new HtmlDocPartitions(NewUtf8PartitionStream(html), Orvel::Utf8Charset, HtmlDocPartitions::HtmlContent));
}

TEST(BeautifyTest, StreamToText) {
  MemoryBuffer in(4096);
  Fill(in, kArticle);
  std::u16string text = u"old content";
  std::u16string attribute_text;
  DocumentType type = LinkDocument;
  EXPECT_TRUE(Beautify(in, Orvel::Utf8Charset, text, &attribute_text, &type));
  EXPECT_EQ(text, kArticleText);
  EXPECT_EQ(attribute_text, u"The Article");
  EXPECT_EQ(type, ContentDocument);

  // A page without a title leaves the attribute text as it was.
  MemoryBuffer links(4096);
  Fill(links, kLinks);
  EXPECT_TRUE(Beautify(links, Orvel::Utf8Charset, text, &attribute_text, &type));
  EXPECT_EQ(text, kLinksText);
  EXPECT_EQ(attribute_text, u"The Article");
  EXPECT_EQ(type, LinkDocument);
}

TEST(BeautifyTest, EmptyStreamToText) {
  MemoryBuffer in(4096);
  std::u16string text = u"old";
  std::u16string attribute_text = u"untouched";
  DocumentType type = ContentDocument;
  EXPECT_FALSE(Beautify(in, Orvel::Utf8Charset, text, &attribute_text, &type));
  EXPECT_EQ(text, u"");
  EXPECT_EQ(attribute_text, u"untouched");
  EXPECT_EQ(type, LinkDocument);
  // Null outputs are allowed.
  MemoryBuffer again(4096);
  Fill(again, kArticle);
  EXPECT_TRUE(Beautify(again, Orvel::Utf8Charset, text, nullptr, nullptr));
  EXPECT_EQ(text, kArticleText);
}

TEST(BeautifyTest, CharsetIsHandedToTheParser) {
  // "caf\xE9" is é in Windows-1252, a broken sequence in UTF-8.
  MemoryBuffer in(4096);
  Fill(in, "<p>caf\xE9 au lait</p>");
  std::u16string text;
  EXPECT_TRUE(Beautify(in, Orvel::Windows1252Charset, text, nullptr, nullptr));
  EXPECT_EQ(text, u"caf\u00E9 au lait\n\n");
}

TEST(BeautifyTest, TreeToText) {
  HtmlDocTree tree(Orvel::Utf8Charset);
  Parse(kArticle, tree);
  std::u16string text = u"old";
  std::u16string attribute_text = u"old title";
  DocumentType type = LinkDocument;
  EXPECT_TRUE(Beautify(tree, text, &attribute_text, &type));
  EXPECT_EQ(text, kArticleText);
  EXPECT_EQ(attribute_text, u"The Article");
  EXPECT_EQ(type, ContentDocument);
  // The tree is only read: a second call gives the same.
  std::u16string again;
  EXPECT_TRUE(Beautify(tree, again, nullptr, nullptr));
  EXPECT_EQ(again, text);

  // A document without text: the old text is erased, the title still
  // comes through.
  HtmlDocTree title_only(Orvel::Utf8Charset);
  Parse(kTitleOnly, title_only);
  attribute_text.clear();
  EXPECT_FALSE(Beautify(title_only, text, &attribute_text, &type));
  EXPECT_EQ(text, u"");
  EXPECT_EQ(attribute_text, u"Lonely title");
  EXPECT_EQ(type, LinkDocument);
}

TEST(BeautifyTest, TreeToStreamAppendsOnlyWhenThereIsText) {
  HtmlDocTree tree(Orvel::Utf8Charset);
  Parse(kLinks, tree);
  MemoryBuffer out(4096);
  out.Put(u"abc", 6);
  DocumentType type = ContentDocument;
  EXPECT_TRUE(Beautify(tree, out, nullptr, &type));
  EXPECT_EQ(type, LinkDocument);
  // The text was made in a fresh buffer, so nothing separates it from what
  // `out` held before.
  EXPECT_EQ(Units(out), std::u16string(u"abc") + kLinksText);

  HtmlDocTree empty(Orvel::Utf8Charset);
  Parse("", empty);
  MemoryBuffer untouched(4096);
  untouched.Put(u"abc", 6);
  type = ContentDocument;
  EXPECT_FALSE(Beautify(empty, untouched, nullptr, &type));
  EXPECT_EQ(type, LinkDocument);
  EXPECT_EQ(Units(untouched), u"abc");
}

TEST(BeautifyTest, PartitionsToText) {
  HtmlDocPartitions::Holder page = Partition(u"<title>Page</title><p><a href=/1>page link</a></p>");
  page->children.Add(Partition(u"<title>Frame</title><p><a href=/2>frame link</a></p>"));
  std::u16string text = u"old";
  std::u16string attribute_text;
  DocumentType type = ContentDocument;
  EXPECT_TRUE(Beautify(*page, text, &attribute_text, &type));
  // The frame's table needs no line feed of its own: the page's text
  // already ends with one.
  EXPECT_EQ(text, u"page link\n\nframe link\n\n");
  EXPECT_EQ(attribute_text, u"Page");
  EXPECT_EQ(type, LinkDocument);

  // No stream anywhere: nothing, and the strings as the rules say.
  const HtmlDocPartitions empty;
  attribute_text = u"kept";
  EXPECT_FALSE(Beautify(empty, text, &attribute_text, &type));
  EXPECT_EQ(text, u"");
  EXPECT_EQ(attribute_text, u"kept");
}

TEST(BeautifyTest, StreamToStreamWritesStraightIntoOut) {
  MemoryBuffer in(4096);
  Fill(in, kLinks);
  MemoryBuffer out(4096);
  out.Put(u"abc", 6);
  DocumentType type = ContentDocument;
  EXPECT_TRUE(Beautify(in, Orvel::Utf8Charset, out, nullptr, &type));
  EXPECT_EQ(type, LinkDocument);
  // The extractor sees the "c" already in `out` and starts the table's text
  // on a new line.
  EXPECT_EQ(Units(out), std::u16string(u"abc\n") + kLinksText);

  // A document without text leaves `out` as it was, and the result is
  // true because `out` holds bytes.
  MemoryBuffer no_text(4096);
  Fill(no_text, kTitleOnly);
  std::u16string attribute_text;
  EXPECT_TRUE(Beautify(no_text, Orvel::Utf8Charset, out, &attribute_text, &type));
  EXPECT_EQ(attribute_text, u"Lonely title");
  EXPECT_EQ(Units(out), std::u16string(u"abc\n") + kLinksText);

  // An empty document on a stream that holds bytes: true, and the root
  // table starts a new line after them.
  MemoryBuffer nothing(4096);
  MemoryBuffer held(4096);
  held.Put(u"abc", 6);
  EXPECT_TRUE(Beautify(nothing, Orvel::Utf8Charset, held, nullptr, &type));
  EXPECT_EQ(Units(held), u"abc\n");

  MemoryBuffer empty_in(4096);
  MemoryBuffer empty_out(4096);
  EXPECT_FALSE(Beautify(empty_in, Orvel::Utf8Charset, empty_out, nullptr, &type));
  EXPECT_EQ(empty_out.vSize(), 0u);
}

TEST(BeautifyTest, PartitionsToStreamWritesStraightIntoOut) {
  HtmlDocPartitions::Holder page = Partition(u"<p><a href=/1>page link</a></p>");
  MemoryBuffer out(4096);
  out.Put(u"x\n", 4);
  std::u16string attribute_text = u"kept";
  DocumentType type = ContentDocument;
  EXPECT_TRUE(Beautify(*page, out, &attribute_text, &type));
  EXPECT_EQ(type, LinkDocument);
  EXPECT_EQ(attribute_text, u"kept");
  // `out` already ended with a line feed: none is added before the text.
  EXPECT_EQ(Units(out), u"x\npage link\n\n");

  // Without any document the tree is still written whole: the root table
  // starts a new line after the "y" already in `out`.
  const HtmlDocPartitions empty;
  MemoryBuffer held(4096);
  held.Put(u"y", 2);
  EXPECT_TRUE(Beautify(empty, held, nullptr, &type));
  EXPECT_EQ(type, LinkDocument);
  EXPECT_EQ(Units(held), u"y\n");
  MemoryBuffer none(4096);
  EXPECT_FALSE(Beautify(empty, none, nullptr, &type));
}

TEST(BeautifyTest, SameInputGivesTheSameBytes) {
  std::u16string first;
  std::u16string second;
  DocumentType first_type = LinkDocument;
  DocumentType second_type = LinkDocument;
  MemoryBuffer a(4096);
  Fill(a, kArticle);
  MemoryBuffer b(4096);
  Fill(b, kArticle);
  EXPECT_TRUE(Beautify(a, Orvel::Utf8Charset, first, nullptr, &first_type));
  EXPECT_TRUE(Beautify(b, Orvel::Utf8Charset, second, nullptr, &second_type));
  EXPECT_EQ(first, second);
  EXPECT_EQ(first_type, second_type);
}

}  // namespace
}  // namespace ZestraNS
