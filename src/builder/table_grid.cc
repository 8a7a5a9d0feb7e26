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

// Places the cells of each row into the grid, keeping the row spans that
// reach into the rows below as column intervals until their last row.
class RowPlacer {
 public:
  RowPlacer(TableGrid& grid, const TreatmentTable& treatment, const GridLimits& limits, uint64_t max_columns,
            uint64_t span_work)
      : grid_(grid), treatment_(treatment), limits_(limits), max_columns_(max_columns), span_work_left_(span_work) {}

  // Sets up row r: drops the spans that ended above it and merges those
  // that cover it into `covered_`. Rows are begun in order, every one.
  void BeginRow(uint32_t r) {
    covered_.clear();
    uint32_t length = 0;
    std::size_t kept = 0;
    for (const Span& span : spans_) {
      if (span.end_row <= r) continue;
      spans_[kept++] = span;
      covered_.push_back({span.begin, span.end});
      length = std::max(length, span.end);
    }
    spans_.resize(kept);
    std::sort(covered_.begin(), covered_.end());
    std::size_t merged = 0;
    for (const Interval& interval : covered_) {
      if (merged > 0 && interval.begin <= covered_[merged - 1].end) {
        covered_[merged - 1].end = std::max(covered_[merged - 1].end, interval.end);
      } else {
        covered_[merged++] = interval;
      }
    }
    covered_.resize(merged);
    grid_.rows[r].length = length;
  }

  // Places the cells of the row node `row` into row r, which BeginRow set up.
  void PlaceRow(uint32_t r, NodeIterator row) {
    GridRow& placed = grid_.rows[r];
    const uint32_t row_count = static_cast<uint32_t>(grid_.rows.size());
    uint64_t next = 0;  // where the search for the next free column starts
    std::size_t k = 0;  // the first interval of covered_ that may lie at or after it
    for (NodeIterator it = ChildrenBegin(*row); it != ChildrenEnd(*row); ++it) {
      if (RoleOf(it, treatment_) != TableRole::kCell) continue;
      uint64_t c = next;
      while (k < covered_.size() && covered_[k].end <= c) ++k;
      if (k < covered_.size() && covered_[k].begin <= c) c = covered_[k++].end;
      if (c >= max_columns_) {
        placed.overflow.push_back(it);
        next = c + 1;
        continue;
      }
      uint32_t rowspan = std::min(ReadSpan(it, RowspanAttribute()), row_count - r);
      rowspan = std::min(rowspan, limits_.max_rowspan);
      uint32_t colspan = std::min(ReadSpan(it, ColspanAttribute()), limits_.max_colspan);
      colspan = static_cast<uint32_t>(std::min<uint64_t>(colspan, max_columns_ - c));
      if (rowspan > 1 && rowspan > span_work_left_) rowspan = colspan = 1;
      span_work_left_ -= std::min<uint64_t>(rowspan, span_work_left_);
      span_work_ += rowspan;
      const uint32_t begin = static_cast<uint32_t>(c);
      const uint32_t end = begin + colspan;
      placed.length = std::max(placed.length, end);
      if (rowspan > 1) spans_.push_back(Span{r + rowspan, begin, end});
      placed.cells.push_back(GridEntry{begin, it});
      next = end;
    }
  }

  // The span work done: rows covered by the cells placed.
  uint64_t SpanWork() const { return span_work_; }

 private:
  struct Interval {
    uint32_t begin;
    uint32_t end;
    bool operator<(const Interval& other) const { return begin < other.begin; }
  };
  // Columns [begin, end) covered by a cell of an earlier row down to the
  // row before end_row.
  struct Span {
    uint32_t end_row;
    uint32_t begin;
    uint32_t end;
  };

  TableGrid& grid_;
  const TreatmentTable& treatment_;
  const GridLimits& limits_;
  const uint64_t max_columns_;
  uint64_t span_work_left_;
  uint64_t span_work_ = 0;
  std::vector<Span> spans_;
  std::vector<Interval> covered_;  // of the current row: sorted, disjoint, not touching
};

}  // namespace

uint64_t TableBudget::SlotsFor(uint64_t elements) const {
  return std::min<uint64_t>(limits_.slot_budget, limits_.slots_per_element * elements + slots_);
}

void TableBudget::TakeSlots(uint64_t elements, uint64_t slots) {
  const uint64_t granted = limits_.slots_per_element * elements;
  if (slots > granted) slots_ -= std::min(slots_, slots - granted);
}

uint64_t TableBudget::SpanWorkFor(uint64_t elements) const {
  return std::min<uint64_t>(limits_.span_work_budget, limits_.span_work_per_element * elements + span_work_);
}

void TableBudget::TakeSpanWork(uint64_t elements, uint64_t work) {
  const uint64_t granted = limits_.span_work_per_element * elements;
  if (work > granted) span_work_ -= std::min(span_work_, work - granted);
}

bool MeasureTableGrid(NodeIterator first, NodeIterator end, uint32_t& columns, uint32_t& rows,
                      TableGrid& grid, const TreatmentTable& treatment, TableBudget& budget) {
  grid.no_node = end;
  grid.rows.clear();
  grid.columns = 0;
  columns = 0;
  rows = 0;

  uint32_t row_count = 0;
  uint64_t elements = 0;  // rows and cells: what the budget grants by
  ForEachRow(first, end, false, treatment, [&](NodeIterator row) {
    ++row_count;
    ++elements;
    for (NodeIterator it = ChildrenBegin(*row); it != ChildrenEnd(*row); ++it) {
      if (RoleOf(it, treatment) == TableRole::kCell) ++elements;
    }
  });
  if (row_count == 0) return false;
  grid.rows.resize(row_count);

  const uint64_t max_columns = std::max<uint64_t>(1, budget.SlotsFor(elements) / row_count);
  RowPlacer placer(grid, treatment, budget.Limits(), max_columns, budget.SpanWorkFor(elements));
  uint32_t r = 0;
  // The second pass meets at most the rows of the first (it skips the rows
  // of all but the last footer group), so r stays below row_count.
  ForEachRow(first, end, true, treatment, [&](NodeIterator row) {
    placer.BeginRow(r);
    placer.PlaceRow(r++, row);
  });
  // Rows left empty may still be covered by spans from above.
  while (r < row_count) placer.BeginRow(r++);

  for (const GridRow& row : grid.rows) grid.columns = std::max(grid.columns, row.length);
  budget.TakeSlots(elements, static_cast<uint64_t>(grid.columns) * row_count);
  budget.TakeSpanWork(elements, placer.SpanWork());
  columns = grid.columns;
  rows = row_count;
  return true;
}

bool MeasureTableGrid(NodeIterator first, NodeIterator end, uint32_t& columns, uint32_t& rows,
                      TableGrid& grid, const TreatmentTable& treatment, const GridLimits& limits) {
  TableBudget budget(limits);
  return MeasureTableGrid(first, end, columns, rows, grid, treatment, budget);
}

}  // namespace ZestraNS
