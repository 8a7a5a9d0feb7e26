// A corpus of HTML pages loaded into memory before any measurement: every
// file ending in .html, or .html.gz (inflated with zlib), below the given
// folders, in path order.
#ifndef ZESTRA_BENCH_PAGE_CORPUS_H_
#define ZESTRA_BENCH_PAGE_CORPUS_H_

#include <cstdint>
#include <string>
#include <vector>

namespace zestra_bench {

struct Page {
  std::string path;
  std::string bytes;  // as stored, or inflated
};

// Appends the pages below `folder` (searched recursively; a file is taken
// as it is) to `pages`. Returns false, with `error` set, when the folder
// cannot be read or a file cannot be read or inflated.
bool LoadPages(const std::string& folder, std::vector<Page>& pages, std::string& error);

// The bytes of all pages.
uint64_t TotalBytes(const std::vector<Page>& pages);

}  // namespace zestra_bench

#endif  // ZESTRA_BENCH_PAGE_CORPUS_H_
