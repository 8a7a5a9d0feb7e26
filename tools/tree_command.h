// `zestra tree`: the layout tree of pages, printed for a person, with
// what the ranking made of each table and cell, to see why a text was kept
// or dropped.
#ifndef ZESTRA_TOOLS_TREE_COMMAND_H_
#define ZESTRA_TOOLS_TREE_COMMAND_H_

#include <string>
#include <vector>

#include "zestra/zestra.h"

namespace zestra_tool {

struct TreeSettings {
  // Files, directories and "-" (standard input), as for extract; none
  // means "-".
  std::vector<std::string> inputs;
  // The code page to read the pages in, or zestra::kSniffCharset.
  int charset = -1;
  // How the pages are laid out (zestra::Layout).
  zestra::Layout layout = zestra::Layout::kBlocks;
  // The page's address (zestra::Options::url); may be empty.
  std::string url;
  // As for extract (zestra::Options::comments, zestra::Options::favor).
  bool comments = false;
  zestra::Favor favor = zestra::Favor::kBalanced;
};

// Prints the tree of every page to standard output, in the order of the
// inputs (the pages of a directory in byte order of their paths). One page
// prints its tree alone; several pages each print a line "==> PATH <=="
// before their tree and a blank line after it. A page that cannot be read
// or runs out of memory is reported on standard error and the others go on.
// Returns the exit status as extract does: kExitOk, kExitSomeFailed when
// some pages failed, kExitError when all failed or the arguments are wrong.
int RunTree(const TreeSettings& settings);

}  // namespace zestra_tool

#endif  // ZESTRA_TOOLS_TREE_COMMAND_H_
