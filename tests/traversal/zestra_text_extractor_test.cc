#include "zestra/traversal/zestra_text_extractor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "ranking/test_trees.h"
#include "zestra/stream/memory_buffer.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;
using OrvelFile::MemoryBuffer;
using testing::AddCell;
using testing::AddTable;
using testing::AddText;
using testing::NewTable;

// Every byte of `buffer`, from the first.
std::string Bytes(MemoryBuffer& buffer) {
  buffer.vSeekG(0, Orvel::kSeekBegin, Orvel::kSeekAbsolute);
  std::string bytes;
  buffer.Copy(bytes, MemoryBuffer::kAll);
  return bytes;
}

// The bytes of `text` in the output format: two per unit, low byte first.
std::string Utf16(const std::u16string& text) {
  std::string bytes;
  for (char16_t unit : text) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

std::string Extract(const SmartPtr<KTable>& root, bool whole_text, const std::vector<double>* values = nullptr) {
  ZestraTextExtractor extractor(root, whole_text, values);
  MemoryBuffer buffer(4096);
  extractor.GetText(&buffer);
  return Bytes(buffer);
}

// A table of one row holding a cell per text; an empty text makes a cell
// without items. Each cell counts one word per text.
SmartPtr<KTable> Row(const std::vector<std::u16string>& texts) {
  SmartPtr<KTable> table = NewTable(static_cast<uint32_t>(texts.size()), 1);
  for (uint32_t col = 0; col < texts.size(); ++col) {
    if (texts[col].empty()) {
      AddCell(table, col, 0);
    } else {
      AddText(AddCell(table, col, 0, 1, 0), texts[col]);
    }
  }
  return table;
}

TEST(ZestraTextExtractorTest, LineFeedsAtTableBoundariesOnly) {
  EXPECT_EQ(Extract(Row({u"a\n", u"b\n\n"}), true), Utf16(u"a\nb\n\n"));
  EXPECT_EQ(Extract(Row({u"a\n", u"b\n\n"}), false), Utf16(u"a\nb\n\n"));

  // A nested table starts and ends on a line of its own.
  SmartPtr<KTable> root = NewTable(1, 1);
  SmartPtr<KCell> cell = AddCell(root, 0, 0, 1, 0);
  AddText(cell, u"x");
  AddText(AddCell(AddTable(cell), 0, 0, 1, 0), u"y");
  EXPECT_EQ(Extract(root, true), Utf16(u"x\ny\n"));

  // Only U+000A ends a line.
  EXPECT_EQ(Extract(Row({u"r\r"}), true), Utf16(u"r\r\n"));
}

TEST(ZestraTextExtractorTest, CellsWithoutItems) {
  // Reported whole, a cell without items stands for a line feed.
  EXPECT_EQ(Extract(Row({u"p", u"", u"q"}), true), Utf16(u"p\nq\n"));
  // Ranked, such a cell (rank 0.0) is never reported.
  EXPECT_EQ(Extract(Row({u"p", u"", u"q"}), false), Utf16(u"pq\n"));
  // An empty output never starts with a line feed.
  EXPECT_EQ(Extract(Row({u"", u"p"}), true), Utf16(u"p\n"));
}

TEST(ZestraTextExtractorTest, EndLineReadsBackWhatTheCallersStreamHeld) {
  struct Case {
    std::string held;      // bytes in the stream before GetText
    bool line_feed_added;  // before the text of the first table
  };
  const Case cases[] = {
      {Utf16(u"abc"), true},
      {Utf16(u"abc\n"), false},
      {Utf16(u"ab\r"), true},
      {Utf16(u"abc") + "d", true},          // odd size: the last whole unit is «c»
      {Utf16(u"a\n") + "z", false},         // odd size: the last whole unit is a line feed
      {"z", true},                          // one byte: no whole unit at all
      {std::string("\x0A", 1), true},       // one byte, even a line feed's low byte
      {std::string("\x00\x0A", 2), true},   // U+0A00, not U+000A
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases);
    SmartPtr<KTable> table = Row({u"t"});
    ZestraTextExtractor extractor(table, true, nullptr);
    MemoryBuffer buffer(16);
    buffer.Put(c.held.data(), static_cast<unsigned int>(c.held.size()));
    extractor.GetText(&buffer);
    const std::string expected = c.held + (c.line_feed_added ? Utf16(u"\n") : "") + Utf16(u"t\n");
    EXPECT_EQ(Bytes(buffer), expected);
  }
}

TEST(ZestraTextExtractorTest, EachGetTextAppendsTheWholeTextAgain) {
  ZestraTextExtractor extractor(Row({u"a", u"b"}), true, nullptr);
  MemoryBuffer buffer(4096);
  extractor.GetText(&buffer);
  extractor.GetText(&buffer);
  EXPECT_EQ(Bytes(buffer), Utf16(u"ab\nab\n"));
}

