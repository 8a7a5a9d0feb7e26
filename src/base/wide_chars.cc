#include "zestra/base/wide_chars.h"

namespace Orvel {

bool IsSpaceClass(char16_t c) noexcept {
  if (c <= 0x20) return c == 0x20 || (c >= 0x09 && c <= 0x0D);
  if (c < 0x1680) return false;
  if (c == 0x1680 || c == 0x2028 || c == 0x2029 || c == 0x205F || c == 0x3000) return true;
  return c >= 0x2000 && c <= 0x200A && c != 0x2007;
}

}  // namespace Orvel
