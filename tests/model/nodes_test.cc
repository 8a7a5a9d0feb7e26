#include <gtest/gtest.h>

#include <vector>

#include "model/tree_builders.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;
using testing::AddTable;
using testing::AddText;
using testing::NewTable;

TEST(KTableTest, NewTableHasNullSlotsCaptionAndSummary) {
  KTable* raw = new KTable(nullptr, 2, 3, 0);
  EXPECT_EQ(raw->NbRef(), 0);
  SmartPtr<KTable> table(raw);
  EXPECT_EQ(table->NbRef(), 1);
  EXPECT_EQ(table->Cols(), 2u);
  EXPECT_EQ(table->Rows(), 3u);
  EXPECT_EQ(table->Level(), 0u);
  EXPECT_EQ(table->ParentTable(), nullptr);
  EXPECT_EQ(table->End() - table->Begin(), 6);
  for (uint32_t col = 0; col < 2; ++col) {
    for (uint32_t row = 0; row < 3; ++row) EXPECT_TRUE(table->GetCell(col, row).IsNull());
  }
  EXPECT_TRUE(table->Caption().IsNull());
  EXPECT_TRUE(table->Summary().IsNull());

  SmartPtr<KTable> nested(new KTable(raw, 1, 1, 7));
  EXPECT_EQ(nested->ParentTable(), raw);
  EXPECT_EQ(nested->Level(), 7u);
  EXPECT_EQ(raw->NbRef(), 1);  // the parent link owns nothing
}

TEST(KTableTest, EmptyAndUnallocatableGrids) {
  SmartPtr<KTable> no_cols = NewTable(0, 4);
  EXPECT_EQ(no_cols->Begin(), no_cols->End());
  EXPECT_EQ(no_cols->Rows(), 4u);
  SmartPtr<KTable> no_rows = NewTable(4, 0);
  EXPECT_EQ(no_rows->Begin(), no_rows->End());

  // A slot count whose byte size does not fit the address space falls back
  // to an empty grid instead of a short allocation.
  SmartPtr<KTable> huge = NewTable(0xFFFFFFFFu, 0xFFFFFFFFu);
  EXPECT_EQ(huge->Cols(), 0u);
  EXPECT_EQ(huge->Rows(), 0u);
  EXPECT_EQ(huge->Begin(), huge->End());
  AddText(*huge->CreateCaption(), u"caption", 3);
  EXPECT_EQ(huge->WordsPerCell(), 3.0);
  KStatistics record;
  huge->Statistics(record, 0xFFFFFFFFu);
  EXPECT_EQ(record.Cells(), 1u);
  Orvel::RefCountVector<KTable> tables;
  huge->FindAllTables(tables);
  EXPECT_TRUE(tables.Empty());
}

TEST(KTableTest, CreateCellFillsAndReplacesItsSlot) {
  SmartPtr<KTable> table = NewTable(2, 3);
  SmartPtr<KCell> first = table->CreateCell(1, 2);
  ASSERT_FALSE(first.IsNull());
  EXPECT_EQ(table->Begin()[5], first);
  EXPECT_EQ(table->GetCell(1, 2), first);
  EXPECT_EQ(first->Col(), 1u);
  EXPECT_EQ(first->Row(), 2u);
  EXPECT_EQ(first->ParentTable(), table.Get());
  EXPECT_EQ(first->NbRef(), 2);  // the slot and `first`

  SmartPtr<KCell> second = table->CreateCell(1, 2);
  EXPECT_NE(second, first);
  EXPECT_EQ(table->GetCell(1, 2), second);
  EXPECT_EQ(first->NbRef(), 1);  // the slot let go of it
  second = nullptr;
  EXPECT_EQ(table->GetCell(1, 2)->NbRef(), 1);
  for (uint32_t i = 0; i < 5; ++i) EXPECT_TRUE(table->Begin()[i].IsNull());
}

