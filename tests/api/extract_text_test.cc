#include "api/extract_text.h"

#include <gtest/gtest.h>

#include <string>

#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_table.h"
#include "zestra/stream/memory_buffer.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;

// The bounds are reached exactly by these integer ratios: a correctly
// rounded division gives the double nearest to the exact quotient, which
// is the double the decimal literal denotes.
constexpr uint32_t kShareWords = 10000000;       // 732258 / 10000000 == 0.0732258
constexpr uint32_t kShareNonLink = 732258;
constexpr uint32_t kPerLinkNonLink = 227742;     // 227742 / 10000 == 22.7742
constexpr uint32_t kPerLinkLinks = 10000;

TEST(ClassifyDocumentTest, BoundsAreExactAndInclusive) {
  ASSERT_EQ(static_cast<double>(kShareNonLink) / kShareWords, kMaxNonLinkShare);
  ASSERT_EQ(static_cast<double>(kPerLinkNonLink) / kPerLinkLinks, kMaxNonLinkWordsPerLink);

  // The share at its bound, no links: link document; one word more outside
  // links: content document.
  EXPECT_EQ(ClassifyDocument(kShareWords, kShareWords - kShareNonLink, 0), LinkDocument);
  EXPECT_EQ(ClassifyDocument(kShareWords, kShareWords - kShareNonLink - 1, 0), ContentDocument);
  // Words per link at its bound, share well below: link document; one word
  // more: content document.
  EXPECT_EQ(ClassifyDocument(kShareWords, kShareWords - kPerLinkNonLink, kPerLinkLinks), LinkDocument);
  EXPECT_EQ(ClassifyDocument(kShareWords, kShareWords - kPerLinkNonLink - 1, kPerLinkLinks), ContentDocument);
  // Both at their bounds at once would need 13897158453 words outside
  // links (the least common multiple of 366129 and 113871), more than the
  // 32-bit counters hold.
}

TEST(ClassifyDocumentTest, ValuesJustAboveTheBoundsAsDoubles) {
  // Above the double bounds but at or below the nearest single-precision
  // values (0.07322580367..., 22.77420043...): a comparison made in float,
  // or against rounded bounds, would call these link documents.
  EXPECT_EQ(ClassifyDocument(1000000000, 1000000000 - 73225802, 0), ContentDocument);
  EXPECT_EQ(ClassifyDocument(kShareWords, kShareWords - 106811, 4690), ContentDocument);
  EXPECT_EQ(ClassifyDocument(kShareWords, kShareWords - 106810, 4690), LinkDocument);
}

TEST(ClassifyDocumentTest, WorkedValues) {
  EXPECT_EQ(ClassifyDocument(0, 0, 0), LinkDocument);  // no words at all
  EXPECT_EQ(ClassifyDocument(0, 0, 7), LinkDocument);
  EXPECT_EQ(ClassifyDocument(1000, 950, 20), LinkDocument);     // 0.05 and 2.5
  EXPECT_EQ(ClassifyDocument(1000, 900, 20), ContentDocument);  // 0.1
  EXPECT_EQ(ClassifyDocument(500, 0, 0), ContentDocument);      // 1.0, no links
  EXPECT_EQ(ClassifyDocument(40, 40, 1), LinkDocument);         // every word in links
  // A large page whose link words sit in very few, very long links.
  EXPECT_EQ(ClassifyDocument(1000, 950, 2), ContentDocument);  // 0.05 but 25 per link
  // The largest counters: the quotients use the unsigned values.
  EXPECT_EQ(ClassifyDocument(0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu), LinkDocument);
  EXPECT_EQ(ClassifyDocument(0xFFFFFFFFu, 0, 0xFFFFFFFFu), ContentDocument);
}

// A root (1 x 3, level 0) whose content cell (0,1) holds one text item
// `text` and the given counters.
SmartPtr<KTable> RootWithCounters(const std::u16string& text, uint32_t words, uint32_t link_words,
                                  uint32_t links) {
  SmartPtr<KTable> root(new KTable(nullptr, 1, 3, 0));
  SmartPtr<KCell> cell = root->CreateCell(0, 1);
  cell->AddCellItem()->AppendText(text, 0, 0);
  cell->AddWords(words);
  cell->AddWordsInLinksAndImages(link_words);
  cell->AddLinks(links);
  return root;
}

