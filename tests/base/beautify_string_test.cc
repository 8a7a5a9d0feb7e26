#include <gtest/gtest.h>

#include "zestra/base/beautify_string.h"
#include "zestra/base/wide_chars.h"

namespace {

std::u16string Clean(const std::u16string& in, bool trim = false, bool collapse = true) {
  std::u16string out = u"garbage";
  Orvel::BeautifyString(in, out, trim, collapse);
  return out;
}

TEST(BeautifyStringTest, CollapsesRunsAndKeepsOneSpaceAtEachEnd) {
  EXPECT_EQ(Clean(u""), u"");
  EXPECT_EQ(Clean(u"abc"), u"abc");
  EXPECT_EQ(Clean(u"  a \n\t b  "), u" a b ");
  EXPECT_EQ(Clean(u"a\u00A0\u00A0b"), u"a b");          // no-break space is white space here
  EXPECT_EQ(Clean(u"a\u3000\u2003b\u2007c"), u"a b\u2007c");  // U+2007 is not in the space class
  EXPECT_EQ(Clean(u"\r\n"), u" ");
  EXPECT_EQ(Clean(std::u16string(u"a\0b\u0001\u007F\u0085c", 7)), u"abc");  // non-space controls dropped
  EXPECT_EQ(Clean(u"a \u0001 b"), u"a b");  // a dropped control does not split a run
}

TEST(BeautifyStringTest, FlagsTrimAndPreserve) {
  EXPECT_EQ(Clean(u"  a  b  ", true, true), u"a b");
  EXPECT_EQ(Clean(u" a\n\nb\u0002 ", false, false), u" a\n\nb ");
  EXPECT_EQ(Clean(u" a\n\nb ", true, false), u"a\n\nb");
  std::u16string same = u" x  y ";
  Orvel::BeautifyString(same, same, false, true);  // in and out may alias
  EXPECT_EQ(same, u" x y ");
}

TEST(WideCharsTest, SpaceClassMembership) {
  for (char16_t c : {u'\t', u'\n', u'\v', u'\f', u'\r', u' ', u'\u1680', u'\u2000', u'\u2006',
                     u'\u2008', u'\u200A', u'\u2028', u'\u2029', u'\u205F', u'\u3000'}) {
    EXPECT_TRUE(Orvel::IsSpaceClass(c)) << int(c);
  }
  for (char16_t c : {u'\u00A0', u'\u2007', u'\u202F', u'\u0085', u'a', u'\0', u'\u200B'}) {
    EXPECT_FALSE(Orvel::IsSpaceClass(c)) << int(c);
  }
  EXPECT_TRUE(Orvel::IsWhiteSpace(u'\u00A0'));
  EXPECT_FALSE(Orvel::IsWhiteSpace(u'\u2007'));
}

}  // namespace