TEST(KTableTest, SetCellKeepsTheCellsOwnPlaceAndCountsPerSlot) {
  SmartPtr<KTable> table = NewTable(2, 2);
  SmartPtr<KCell> cell = table->CreateCell(1, 1);
  table->SetCell(0, 0, cell);
  EXPECT_EQ(table->GetCell(0, 0), cell);
  EXPECT_EQ(cell->Col(), 1u);
  EXPECT_EQ(cell->Row(), 1u);
  EXPECT_EQ(cell->NbRef(), 3);
  table->SetCell(0, 0, cell);  // the pointer already held
  EXPECT_EQ(cell->NbRef(), 3);
  table->SetCell(0, 0, nullptr);
  EXPECT_TRUE(table->GetCell(0, 0).IsNull());
  EXPECT_EQ(cell->NbRef(), 2);

  // A cell of another table keeps that table as its parent.
  SmartPtr<KTable> other = NewTable(1, 1);
  table->SetCell(1, 0, other->CreateCell(0, 0));
  EXPECT_EQ(table->GetCell(1, 0)->ParentTable(), other.Get());
  other = nullptr;  // frees `other`; its cell lives on in `table`
  EXPECT_EQ(table->GetCell(1, 0)->NbRef(), 1);
}

TEST(KTableTest, CaptionAndSummaryAreFreshCellsAtColumnZeroRowZero) {
  SmartPtr<KTable> table = NewTable(3, 3);
  const SmartPtr<KCell>& caption = table->CreateCaption();
  EXPECT_EQ(&caption, &table->Caption());
  EXPECT_EQ(caption->Col(), 0u);
  EXPECT_EQ(caption->Row(), 0u);
  EXPECT_EQ(caption->ParentTable(), table.Get());
  AddText(*caption, u"old caption");
  SmartPtr<KCell> old_caption = table->Caption();
  table->CreateCaption();
  EXPECT_NE(table->Caption(), old_caption);
  EXPECT_TRUE(table->Caption()->IsEmpty());
  EXPECT_EQ(old_caption->NbRef(), 1);

  SmartPtr<KCell> summary = table->CreateSummary();
  EXPECT_EQ(table->Summary(), summary);
  EXPECT_EQ(summary->ParentTable(), table.Get());
  EXPECT_NE(summary, table->Caption());
  EXPECT_TRUE(table->GetCell(0, 0).IsNull());  // neither goes into the grid
}

TEST(KCellTest, ItemsAreAppendedNewEachTime) {
  SmartPtr<KTable> table = NewTable(1, 1);
  SmartPtr<KCell> cell = table->CreateCell(0, 0);
  EXPECT_TRUE(cell->IsEmpty());
  EXPECT_EQ(cell->Back(), cell->End());
  EXPECT_EQ(cell->Begin(), cell->End());

  SmartPtr<KCellItem> a = cell->AddCellItem();
  SmartPtr<KCellItem> b = cell->AddCellItem();
  ASSERT_FALSE(a.IsNull());
  EXPECT_NE(a, b);
  EXPECT_TRUE(a->IsEmpty());
  EXPECT_TRUE(b->IsEmpty());
  EXPECT_FALSE(cell->IsEmpty());
  EXPECT_EQ(cell->End() - cell->Begin(), 2);
  EXPECT_EQ(*cell->Back(), b);
  EXPECT_EQ(cell->Begin()[0], a);
  EXPECT_EQ(a->ParentCell(), cell.Get());
  EXPECT_EQ(a->NbRef(), 2);  // the list and `a`
}

TEST(KCellTest, ItemListGrowsByDoublingThenByAQuarter) {
  SmartPtr<KCell> cell(new KCell(nullptr, 0, 0));
  // The items move only when the list grows, so a changed Begin() marks
  // the appends that found the list full.
  std::vector<int> moved_at;
  const SmartPtr<KCellItem>* begin = cell->Begin();
  for (int n = 1; n <= 1000; ++n) {
    cell->AddCellItem();
    if (cell->Begin() != begin) moved_at.push_back(n);
    begin = cell->Begin();
  }
  // Capacities 16, 32, 64, 128, 256, 512, 640, 800, 1000.
  EXPECT_EQ(moved_at, (std::vector<int>{1, 17, 33, 65, 129, 257, 513, 641, 801}));
  EXPECT_EQ(cell->End() - cell->Begin(), 1000);
}

TEST(KCellTest, CountersAreModular) {
  KCell* raw = new KCell(nullptr, 4, 5);
  SmartPtr<KCell> cell(raw);
  EXPECT_EQ(cell->ParentTable(), nullptr);
  EXPECT_EQ(cell->Col(), 4u);
  EXPECT_EQ(cell->Row(), 5u);
  EXPECT_EQ(cell->Words() + cell->Links() + cell->Images() + cell->WordsInLinksAndImages() + cell->Tables(), 0u);
  cell->AddWords(0xFFFFFFFFu);
  cell->AddWords(3);
  cell->AddLinks(7);
  cell->AddImages(1);
  cell->AddWordsInLinksAndImages(2);
  cell->AddTables(0xFFFFFFFFu);
  cell->AddTables(1);
  EXPECT_EQ(cell->Words(), 2u);
  EXPECT_EQ(cell->Links(), 7u);
  EXPECT_EQ(cell->Images(), 1u);
  EXPECT_EQ(cell->WordsInLinksAndImages(), 2u);
  EXPECT_EQ(cell->Tables(), 0u);
}

