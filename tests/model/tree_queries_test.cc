#include <gtest/gtest.h>

#include <vector>

#include "model/tree_builders.h"
#include "zestra/base/ref_count_vector.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {
namespace {

using Orvel::RefCountVector;
using Orvel::SmartPtr;
using testing::AddTable;
using testing::AddText;
using testing::NewTable;

std::vector<const KTable*> Pointers(const RefCountVector<KTable>& tables) {
  std::vector<const KTable*> pointers;
  for (const SmartPtr<KTable>& table : tables) pointers.push_back(table.Get());
  return pointers;
}

TEST(CellQueriesTest, EmptyCell) {
  SmartPtr<KCell> cell(new KCell(nullptr, 0, 0));
  RefCountVector<KTable> tables;
  cell->ChildTables(tables);
  EXPECT_TRUE(tables.Empty());
  EXPECT_EQ(cell->Dump(), u"\n");
}

TEST(CellQueriesTest, MixedItems) {
  SmartPtr<KTable> table = NewTable(1, 1);
  SmartPtr<KCell> cell = table->CreateCell(0, 0);
  AddText(*cell, u"Hello\u00A0 \tworld");
  SmartPtr<KTable> x = AddTable(*cell);
  cell->AddCellItem();  // empty items are skipped
  AddText(*cell, u"");
  AddText(*cell, u"  again\x01 ");
  SmartPtr<KTable> y = AddTable(*cell);

  RefCountVector<KTable> tables;
  cell->ChildTables(tables);
  EXPECT_EQ(Pointers(tables), (std::vector<const KTable*>{x.Get(), y.Get()}));
  EXPECT_EQ(x->NbRef(), 3);  // the item, `x` and the result
  // Each text is cleaned on its own; nothing is put between them.
  EXPECT_EQ(cell->Dump(), u"Hello world again \n");
}

TEST(TableQueriesTest, ChildTablesWalksColumnByColumn) {
  SmartPtr<KTable> table = NewTable(2, 2);
  SmartPtr<KTable> t[2][2];  // t[col][row]
  for (uint32_t row = 0; row < 2; ++row) {
    for (uint32_t col = 0; col < 2; ++col) t[col][row] = AddTable(*table->CreateCell(col, row));
  }
  RefCountVector<KTable> tables;
  table->ChildTables(tables);
  EXPECT_EQ(Pointers(tables),
            (std::vector<const KTable*>{t[0][0].Get(), t[0][1].Get(), t[1][0].Get(), t[1][1].Get()}));

  // A cell in two slots is read once per slot; empty slots are skipped.
  SmartPtr<KTable> wide = NewTable(3, 1);
  SmartPtr<KCell> shared = wide->CreateCell(0, 0);
  SmartPtr<KTable> only = AddTable(*shared);
  wide->SetCell(2, 0, shared);
  tables.Clear();
  wide->ChildTables(tables);
  EXPECT_EQ(Pointers(tables), (std::vector<const KTable*>{only.Get(), only.Get()}));
}

TEST(TableQueriesTest, CaptionAndSummaryTablesAreNotReported) {
  SmartPtr<KTable> table = NewTable(1, 1);
  SmartPtr<KTable> in_caption = AddTable(*table->CreateCaption());
  AddTable(*table->CreateSummary());
  AddTable(*in_caption->CreateCell(0, 0));
  RefCountVector<KTable> tables;
  table->ChildTables(tables);
  table->FindAllTables(tables);
  EXPECT_TRUE(tables.Empty());
}

TEST(TableQueriesTest, FindAllTablesListsChildrenBeforeEachSubtree) {
  SmartPtr<KTable> t = NewTable(2, 1);
  SmartPtr<KTable> a = AddTable(*t->CreateCell(0, 0), 1, 2);
  SmartPtr<KTable> b = AddTable(*t->CreateCell(1, 0));
  SmartPtr<KTable> a1 = AddTable(*a->CreateCell(0, 0));
  SmartPtr<KTable> a2 = AddTable(*a->CreateCell(0, 1));
  SmartPtr<KTable> a11 = AddTable(*a1->CreateCell(0, 0));
  SmartPtr<KTable> b1 = AddTable(*b->CreateCell(0, 0));
  SmartPtr<KTable> a21 = AddTable(*a2->CreateCell(0, 0));
  SmartPtr<KTable> a111 = AddTable(*a11->CreateCell(0, 0));

  SmartPtr<KTable> before1 = NewTable(1, 1), before2 = NewTable(1, 1);
  RefCountVector<KTable> tables;
  tables.Add(before1);
  tables.Add(before2);
  t->FindAllTables(tables);
  EXPECT_EQ(Pointers(tables), (std::vector<const KTable*>{before1.Get(), before2.Get(), a.Get(), b.Get(), a1.Get(),
                                                          a2.Get(), a11.Get(), a111.Get(), a21.Get(), b1.Get()}));

  RefCountVector<KTable> none;
  a111->FindAllTables(none);
  EXPECT_TRUE(none.Empty());
}

TEST(TableQueriesTest, FindAllTablesOnAChainOfFive) {
  SmartPtr<KTable> levels[5];
  levels[0] = NewTable(1, 1);
  for (int i = 1; i < 5; ++i) levels[i] = AddTable(*levels[i - 1]->CreateCell(0, 0));
  RefCountVector<KTable> tables;
  levels[0]->FindAllTables(tables);
  EXPECT_EQ(Pointers(tables),
            (std::vector<const KTable*>{levels[1].Get(), levels[2].Get(), levels[3].Get(), levels[4].Get()}));
  EXPECT_EQ(levels[4]->Level(), 4u);
  EXPECT_EQ(levels[4]->ParentTable(), levels[3].Get());
}

}  // namespace
}  // namespace ZestraNS
