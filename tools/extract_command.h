// `zestra extract`: the main text of one page to standard output, or of
// many pages as JSON Lines or as one file per page under --out-dir.
#ifndef ZESTRA_TOOLS_EXTRACT_COMMAND_H_
#define ZESTRA_TOOLS_EXTRACT_COMMAND_H_

#include <string>
#include <vector>

#include "zestra/zestra.h"

namespace zestra_tool {

// Exit statuses of the tool.
inline constexpr int kExitOk = 0;
inline constexpr int kExitSomeFailed = 1;  // a batch in which some pages failed
inline constexpr int kExitError = 2;       // a usage error, or nothing could be done

struct ExtractSettings {
  // Files, directories and "-" (standard input); none means "-".
  std::vector<std::string> inputs;
  // The code page to read the pages in, or zestra::kSniffCharset.
  int charset = -1;
  // The whole text, unranked.
  bool whole = false;
  // How the pages are laid out (zestra::Layout).
  zestra::Layout layout = zestra::Layout::kBlocks;
  // The memory ceiling of each page's extraction in MiB
  // (zestra::Options::max_memory); 0: none.
  unsigned max_memory_mib = 0;
  // "text", "json", "markdown", "html", "warc", or empty: JSON Lines for a batch
  // on standard output, text otherwise.
  std::string format;
  // "markdown" or "html": JSON records carry the page in that form too;
  // empty: they do not.
  std::string with;
  // The page's address (zestra::Options::url); may be empty.
  std::string url;
  // Images in the Markdown or HTML.
  bool images = false;
  // Comment sections kept (zestra::Options::comments).
  bool comments = false;
  // What the pruning favours (zestra::Options::favor).
  zestra::Favor favor = zestra::Favor::kBalanced;
  // The pruning steps to run instead (zestra::Options::prune_steps).
  std::string prune_steps;
  // Pages extracted at once, at least 1.
  unsigned jobs = 1;
  // Empty: write to standard output; else the folder that receives one
  // file per page.
  std::string out_dir;
  // Progress bar: forced on, or silenced (with the summary line). Without
  // either it is shown when standard error is a terminal.
  bool progress = false;
  bool quiet = false;
};

// Runs the command and returns the exit status: kExitOk, kExitSomeFailed
// when some pages failed and some succeeded, kExitError when every page
// failed. Each failure is reported as one line on standard error.
int RunExtract(const ExtractSettings& settings);

}  // namespace zestra_tool

#endif  // ZESTRA_TOOLS_EXTRACT_COMMAND_H_
