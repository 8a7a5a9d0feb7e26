#include "builder/element_treatment.h"

#include <gtest/gtest.h>

#include <set>

#include "zestra/html/html_keyword_table.h"

namespace ZestraNS {
namespace {

constexpr uint32_t kLink = OrvelParser::HtmlKeywordTable::kLinkAtt;

TEST(ElementTreatmentTest, TablesLayoutCoversEveryId) {
  const std::set<uint32_t> closed_both = {12, 18, 40, 42, 44, 46};
  const std::set<uint32_t> closed_before = {5, 11, 17, 22, 23, 49};
  const std::set<uint32_t> skipped = {0, 4, 10, 14, 16, 20, 26, 32};
  const TreatmentTable& table = TablesLayoutTreatment();
  for (uint32_t id = 0; id < 256; ++id) {
    const ElementTreatment& t = table.ForId(id);
    NodeAction action = NodeAction::kWalk;
    if (skipped.count(id)) action = NodeAction::kSkip;
    if (id == 73) action = NodeAction::kText;
    if (id == 54) action = NodeAction::kPreformatted;
    if (id == 28) action = NodeAction::kLineBreak;
    if (id == 50) action = NodeAction::kTable;
    EXPECT_EQ(t.action, action) << id;
    EXPECT_EQ(t.close_before, closed_both.count(id) + closed_before.count(id) == 1) << id;
    EXPECT_EQ(t.close_after, closed_both.count(id) == 1 || id == 33) << id;
    EXPECT_EQ(t.anchor, id == 31) << id;
    EXPECT_EQ(t.ignores_link, id == 73 || id == 54 || id == 28) << id;
    TableRole role = TableRole::kNone;
    if (id == 15) role = TableRole::kRow;
    if (id == 21 || id == 27) role = TableRole::kCell;
    if (id == 3 || id == 39) role = TableRole::kRowGroup;
    if (id == 9) role = TableRole::kFooterGroup;
    EXPECT_EQ(t.table_role, role) << id;
  }
}

TEST(ElementTreatmentTest, LinkAttributeWins) {
  const TreatmentTable& table = TablesLayoutTreatment();
  // The attribute bits above the id do not change the id's entry.
  EXPECT_EQ(table.Classify(18 | 0x100).action, NodeAction::kWalk);
  EXPECT_TRUE(table.Classify(18 | 0x100).close_before);
  // Links: any element but text, PRE and BR, without paragraph closing.
  for (uint32_t id : {31u, 6u, 7u, 18u, 0u, 50u}) {
    const ElementTreatment t = table.Classify(id | kLink);
    EXPECT_EQ(t.action, NodeAction::kLink) << id;
    EXPECT_FALSE(t.close_before) << id;
    EXPECT_FALSE(t.close_after) << id;
    EXPECT_EQ(t.anchor, id == 31) << id;
  }
  EXPECT_EQ(table.Classify(73 | kLink).action, NodeAction::kText);
  EXPECT_EQ(table.Classify(54 | kLink).action, NodeAction::kPreformatted);
  EXPECT_EQ(table.Classify(28 | kLink).action, NodeAction::kLineBreak);
}

}  // namespace
}  // namespace ZestraNS