// The UTF-16 units in `buffer`, from its first byte.
std::u16string Units(OrvelFile::MemoryBuffer& buffer) {
  buffer.vSeekG(0, Orvel::kSeekBegin, Orvel::kSeekAbsolute);
  std::u16string units;
  buffer.Copy(units, OrvelFile::MemoryBuffer::kAll);
  return units;
}

TEST(ExtractTextTest, TypeAtTheBoundsOnWholeTrees) {
  OrvelFile::MemoryBuffer out(4096);
  DocumentType type = ContentDocument;
  ExtractText(RootWithCounters(u"every word", kShareWords, kShareWords - kShareNonLink, 0), out, &type);
  EXPECT_EQ(type, LinkDocument);
  // A link document is written whole, with a line feed after the table.
  EXPECT_EQ(Units(out), u"every word\n");

  OrvelFile::MemoryBuffer out2(4096);
  ExtractText(RootWithCounters(u"ranked", kShareWords, kShareWords - kShareNonLink - 1, 0), out2, &type);
  EXPECT_EQ(type, ContentDocument);

  OrvelFile::MemoryBuffer out3(4096);
  ExtractText(RootWithCounters(u"x", kShareWords, kShareWords - kPerLinkNonLink, kPerLinkLinks), out3, &type);
  EXPECT_EQ(type, LinkDocument);
  ExtractText(RootWithCounters(u"x", kShareWords, kShareWords - kPerLinkNonLink - 1, kPerLinkLinks), out3, &type);
  EXPECT_EQ(type, ContentDocument);
}

TEST(ExtractTextTest, CountersOfEveryDepthAreSummed) {
  // 100 words outside links in the content cell; 2000 link words in 100
  // links two tables further down. Counted at every depth: 0.047 of the
  // words and 1 per link, a link document. Counted at the top only it
  // would be all content.
  SmartPtr<KTable> root = RootWithCounters(u"top text ", 100, 0, 0);
  SmartPtr<KTable> middle(new KTable(root.Get(), 1, 1, 1));
  root->GetCell(0, 1)->AddCellItem()->Table(middle);
  root->GetCell(0, 1)->AddTables(1);
  SmartPtr<KCell> middle_cell = middle->CreateCell(0, 0);
  SmartPtr<KTable> deep(new KTable(middle.Get(), 1, 1, 2));
  middle_cell->AddCellItem()->Table(deep);
  middle_cell->AddTables(1);
  SmartPtr<KCell> deep_cell = deep->CreateCell(0, 0);
  deep_cell->AddCellItem()->AppendText(u"links", 0, 0);
  deep_cell->AddWords(2000);
  deep_cell->AddWordsInLinksAndImages(2000);
  deep_cell->AddLinks(100);

  OrvelFile::MemoryBuffer out(4096);
  DocumentType type = ContentDocument;
  ExtractText(root, out, &type);
  EXPECT_EQ(type, LinkDocument);
  EXPECT_EQ(Units(out), u"top text \nlinks\n");
}

TEST(ExtractTextTest, AppendsAtThePutPositionWithoutClearing) {
  OrvelFile::MemoryBuffer out(4096);
  out.Put(u"ab", 4);
  DocumentType type = ContentDocument;
  ExtractText(RootWithCounters(u"cd", 1, 1, 1), out, &type);
  EXPECT_EQ(type, LinkDocument);
  // The existing text does not end with a line feed, so the table's text
  // starts on a new line.
  EXPECT_EQ(Units(out), u"ab\ncd\n");
}

TEST(ExtractTextTest, EmptyTreeIsALinkDocumentWithoutText) {
  OrvelFile::MemoryBuffer out(4096);
  DocumentType type = ContentDocument;
  ExtractText(SmartPtr<KTable>(new KTable(nullptr, 1, 3, 0)), out, &type);
  EXPECT_EQ(type, LinkDocument);
  EXPECT_EQ(out.vSize(), 0u);
}

}  // namespace
}  // namespace ZestraNS
