#include "zestra/traversal/zestra_visitor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "ranking/test_trees.h"
#include "zestra/traversal/zestra_ranked_strategy.h"
#include "zestra/traversal/zestra_visitor_strategy.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;
using testing::AddCell;
using testing::AddTable;
using testing::AddText;
using testing::NewTable;

using Log = std::vector<std::string>;
using Names = std::map<const void*, std::string>;

std::string Narrow(const std::u16string& text) { return std::string(text.begin(), text.end()); }

// A strategy that logs every question and calls good what is not listed as
// bad.
class ScriptedStrategy : public ZestraVisitorStrategy {
 public:
  ScriptedStrategy(Log* log, const Names* names) : log_(log), names_(names) {}
  std::set<const void*> bad;

  bool IsGoodTable(const SmartPtr<KTable>& table) const override { return Ask("table?", table.Get()); }
  bool IsGoodCell(const SmartPtr<KCell>& cell) const override { return Ask("cell?", cell.Get()); }
  bool IsGoodCellItem(const SmartPtr<KCellItem>& item) const override {
    log_->push_back("item? " + Narrow(item->Text()));
    return bad.count(item.Get()) == 0;
  }

 private:
  bool Ask(const char* question, const void* node) const {
    log_->push_back(std::string(question) + " " + names_->at(node));
    return bad.count(node) == 0;
  }
  Log* log_;
  const Names* names_;
};

// Logs every hook; with `questions` false the strategy's questions are left
// out of the log.
class Recorder : public ZestraVisitor {
 public:
  Recorder(const SmartPtr<ZestraVisitorStrategy>& strategy, const Names* names)
      : ZestraVisitor(strategy), names_(names) {}
  Log log;

  void Walk(const SmartPtr<KTable>& root) { ParseTree(root); }
  void WalkWith(const SmartPtr<KTable>& root, const SmartPtr<ZestraVisitorStrategy>& s) { ParseTree(root, s); }
  using ZestraVisitor::Strategy;

 protected:
  void VisitTableInfix(const SmartPtr<KTable>& t) override { Hook("TableInfix", t.Get()); }
  void VisitTablePostfix(const SmartPtr<KTable>& t) override { Hook("TablePostfix", t.Get()); }
  void VisitCellInfix(const SmartPtr<KCell>& c) override { Hook("CellInfix", c.Get()); }
  void VisitCellText(const SmartPtr<KCellItem>& item) override { log.push_back("CellText " + Narrow(item->Text())); }
  void VisitCellPostfix(const SmartPtr<KCell>& c) override { Hook("CellPostfix", c.Get()); }

 private:
  void Hook(const char* name, const void* node) { log.push_back(std::string(name) + " " + names_->at(node)); }
  const Names* names_;
};

// T: one row of C1 («x») and C2 («a», table N, «c»); N: one cell N1 («b»).
class HookOrderTest : public ::testing::Test {
 protected:
  HookOrderTest() {
    c1 = AddCell(t, 0, 0);
    AddText(c1, u"x");
    c2 = AddCell(t, 1, 0);
    AddText(c2, u"a");
    n = AddTable(c2);
    AddText(c2, u"c");
    n1 = AddCell(n, 0, 0);
    AddText(n1, u"b");
    names = {{t.Get(), "T"}, {n.Get(), "N"}, {c1.Get(), "C1"}, {c2.Get(), "C2"}, {n1.Get(), "N1"}};
    strategy = SmartPtr<ScriptedStrategy>(new ScriptedStrategy(&questions, &names));
  }

  Log Walk() {
    Recorder recorder(strategy, &names);
    recorder.Walk(t);
    return recorder.log;
  }

  SmartPtr<KTable> t = NewTable(2, 1);
  SmartPtr<KTable> n;
  SmartPtr<KCell> c1, c2, n1;
  Names names;
  Log questions;
  SmartPtr<ScriptedStrategy> strategy;
};

TEST_F(HookOrderTest, AllGood) {
  EXPECT_EQ(Walk(), (Log{"TableInfix T", "CellInfix C1", "CellText x", "CellPostfix C1", "CellInfix C2",
                         "CellText a", "TableInfix N", "CellInfix N1", "CellText b", "CellPostfix N1",
                         "TablePostfix N", "CellText c", "CellPostfix C2", "TablePostfix T"}));
  EXPECT_EQ(questions, (Log{"table? T", "cell? C1", "item? x", "cell? C2", "item? a", "table? N", "cell? N1",
                            "item? b", "item? c"}));
}

TEST_F(HookOrderTest, GoodTableInsideBadTable) {
  strategy->bad = {t.Get()};
  EXPECT_EQ(Walk(), (Log{"TableInfix N", "CellInfix N1", "CellText b", "CellPostfix N1", "TablePostfix N"}));
  // Cells of a table that is not good are still asked about; their text
  // items are not.
  EXPECT_EQ(questions, (Log{"table? T", "cell? C1", "cell? C2", "table? N", "cell? N1", "item? b"}));
}

