// The snippet set of real pages kept beside the source tree, gzipped, for
// tests that run the engine over many documents. Tests skip when it is
// absent.
#ifndef ZESTRA_TESTS_SNIPPET_PAGES_H_
#define ZESTRA_TESTS_SNIPPET_PAGES_H_

#include <zlib.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "development_set.h"

namespace zestra_testing {

// Every page of the snippet set (../shared/devset/snippets/pages/*.html.gz,
// or the folder ZESTRA_SNIPPETS names), decompressed, in directory order;
// empty when the set is absent. Needs zlib at link time.
inline std::vector<DevelopmentPage> SnippetPages() {
  const char* named = std::getenv("ZESTRA_SNIPPETS");
  const std::filesystem::path root_dir =
      named != nullptr ? std::filesystem::path(named)
                       : std::filesystem::path(ZESTRA_SOURCE_DIR "/../shared/devset/snippets/pages");
  std::vector<DevelopmentPage> pages;
  if (!std::filesystem::is_directory(root_dir)) return pages;
  for (const auto& entry : std::filesystem::directory_iterator(root_dir)) {
    if (entry.path().extension() != ".gz") continue;
    gzFile file = gzopen(entry.path().c_str(), "rb");
    if (file == nullptr) continue;
    std::string bytes;
    char buffer[65536];
    for (int got; (got = gzread(file, buffer, sizeof buffer)) > 0;) bytes.append(buffer, static_cast<std::size_t>(got));
    gzclose(file);
    pages.push_back({entry.path(), std::move(bytes)});
  }
  return pages;
}

}  // namespace zestra_testing

#endif  // ZESTRA_TESTS_SNIPPET_PAGES_H_
