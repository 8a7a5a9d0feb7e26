#include "builder/layout_walk.h"

#include <gtest/gtest.h>

#include <string>

#include "builder/html_node_builder.h"
#include "builder/layout_dump.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {
namespace {

using namespace ZestraNS::testing;  // NOLINT: node builders
using Orvel::SmartPtr;
namespace ids = OrvelParser;

constexpr uint32_t kAnchor = ids::kIdAnchor | kLink;
constexpr uint32_t kArea = ids::kIdArea | kLink;

// Walks `nodes` into the content cell of a fresh root and dumps the root.
std::string Walk(const NodeList& nodes, DumpOptions options = {}) {
  SmartPtr<KTable> root(new KTable(nullptr, 1, 3, 0));
  SmartPtr<KCell> cell = root->CreateCell(0, 1);
  EXPECT_TRUE(AddNodesToCell(nodes.begin(), nodes.end(), cell, false, false));
  return DumpLayout(*root, options);
}

TEST(LayoutWalkTest, LinksAndInLinkText) {
  // An anchor inside an anchor counts no second link; a link that is not an
  // anchor counts one and switches in-link off for its own content.
  const NodeList nodes = {El(kAnchor, {Text("one "), El(kAnchor, {Text("two")}), El(kArea, {Text(" three")}),
                                       Text(" four")})};
  EXPECT_EQ(Walk(nodes),
            "table 1x3 level 0\n"
            "  cell 0,1 words 6 inlink 4 links 2 tables 0\n"
            "    text \"one \"\n"
            "    text \"two\"\n"
            "    text \" three\"\n"
            "    text \" four\"\n");
}

TEST(LayoutWalkTest, PreformattedFlagPassesLinksOnly) {
  const NodeList nodes = {El(ids::kIdPre, {Text("a\r\nb  c", 10, 7), El(kAnchor, {Text(" x\r\ny ")}),
                                           El(ids::kIdPhrase, {Text(" p  q ")}), Text("\r\r\n")})};
  EXPECT_EQ(Walk(nodes, {.spans = true}),
            "table 1x3 level 0\n"
            "  cell 0,1 words 10 inlink 3 links 1 tables 0\n"
            "    text \"a\\nb  c\" @10+7\n"
            "    text \" x\\ny \" @0+0\n"
            "    text \" p q \" @0+0\n"
            "    text \"\\r\\n\" @0+0\n");
}

TEST(LayoutWalkTest, ElementTreatments) {
  const NodeList nodes = {
      Text("a"),
      El(ids::kIdScript, {Text("hidden")}),  // skipped whole
      Text(""),                               // empty: nothing, not even a space
      El(ids::kIdTd, {Text("b")}),           // a cell outside a table is ordinary
      El(ids::kIdListItem, {Text("c")}),     // closed before
      El(ids::kIdSummary),                   // closed after, even without children
      El(ids::kIdHead, {Text("title")}),     // skipped
      El(ids::kIdParagraph, {Text(" d ")}),  // closed before and after
      Text(" e"),
      El(ids::kIdBr),
      El(ids::kIdBr),
      El(ids::kIdBr),
      El(ids::kIdDivision),
      Text("f"),
  };
  EXPECT_EQ(Walk(nodes),
            "table 1x3 level 0\n"
            "  cell 0,1 words 6 inlink 0 links 0 tables 0\n"
            "    text \"a\"\n"
            "    text \"b\\n\\n\"\n"
            "    text \"c\\n\\n\"\n"
            "    text \"d\\n\\n\"\n"
            "    text \"e\\n\\n\"\n"
            "    text \"f\"\n");
}

TEST(LayoutWalkTest, TablePathLineBreaksAndLevels) {
  // Row 0: a cell without children (null slot), a cell whose text cleans
  // to a space (a cell without items), a cell with text. Row 1: nothing
  // with content, so its break falls on row 0's last cell again. Row 2: a
  // nested table, whose cell ends with a table item and takes no line feed.
  const NodeList nodes = {El(
      ids::kIdTable,
      {El(ids::kIdTbody,
          {El(ids::kIdTr, {El(ids::kIdTd), El(ids::kIdTd, {Text("  ")}), El(ids::kIdTd, {Text("x")})}),
           El(ids::kIdTr, {El(ids::kIdTd)}),
           El(ids::kIdTr, {El(ids::kIdTd, {El(ids::kIdTable, {El(ids::kIdTr, {El(ids::kIdTh, {Text("y")})})})})})})})};
  EXPECT_EQ(Walk(nodes, {.null_slots = true}),
            "table 1x3 level 0\n"
            "  cell 0,0 (null)\n"
            "  cell 0,1 words 0 inlink 0 links 0 tables 1\n"
            "    table 3x3 level 1\n"
            "      cell 0,0 (null)\n"
            "      cell 1,0 words 0 inlink 0 links 0 tables 0\n"
            "      cell 2,0 words 1 inlink 0 links 0 tables 0\n"
            "        text \"x\\n\\n\"\n"
            "      cell 0,1 (null)\n"
            "      cell 1,1 (null)\n"
            "      cell 2,1 (null)\n"
            "      cell 0,2 words 0 inlink 0 links 0 tables 1\n"
            "        table 1x1 level 2\n"
            "          cell 0,0 words 1 inlink 0 links 0 tables 0\n"
            "            text \"y\\n\\n\"\n"
            "      cell 1,2 (null)\n"
            "      cell 2,2 (null)\n"
            "  cell 0,2 (null)\n");

  // A cell without a parent table gives level 0; the new table's parent is null.
  SmartPtr<KCell> orphan(new KCell(nullptr, 0, 0));
  const NodeList table = {El(ids::kIdTable, {El(ids::kIdTr, {El(ids::kIdTd, {Text("z")})})})};
  AddNodesToCell(table.begin(), table.end(), orphan, false, false);
  ASSERT_EQ(orphan->Tables(), 1u);
  const SmartPtr<KTable>& nested = (*orphan->Begin())->Table();
  EXPECT_EQ(nested->Level(), 0u);
  EXPECT_EQ(nested->ParentTable(), nullptr);
}

TEST(LayoutWalkTest, DroppedTablesAddNothing) {
  const NodeList nodes = {
      Text("a "),
      El(ids::kIdTable, {El(ids::kIdCaption, {Text("lost")})}),  // no rows
      El(ids::kIdTable, {El(ids::kIdTr, {Text("lost too")})}),   // rows without cells
      El(kAnchor, {El(ids::kIdTable, {El(ids::kIdTr, {El(ids::kIdTd, {Text("in table")})})})}),
  };
  EXPECT_EQ(Walk(nodes),
            "table 1x3 level 0\n"
            "  cell 0,1 words 1 inlink 0 links 1 tables 1\n"
            "    text \"a \"\n"
            "    table 1x1 level 1\n"
            "      cell 0,0 words 2 inlink 0 links 0 tables 0\n"
            "        text \"in table\\n\\n\"\n");
}

TEST(LayoutWalkTest, ClampedCellsKeepTheirText) {
  // 256 rows and 7 cells allow 1,028 columns (4 slots per row and cell
  // plus the 262,144 a document's tables share). Row 0: b is clipped to the
  // last 28 columns and c, beyond them, lands in b's cell. Rows 1 and 2 are covered
  // entirely by d and e, so row 2's cells f and g get a cell of their own
  // in the last column.
  NodeList rows;
  rows.push_back(El(ids::kIdTr, {With(El(ids::kIdTd, {Text("a")}), "colspan", "1000"),
                                 With(El(ids::kIdTd, {Text("b")}), "colspan", "1000"),
                                 El(ids::kIdTd, {Text("c")})}));
  rows.push_back(El(ids::kIdTr, {With(With(El(ids::kIdTd, {Text("d")}), "rowspan", "2"), "colspan", "1000"),
                                 With(With(El(ids::kIdTd, {Text("e")}), "rowspan", "2"), "colspan", "1000")}));
  rows.push_back(El(ids::kIdTr, {El(ids::kIdTd, {Text("f")}), El(ids::kIdTd), El(ids::kIdTd, {Text("g")})}));
  for (int i = 3; i < 256; ++i) rows.push_back(El(ids::kIdTr));
  const NodeList nodes = {El(ids::kIdTable, std::move(rows))};
  SmartPtr<KTable> root(new KTable(nullptr, 1, 3, 0));
  SmartPtr<KCell> cell = root->CreateCell(0, 1);
  AddNodesToCell(nodes.begin(), nodes.end(), cell, false, false);
  const KTable& table = *(*cell->Begin())->Table();
  ASSERT_EQ(table.Cols(), 1028u);
  ASSERT_EQ(table.Rows(), 256u);
  auto texts = [&](uint32_t c, uint32_t r) {
    std::string out;
    const SmartPtr<KCell>& slot = table.GetCell(c, r);
    if (!slot) return std::string("(null)");
    for (const SmartPtr<KCellItem>* it = slot->Begin(); it != slot->End(); ++it) {
      out += "[" + EscapeText((*it)->Text()) + "]";
    }
    return out;
  };
  EXPECT_EQ(texts(0, 0), "[a\\n]");
  EXPECT_EQ(texts(1000, 0), "[b\\n][c\\n\\n]");
  EXPECT_EQ(texts(0, 1), "[d\\n]");
  EXPECT_EQ(texts(1000, 1), "[e\\n\\n]");
  EXPECT_EQ(texts(1027, 2), "[f\\n][g\\n\\n]");
  EXPECT_EQ(table.GetCell(1027, 2)->Words(), 2u);
  EXPECT_EQ(table.GetCell(1027, 2)->Col(), 1027u);
}

// Far deeper than any parser would deliver: the walk must not use a stack
// frame per level.
TEST(LayoutWalkTest, DeepTreesWalkWithoutRecursion) {
  constexpr int kElements = 1000000;
  Node inner = Text("deep");
  for (int i = 0; i < kElements; ++i) inner = El(i % 2 ? ids::kIdDivision : kAnchor, {inner});
  NodeList nodes = {inner};
  inner = Node();
  EXPECT_EQ(Walk(nodes),
            "table 1x3 level 0\n"
            "  cell 0,1 words 1 inlink 1 links 1 tables 0\n"
            "    text \"deep\\n\\n\"\n");

  constexpr int kTables = 100000;
  Node cell_content = Text("deepest");
  for (int i = 0; i < kTables; ++i) {
    cell_content = El(ids::kIdTable, {El(ids::kIdTr, {El(ids::kIdTd, {cell_content})})});
  }
  nodes = {cell_content};
  cell_content = Node();
  SmartPtr<KTable> root(new KTable(nullptr, 1, 3, 0));
  SmartPtr<KCell> cell = root->CreateCell(0, 1);
  AddNodesToCell(nodes.begin(), nodes.end(), cell, false, false);
  const KCell* current = cell.Get();
  uint32_t levels = 0;
  while (current->Tables() == 1) {
    const KTable& nested = *(*current->Begin())->Table();
    ASSERT_EQ(nested.Level(), ++levels);
    current = nested.GetCell(0, 0).Get();
  }
  EXPECT_EQ(levels, static_cast<uint32_t>(kTables));
  EXPECT_EQ((*current->Begin())->Text(), u"deepest\n\n");
}

}  // namespace
}  // namespace ZestraNS
