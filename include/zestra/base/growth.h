// The growth rule shared by the library's growable arrays: when an append
// finds the array full, the new capacity is the current size times 2.0 while
// the size is at most 256 and times 1.25 above, truncated, never less than
// 16. So capacities run 16, 32, 64, 128, 256, 512, 640, 800, 1000, ...
#ifndef ZESTRA_BASE_GROWTH_H_
#define ZESTRA_BASE_GROWTH_H_

#include <cstdint>

namespace Orvel {

// Capacity after growing an array that holds `size` elements.
inline uint32_t GrownCapacity(uint32_t size) noexcept {
  const double factor = size <= 256 ? 2.0 : 1.25;
  const double grown = static_cast<double>(size) * factor;
  const uint32_t capacity = grown >= 4294967295.0 ? 4294967295u : static_cast<uint32_t>(grown);
  return capacity < 16 ? 16 : capacity;
}

}  // namespace Orvel

#endif  // ZESTRA_BASE_GROWTH_H_
