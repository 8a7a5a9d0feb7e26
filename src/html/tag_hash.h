// The perfect hash of the known tag names (tag_id.h): a byte-at-a-time
// hash that the tokenizer updates while it lower-cases a tag name, so that
// the name's id costs one table read and one comparison at the end.
//
// Thread-safety: constant data and pure functions.
#ifndef ZESTRA_HTML_TAG_HASH_H_
#define ZESTRA_HTML_TAG_HASH_H_

#include <cstdint>
#include <string_view>

#include "html/tag_id.h"

namespace OrvelParser {

// The hash state before the first byte of a name.
uint32_t TagHashSeed() noexcept;

// The hash state after `byte` (a lower-cased name byte) follows `hash`.
constexpr uint32_t TagHashStep(uint32_t hash, unsigned char byte) noexcept {
  return (hash ^ byte) * 0x01000193u;
}

// The id of the lower-case name `name`, whose hash state after its last
// byte is `hash` (TagHashSeed stepped over every byte of `name`).
TagId LookupTagHashed(std::string_view name, uint32_t hash) noexcept;

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_TAG_HASH_H_
