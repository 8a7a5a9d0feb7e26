// `zestra tree`: the layout tree of one page, printed for a person, with
// what the ranking made of each table and cell, to see why a text was kept
// or dropped.
#ifndef ZESTRA_TOOLS_TREE_COMMAND_H_
#define ZESTRA_TOOLS_TREE_COMMAND_H_

#include <string>

#include "zestra/zestra.h"

namespace zestra_tool {

struct TreeSettings {
  // A file or "-".
  std::string input;
  // The code page to read the page in, or zestra::kSniffCharset.
  int charset = -1;
  // How the page is laid out (zestra::Layout).
  zestra::Layout layout = zestra::Layout::kBlocks;
  // The page's address (zestra::Options::url); may be empty.
  std::string url;
};

// Prints the tree to standard output and returns the exit status: 0, or 2
// when the page cannot be read (reported on standard error).
int RunTree(const TreeSettings& settings);

}  // namespace zestra_tool

#endif  // ZESTRA_TOOLS_TREE_COMMAND_H_
