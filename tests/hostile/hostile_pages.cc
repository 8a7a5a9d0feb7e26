#include "hostile/hostile_pages.h"

#include "hostile/hostile_case.h"

namespace zestra_hostile {

void BuildNestedElements(std::string& in) {
  in = Repeat("<div>", 20000) + "deepest words" + Repeat("</div>", 20000);
}

void BuildNestedLists(std::string& in) {
  in = Repeat("<ul><li>", 20000) + "deepest item" + Repeat("</li></ul>", 20000);
}

void BuildNestedTables(std::string& in) {
  in = Repeat("<table><tr><td>", 10000) + "innermost cell" + Repeat("</td></tr></table>", 10000);
}

void BuildHugeSpans(std::string& in) {
  in = "<table><tr><td colspan=2147483647 rowspan=99999999>wide cell</td><td>next cell</td></tr>"
       "<tr><td>lower cell</td></tr></table>";
}

void BuildTextNode(std::string& in) { in = "<p>" + Repeat("abcdefg ", kTextNodeWords); }

void BuildMillionLinks(std::string& in) {
  in.clear();
  in.reserve(48u << 20);
  for (int i = 0; i < 1000000; ++i) {
    in += "<a href=\"/item/" + std::to_string(i) + "\">Item " + std::to_string(i) + "</a>\n";
  }
}

void BuildDenseMarkup(std::string& in) { in = Repeat("<b>x</b>", kDenseElements); }

void BuildEveryByteValue(std::string& in) {
  std::string all(256, '\0');
  for (int i = 0; i < 256; ++i) all[i] = static_cast<char>(i);
  in = Repeat(all, 4096);
}

void BuildNulBytes(std::string& in) {
  in = std::string("<p cl\0ass=\"a\0b\">be\0fore</p\0><di\0v>after</div><p>tail\0</p>", 57);
}

void BuildTruncatedUtf8(std::string& in) { in = "<p>one \xE2\x82 two \xF0\x9F\x98"; }

void BuildLyingCharset(std::string& in) {
  in = "<html><head><meta charset=\"shift_jis\"></head><body><p>caf\xC3\xA9 na\xC3\xAFve \xE2\x80\x94 "
       "\xE6\x97\xA5\xE6\x9C\xAC</p></body></html>";
}

void BuildUnclosedComment(std::string& in) {
  in = "<p>before the comment</p><!--" + std::string(10u << 20, 'c');
}

void BuildWideTables(std::string& in) {
  in.clear();
  for (int i = 0; i < 12; ++i) {
    in += "<table><tr><td colspan=1000>cell " + std::to_string(i) + "</td></tr>" + Repeat("<tr>", 1023) +
          "</table>";
  }
}

}  // namespace zestra_hostile