TEST(KCellItemTest, AppendTextWidensTheSourceSpan) {
  SmartPtr<KCellItem> item(new KCellItem(nullptr));
  EXPECT_TRUE(item->IsEmpty());
  EXPECT_FALSE(item->IsText());
  item->AppendText(u"abc", 10, 3);
  EXPECT_TRUE(item->IsText());
  EXPECT_EQ(item->Text(), u"abc");
  EXPECT_EQ(item->SourcePosition(), 10u);
  EXPECT_EQ(item->SourceLength(), 3u);
  item->AppendText(u"de", 20, 2);
  EXPECT_EQ(item->Text(), u"abcde");
  EXPECT_EQ(item->SourcePosition(), 10u);
  EXPECT_EQ(item->SourceLength(), 12u);
  item->AppendText(u"\n", 0, 0);
  EXPECT_EQ(item->Text(), u"abcde\n");
  EXPECT_EQ(item->SourceLength(), 12u);
  // A run placed before the recorded position wraps the length.
  item->AppendText(u"z", 5, 1);
  EXPECT_EQ(item->SourcePosition(), 10u);
  EXPECT_EQ(item->SourceLength(), 0xFFFFFFFCu);

  SmartPtr<KCellItem> unlocated(new KCellItem(nullptr));
  unlocated->AppendText(u"x", 3, 0);
  EXPECT_EQ(unlocated->SourceLength(), 0u);
  unlocated->AppendText(u"y", 9, 1);
  EXPECT_EQ(unlocated->Text(), u"xy");
  EXPECT_EQ(unlocated->SourcePosition(), 9u);
  EXPECT_EQ(unlocated->SourceLength(), 1u);
}

TEST(KCellItemTest, EmptyAppendMakesATextItemWithoutSpan) {
  SmartPtr<KCellItem> item(new KCellItem(nullptr));
  item->AppendText(u"", 5, 5);
  EXPECT_TRUE(item->IsText());
  EXPECT_FALSE(item->IsEmpty());
  EXPECT_FALSE(item->IsTable());
  EXPECT_EQ(item->Text(), u"");
  EXPECT_EQ(item->SourcePosition(), 0u);
  EXPECT_EQ(item->SourceLength(), 0u);
  EXPECT_GE(item->Text().capacity(), 32u);

  SmartPtr<KCellItem> long_first(new KCellItem(nullptr));
  const std::u16string text(100, u'a');
  long_first->AppendText(text, 0, 100);
  EXPECT_GE(long_first->Text().capacity(), 105u);
  const char16_t* data = long_first->Text().data();
  long_first->AppendText(u"\n\n", 0, 0);
  long_first->AppendText(u" ", 0, 0);
  EXPECT_EQ(long_first->Text().data(), data);  // the reserve covered them
  item->Text() += u"direct";
  EXPECT_EQ(item->Text(), u"direct");
}

TEST(KCellItemTest, MakeParagraphTrimsWhiteSpaceThenEndsWithABreak) {
  SmartPtr<KCellItem> item(new KCellItem(nullptr));
  item->AppendText(u"abc \u00A0\n", 4, 6);
  item->MakeParagraph();
  EXPECT_EQ(item->Text(), u"abc\n\n");
  EXPECT_EQ(item->SourcePosition(), 4u);
  EXPECT_EQ(item->SourceLength(), 6u);
  item->MakeParagraph();  // the break itself is white space
  EXPECT_EQ(item->Text(), u"abc\n\n");

  SmartPtr<KCellItem> blank(new KCellItem(nullptr));
  blank->AppendText(u"   ", 0, 0);
  blank->MakeParagraph();
  EXPECT_EQ(blank->Text(), u"");
  SmartPtr<KCellItem> inner(new KCellItem(nullptr));
  inner->AppendText(u"\u2003a\r\t", 0, 0);  // only trailing space goes
  inner->MakeParagraph();
  EXPECT_EQ(inner->Text(), u"\u2003a\n\n");
}

