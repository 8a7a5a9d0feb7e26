#include "zestra/platform/html_keyword_table.h"

#include <gumbo.h>

#include <algorithm>

#include "platform/html_element_table.h"

namespace OrvelParser {

HtmlKeywordTable::HtmlKeywordTable(int prt_type) {
  for (const HtmlElementRow& row : HtmlElementTable()) {
    words_by_name_.emplace_back(row.name, row.id | row.attributes);
  }
  std::sort(words_by_name_.begin(), words_by_name_.end());
  words_by_tag_.resize(GUMBO_TAG_LAST, kIdOther);
  for (unsigned tag = 0; tag < GUMBO_TAG_UNKNOWN; ++tag) {
    words_by_tag_[tag] = Word(gumbo_normalized_tagname(static_cast<GumboTag>(tag)));
  }
}

HtmlKeywordTable::~HtmlKeywordTable() = default;

uint32_t HtmlKeywordTable::Word(std::string_view name) const {
  const auto it = std::lower_bound(words_by_name_.begin(), words_by_name_.end(), name,
                                   [](const auto& row, std::string_view key) { return row.first < key; });
  if (it == words_by_name_.end() || it->first != name) return kIdOther;
  return it->second;
}

}  // namespace OrvelParser
