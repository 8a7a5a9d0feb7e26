#include "builder/text_items.h"

#include <gtest/gtest.h>

#include <string>

#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;

class TextItemsTest : public ::testing::Test {
 protected:
  TextItemsTest() : table_(new KTable(nullptr, 1, 1, 0)), cell_(table_->CreateCell(0, 0)) {}

  size_t ItemCount() const { return cell_->End() - cell_->Begin(); }
  const KCellItem& Item(size_t i) const { return *cell_->Begin()[i]; }
  const std::u16string& Text(size_t i) const { return Item(i).Text(); }
  void Run(const std::u16string& raw, unsigned position = 0, unsigned length = 0, bool in_link = false) {
    AddTextRun(raw, position, length, cell_, in_link);
  }

  SmartPtr<KTable> table_;
  SmartPtr<KCell> cell_;
};

TEST_F(TextItemsTest, TextShapes) {
  // «a», BR, «b»: the break stays on «a», the space before «b» goes.
  Run(u"a");
  AddLineBreak(cell_);
  Run(u" b");
  ASSERT_EQ(ItemCount(), 2u);
  EXPECT_EQ(Text(0), u"a\n");
  EXPECT_EQ(Text(1), u"b");
  EXPECT_EQ(cell_->Words(), 2u);

  // «a», a block that closes the paragraph, «b».
  SmartPtr<KTable> table(new KTable(nullptr, 1, 1, 0));
  SmartPtr<KCell> cell = table->CreateCell(0, 0);
  AddTextRun(u"a ", 0, 0, cell, false);
  CloseParagraph(*cell);
  AddTextRun(u" b", 0, 0, cell, false);
  ASSERT_EQ(cell->End() - cell->Begin(), 2);
  EXPECT_EQ(cell->Begin()[0]->Text(), u"a\n\n");
  EXPECT_EQ(cell->Begin()[1]->Text(), u"b");
}

TEST_F(TextItemsTest, JunctionKeepsOneSeparatingSpace) {
  Run(u"  abc  ", 10, 7);
  ASSERT_EQ(ItemCount(), 1u);
  EXPECT_EQ(Text(0), u"abc ");  // leading space dropped in an empty cell, trailing kept
  EXPECT_EQ(Item(0).SourcePosition(), 10u);
  EXPECT_EQ(Item(0).SourceLength(), 7u);

  // The previous text ends in a space, the new one starts with one: both stay,
  // and the leading separator counts as a word of its own.
  Run(u" def");
  ASSERT_EQ(ItemCount(), 2u);
  EXPECT_EQ(Text(1), u" def");
  EXPECT_EQ(cell_->Words(), 1u + 2u);

  // Runs without spaces join without one.
  Run(u"ghi");
  EXPECT_EQ(Text(2), u"ghi");
  EXPECT_EQ(Text(1), u" def");

  // After a line feed, leading white space goes.
  AddLineBreak(cell_);
  Run(u"\t\n jkl");
  ASSERT_EQ(ItemCount(), 4u);
  EXPECT_EQ(Text(2), u"ghi\n");
  EXPECT_EQ(Text(3), u"jkl");
  EXPECT_EQ(cell_->Words(), 1u + 2u + 1u + 1u);
  EXPECT_EQ(cell_->WordsInLinksAndImages(), 0u);
}

TEST_F(TextItemsTest, WhiteSpaceRunsOnlySeparate) {
  // In an empty cell a white-space run does nothing at all.
  Run(u" \n\t ");
  EXPECT_TRUE(cell_->IsEmpty());

  Run(u"abc");
  Run(u"\u00a0\u00a0");  // two no-break spaces clean to one space
  ASSERT_EQ(ItemCount(), 1u);
  EXPECT_EQ(Text(0), u"abc ");
  EXPECT_EQ(Item(0).SourceLength(), 0u);  // the separator has no source span
  Run(u" ");
  EXPECT_EQ(Text(0), u"abc ");  // already ends in white space
  Run(u"");
  EXPECT_EQ(Text(0), u"abc ");
  EXPECT_EQ(ItemCount(), 1u);
  EXPECT_EQ(cell_->Words(), 1u);

  // Control characters clean away: a run of them is an empty run.
  Run(std::u16string(u"\0\x01\x7f", 3));
  EXPECT_EQ(ItemCount(), 1u);
  EXPECT_EQ(Text(0), u"abc ");

  // After a table item, a separator has nothing to attach to.
  SmartPtr<KCellItem> table_item = cell_->AddCellItem();
  table_item->Table(SmartPtr<KTable>(new KTable(table_.Get(), 1, 1, 1)));
  Run(u" ");
  EXPECT_EQ(ItemCount(), 2u);
  // And a text after a table item loses its leading space.
  Run(u" x");
  ASSERT_EQ(ItemCount(), 3u);
  EXPECT_EQ(Text(2), u"x");
}

