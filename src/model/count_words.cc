#include "zestra/model/count_words.h"

namespace ZestraNS {
namespace {

bool IsSeparator(char16_t c) {
  switch (c) {
    case u'\n': case u'\t': case u' ': case u'.': case u',': case u'!': case u'(':
    case u')': case u'%': case u'$': case u'?': case u'*': case u'#': case u'|':
      return true;
    default:
      return false;
  }
}

}  // namespace

uint32_t CountWords(const std::u16string& text) {
  if (text.empty()) return 0;
  // The runs are counted over the text as a zero-terminated string, so the
  // scan ends at the first NUL.
  const std::size_t end = text.find(u'\0');
  const std::size_t scan_end = end == std::u16string::npos ? text.size() : end;
  uint32_t count = 0;
  std::size_t i = 0;
  while (i < scan_end) {
    while (i < scan_end && !IsSeparator(text[i])) ++i;
    if (i == scan_end) break;
    ++count;
    while (i < scan_end && IsSeparator(text[i])) ++i;
  }
  // A final NUL is the string's terminator as far as this test goes, and the
  // terminator belongs to the separator set.
  const char16_t last = text.back();
  if (last != u'\0' && !IsSeparator(last)) ++count;
  return count;
}

}  // namespace ZestraNS