TEST(KCellItemTest, TableSetterCountsOnlyChanges) {
  SmartPtr<KTable> first = NewTable(1, 1);
  SmartPtr<KTable> second = NewTable(1, 1);
  SmartPtr<KCellItem> item(new KCellItem(nullptr));
  item->Table(first);
  EXPECT_TRUE(item->IsTable());
  EXPECT_FALSE(item->IsText());
  EXPECT_EQ(first->NbRef(), 2);
  item->Table(first);
  EXPECT_EQ(first->NbRef(), 2);
  item->Table(second);
  EXPECT_EQ(first->NbRef(), 1);
  EXPECT_EQ(second->NbRef(), 2);
  item->Table(nullptr);
  EXPECT_TRUE(item->IsEmpty());
  EXPECT_EQ(second->NbRef(), 1);
}

TEST(KCellTest, MakeParagraphClosesOnlyATrailingTextItem) {
  SmartPtr<KTable> table = NewTable(1, 1);
  SmartPtr<KCell> cell = table->CreateCell(0, 0);
  cell->MakeParagraph();  // no items: nothing
  EXPECT_TRUE(cell->IsEmpty());

  SmartPtr<KCellItem> text = AddText(*cell, u"abc ");
  cell->MakeParagraph();
  EXPECT_EQ(text->Text(), u"abc\n\n");

  text->AppendText(u"more  ", 0, 0);
  AddTable(*cell);
  cell->MakeParagraph();  // the last item is a table
  EXPECT_EQ(text->Text(), u"abc\n\nmore  ");
  cell->AddCellItem();
  cell->MakeParagraph();  // the last item is empty
  EXPECT_EQ(text->Text(), u"abc\n\nmore  ");
}

TEST(ReferenceCountTest, ReleaseReturnsTheNewCount) {
  KTable* table = new KTable(nullptr, 1, 1, 0);
  EXPECT_EQ(table->AddRef(), 1);
  EXPECT_EQ(table->AddRef(), 2);
  EXPECT_EQ(table->Release(), 1);
  EXPECT_EQ(table->Release(), 0);  // destroyed

  KCellItem* item = new KCellItem(nullptr);
  EXPECT_EQ(item->NbRef(), 0);
  EXPECT_EQ(item->AddRef(), 1);
  EXPECT_EQ(item->Release(), 0);
}

TEST(ReferenceCountTest, NodesHeldOutsideOutliveTheirTree) {
  SmartPtr<KTable> root = NewTable(1, 1);
  SmartPtr<KCell> cell = root->CreateCell(0, 0);
  SmartPtr<KTable> nested = AddTable(*cell);
  SmartPtr<KCell> inner = nested->CreateCell(0, 0);
  SmartPtr<KCellItem> text = AddText(*inner, u"kept");
  cell = nullptr;
  inner = nullptr;
  EXPECT_EQ(nested->NbRef(), 2);
  EXPECT_EQ(text->NbRef(), 2);

  root = nullptr;  // frees root and its cell; `nested` stays whole
  EXPECT_EQ(nested->NbRef(), 1);
  EXPECT_EQ(text->NbRef(), 2);
  EXPECT_EQ(nested->GetCell(0, 0)->Begin()[0], text);
  EXPECT_EQ(text->ParentCell(), nested->GetCell(0, 0).Get());
  nested = nullptr;
  EXPECT_EQ(text->NbRef(), 1);
  EXPECT_EQ(text->Text(), u"kept");
}

#ifndef NDEBUG
TEST(PreconditionDeathTest, OutOfRangeSlotsAndNonTextItemsAssert) {
  SmartPtr<KTable> table = NewTable(2, 3);
  EXPECT_DEATH(table->GetCell(2, 0), "");
  EXPECT_DEATH(table->GetCell(0, 3), "");
  EXPECT_DEATH(table->CreateCell(5, 5), "");
  EXPECT_DEATH(table->SetCell(2, 2, nullptr), "");
  SmartPtr<KCellItem> item(new KCellItem(nullptr));
  EXPECT_DEATH(item->Text(), "");
  EXPECT_DEATH(item->SourcePosition(), "");
  EXPECT_DEATH(item->SourceLength(), "");
  EXPECT_DEATH(item->MakeParagraph(), "");
}
#endif

}  // namespace
}  // namespace ZestraNS