TEST_F(HookOrderTest, GoodTableInsideBadCell) {
  strategy->bad = {c2.Get()};
  EXPECT_EQ(Walk(), (Log{"TableInfix T", "CellInfix C1", "CellText x", "CellPostfix C1", "TableInfix N",
                         "CellInfix N1", "CellText b", "CellPostfix N1", "TablePostfix N", "TablePostfix T"}));
}

TEST_F(HookOrderTest, BadItemIsSkippedOnly) {
  strategy->bad = {c2->Begin()[0].Get()};
  const Log hooks = Walk();
  EXPECT_EQ(std::count(hooks.begin(), hooks.end(), "CellText a"), 0);
  EXPECT_EQ(hooks.size(), 13u);
}

TEST_F(HookOrderTest, EmptyItemsReachNoHookAndEmptyTextDoes) {
  c1->AddCellItem();
  AddText(c1, u"");
  const Log hooks = Walk();
  EXPECT_EQ(Log(hooks.begin(), hooks.begin() + 5),
            (Log{"TableInfix T", "CellInfix C1", "CellText x", "CellText ", "CellPostfix C1"}));
}

TEST(ZestraVisitorTest, EmptyTablesCellsCaptionsSummariesAndRepeatedCells) {
  Names names;
  Log questions;
  SmartPtr<ScriptedStrategy> strategy(new ScriptedStrategy(&questions, &names));

  SmartPtr<KTable> empty = NewTable(2, 2);
  names[empty.Get()] = "E";
  Recorder recorder(strategy, &names);
  recorder.Walk(empty);
  EXPECT_EQ(recorder.log, (Log{"TableInfix E", "TablePostfix E"}));
  EXPECT_EQ(questions, (Log{"table? E"}));

  // A good cell without items; a caption and a summary after the grid; a
  // cell standing in two slots is walked twice.
  SmartPtr<KTable> t = NewTable(2, 2);
  SmartPtr<KCell> bare = AddCell(t, 1, 1);
  SmartPtr<KCell> twice = AddCell(t, 0, 0);
  AddText(twice, u"2");
  t->SetCell(1, 0, twice);
  const SmartPtr<KCell>& summary = t->CreateSummary();
  const SmartPtr<KCell>& caption = t->CreateCaption();
  names.insert({{t.Get(), "T"}, {bare.Get(), "Bare"}, {twice.Get(), "Twice"}, {summary.Get(), "S"},
                {caption.Get(), "C"}});
  Recorder second(strategy, &names);
  second.Walk(t);
  EXPECT_EQ(second.log, (Log{"TableInfix T", "CellInfix Twice", "CellText 2", "CellPostfix Twice", "CellInfix Twice",
                             "CellText 2", "CellPostfix Twice", "CellInfix Bare", "CellPostfix Bare", "CellInfix C",
                             "CellPostfix C", "CellInfix S", "CellPostfix S", "TablePostfix T"}));
}

TEST(ZestraVisitorTest, WalkKeepsEveryNodeAliveWhileVisitingIt) {
  // A hook that cuts the nested table out of the tree while it is walked.
  class Cutter : public ZestraVisitor {
   public:
    explicit Cutter(const SmartPtr<KCellItem>& item)
        : ZestraVisitor(SmartPtr<ZestraVisitorStrategy>(new ZestraVisitorStrategy())), item_(item) {}
    void Walk(const SmartPtr<KTable>& root) { ParseTree(root); }
    std::vector<int32_t> refs_in_postfix;

   protected:
    void VisitTableInfix(const SmartPtr<KTable>&) override {}
    void VisitTablePostfix(const SmartPtr<KTable>& t) override {
      refs_in_postfix.push_back(t->NbRef());
    }
    void VisitCellInfix(const SmartPtr<KCell>&) override {}
    void VisitCellText(const SmartPtr<KCellItem>&) override { item_->Table(nullptr); }
    void VisitCellPostfix(const SmartPtr<KCell>&) override {}

   private:
    SmartPtr<KCellItem> item_;
  };
  SmartPtr<KTable> root = NewTable(1, 1);
  SmartPtr<KCell> cell = AddCell(root, 0, 0);
  SmartPtr<KTable> nested = AddTable(cell);
  SmartPtr<KCellItem> item = cell->Begin()[0];
  AddText(AddCell(nested, 0, 0), u"in");
  KTable* raw = nested.Get();
  nested = nullptr;  // the item is the tree's only holder
  ASSERT_EQ(raw->NbRef(), 1);
  Cutter cutter(item);
  cutter.Walk(root);
  EXPECT_FALSE(item->IsTable());
  // The nested table is held by the walk alone when its last hook runs; the
  // root by `root` and by the walk.
  EXPECT_EQ(cutter.refs_in_postfix, (std::vector<int32_t>{1, 2}));
  EXPECT_EQ(root->NbRef(), 1);
}