TEST_F(TextItemsTest, EmbeddedControlsAreDroppedBeforeCounting) {
  Run(std::u16string(u"a\0b c", 5), 3, 5);
  ASSERT_EQ(ItemCount(), 1u);
  EXPECT_EQ(Text(0), u"ab c");
  EXPECT_EQ(cell_->Words(), 2u);
}

TEST_F(TextItemsTest, WordsInLinks) {
  Run(u"one", 0, 3, false);
  Run(u" two words", 4, 10, true);
  EXPECT_EQ(cell_->Words(), 1u + 3u);  // " two words" counts its leading separator
  EXPECT_EQ(cell_->WordsInLinksAndImages(), 3u);
  EXPECT_EQ(cell_->Links(), 0u);  // links are the walk's business
}

TEST_F(TextItemsTest, LineBreaksStopAtTwo) {
  AddLineBreak(cell_);
  EXPECT_TRUE(cell_->IsEmpty());

  Run(u"abc", 5, 3);
  AddLineBreak(cell_);
  EXPECT_EQ(Text(0), u"abc\n");
  AddLineBreak(cell_);
  EXPECT_EQ(Text(0), u"abc\n\n");
  AddLineBreak(cell_);
  EXPECT_EQ(Text(0), u"abc\n\n");
  EXPECT_EQ(Item(0).SourcePosition(), 5u);
  EXPECT_EQ(Item(0).SourceLength(), 3u);

  // A closed paragraph takes no further break.
  Run(u"def");
  CloseParagraph(*cell_);
  AddLineBreak(cell_);
  EXPECT_EQ(Text(1), u"def\n\n");

  // Nor does an empty text item or a table item.
  SmartPtr<KCellItem> empty_text = cell_->AddCellItem();
  empty_text->AppendText(u"", 0, 0);
  AddLineBreak(cell_);
  EXPECT_EQ(empty_text->Text(), u"");
  SmartPtr<KCellItem> table_item = cell_->AddCellItem();
  table_item->Table(SmartPtr<KTable>(new KTable(table_.Get(), 1, 1, 1)));
  AddLineBreak(cell_);
  EXPECT_EQ(ItemCount(), 4u);
  EXPECT_EQ(Text(1), u"def\n\n");
}

TEST_F(TextItemsTest, CloseParagraphTrimsAndSkipsTables) {
  CloseParagraph(*cell_);  // no items: nothing
  EXPECT_TRUE(cell_->IsEmpty());

  Run(u"abc ");
  CloseParagraph(*cell_);
  EXPECT_EQ(Text(0), u"abc\n\n");
  CloseParagraph(*cell_);
  EXPECT_EQ(Text(0), u"abc\n\n");

  SmartPtr<KCellItem> table_item = cell_->AddCellItem();
  table_item->Table(SmartPtr<KTable>(new KTable(table_.Get(), 1, 1, 1)));
  Run(u"x");
  cell_->Begin()[2]->Text() = u"   ";
  CloseParagraph(*cell_);
  EXPECT_EQ(Text(2), u"");  // white space only: emptied, no break
}

TEST_F(TextItemsTest, EndOfTableCellAddsOneLineFeedUnconditionally) {
  EndTableCellText(*cell_);
  EXPECT_TRUE(cell_->IsEmpty());
  Run(u"a", 1, 1);
  CloseParagraph(*cell_);
  EndTableCellText(*cell_);
  EXPECT_EQ(Text(0), u"a\n\n\n");
  EXPECT_EQ(Item(0).SourceLength(), 1u);
}

TEST_F(TextItemsTest, PreformattedRunsKeepTheirShape) {
  AddPreformattedRun(u"a\r\nb\r\r\n", 7, 8, cell_, false);
  ASSERT_EQ(ItemCount(), 1u);
  EXPECT_EQ(Text(0), u"a\nb\r\n");
  EXPECT_EQ(Item(0).SourcePosition(), 7u);
  EXPECT_EQ(Item(0).SourceLength(), 8u);
  EXPECT_EQ(cell_->Words(), 2u);  // the lone CR is a word character

  // No clean-up, no junction: spaces stay, and even an all-space run makes
  // an item.
  AddPreformattedRun(u"  x  y ", 0, 0, cell_, true);
  AddPreformattedRun(u" ", 0, 0, cell_, false);
  AddPreformattedRun(u"\r\n\r\n", 0, 0, cell_, false);
  ASSERT_EQ(ItemCount(), 4u);
  EXPECT_EQ(Text(1), u"  x  y ");
  EXPECT_EQ(Text(2), u" ");
  EXPECT_EQ(Text(3), u"\n\n");
  EXPECT_EQ(cell_->Words(), 2u + 3u + 1u + 1u);
  EXPECT_EQ(cell_->WordsInLinksAndImages(), 3u);

  // An empty run still makes a text item with empty text.
  AddPreformattedRun(u"", 0, 0, cell_, false);
  ASSERT_EQ(ItemCount(), 5u);
  EXPECT_TRUE(Item(4).IsText());
  EXPECT_EQ(Text(4), u"");
}

}  // namespace
}  // namespace ZestraNS
