// The pages named on the command line: each argument is a file, "-" for
// standard input, or a directory that is searched recursively for pages
// (*.html, *.htm, and the same compressed with gzip, *.html.gz, *.htm.gz;
// names match in any case). Arguments keep their order; the pages of a
// directory come in byte order of their paths, so a listing is the same on
// every run.
//
// Problems found while listing (a path that does not exist, a directory
// without pages, a directory that cannot be read) are entries of the list
// too, at the place where they occurred, so that a batch reports them in
// order and goes on.
//
// Thread-safety: plain values; the listing runs on one thread.
#ifndef ZESTRA_TOOLS_PAGE_LIST_H_
#define ZESTRA_TOOLS_PAGE_LIST_H_

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace zestra_tool {

struct PageEntry {
  // The path as the user sees it: the argument, or the directory argument
  // joined with the path found below it; "-" for standard input.
  std::string path;
  // Where the page's output goes under --out-dir, before the extension of
  // the output is added: the path below the directory argument, or the
  // file argument without its root and without "." and ".." steps, each
  // with its own file name whole ("a/b.html"); "stdin" for standard input.
  std::filesystem::path relative;
  // Empty for a page; else the message of the problem ("cannot read 'x':
  // No such file or directory"), without the "zestra: " prefix.
  std::string error;
  // The size of the file in bytes when it was listed (0 for standard input
  // and problems); the progress display estimates from it.
  uintmax_t size = 0;
};

// True when `name` is the name of a page file (see above).
bool IsPageName(const std::string& name);

// Lists the pages of `arguments` in order. `*batch` becomes true when the
// arguments name more than one page or any directory: the output is then
// one record per page instead of one text.
std::vector<PageEntry> ListPages(const std::vector<std::string>& arguments, bool* batch);

// ListPages for a command's arguments, none meaning standard input ("-").
// Returns false, after a line on standard error, when they are wrong:
// standard input named more than once, which cannot be read twice.
bool ListCommandPages(std::vector<std::string> arguments, std::vector<PageEntry>* pages, bool* batch);

}  // namespace zestra_tool

#endif  // ZESTRA_TOOLS_PAGE_LIST_H_