TEST(ZestraTextExtractorTest, WholeTextCountsEveryWordAndKeepsTheRoot) {
  SmartPtr<KTable> root = Row({u"a", u"b"});
  SmartPtr<KCell> cell = root->GetCell(0, 0);
  cell->AddWords(6);
  cell->AddWordsInLinksAndImages(4);
  AddText(AddCell(AddTable(cell), 0, 0, 9, 9), u"n");
  {
    ZestraTextExtractor extractor(root, true, nullptr);
    EXPECT_EQ(root->NbRef(), 2);
    EXPECT_EQ(extractor.CountWords(), testing::DocumentStatistics(root).Words());
    EXPECT_EQ(extractor.CountWords(), 1u + 6 + 1 + 9);
  }
  EXPECT_EQ(root->NbRef(), 1);
}

// The root holds, in one cell, table A with `a_words` words and table B
// with 1000 - a_words. With these values the first set picks A alone (the
// best rank, margin 0) and keeps every cell; the second picks every table.
const std::vector<double> kSplitValues = {0.2, 0.0, -1.0, 10.0, 0.0, 1.0, -1.0, 10.0, 0.635552};

SmartPtr<KTable> SplitDocument(uint32_t a_words) {
  SmartPtr<KTable> root = NewTable(1, 1);
  SmartPtr<KCell> cell = AddCell(root, 0, 0);
  AddText(AddCell(AddTable(cell), 0, 0, a_words, 0), u"A");
  AddText(AddCell(AddTable(cell), 0, 0, 1000 - a_words, 0), u"B");
  return root;
}

TEST(ZestraTextExtractorTest, FallbackWhenTheFirstSelectionKeepsTooFewWords) {
  // 1000 * 0.635552 = 635.552 is not greater than 636: A alone stays.
  {
    ZestraTextExtractor extractor(SplitDocument(636), false, &kSplitValues);
    EXPECT_EQ(extractor.CountWords(), 636u);
  }
  EXPECT_EQ(Extract(SplitDocument(636), false, &kSplitValues), Utf16(u"A\n"));
  // It is greater than 635: the second selection takes everything.
  {
    ZestraTextExtractor extractor(SplitDocument(635), false, &kSplitValues);
    EXPECT_EQ(extractor.CountWords(), 1000u);
  }
  EXPECT_EQ(Extract(SplitDocument(635), false, &kSplitValues), Utf16(u"A\nB\n"));

  // A share of 0, or one that is not a number, never falls back.
  std::vector<double> values = kSplitValues;
  values[8] = 0.0;
  EXPECT_EQ(Extract(SplitDocument(635), false, &values), Utf16(u"A\n"));
  values[8] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(Extract(SplitDocument(635), false, &values), Utf16(u"A\n"));
}

TEST(ZestraTextExtractorTest, DocumentWithoutWordsNeverFallsBack) {
  // The first set selects nothing; the second would select the root.
  const std::vector<double> values = {2.0, 0.0, -1.0, 10.0, 0.0, 1.0, -1.0, 10.0, 0.635552};
  SmartPtr<KTable> silent = NewTable(1, 1);
  SmartPtr<KCell> cell = AddCell(silent, 0, 0, 0, 0);
  AddText(cell, u"x");
  EXPECT_EQ(Extract(silent, false, &values), "");  // 0 * share is not greater than 0
  cell->AddWords(1);
  EXPECT_EQ(Extract(silent, false, &values), Utf16(u"x\n"));  // 1 * share > 0
}

TEST(ZestraTextExtractorTest, ParameterValuesReachBothSets) {
  // With the second set's CellLowScore at 0.3 a cell of rank 0.4 passes,
  // with the first set's 0.5 it does not; the first set keeps nothing, so
  // the second is used.
  const std::vector<double> values = {0.1, 0.05, 0.5, 0.3, 0.2, 0.05, 0.3, 0.3, 1.0};
  SmartPtr<KTable> root = NewTable(1, 1);
  AddText(AddCell(root, 0, 0, 10, 6), u"m");
  EXPECT_EQ(Extract(root, false, &values), Utf16(u"m\n"));

  std::vector<double> no_fallback = values;
  no_fallback[8] = 0.0;
  EXPECT_EQ(Extract(root, false, &no_fallback), Utf16(u""));

  // Fewer than nine values: ignored, the built-in values apply (first
  // CellLowScore 0.436295 lets the 0.4 cell fail, second 0.202551 pass).
  const std::vector<double> short_values(values.begin(), values.begin() + 8);
  EXPECT_EQ(Extract(root, false, &short_values), Extract(root, false, nullptr));
  EXPECT_EQ(Extract(root, false, nullptr), Utf16(u"m\n"));
}

