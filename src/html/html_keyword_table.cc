#include "zestra/html/html_keyword_table.h"

#include <algorithm>
#include <span>

#include "html/html_element_table.h"
#include "html/tag_id.h"

namespace OrvelParser {

HtmlKeywordTable::HtmlKeywordTable(int prt_type) {
  const std::span<const HtmlElementRow> rows = HtmlElementTable();
  for (size_t i = 0; i < rows.size(); ++i) {
    by_name_.emplace_back(rows[i].name, Keyword{rows[i].id | rows[i].attributes, static_cast<ElementNumber>(i + 1)});
  }
  std::sort(by_name_.begin(), by_name_.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  by_tag_.resize(static_cast<size_t>(TagId::kTagCount));
  for (size_t tag = 1; tag < by_tag_.size(); ++tag) by_tag_[tag] = Find(TagName(static_cast<TagId>(tag)));
}

HtmlKeywordTable::~HtmlKeywordTable() = default;

HtmlKeywordTable::Keyword HtmlKeywordTable::Find(std::string_view name) const {
  const auto it = std::lower_bound(by_name_.begin(), by_name_.end(), name,
                                   [](const auto& row, std::string_view key) { return row.first < key; });
  if (it == by_name_.end() || it->first != name) return Keyword();
  return it->second;
}

std::string_view HtmlKeywordTable::ElementName(ElementNumber element) {
  const std::span<const HtmlElementRow> rows = HtmlElementTable();
  if (element == kNoElement || element > rows.size()) return {};
  return rows[element - 1].name;
}

}  // namespace OrvelParser
