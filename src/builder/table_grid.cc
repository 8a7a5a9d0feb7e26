#include "builder/table_grid.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string>

#include "builder/constant_strings.h"

namespace ZestraNS {
namespace {

TableRole RoleOf(NodeIterator it, const TreatmentTable& treatment) {
  return treatment.ForId(KeywordWord(*it)).table_role;
}

// Calls `visit` for every row node of the table [first, end) in grid
// order: rows directly under the table and those of its row groups (and,
// unless `footer_last`, footer groups) where they stand; with
// `footer_last`, the rows of the last footer group child come at the end.
// Only groups that are direct children of the table are entered.
template <class Visit>
void ForEachRow(NodeIterator first, NodeIterator end, bool footer_last, const TreatmentTable& treatment,
                Visit&& visit) {
  auto visit_group = [&](NodeIterator group) {
    for (NodeIterator it = ChildrenBegin(*group); it != ChildrenEnd(*group); ++it) {
      if (RoleOf(it, treatment) == TableRole::kRow) visit(it);
    }
  };
  NodeIterator footer = end;
  for (NodeIterator it = first; it != end; ++it) {
    switch (RoleOf(it, treatment)) {
      case TableRole::kRow:
        visit(it);
        break;
      case TableRole::kFooterGroup:
        if (footer_last) {
          footer = it;
        } else {
          visit_group(it);
        }
        break;
      case TableRole::kRowGroup:
        visit_group(it);
        break;
      default:
        break;
    }
  }
  if (footer != end) visit_group(footer);
}

// The span attribute `name` of a table cell: its decimal value as atoi
// reads it (leading white space, optional sign, digits; out-of-range values
// saturate), 1 when absent, empty or below 1.
uint32_t ReadSpan(NodeIterator cell, const std::string& name) {
  std::string value;
  GetParam(*cell, name, value);
  if (value.empty()) return 1;
  long long parsed = std::strtoll(value.c_str(), nullptr, 10);
  parsed = std::clamp<long long>(parsed, INT_MIN, INT_MAX);
  return parsed < 1 ? 1u : static_cast<uint32_t>(parsed);
}

// Places the cells of one row into the grid.
class RowPlacer {
 public:
  RowPlacer(TableGrid& grid, const TreatmentTable& treatment, const GridLimits& limits)
      : grid_(grid),
        treatment_(treatment),
        limits_(limits),
        max_columns_(std::max(1u, limits.slot_budget / static_cast<uint32_t>(grid.rows.size()))) {}

  void PlaceRow(uint32_t r, NodeIterator row) {
    const uint32_t row_count = static_cast<uint32_t>(grid_.rows.size());
    uint64_t c = 0;
    bool first = true;
    for (NodeIterator it = ChildrenBegin(*row); it != ChildrenEnd(*row); ++it) {
      if (RoleOf(it, treatment_) != TableRole::kCell) continue;
      c = first ? 0 : c + 1;
      first = false;
      std::vector<GridEntry>& entries = grid_.rows[r];
      while (c < entries.size() && entries[c].occupied) ++c;
      if (c >= max_columns_) {
        grid_.overflow[r].push_back(it);
        continue;
      }
      uint32_t rowspan = std::min(ReadSpan(it, RowspanAttribute()), row_count - r);
      rowspan = std::min(rowspan, limits_.max_rowspan);
      uint32_t colspan = std::min(ReadSpan(it, ColspanAttribute()), limits_.max_colspan);
      colspan = static_cast<uint32_t>(std::min<uint64_t>(colspan, max_columns_ - c));
      const uint64_t cost = static_cast<uint64_t>(rowspan) * colspan;
      if (cost > 1 && span_work_ + cost > limits_.span_work_budget) rowspan = colspan = 1;
      span_work_ += static_cast<uint64_t>(rowspan) * colspan;
      Cover(r, rowspan, static_cast<uint32_t>(c), colspan);
      grid_.rows[r][c] = GridEntry{true, it};
    }
  }

 private:
  void Cover(uint32_t r, uint32_t rowspan, uint32_t c, uint32_t colspan) {
    const std::size_t right = static_cast<std::size_t>(c) + colspan;
    for (uint32_t i = r; i < r + rowspan; ++i) {
      std::vector<GridEntry>& entries = grid_.rows[i];
      if (entries.size() < right) entries.resize(right, GridEntry{false, grid_.no_node});
      for (std::size_t k = c; k < right; ++k) entries[k] = GridEntry{true, grid_.no_node};
    }
  }

  TableGrid& grid_;
  const TreatmentTable& treatment_;
  const GridLimits& limits_;
  const uint32_t max_columns_;
  uint64_t span_work_ = 0;
};

}  // namespace

bool MeasureTableGrid(NodeIterator first, NodeIterator end, uint32_t& columns, uint32_t& rows,
                      TableGrid& grid, const TreatmentTable& treatment, const GridLimits& limits) {
  grid.no_node = end;
  grid.rows.clear();
  grid.overflow.clear();
  grid.columns = 0;
  columns = 0;
  rows = 0;

  uint32_t row_count = 0;
  ForEachRow(first, end, false, treatment, [&](NodeIterator) { ++row_count; });
  if (row_count == 0) return false;
  grid.rows.resize(row_count);
  grid.overflow.resize(row_count);

  RowPlacer placer(grid, treatment, limits);
  uint32_t r = 0;
  // The second pass meets at most the rows of the first (it skips the rows
  // of all but the last footer group), so r stays below row_count.
  ForEachRow(first, end, true, treatment, [&](NodeIterator row) { placer.PlaceRow(r++, row); });

  for (const std::vector<GridEntry>& entries : grid.rows) {
    grid.columns = std::max(grid.columns, static_cast<uint32_t>(entries.size()));
  }
  columns = grid.columns;
  rows = row_count;
  return true;
}

}  // namespace ZestraNS
