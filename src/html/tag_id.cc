#include "html/tag_id.h"

#include <array>

#include "html/tag_hash.h"
#include "html/text_scan.h"

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

// A perfect hash over the names: the seed is the first one (searched at
// compile time) under which no two names share a slot, so a lookup reads
// one slot and compares one name. 4096 slots for ~150 names leave a
// collision-free seed among the first few dozen.
constexpr uint32_t kSlotBits = 12;
constexpr uint32_t kSlotCount = 1u << kSlotBits;

constexpr uint32_t Slot(uint32_t hash) { return (hash ^ (hash >> 16)) & (kSlotCount - 1); }

constexpr uint32_t HashName(uint32_t seed, std::string_view name) {
  uint32_t hash = seed;
  for (char c : name) hash = TagHashStep(hash, static_cast<unsigned char>(c));
  return hash;
}

struct PerfectTable {
  uint32_t seed = 0;
  std::array<uint8_t, kSlotCount> ids{};  // 0 (kTagUnknown): empty slot

  constexpr PerfectTable() {
    for (uint32_t candidate = 0x811C9DC5u;; candidate += 0x9E3779B9u) {
      if (TryFill(candidate)) {
        seed = candidate;
        return;
      }
    }
  }

  constexpr bool TryFill(uint32_t candidate) {
    for (auto& id : ids) id = 0;
    for (size_t i = 1; i < std::size(kNames); ++i) {
      const uint32_t slot = Slot(HashName(candidate, kNames[i]));
      if (ids[slot] != 0) return false;
      ids[slot] = static_cast<uint8_t>(i);
    }
    return true;
  }
};
constexpr PerfectTable kTable;

}  // namespace

uint32_t TagHashSeed() noexcept { return kTable.seed; }

TagId LookupTagHashed(std::string_view name, uint32_t hash) noexcept {
  const uint8_t id = kTable.ids[Slot(hash)];
  const std::string_view known = kNames[id];
  return id != 0 && SameShortText(known.data(), static_cast<uint32_t>(known.size()), name.data(),
                                  static_cast<uint32_t>(name.size()))
             ? static_cast<TagId>(id)
             : TagId::kTagUnknown;
}

TagId LookupTag(std::string_view name) noexcept {
  return LookupTagHashed(name, HashName(kTable.seed, name));
}

std::string_view TagName(TagId tag) noexcept {
  const auto index = static_cast<size_t>(tag);
  return index < std::size(kNames) ? kNames[index] : std::string_view();
}

}  // namespace OrvelParser