TEST(ZestraTextExtractorTest, RankWeightsReachBothSets) {
  // One table, one cell of 10 words outside links: with the default weights
  // it ranks 0.3 + 0.3 + 0.4 = 1.0, with weights 0.1 each 0.3. Both sets
  // drop tables below 0.5; the second is used (the first keeps nothing).
  const std::vector<double> values = {0.5, 0.0, 0.0, 0.0, 0.5, 0.0, 0.0, 0.0, 1.0};
  SmartPtr<KTable> root = NewTable(1, 1);
  AddText(AddCell(root, 0, 0, 10, 0), u"m");
  const auto extract = [&](const ZestraRankWeights* weights) {
    ZestraTextExtractor extractor(root, false, &values, weights);
    MemoryBuffer buffer(64);
    extractor.GetText(&buffer);
    return Bytes(buffer);
  };
  EXPECT_EQ(extract(nullptr), Utf16(u"m\n"));
  const ZestraRankWeights low = {{0.1}, {0.1}, {0.1}};
  EXPECT_EQ(extract(&low), "");
  // The level of the table picks the entry: level 0 reads index 0.
  const ZestraRankWeights two_levels = {{0.1, 0.3}, {0.1, 0.3}, {0.1, 0.4}};
  EXPECT_EQ(extract(&two_levels), "");
  const ZestraRankWeights high_first = {{0.3, 0.1}, {0.3, 0.1}, {0.4, 0.1}};
  EXPECT_EQ(extract(&high_first), Utf16(u"m\n"));
  // Tables of different lengths, or empty ones, are not usable: defaults.
  const ZestraRankWeights uneven = {{0.1}, {0.1, 0.1}, {0.1}};
  EXPECT_EQ(extract(&uneven), Utf16(u"m\n"));
  const ZestraRankWeights empty = {};
  EXPECT_EQ(extract(&empty), Utf16(u"m\n"));
}

TEST(ZestraTextExtractorTest, BuiltInParameters) {
  class Peek : public ZestraTextExtractor {
   public:
    using ZestraTextExtractor::ZestraTextExtractor;
    using ZestraTextExtractor::InitParameters;
  };
  Peek peek(Row({u"a"}), true, nullptr);
  SmartPtr<KRankParameters> first(new KRankParameters());
  SmartPtr<KRankParameters> second(new KRankParameters());
  double share = 0.0;
  peek.InitParameters(first, second, share);
  EXPECT_EQ(first->LowThreshold(), 0.212131);
  EXPECT_EQ(first->HiThreshold(), 0.596276);
  EXPECT_EQ(first->CellLowScore(), 0.436295);
  EXPECT_EQ(first->WinnerLowThreshold(), 0.453539);
  EXPECT_EQ(second->LowThreshold(), 0.515806);
  EXPECT_EQ(second->HiThreshold(), 0.560831);
  EXPECT_EQ(second->CellLowScore(), 0.202551);
  EXPECT_EQ(second->WinnerLowThreshold(), 0.568495);
  EXPECT_EQ(share, 0.635552);
  EXPECT_EQ(first->MaxDepth(), 1u);
  EXPECT_EQ(second->WordCount(0), 0.4);
}

TEST(ZestraTextExtractorTest, NavigationLinksAndContent) {
  // A navigation column of links beside a content column with a few links:
  // the built-in tuning keeps the content only.
  const testing::NavigationAndContent page(12, u"Home News Contact\n", 80, 2, u"Body text.\n\n");
  EXPECT_EQ(Extract(page.root, false), Utf16(u"Body text.\n\n"));
  EXPECT_EQ(Extract(page.root, true), Utf16(u"Home News Contact\nBody text.\n\n"));
}

// 100,000 tables nested in a chain: ranked, selected and written without a
// stack frame per level, in seconds.
TEST(ZestraTextExtractorTest, HundredThousandNestedTables) {
  const uint32_t levels = 100000;
  SmartPtr<KTable> root = testing::Chain(levels, 1, 0, u"w\n");
  std::string expected;
  for (uint32_t i = 0; i < levels; ++i) expected += Utf16(u"w\n");
  for (bool whole_text : {false, true}) {
    SCOPED_TRACE(whole_text);
    ZestraTextExtractor extractor(root, whole_text, nullptr);
    EXPECT_EQ(extractor.CountWords(), levels);
    MemoryBuffer buffer(4096);
    extractor.GetText(&buffer);
    EXPECT_EQ(Bytes(buffer), expected);
  }
}

}  // namespace
}  // namespace ZestraNS
