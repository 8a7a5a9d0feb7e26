// Where `zestra extract --out-dir DIR` writes the output of each page: DIR
// joined with the page's place (PageEntry::relative, which keeps the
// page's own file name whole) and the output's extension (".txt", ".json",
// ".md" or ".html"). So
// site/a/b.html gives DIR/a/b.html.txt, and site/a/b.htm and
// site/a/b.html.gz, beside it, give files of their own.
//
// Pages may still meet on one file: the same page named twice, a file
// argument with ".." steps (dropped), standard input beside a file named
// "stdin". Such a batch is refused before anything is written, so that the
// files never depend on which page finished last.
//
// Thread-safety: plain functions of their arguments.
#ifndef ZESTRA_TOOLS_OUT_DIR_H_
#define ZESTRA_TOOLS_OUT_DIR_H_

#include <filesystem>
#include <string>
#include <vector>

#include "page_list.h"

namespace zestra_tool {

// The output file of `page` under `out_dir`, ending in `extension` (".txt",
// ".json", ".md" or ".html").
std::filesystem::path OutputPath(const std::string& out_dir, const PageEntry& page, const std::string& extension);

// Empty when every page of `pages` (problems aside) has an output file of
// its own; else the message, without "zestra: ", that names the first two
// pages that share one: "'a/x.html' and '../a/x.html' would both be written
// to 'out/a/x.html.txt'".
std::string FindOutputCollision(const std::vector<PageEntry>& pages, const std::string& out_dir,
                                const std::string& extension);

}  // namespace zestra_tool

#endif  // ZESTRA_TOOLS_OUT_DIR_H_
