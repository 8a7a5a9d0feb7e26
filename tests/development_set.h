// The development set of real pages kept beside the source tree
// (../shared/devset/readability/<name>/source.html, or the folder the
// environment variable ZESTRA_DEVSET names), for tests that run the engine
// over real documents. Tests skip when it is absent.
#ifndef ZESTRA_TESTS_DEVELOPMENT_SET_H_
#define ZESTRA_TESTS_DEVELOPMENT_SET_H_

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace zestra_testing {

// One page: where it was read from and its bytes.
struct DevelopmentPage {
  std::filesystem::path source;
  std::string bytes;
};

// Every page of the development set, in directory order; empty when the set
// is not beside the source tree.
inline std::vector<DevelopmentPage> DevelopmentPages() {
  // ZESTRA_DEVSET names the set's folder for a source tree that does not
  // lie beside it (a work tree elsewhere).
  const char* named = std::getenv("ZESTRA_DEVSET");
  const std::filesystem::path root_dir =
      named != nullptr ? std::filesystem::path(named) : std::filesystem::path(ZESTRA_SOURCE_DIR "/../shared/devset/readability");
  std::vector<DevelopmentPage> pages;
  if (!std::filesystem::is_directory(root_dir)) return pages;
  for (const auto& entry : std::filesystem::directory_iterator(root_dir)) {
    const std::filesystem::path source = entry.path() / "source.html";
    if (!std::filesystem::is_regular_file(source)) continue;
    std::ifstream file(source, std::ios::binary);
    std::stringstream bytes;
    bytes << file.rdbuf();
    pages.push_back({source, bytes.str()});
  }
  return pages;
}

}  // namespace zestra_testing

#endif  // ZESTRA_TESTS_DEVELOPMENT_SET_H_
