// Test helper: a text picture of a layout tree, one line per table, cell and
// item, indented by depth, so tests can compare whole trees at once.
//
//   table 2x1 level 1
//     cell 0,0 words 1 inlink 0 links 0 tables 0
//       text "a\n" @12+1
//     cell 1,0 (null)          <- only with DumpOptions::null_slots
//
// Texts are written with \n, \r, \t, \" and \\ escaped and other characters
// outside printable ASCII as \u{XXXX}. Recursive: for small trees only.
#ifndef ZESTRA_TESTS_BUILDER_LAYOUT_DUMP_H_
#define ZESTRA_TESTS_BUILDER_LAYOUT_DUMP_H_

#include <string>

#include "zestra/model/k_table.h"

namespace ZestraNS {

struct DumpOptions {
  bool spans = false;       // append @position+length to text items
  bool null_slots = false;  // list empty grid slots too
};

std::string DumpLayout(const KTable& table, DumpOptions options = {});

// The escaped form used for texts, also handy in assertion messages.
std::string EscapeText(const std::u16string& text);

}  // namespace ZestraNS

#endif  // ZESTRA_TESTS_BUILDER_LAYOUT_DUMP_H_
