#include "page_corpus.h"

#include <zlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace zestra_bench {
namespace {

namespace fs = std::filesystem;

bool EndsWith(const std::string& text, const std::string& suffix) {
  return text.size() >= suffix.size() && text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool ReadPlain(const std::string& path, std::string& bytes) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  std::ostringstream contents;
  contents << file.rdbuf();
  bytes = contents.str();
  return true;
}

bool ReadGzip(const std::string& path, std::string& bytes) {
  gzFile file = gzopen(path.c_str(), "rb");
  if (file == nullptr) return false;
  char chunk[1 << 16];
  int n;
  while ((n = gzread(file, chunk, sizeof chunk)) > 0) bytes.append(chunk, static_cast<size_t>(n));
  const bool ok = n == 0;
  gzclose(file);
  return ok;
}

}  // namespace

bool LoadPages(const std::string& folder, std::vector<Page>& pages, std::string& error) {
  std::vector<std::string> paths;
  std::error_code code;
  if (fs::is_regular_file(folder, code)) {
    paths.push_back(folder);
  } else {
    fs::recursive_directory_iterator it(folder, code), end;
    if (code) {
      error = folder + ": " + code.message();
      return false;
    }
    for (; it != end; it.increment(code)) {
      if (code) {
        error = folder + ": " + code.message();
        return false;
      }
      const std::string path = it->path().string();
      if (it->is_regular_file(code) && (EndsWith(path, ".html") || EndsWith(path, ".html.gz"))) {
        paths.push_back(path);
      }
    }
    std::sort(paths.begin(), paths.end());
  }
  for (const std::string& path : paths) {
    Page page{path, {}};
    if (!(EndsWith(path, ".gz") ? ReadGzip(path, page.bytes) : ReadPlain(path, page.bytes))) {
      error = path + ": cannot be read";
      return false;
    }
    pages.push_back(std::move(page));
  }
  return true;
}

uint64_t TotalBytes(const std::vector<Page>& pages) {
  uint64_t total = 0;
  for (const Page& page : pages) total += page.bytes.size();
  return total;
}

}  // namespace zestra_bench
