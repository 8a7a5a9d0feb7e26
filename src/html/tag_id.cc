#include "html/tag_id.h"

#include "html/perfect_hash.h"

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

constexpr PerfectHash<std::size(kNames), 12> kTable(kNames);

}  // namespace

uint32_t TagHashSalt() noexcept { return kTable.salt(); }

TagId LookupTagHashed(std::string_view name, uint32_t hash) noexcept {
  return static_cast<TagId>(kTable.Find(name, hash));
}

TagId LookupTag(std::string_view name) noexcept { return static_cast<TagId>(kTable.Find(name)); }

std::string_view TagName(TagId tag) noexcept {
  const auto index = static_cast<size_t>(tag);
  return index < std::size(kNames) ? kNames[index] : std::string_view();
}

}  // namespace OrvelParser
