#include "api/json_ld.h"

#include <nlohmann/json.hpp>

#include <unordered_map>

namespace zestra {
namespace {

using Json = nlohmann::json;

bool EndsWith(std::string_view text, std::string_view tail) {
  return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

bool IsArticleType(const std::string& type) {
  const std::string_view name = std::string_view(type).substr(type.rfind('/') == std::string::npos ? 0 : type.rfind('/') + 1);
  return EndsWith(name, "Article") || EndsWith(name, "Posting");
}

bool HasType(const Json& object, bool (*matches)(const std::string&)) {
  const auto type = object.find("@type");
  if (type == object.end()) return false;
  if (type->is_string()) return matches(type->get_ref<const std::string&>());
  if (type->is_array()) {
    for (const Json& name : *type) {
      if (name.is_string() && matches(name.get_ref<const std::string&>())) return true;
    }
  }
  return false;
}

bool IsWebSite(const std::string& type) { return type == "WebSite"; }

std::string Trimmed(std::string_view value) {
  const std::size_t begin = value.find_first_not_of(" \t\r\n");
  if (begin == std::string_view::npos) return {};
  return std::string(value.substr(begin, value.find_last_not_of(" \t\r\n") - begin + 1));
}

// A string member, trimmed; empty when absent or not a string.
std::string StringMember(const Json& object, const char* name) {
  const auto member = object.find(name);
  if (member == object.end() || !member->is_string()) return {};
  return Trimmed(member->get_ref<const std::string&>());
}

// Reads one script: its objects, by @id, and the article.
class Reader {
 public:
  explicit Reader(const Json& root) { Collect(root, 0); }

  JsonLdFacts Facts() const {
    JsonLdFacts found;
    Metadata& facts = found.facts;
    const Json* article = nullptr;
    for (const Json* object : objects_) {
      if (HasType(*object, IsArticleType)) {
        article = object;
        break;
      }
    }
    if (article == nullptr) return found;
    const Json& a = *article;
    found.article = true;
    facts.title = StringMember(a, "headline");
    if (facts.title.empty()) facts.title = StringMember(a, "name");
    if (const auto author = a.find("author"); author != a.end()) Names(*author, facts.author, 0);
    facts.date_published = StringMember(a, "datePublished");
    if (facts.date_published.empty()) facts.date_published = StringMember(a, "dateCreated");
    facts.date_modified = StringMember(a, "dateModified");
    if (const auto publisher = a.find("publisher"); publisher != a.end()) {
      std::vector<std::string> names;
      Names(*publisher, names, 0);
      if (!names.empty()) facts.site_name = names.front();
    }
    for (const Json* object : objects_) {
      if (facts.site_name.empty() && HasType(*object, IsWebSite)) facts.site_name = StringMember(*object, "name");
    }
    facts.description = StringMember(a, "description");
    if (const auto language = a.find("inLanguage"); language != a.end()) {
      facts.language = language->is_string() ? StringMember(a, "inLanguage")
                       : language->is_object() ? StringMember(*language, "alternateName")
                                                : std::string();
    }
    facts.canonical_url = StringMember(a, "url");
    if (const auto page = a.find("mainEntityOfPage"); facts.canonical_url.empty() && page != a.end()) {
      facts.canonical_url = page->is_string() ? StringMember(a, "mainEntityOfPage")
                            : page->is_object() ? StringMember(*page, "@id")
                                                : std::string();
    }
    if (const auto image = a.find("image"); image != a.end()) facts.image = Address(*image, 0);
    if (const auto keywords = a.find("keywords"); keywords != a.end()) Keywords(*keywords, facts.tags);
    return found;
  }

 private:
  // Every object of the script that may be the article or be referred to:
  // the top level, arrays there, and @graph members.
  void Collect(const Json& value, int depth) {
    if (depth > kMaxJsonLdDepth) return;
    if (value.is_array()) {
      for (const Json& item : value) Collect(item, depth + 1);
      return;
    }
    if (!value.is_object()) return;
    objects_.push_back(&value);
    const std::string id = StringMember(value, "@id");
    if (!id.empty()) by_id_.emplace(id, &value);
    if (const auto graph = value.find("@graph"); graph != value.end()) Collect(*graph, depth + 1);
  }

  // The names in a person or organisation value.
  void Names(const Json& value, std::vector<std::string>& names, int depth) const {
    if (depth > kMaxJsonLdDepth) return;
    if (value.is_string()) {
      std::string name = Trimmed(value.get_ref<const std::string&>());
      if (!name.empty()) names.push_back(std::move(name));
    } else if (value.is_array()) {
      for (const Json& item : value) Names(item, names, depth + 1);
    } else if (value.is_object()) {
      const std::string name = StringMember(value, "name");
      if (!name.empty()) {
        names.push_back(name);
        return;
      }
      const auto target = by_id_.find(StringMember(value, "@id"));
      if (target != by_id_.end() && target->second != &value) Names(*target->second, names, depth + 1);
    }
  }

  // The address in an image value.
  std::string Address(const Json& value, int depth) const {
    if (depth > kMaxJsonLdDepth) return {};
    if (value.is_string()) return Trimmed(value.get_ref<const std::string&>());
    if (value.is_array()) {
      for (const Json& item : value) {
        std::string address = Address(item, depth + 1);
        if (!address.empty()) return address;
      }
      return {};
    }
    if (!value.is_object()) return {};
    std::string url = StringMember(value, "url");
    if (url.empty()) url = StringMember(value, "contentUrl");
    if (!url.empty()) return url;
    const auto target = by_id_.find(StringMember(value, "@id"));
    if (target != by_id_.end() && target->second != &value) return Address(*target->second, depth + 1);
    return {};
  }

  static void Keywords(const Json& value, std::vector<std::string>& tags) {
    auto add = [&tags](std::string_view text) {
      while (!text.empty()) {
        const std::size_t comma = text.find(',');
        std::string_view tag = text.substr(0, comma);
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
        std::string trimmed = Trimmed(tag);
        if (!trimmed.empty()) tags.push_back(std::move(trimmed));
      }
    };
    if (value.is_string()) {
      add(value.get_ref<const std::string&>());
    } else if (value.is_array()) {
      for (const Json& item : value) {
        if (item.is_string()) add(item.get_ref<const std::string&>());
      }
    }
  }

  std::vector<const Json*> objects_;
  std::unordered_map<std::string, const Json*> by_id_;
};

}  // namespace

JsonLdFacts ReadJsonLd(std::string_view json) {
  if (json.size() > kMaxJsonLdBytes) return {};
  // Some sites wrap the script's text in a comment or CDATA marker.
  const std::size_t begin = json.find_first_of("{[");
  const std::size_t end = json.find_last_of("}]");
  if (begin == std::string_view::npos || end == std::string_view::npos || end < begin) return {};
  const Json root = Json::parse(json.substr(begin, end - begin + 1), nullptr, /*allow_exceptions=*/false);
  if (root.is_discarded()) return {};
  return Reader(root).Facts();
}

}  // namespace zestra
