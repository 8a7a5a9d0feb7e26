// A perfect hash over a fixed list of short names (tag names, attribute
// names), found at compile time: a byte-at-a-time hash that a scanner can
// update while it lower-cases a name, a salt under which no two names of
// the list share a slot, and a table of slots holding each name's index.
// A lookup reads one slot and compares one name.
//
// Thread-safety: constant data and pure functions.
#ifndef ZESTRA_HTML_PERFECT_HASH_H_
#define ZESTRA_HTML_PERFECT_HASH_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "html/text_scan.h"

namespace OrvelParser {

// The hash state after `byte` follows `hash` (FNV-1a).
constexpr uint32_t NameHashStep(uint32_t hash, unsigned char byte) noexcept { return (hash ^ byte) * 0x01000193u; }

// `kNames[0]` is the empty name of "unknown"; the others are the names, at
// most 255 of them. 1 << kSlotBits slots: about 25 times the name count
// finds a salt within a few dozen tries.
template <size_t kCount, uint32_t kSlotBits>
class PerfectHash {
 public:
  static_assert(kCount <= 256);
  static constexpr uint32_t kSlotCount = 1u << kSlotBits;

  constexpr explicit PerfectHash(const std::string_view (&names)[kCount]) : names_(), ids_() {
    for (size_t i = 0; i < kCount; ++i) names_[i] = names[i];
    for (uint32_t candidate = 0x811C9DC5u;; candidate += 0x9E3779B9u) {
      if (TryFill(candidate)) {
        salt_ = candidate;
        return;
      }
    }
  }

  // The hash state before the first byte of a name.
  constexpr uint32_t salt() const { return salt_; }

  // The index of `name` in the list, 0 when it is not there; `hash` is
  // salt() stepped over every byte of `name`.
  uint8_t Find(std::string_view name, uint32_t hash) const noexcept {
    const uint8_t id = ids_[Slot(hash)];
    const std::string_view known = names_[id];
    return SameShortText(known.data(), static_cast<uint32_t>(known.size()), name.data(),
                         static_cast<uint32_t>(name.size()))
               ? id
               : 0;
  }
  uint8_t Find(std::string_view name) const noexcept { return Find(name, Hash(salt_, name)); }

  static constexpr uint32_t Hash(uint32_t hash, std::string_view name) {
    for (const char c : name) hash = NameHashStep(hash, static_cast<unsigned char>(c));
    return hash;
  }

 private:
  static constexpr uint32_t Slot(uint32_t hash) { return (hash ^ (hash >> 16)) & (kSlotCount - 1); }

  constexpr bool TryFill(uint32_t candidate) {
    for (auto& id : ids_) id = 0;
    for (size_t i = 1; i < kCount; ++i) {
      const uint32_t slot = Slot(Hash(candidate, names_[i]));
      if (ids_[slot] != 0) return false;
      ids_[slot] = static_cast<uint8_t>(i);
    }
    return true;
  }

  std::array<std::string_view, kCount> names_;
  std::array<uint8_t, kSlotCount> ids_;  // 0: empty slot (names_[0] is "")
  uint32_t salt_ = 0;
};

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_PERFECT_HASH_H_
