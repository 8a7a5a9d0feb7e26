#include "html/html_nesting_limit.h"

#include <gtest/gtest.h>

#include <string>

namespace OrvelParser {
namespace {

std::string Repeat(const std::string& part, int count) {
  std::string out;
  for (int i = 0; i < count; ++i) out += part;
  return out;
}

TEST(NestingLimitTest, TextsWithinTheLimitAreNotTouched) {
  // Elements closed by end tags, implicitly, or never opened: none counts
  // past the few that stay open.
  const std::string texts[] = {
      Repeat("<div>", 509) + "x" + Repeat("</div>", 509),
      "<ul>" + Repeat("<li>item", 5000) + "</ul>",
      Repeat("<p>paragraph", 5000),
      "<dl>" + Repeat("<dt>term<dd>definition", 3000) + "</dl>",
      "<table>" + Repeat("<tr><td>a<td>b", 3000) + "</table>",
      "<select>" + Repeat("<option>o", 3000) + "</select>",
      Repeat("<a href=x>link", 3000),
      Repeat("<h2>heading", 3000),
      "<div>" + Repeat("<br><img src=x><hr><input>", 3000) + "</div>",
      "<script>" + Repeat("<div>", 3000) + "</script>",
      "<textarea>" + Repeat("<b>", 3000) + "</TEXTAREA >",
      "<!--" + Repeat("<div>", 3000) + "-->" + Repeat("<!--><div></div>", 3000),
      "<svg>" + Repeat("<circle/>", 3000) + "</svg>",
      Repeat("<div title='<div>' data-x=\"<span>\">", 500),
  };
  for (const std::string& text : texts) {
    std::string copy = text;
    EXPECT_EQ(LimitNesting(copy), 0u) << text.substr(0, 60);
    EXPECT_EQ(copy, text);
  }
}

TEST(NestingLimitTest, StartTagsPastTheLimitAreTakenOut) {
  // <body> is depth 2: with a limit of 4 two divs fit.
  std::string text = "<DIV><div class=a><div><div>deep</div></div></div></div>";
  EXPECT_EQ(LimitNesting(text, 4), 2u);
  EXPECT_EQ(text, "<DIV><div class=a>deep</div></div></div></div>");

  // Void and raw-text elements at the limit stay; end tags stay.
  text = "<div><div><br><script>s</script><b>b</b></div></div>";
  EXPECT_EQ(LimitNesting(text, 4), 1u);
  EXPECT_EQ(text, "<div><div><br><script>s</script>b</b></div></div>");

  // The default limit: 510 elements below <html> and <body>. Past it each
  // <ul> is taken out, and each <li> then closes the one before it, as
  // Gumbo will, so that the items stay at the limit.
  text = Repeat("<ul><li>", 300) + "deepest" + Repeat("</li></ul>", 300);
  EXPECT_EQ(LimitNesting(text), 45u);
  EXPECT_EQ(text, Repeat("<ul><li>", 255) + Repeat("<li>", 45) + "deepest" + Repeat("</li></ul>", 300));
}

TEST(NestingLimitTest, DepthFreedByEndTagsIsUsedAgain) {
  std::string text = "<i><i><i>a</i></i></i><i><i><i>b</i></i></i>";
  EXPECT_EQ(LimitNesting(text, 4), 2u);
  EXPECT_EQ(text, "<i><i>a</i></i></i><i><i>b</i></i></i>");
}

TEST(NestingLimitTest, UnfinishedMarkupAtTheEnd) {
  for (const std::string text : {"<div", "<div title='", "</", "<!--", "<!", "<script>", "<textarea>x</text",
                                 "a < b", "<", "</>", "<svg><p/"}) {
    std::string copy = text;
    EXPECT_EQ(LimitNesting(copy, 3), 0u) << text;
    EXPECT_EQ(copy, text);
  }
}

}  // namespace
}  // namespace OrvelParser
