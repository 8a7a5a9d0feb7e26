#include "html/tag_id.h"

#include <algorithm>
#include <array>

namespace OrvelParser {
namespace {

constexpr std::string_view kNames[] = {
    "",
#define ZESTRA_HTML_TAG_NAME(name) #name,
    ZESTRA_HTML_TAGS(ZESTRA_HTML_TAG_NAME)
#undef ZESTRA_HTML_TAG_NAME
    "annotation-xml",
};
static_assert(std::size(kNames) == static_cast<size_t>(TagId::kTagCount));

// The names sorted, each with its id, for a binary search.
struct SortedNames {
  std::array<std::pair<std::string_view, TagId>, std::size(kNames) - 1> rows;
  constexpr SortedNames() : rows() {
    for (size_t i = 1; i < std::size(kNames); ++i) rows[i - 1] = {kNames[i], static_cast<TagId>(i)};
    std::sort(rows.begin(), rows.end());
  }
};
constexpr SortedNames kSorted;

}  // namespace

TagId LookupTag(std::string_view name) noexcept {
  const auto* found = std::lower_bound(kSorted.rows.begin(), kSorted.rows.end(), name,
                                       [](const auto& row, std::string_view key) { return row.first < key; });
  return found != kSorted.rows.end() && found->first == name ? found->second : TagId::kTagUnknown;
}

std::string_view TagName(TagId tag) noexcept {
  const auto index = static_cast<size_t>(tag);
  return index < std::size(kNames) ? kNames[index] : std::string_view();
}

}  // namespace OrvelParser