TEST(ZestraVisitorTest, StrategyInstallationAndCounting) {
  Names names;
  SmartPtr<ZestraVisitorStrategy> all(new ZestraVisitorStrategy());
  SmartPtr<ZestraVisitorStrategy> other(new ZestraVisitorStrategy());
  SmartPtr<KTable> t = NewTable(1, 1);
  names[t.Get()] = "T";

  Recorder recorder(nullptr, &names);
  EXPECT_EQ(recorder.NbRef(), 0);
  recorder.Walk(t);  // no strategy: nothing happens
  EXPECT_TRUE(recorder.log.empty());
  recorder.WalkWith(t, all);
  EXPECT_EQ(all->NbRef(), 2);
  recorder.Walk(t);  // the strategy stays installed
  EXPECT_EQ(recorder.log.size(), 4u);
  recorder.Walk(nullptr);
  EXPECT_EQ(recorder.log.size(), 4u);

  Recorder copy(recorder);
  EXPECT_EQ(copy.NbRef(), 0);
  EXPECT_EQ(copy.Strategy(), all);
  EXPECT_EQ(all->NbRef(), 3);
  Recorder third(other, &names);
  third = recorder;
  EXPECT_EQ(third.Strategy(), all);
  EXPECT_EQ(other->NbRef(), 1);
  third = recorder;  // the same strategy again: no change
  EXPECT_EQ(all->NbRef(), 4);

  // Counted visitors and strategies delete themselves with the last release.
  SmartPtr<Recorder> counted(new Recorder(other, &names));
  EXPECT_EQ(counted->NbRef(), 1);
  EXPECT_EQ(other->NbRef(), 2);
  counted = nullptr;
  EXPECT_EQ(other->NbRef(), 1);
  ZestraVisitorStrategy copied(*all);
  EXPECT_EQ(copied.NbRef(), 0);
  copied = *other;
  EXPECT_EQ(copied.NbRef(), 0);
}

TEST(ZestraRankedStrategyTest, WinnersDecideTablesAndCellLowScoreDecidesCells) {
  SmartPtr<KRankParameters> p(new KRankParameters());  // CellLowScore 0.5
  SmartPtr<KTable> winner = NewTable(3, 1);
  SmartPtr<KTable> loser = NewTable(1, 1);

  ZestraRankedStrategy no_set(p, KWinners());
  EXPECT_TRUE(no_set.IsGoodTable(winner));
  EXPECT_TRUE(no_set.IsGoodTable(loser));

  KWinners empty(new KTableSet());
  ZestraRankedStrategy none(p, empty);
  EXPECT_FALSE(none.IsGoodTable(winner));

  KWinners winners(new KTableSet{winner});
  ZestraRankedStrategy ranked(p, winners);
  EXPECT_EQ(winners.Count(), 2);
  EXPECT_EQ(p->NbRef(), 4);
  EXPECT_TRUE(ranked.IsGoodTable(winner));
  EXPECT_FALSE(ranked.IsGoodTable(loser));

  EXPECT_FALSE(ranked.IsGoodCell(AddCell(winner, 0, 0, 10, 5)));  // rank 0.5: not above
  EXPECT_TRUE(ranked.IsGoodCell(AddCell(winner, 1, 0, 10, 4)));   // 0.6
  EXPECT_FALSE(ranked.IsGoodCell(AddCell(winner, 2, 0, 0, 0)));   // 0.0
  p->Init(0.2, 0.05, -1.0, 0.3);
  EXPECT_TRUE(ranked.IsGoodCell(winner->GetCell(2, 0)));
  p->Init(0.2, 0.05, std::numeric_limits<double>::quiet_NaN(), 0.3);
  EXPECT_FALSE(ranked.IsGoodCell(winner->GetCell(1, 0)));
  // The inherited item predicate accepts every item.
  EXPECT_TRUE(ranked.IsGoodCellItem(AddText(winner->GetCell(1, 0), u"i")));
}

TEST(ZestraRankedStrategyTest, CopiesShareAndAssignmentSwapsShares) {
  SmartPtr<KRankParameters> p(new KRankParameters());
  SmartPtr<KRankParameters> q(new KRankParameters());
  KWinners first(new KTableSet());
  KWinners second(new KTableSet());
  {
    SmartPtr<ZestraRankedStrategy> a(new ZestraRankedStrategy(p, first));
    ZestraRankedStrategy b(*a);
    EXPECT_EQ(b.NbRef(), 0);
    EXPECT_EQ(a->NbRef(), 1);
    EXPECT_EQ(first.Count(), 3);
    EXPECT_EQ(p->NbRef(), 3);

    const ZestraRankedStrategy& itself = b;
    b = itself;  // nothing changes
    EXPECT_EQ(first.Count(), 3);
    ZestraRankedStrategy same_holder(q, first);
    b = same_holder;  // shares the same holder: its counter stays
    EXPECT_EQ(first.Count(), 4);
    EXPECT_EQ(p->NbRef(), 2);
    EXPECT_EQ(q->NbRef(), 3);

    ZestraRankedStrategy other(q, second);
    b = other;
    EXPECT_EQ(first.Count(), 3);
    EXPECT_EQ(second.Count(), 3);
    EXPECT_EQ(b.NbRef(), 0);
  }
  EXPECT_EQ(first.Count(), 1);
  EXPECT_EQ(second.Count(), 1);
  EXPECT_EQ(p->NbRef(), 1);
  EXPECT_EQ(q->NbRef(), 1);
}

}  // namespace
}  // namespace ZestraNS
