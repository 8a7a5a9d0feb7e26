#include "builder/table_grid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "builder/html_node_builder.h"

namespace ZestraNS {
namespace {

using namespace ZestraNS::testing;  // NOLINT: node builders
using OrvelParser::kIdTbody;
using OrvelParser::kIdTd;
using OrvelParser::kIdTfoot;
using OrvelParser::kIdTh;
using OrvelParser::kIdThead;
using OrvelParser::kIdTr;

Node Td(const std::string& label, const std::string& rowspan = "", const std::string& colspan = "") {
  Node td = El(kIdTd, {Text(label)});
  if (!rowspan.empty()) td = With(td, "rowspan", rowspan);
  if (!colspan.empty()) td = With(td, "colspan", colspan);
  return td;
}
Node Tr(NodeList cells) { return El(kIdTr, std::move(cells)); }

std::string Label(NodeIterator cell) {
  std::u16string label;
  (*cell)->GetText(label);
  return std::string(label.begin(), label.end());
}

// The grid as text: per row, each position as the label of the cell that
// begins there, or "+" for a position without a node (covered by a span
// or padding) up to the row's length. Overflow cells follow a "|".
std::string Picture(const TableGrid& grid) {
  std::string out;
  for (const GridRow& row : grid.rows) {
    std::size_t next = 0;
    uint32_t column = 0;
    for (; column < row.length; ++column) {
      if (next < row.cells.size() && row.cells[next].column == column) {
        EXPECT_NE(row.cells[next].node, grid.no_node);
        out += Label(row.cells[next++].node);
      } else {
        out += "+";
      }
    }
    EXPECT_EQ(next, row.cells.size()) << "cells out of order or beyond the row's length";
    if (!row.overflow.empty()) {
      out += "|";
      for (NodeIterator it : row.overflow) out += Label(it);
    }
    out += "\n";
  }
  return out;
}

struct Measured {
  bool ok;
  uint32_t columns;
  uint32_t rows;
  std::string picture;
};

Measured Measure(const NodeList& table, const GridLimits& limits = GridLimits()) {
  TableGrid grid;
  uint32_t columns = 7;
  uint32_t rows = 7;
  const bool ok = MeasureTableGrid(table.begin(), table.end(), columns, rows, grid, TablesLayoutTreatment(), limits);
  EXPECT_EQ(grid.no_node, table.end());
  EXPECT_EQ(grid.rows.size(), rows);
  EXPECT_EQ(grid.columns, columns);
  return {ok, columns, rows, Picture(grid)};
}

TEST(TableGridTest, WorkedSpanExample) {
  const NodeList table = {Tr({Td("A", "2"), Td("B", "", "2")}), Tr({Td("C")})};
  const Measured m = Measure(table);
  ASSERT_TRUE(m.ok);
  EXPECT_EQ(m.columns, 3u);
  EXPECT_EQ(m.rows, 2u);
  EXPECT_EQ(m.picture, "AB+\n+C\n");
}

TEST(TableGridTest, SpanValuesAsAtoiReadsThem) {
  // Three rows; the first cell of row 0 spans as its attribute says.
  auto rows_covered = [](const std::string& rowspan) {
    const NodeList table = {Tr({Td("A", rowspan), Td("B")}), Tr({Td("C")}), Tr({Td("D")})};
    return Measure(table).picture;
  };
  EXPECT_EQ(rows_covered("2"), "AB\n+C\nD\n");
  EXPECT_EQ(rows_covered(" 2x"), "AB\n+C\nD\n");  // leading space, trailing junk
  EXPECT_EQ(rows_covered("+3"), "AB\n+C\n+D\n");
  EXPECT_EQ(rows_covered("5"), "AB\n+C\n+D\n");  // capped at the rows remaining
  EXPECT_EQ(rows_covered("99999999999999"), "AB\n+C\n+D\n");
  for (const char* one : {"0", "-2", "abc", "-99999999999999"}) {
    EXPECT_EQ(rows_covered(one), "AB\nC\nD\n") << one;
  }

  // A column span widens the table; a row span in the last row counts 1.
  const NodeList wide = {Tr({Td("A")}), Tr({Td("B", "5", "3")})};
  const Measured m = Measure(wide);
  EXPECT_EQ(m.columns, 3u);
  EXPECT_EQ(m.picture, "A\nB++\n");

  const NodeList capped = {Tr({Td("A", "", "5000")})};
  EXPECT_EQ(Measure(capped).columns, 1000u);
}

TEST(TableGridTest, RowOrderAndGroups) {
  // TFOOT first, rows directly under the table, THEAD and TBODY rows where
  // they stand, a row group inside a row group ignored, a TR without
  // children keeping its row, TH alike TD, other children ignored.
  const NodeList table = {
      El(kIdTfoot, {Tr({Td("F")})}),
      Tr({Td("A")}),
      El(kIdThead, {Tr({El(kIdTh, {Text("H")})}), El(kIdTbody, {Tr({Td("X")})})}),
      El(OrvelParser::kIdCaption, {Text("caption")}),
      Tr({}),
      El(kIdTbody, {Tr({Text("stray"), Td("B"), El(OrvelParser::kIdDivision, {Text("div")}), Td("C")})}),
  };
  const Measured m = Measure(table);
  ASSERT_TRUE(m.ok);
  EXPECT_EQ(m.rows, 5u);
  EXPECT_EQ(m.picture, "A\nH\n\nBC\nF\n");

  // Of two footer groups the last is placed; the rows of the first stay
  // counted and empty.
  const NodeList two_footers = {El(kIdTfoot, {Tr({Td("F1")})}), Tr({Td("A")}), El(kIdTfoot, {Tr({Td("F2")})})};
  EXPECT_EQ(Measure(two_footers).picture, "A\nF2\n\n");

  // A footer group without rows placed last takes nothing.
  const NodeList empty_footer = {El(kIdTfoot, {Tr({Td("F1")})}), Tr({Td("A")}), El(kIdTfoot)};
  EXPECT_EQ(Measure(empty_footer).picture, "A\n\n");
}

TEST(TableGridTest, TablesWithoutRows) {
  const NodeList none = {};
  EXPECT_FALSE(Measure(none).ok);
  const NodeList caption_only = {El(OrvelParser::kIdCaption, {Text("c")}), El(kIdTbody)};
  const Measured m = Measure(caption_only);
  EXPECT_FALSE(m.ok);
  EXPECT_EQ(m.columns, 0u);
  EXPECT_EQ(m.rows, 0u);
  // Rows without cells measure, with 0 columns.
  const NodeList empty_rows = {Tr({}), Tr({Text("x")})};
  const Measured e = Measure(empty_rows);
  EXPECT_TRUE(e.ok);
  EXPECT_EQ(e.columns, 0u);
  EXPECT_EQ(e.rows, 2u);
}

TEST(TableGridTest, LimitsClampTheGrid) {
  GridLimits limits;
  limits.slot_budget = 8;  // 4 rows: at most 2 columns
  limits.max_colspan = 3;
  limits.max_rowspan = 2;
  const NodeList table = {
      Tr({Td("A"), Td("B"), Td("C"), Td("D")}),  // C and D overflow
      Tr({Td("E", "9", "9")}),                   // 2 rows (rows left 3, cap 2), 2 columns
      Tr({Td("G")}),                             // every column covered: overflow
      Tr({Td("H", "", "2")}),
  };
  const Measured m = Measure(table, limits);
  EXPECT_EQ(m.columns, 2u);
  EXPECT_EQ(m.picture, "AB|CD\nE+\n++|G\nH+\n");

  // One row: the budget bounds the columns alone.
  limits.slot_budget = 5;
  const NodeList one_row = {Tr({Td("A", "", "3"), Td("B", "", "3")})};
  EXPECT_EQ(Measure(one_row, limits).picture, "A++B+\n");

  // More rows than the budget: one column each.
  limits.slot_budget = 2;
  const NodeList tall = {Tr({Td("A"), Td("B")}), Tr({Td("C")}), Tr({Td("D")})};
  EXPECT_EQ(Measure(tall, limits).picture, "A|B\nC\nD\n");
}

TEST(TableGridTest, SpanWorkBudgetFallsBackToSingleCells) {
  GridLimits limits;
  limits.span_work_budget = 4;
  // A covers 3 rows, a cost of 3; B would cost 2 more and spans nothing;
  // single cells cost 1 each and are always placed.
  const NodeList table = {Tr({Td("A", "3", "3"), Td("B", "2", "2"), Td("C")}), Tr({Td("D")}), Tr({Td("E")})};
  EXPECT_EQ(Measure(table, limits).picture, "A++BC\n+++D\n+++E\n");
}

// The tables of one document share one budget beyond their own grants:
// once the first has spent it, the next holds no more than its grant.
TEST(TableGridTest, DocumentBudgetIsShared) {
  GridLimits limits;
  limits.slots_per_element = 1;
  limits.shared_slots = 10;
  limits.span_work_per_element = 0;
  limits.shared_span_work = 4;
  auto budget = std::make_unique<TableBudget>(limits);
  auto measure = [&budget](const NodeList& table) {
    TableGrid grid;
    uint32_t columns = 0;
    uint32_t rows = 0;
    EXPECT_TRUE(MeasureTableGrid(table.begin(), table.end(), columns, rows, grid, TablesLayoutTreatment(), *budget));
    return Picture(grid);
  };
  // A row and two cells: 3 slots of its own and the 10 shared.
  const NodeList wide = {Tr({Td("A", "", "13"), Td("B")})};
  EXPECT_EQ(measure(wide), "A++++++++++++|B\n");
  EXPECT_EQ(measure(wide), "A++|B\n");
  // Span work: 3 + 1 of the 4 shared units for the first table; the row
  // span of the second finds none left.
  budget = std::make_unique<TableBudget>(limits);
  const NodeList tall = {Tr({Td("A", "3")}), Tr({Td("B")}), Tr({Td("C")})};
  EXPECT_EQ(measure(tall), "A\n+B\n+C\n");
  EXPECT_EQ(measure(tall), "A\nB\nC\n");
}

// The grid holds only the cells that begin in it: the positions follow the
// rules as a grid of every position would, checked against one over random
// tables of overlapping spans.
TEST(TableGridTest, SparseGridMatchesEveryPositionGrid) {
  const char* const row_spans[] = {"", "0", "1", "2", "3", "9"};
  const char* const col_spans[] = {"", "1", "2", "3"};
  uint32_t state = 12345;
  auto random = [&state](uint32_t n) {
    state = state * 1103515245u + 12345u;
    return (state >> 16) % n;
  };
  for (int round = 0; round < 300; ++round) {
    NodeList table;
    // Every position: the label of the cell beginning there, "+" when
    // covered, "." when padding.
    std::vector<std::string> dense;
    const uint32_t row_count = 1 + random(6);
    dense.resize(row_count);
    for (uint32_t r = 0; r < row_count; ++r) {
      NodeList cells;
      const uint32_t cell_count = random(5);
      size_t c = 0;
      for (uint32_t i = 0; i < cell_count; ++i) {
        const std::string rowspan = row_spans[random(6)];
        const std::string colspan = col_spans[random(4)];
        const std::string label(1, static_cast<char>('a' + (r * 5 + i) % 26));
        cells.push_back(Td(label, rowspan, colspan));
        c = i == 0 ? 0 : c + 1;
        while (c < dense[r].size() && dense[r][c] != '.') ++c;
        const int rs = std::max(1, std::atoi(rowspan.c_str()));
        const uint32_t rows_covered = std::min<uint32_t>(rs, row_count - r);
        const size_t cols_covered = std::max(1, std::atoi(colspan.c_str()));
        for (uint32_t k = r; k < r + rows_covered; ++k) {
          if (dense[k].size() < c + cols_covered) dense[k].resize(c + cols_covered, '.');
          for (size_t j = c; j < c + cols_covered; ++j) dense[k][j] = '+';
        }
        dense[r][c] = label[0];
      }
      table.push_back(Tr(std::move(cells)));
    }
    std::string expected;
    for (std::string& row : dense) {
      for (char& position : row) position = position == '.' ? '+' : position;
      expected += row + "\n";
    }
    EXPECT_EQ(Measure(table).picture, expected) << "round " << round;
  }
}

TEST(TableGridTest, CellsWithoutChildrenStillTakeTheirPlace) {
  const NodeList table = {Tr({El(kIdTd), Td("B")})};
  TableGrid grid;
  uint32_t columns = 0;
  uint32_t rows = 0;
  ASSERT_TRUE(MeasureTableGrid(table.begin(), table.end(), columns, rows, grid));
  ASSERT_EQ(grid.rows[0].cells.size(), 2u);
  EXPECT_EQ(grid.rows[0].length, 2u);
  EXPECT_EQ(grid.rows[0].cells[0].column, 0u);
  EXPECT_EQ(grid.rows[0].cells[0].node, table[0]->Children().begin());
  EXPECT_EQ(grid.rows[0].cells[1].column, 1u);
  EXPECT_EQ(grid.rows[0].cells[1].node, table[0]->Children().begin() + 1);
}

}  // namespace
}  // namespace ZestraNS
