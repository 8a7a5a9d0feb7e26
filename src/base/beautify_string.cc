#include "zestra/base/beautify_string.h"

#include "zestra/base/wide_chars.h"

namespace Orvel {

void BeautifyString(const std::u16string& in, std::u16string& out, bool trim, bool collapse) {
  std::u16string cleaned;
  cleaned.reserve(in.size());
  bool pending_space = false;  // a collapsed run waits for its next character
  for (char16_t c : in) {
    if (IsNonSpaceControl(c)) continue;
    if (collapse && IsWhiteSpace(c)) {
      pending_space = true;
      continue;
    }
    if (pending_space) {
      cleaned.push_back(u' ');
      pending_space = false;
    }
    cleaned.push_back(c);
  }
  if (pending_space) cleaned.push_back(u' ');

  if (trim) {
    std::size_t begin = 0;
    std::size_t end = cleaned.size();
    while (begin < end && IsWhiteSpace(cleaned[begin])) ++begin;
    while (end > begin && IsWhiteSpace(cleaned[end - 1])) --end;
    cleaned = cleaned.substr(begin, end - begin);
  }
  out = std::move(cleaned);
}

}  // namespace Orvel
