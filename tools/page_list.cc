#include "page_list.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string_view>
#include <system_error>
#include <utility>

namespace zestra_tool {
namespace {

namespace fs = std::filesystem;

bool EndsWithNoCase(const std::string& text, std::string_view suffix) {
  if (text.size() < suffix.size()) return false;
  return std::equal(suffix.begin(), suffix.end(), text.end() - static_cast<std::ptrdiff_t>(suffix.size()),
                    [](char wanted, char seen) { return std::tolower(static_cast<unsigned char>(seen)) == wanted; });
}

// `name` without its page extension (".html", ".htm", either with ".gz").
std::string WithoutPageExtension(const std::string& name) {
  for (std::string_view extension : {".html.gz", ".htm.gz", ".html", ".htm"}) {
    if (EndsWithNoCase(name, extension) && name.size() > extension.size()) {
      return name.substr(0, name.size() - extension.size());
    }
  }
  return name;
}

// The place of a file argument below --out-dir: its path without the root
// and without "." and ".." steps.
fs::path RelativeForArgument(const std::string& argument) {
  fs::path relative;
  for (const fs::path& part : fs::path(argument).lexically_normal().relative_path()) {
    if (part != ".." && part != "." && !part.empty()) relative /= part;
  }
  if (relative.empty()) relative = "page";
  return relative;
}

PageEntry Problem(const std::string& path, const std::string& what) {
  PageEntry entry;
  entry.path = path;
  entry.error = what;
  return entry;
}

std::string CannotRead(const std::string& path, const std::error_code& error) {
  return "cannot read '" + path + "': " + error.message();
}

// Appends the pages below `directory` (the argument `argument`) in byte order
// of their paths. The walk keeps its directories on an explicit list, so the
// depth of the tree costs no stack.
void ListDirectory(const std::string& argument, std::vector<PageEntry>& entries) {
  const fs::path root(argument);
  std::vector<fs::path> pending{root};
  std::vector<fs::path> pages;
  std::vector<PageEntry> problems;
  while (!pending.empty()) {
    const fs::path directory = std::move(pending.back());
    pending.pop_back();
    std::error_code error;
    fs::directory_iterator it(directory, error);
    if (error) {
      problems.push_back(Problem(directory.string(), CannotRead(directory.string(), error)));
      continue;
    }
    for (; it != fs::directory_iterator(); it.increment(error)) {
      std::error_code kind_error;
      if (it->is_directory(kind_error) && !it->is_symlink(kind_error)) {
        pending.push_back(it->path());
      } else if (it->is_regular_file(kind_error) && IsPageName(it->path().filename().string())) {
        pages.push_back(it->path());
      }
    }
    if (error) problems.push_back(Problem(directory.string(), CannotRead(directory.string(), error)));
  }
  if (pages.empty() && problems.empty()) {
    entries.push_back(Problem(argument, "no pages (*.html, *.htm, *.html.gz) in '" + argument + "'"));
    return;
  }
  std::sort(pages.begin(), pages.end(),
            [](const fs::path& a, const fs::path& b) { return a.native() < b.native(); });
  for (fs::path& page : pages) {
    PageEntry entry;
    entry.path = page.string();
    entry.relative = page.lexically_relative(root);
    std::error_code size_error;
    entry.size = fs::file_size(page, size_error);
    if (size_error) entry.size = 0;
    entries.push_back(std::move(entry));
  }
  entries.insert(entries.end(), problems.begin(), problems.end());
}

}  // namespace

bool IsPageName(const std::string& name) {
  return WithoutPageExtension(name) != name;
}


std::vector<PageEntry> ListPages(const std::vector<std::string>& arguments, bool* batch) {
  std::vector<PageEntry> entries;
  *batch = arguments.size() > 1;
  for (const std::string& argument : arguments) {
    if (argument == "-") {
      PageEntry entry;
      entry.path = argument;
      entry.relative = "stdin";
      entries.push_back(std::move(entry));
      continue;
    }
    std::error_code error;
    const fs::file_status status = fs::status(argument, error);
    if (error) {
      entries.push_back(Problem(argument, CannotRead(argument, error)));
    } else if (fs::is_directory(status)) {
      *batch = true;
      ListDirectory(argument, entries);
    } else {
      PageEntry entry;
      entry.path = argument;
      entry.relative = RelativeForArgument(argument);
      entry.size = fs::is_regular_file(status) ? fs::file_size(argument, error) : 0;
      if (error) entry.size = 0;
      entries.push_back(std::move(entry));
    }
  }
  return entries;
}

bool ListCommandPages(std::vector<std::string> arguments, std::vector<PageEntry>* pages, bool* batch) {
  if (arguments.empty()) arguments.push_back("-");
  if (std::count(arguments.begin(), arguments.end(), "-") > 1) {
    std::fprintf(stderr, "zestra: standard input ('-') can be named only once\n");
    return false;
  }
  *pages = ListPages(arguments, batch);
  return true;
}

}  // namespace zestra_tool
