#include "out_dir.h"

#include <unordered_map>

namespace zestra_tool {

namespace fs = std::filesystem;

fs::path OutputPath(const std::string& out_dir, const PageEntry& page, const std::string& extension) {
  fs::path target = fs::path(out_dir) / page.relative;
  target += extension;
  return target;
}

std::string FindOutputCollision(const std::vector<PageEntry>& pages, const std::string& out_dir,
                                const std::string& extension) {
  std::unordered_map<std::string, const PageEntry*> owners;
  for (const PageEntry& page : pages) {
    if (!page.error.empty()) continue;
    const fs::path target = OutputPath(out_dir, page, extension).lexically_normal();
    const auto [it, inserted] = owners.emplace(target.native(), &page);
    if (!inserted) {
      return "'" + it->second->path + "' and '" + page.path + "' would both be written to '" + target.string() +
             "'";
    }
  }
  return "";
}

}  // namespace zestra_tool
