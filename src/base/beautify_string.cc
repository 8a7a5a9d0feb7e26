#include "zestra/base/beautify_string.h"

#include "zestra/base/wide_chars.h"

namespace Orvel {

void BeautifyString(const std::u16string& in, std::u16string& out, bool trim, bool collapse) {
  // The result is never longer than `in` (a collapsed run of one or more
  // characters becomes one space), so it is written into a string of that
  // size and cut to length after.
  std::u16string cleaned(in.size(), u'\0');
  char16_t* const first = cleaned.data();
  char16_t* next = first;
  bool pending_space = false;  // a collapsed run waits for its next character
  for (char16_t c : in) {
    if (IsNonSpaceControl(c)) continue;
    if (collapse && IsWhiteSpace(c)) {
      pending_space = true;
      continue;
    }
    if (pending_space) {
      *next++ = u' ';
      pending_space = false;
    }
    *next++ = c;
  }
  if (pending_space) *next++ = u' ';
  cleaned.resize(static_cast<std::size_t>(next - first));

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
