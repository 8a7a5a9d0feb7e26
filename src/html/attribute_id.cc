#include "html/attribute_id.h"

#include "html/perfect_hash.h"

namespace OrvelParser {
namespace {

constexpr std::string_view kNames[] = {
    "",
#define ZESTRA_HTML_ATTRIBUTE_NAME(name) #name,
    ZESTRA_HTML_ATTRIBUTES(ZESTRA_HTML_ATTRIBUTE_NAME)
#undef ZESTRA_HTML_ATTRIBUTE_NAME
    "aria-hidden",
    "http-equiv",
};
static_assert(std::size(kNames) == static_cast<size_t>(AttributeId::kAttributeCount));

constexpr PerfectHash<std::size(kNames), 11> kTable(kNames);

}  // namespace

uint32_t AttributeHashSalt() noexcept { return kTable.salt(); }

AttributeId LookupAttributeHashed(std::string_view name, uint32_t hash) noexcept {
  return static_cast<AttributeId>(kTable.Find(name, hash));
}

AttributeId LookupAttribute(std::string_view name) noexcept { return static_cast<AttributeId>(kTable.Find(name)); }

std::string_view AttributeName(AttributeId id) noexcept {
  const auto index = static_cast<size_t>(id);
  return index < std::size(kNames) ? kNames[index] : std::string_view();
}

}  // namespace OrvelParser
