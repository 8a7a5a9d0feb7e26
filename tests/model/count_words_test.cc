#include <gtest/gtest.h>

#include <string>

#include "zestra/base/smart_ptr.h"
#include "zestra/model/count_words.h"
#include "zestra/model/k_statistics.h"

namespace ZestraNS {
namespace {

TEST(CountWordsTest, CountsSeparatorRunsPlusATrailingWord) {
  EXPECT_EQ(CountWords(u""), 0u);
  EXPECT_EQ(CountWords(u"word"), 1u);
  EXPECT_EQ(CountWords(u"two words"), 2u);
  EXPECT_EQ(CountWords(u"two  words"), 2u);
  EXPECT_EQ(CountWords(u"end."), 1u);
  EXPECT_EQ(CountWords(u"a,b"), 2u);
  EXPECT_EQ(CountWords(u"a, b"), 2u);
  // A leading separator run counts as one more.
  EXPECT_EQ(CountWords(u" a"), 2u);
  EXPECT_EQ(CountWords(u"(a)"), 2u);
  EXPECT_EQ(CountWords(u".a."), 2u);
  EXPECT_EQ(CountWords(u" "), 1u);
  EXPECT_EQ(CountWords(u"..."), 1u);
  EXPECT_EQ(CountWords(u" .,\t\n"), 1u);
}

TEST(CountWordsTest, SeparatorSetIsExactlyFourteenCharacters) {
  const std::u16string separators = u"\n\t .,!()%$?*#|";
  ASSERT_EQ(separators.size(), 14u);
  for (char16_t c : separators) {
    EXPECT_EQ(CountWords(std::u16string{u'a', c, u'b'}), 2u) << static_cast<int>(c);
  }
  for (char16_t c = 1; c < 0x3000; ++c) {
    if (separators.find(c) != std::u16string::npos) continue;
    ASSERT_EQ(CountWords(std::u16string{u'a', c, u'b'}), 1u) << static_cast<int>(c);
  }
  EXPECT_EQ(CountWords(u"a\r\nb"), 2u);  // CR stays part of the first word
  EXPECT_EQ(CountWords(u"a-b"), 1u);
  EXPECT_EQ(CountWords(u"a;b"), 1u);
  EXPECT_EQ(CountWords(u"a\u00A0b"), 1u);
  EXPECT_EQ(CountWords(u"\"quoted\": yes"), 2u);
}

TEST(CountWordsTest, EmbeddedNulEndsTheRunScan) {
  using namespace std::string_literals;
  EXPECT_EQ(CountWords(u"a b\0c d"s), 2u);     // one run before the NUL, last char a word
  EXPECT_EQ(CountWords(u"a b\0c d."s), 1u);    // runs after the NUL are not seen
  EXPECT_EQ(CountWords(u"a b\0"s), 1u);        // a final NUL counts as a separator
  EXPECT_EQ(CountWords(u"\0"s), 0u);
  EXPECT_EQ(CountWords(u"ab\0\0"s), 0u);
  EXPECT_EQ(CountWords(u" \0a"s), 2u);
  EXPECT_EQ(CountWords(u"\0 a"s), 1u);
}

TEST(KStatisticsTest, CountersWrapAndClearKeepsTheReferenceCount) {
  KStatistics local;
  EXPECT_EQ(local.NbRef(), 0);
  local.SubWords(1);
  EXPECT_EQ(local.Words(), 4294967295u);
  local.AddWords(2);
  EXPECT_EQ(local.Words(), 1u);
  local.AddWordsInLinksAndImages(5);
  local.SubWordsInLinksAndImages(7);
  EXPECT_EQ(local.WordsInLinksAndImages(), 4294967294u);
  local.AddLinks(3);
  local.SubLinks(1);
  local.AddImages(4);
  local.SubImages(4);
  local.AddTables(9);
  local.SubTables(10);
  local.AddCells(0xFFFFFFFFu);
  local.AddCells(2);
  local.SubCells(0);
  EXPECT_EQ(local.Links(), 2u);
  EXPECT_EQ(local.Images(), 0u);
  EXPECT_EQ(local.Tables(), 4294967295u);
  EXPECT_EQ(local.Cells(), 1u);
  local.MaxWordsPerCell(2.5);
  EXPECT_EQ(local.MaxWordsPerCell(), 2.5);

  Orvel::SmartPtr<KStatistics> shared(new KStatistics);
  Orvel::SmartPtr<KStatistics> again = shared;
  shared->AddWords(3);
  shared->MaxWordsPerCell(1.0);
  shared->Clear();
  EXPECT_EQ(shared->NbRef(), 2);
  EXPECT_EQ(shared->Words(), 0u);
  EXPECT_EQ(shared->MaxWordsPerCell(), 0.0);

  KStatistics copy = local;
  EXPECT_EQ(copy.NbRef(), 0);
  EXPECT_EQ(copy.Words(), 1u);
  local.Clear();
  EXPECT_EQ(local.Words() + local.WordsInLinksAndImages() + local.Links() + local.Images() + local.Tables() +
                local.Cells(),
            0u);
  EXPECT_EQ(local.MaxWordsPerCell(), 0.0);
}

}  // namespace
}  // namespace ZestraNS
