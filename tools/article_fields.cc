#include "article_fields.h"

#include <string>
#include <utility>
#include <vector>

namespace zestra_tool {
namespace {

using Json = nlohmann::ordered_json;

// The fields of a Metadata by name, in declaration order.
std::vector<std::pair<const char*, Json>> Fields(const zestra::Metadata& m) {
  return {{"title", m.title},
          {"author", m.author},
          {"date_published", m.date_published},
          {"date_modified", m.date_modified},
          {"site_name", m.site_name},
          {"description", m.description},
          {"language", m.language},
          {"canonical_url", m.canonical_url},
          {"image", m.image},
          {"tags", m.tags}};
}

}  // namespace

void AddArticleFields(const zestra::Result& result, Json& record) {
  Json metadata = Json::object();
  for (auto& [name, value] : Fields(result.metadata)) metadata[name] = std::move(value);
  Json sources = Json::object();
  for (const auto& [field, source] : result.metadata.sources) sources[field] = source;
  metadata["sources"] = std::move(sources);
  record["metadata"] = std::move(metadata);
  if (result.format != zestra::Format::kText) record[zestra::FormatName(result.format)] = result.formatted;
}

void PrintMetadata(const zestra::Metadata& metadata, std::FILE* out) {
  if (metadata.sources.empty()) {
    std::fprintf(out, "metadata  none found\n");
    return;
  }
  std::fprintf(out, "metadata\n");
  const std::vector<std::pair<const char*, Json>> fields = Fields(metadata);
  for (const auto& [field, source] : metadata.sources) {
    for (const auto& [name, value] : fields) {
      if (field != name) continue;
      std::string shown = value.dump(-1, ' ', false, Json::error_handler_t::replace);
      if (shown.size() > 100) shown = shown.substr(0, 97) + "...";
      std::fprintf(out, "  %-15s %s  from %s\n", name, shown.c_str(), source.c_str());
    }
  }
}

}  // namespace zestra_tool
