#include "api/metadata.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <string_view>
#include <vector>

#include "api/date_normalize.h"
#include "api/json_ld.h"
#include "api/url_resolver.h"

namespace zestra {
namespace {

using OrvelParser::HtmlTreeNode;

// Ranks of the sources, best first.
enum Rank : int {
  kJsonLdRank = 0,
  kOpenGraphRank = 1,
  kDocumentRank = 2,  // <html lang>, <link rel=canonical>
  kMetaRank = 3,
  kMicrodataRank = 4,
  kTimeRank = 5,
  kBylineRank = 6,
  kUrlRank = 7,
  kTitleRank = 8,
};

// Bytes of element text read for a microdata value or a byline.
constexpr std::size_t kMaxElementText = 4096;
constexpr std::size_t kMaxBylineChars = 100;

struct Field {
  int rank = INT_MAX;
  const char* source = nullptr;
  std::string value;
};

struct ListField {
  int rank = INT_MAX;
  const char* source = nullptr;
  std::vector<std::string> values;
};

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

// White space runs made one space, trimmed.
std::string Collapse(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    const bool space = c == ' ' || (c >= '\t' && c <= '\r');
    if (!space) {
      out += c;
    } else if (!out.empty() && out.back() != ' ') {
      out += ' ';
    }
  }
  if (!out.empty() && out.back() == ' ') out.pop_back();
  return out;
}

char LowerChar(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Whether `text` equals `lower` (lower case), ignoring ASCII case.
bool EqualsIgnoringCase(std::string_view text, std::string_view lower) {
  if (text.size() != lower.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (LowerChar(text[i]) != lower[i]) return false;
  }
  return true;
}

bool StartsWithIgnoringCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && EqualsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

// Calls `match` on each space-separated token of `value` until it returns
// true; returns whether one did.
template <class Match>
bool AnyToken(std::string_view value, Match&& match) {
  while (!value.empty()) {
    const std::size_t space = value.find_first_of(" \t\n\f\r");
    if (space != 0 && match(value.substr(0, space))) return true;
    value.remove_prefix(space == std::string_view::npos ? value.size() : space + 1);
  }
  return false;
}

// Whether the space-separated tokens of `value` include `token` (lower
// case), ignoring ASCII case.
bool HasToken(std::string_view value, std::string_view token) {
  return AnyToken(value, [token](std::string_view t) { return EqualsIgnoringCase(t, token); });
}

// The text below `node`, collapsed; empty when longer than `limit` bytes.
std::string ElementText(const HtmlTreeNode& node, std::size_t limit) {
  std::string text;
  bool too_long = false;
  OrvelParser::WalkNodes(node.Children(), [&](const HtmlTreeNode& child) {
    if (too_long) return false;
    if (child.IsText()) {
      text.append(child.Utf8Text());
      text += ' ';
      too_long = text.size() > limit;
      return false;
    }
    return child.Name() != "script" && child.Name() != "style";
  });
  return too_long ? std::string() : Collapse(text);
}

std::string Author(std::string_view text) {
  std::string name = Collapse(text);
  if (StartsWithIgnoringCase(name, "by ")) name.erase(0, 3);
  if (StartsWithIgnoringCase(name, "by:")) name = Collapse(std::string_view(name).substr(3));
  if (name.empty() || EqualsIgnoringCase(name, "by") || !UrlScheme(name).empty() || name.find("://") != std::string::npos ||
      name.find('/') == 0) {
    return {};
  }
  return name;
}

// A language tag as "en" or "en-US"; empty when `text` is not one.
std::string Language(std::string_view text) {
  std::string tag = Collapse(text);
  std::replace(tag.begin(), tag.end(), '_', '-');
  if (tag.size() < 2 || tag.size() > 35) return {};
  std::size_t letters = 0;
  while (letters < tag.size() && ((tag[letters] >= 'a' && tag[letters] <= 'z') || (tag[letters] >= 'A' && tag[letters] <= 'Z'))) {
    ++letters;
  }
  if (letters < 2 || letters > 3 || (letters < tag.size() && tag[letters] != '-')) return {};
  for (char c : tag) {
    const bool allowed = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
    if (!allowed) return {};
  }
  for (std::size_t i = 0; i < letters; ++i) tag[i] = Lower(std::string_view(&tag[i], 1))[0];
  return tag;
}

std::vector<std::string> SplitTags(std::string_view text) {
  std::vector<std::string> tags;
  while (!text.empty()) {
    const std::size_t comma = text.find(',');
    std::string tag = Collapse(text.substr(0, comma));
    if (!tag.empty()) tags.push_back(std::move(tag));
    text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
  }
  return tags;
}

class Gatherer {
 public:
  explicit Gatherer(const std::string& page_url) : page_url_(page_url) {}

  void Walk(const HtmlTreeNode::List& top) {
    OrvelParser::WalkNodes(top, [this](const HtmlTreeNode& node) { return Visit(node); });
  }

  Metadata Result() {
    Metadata metadata;
    // The page's address, where the page names no canonical one.
    if (IsHttp(page_url_)) Offer(canonical_, kUrlRank, "url", page_url_);
    Offer(date_published_, kUrlRank, "url", DateInUrl(canonical_.value));
    if (date_published_.value.empty()) Offer(date_published_, kUrlRank, "url", DateInUrl(page_url_));
    Offer(title_, kTitleRank, "title", TitleFromDocumentTitle());
    title_.value = WithoutSiteName(title_.value);
    Take(metadata, "title", title_, metadata.title);
    Take(metadata, "author", author_, metadata.author);
    Take(metadata, "date_published", date_published_, metadata.date_published);
    Take(metadata, "date_modified", date_modified_, metadata.date_modified);
    Take(metadata, "site_name", site_name_, metadata.site_name);
    Take(metadata, "description", description_, metadata.description);
    Take(metadata, "language", language_, metadata.language);
    Take(metadata, "canonical_url", canonical_, metadata.canonical_url);
    Take(metadata, "image", image_, metadata.image);
    if (tags_.values.size() > kMaxTags) tags_.values.resize(kMaxTags);
    Take(metadata, "tags", tags_, metadata.tags);
    return metadata;
  }

 private:
  static bool IsHttp(std::string_view url) {
    const std::string scheme = UrlScheme(url);
    return scheme == "http" || scheme == "https";
  }

  static void Offer(Field& field, int rank, const char* source, std::string value) {
    if (value.empty() || rank >= field.rank) return;
    field = Field{rank, source, std::move(value)};
  }

  // Appends `value` to `values` unless empty or there already, ignoring
  // ASCII case.
  static void AddUnique(std::vector<std::string>& values, std::string value) {
    if (value.empty()) return;
    const std::string lower = Lower(value);
    for (const std::string& old : values) {
      if (Lower(old) == lower) return;
    }
    values.push_back(std::move(value));
  }

  static void OfferList(ListField& field, int rank, const char* source, std::vector<std::string> values) {
    std::vector<std::string> kept;
    for (std::string& value : values) AddUnique(kept, std::move(value));
    if (kept.empty() || rank > field.rank) return;
    if (rank < field.rank) {
      field = ListField{rank, source, std::move(kept)};
      return;
    }
    if (field.source != source) return;
    for (std::string& value : kept) AddUnique(field.values, std::move(value));
  }

  static void Take(Metadata& metadata, const char* name, const Field& field, std::string& to) {
    if (field.value.empty()) return;
    to = field.value;
    metadata.sources.emplace_back(name, field.source);
  }
  static void Take(Metadata& metadata, const char* name, const ListField& field, std::vector<std::string>& to) {
    if (field.values.empty()) return;
    to = field.values;
    metadata.sources.emplace_back(name, field.source);
  }

  std::string Address(std::string_view reference) const {
    std::string address = ResolveUrl(page_url_, reference);
    return IsHttp(address) ? address : std::string();
  }

  bool Visit(const HtmlTreeNode& node) {
    if (node.IsText()) return false;
    // Only elements of these ids are looked at by name.
    const uint32_t id = node.Id();
    const bool named = id == OrvelParser::kIdHead || id == OrvelParser::kIdScript || id == OrvelParser::kIdStyle ||
                       id == OrvelParser::kIdTemplate || id == OrvelParser::kIdDocument ||
                       id == OrvelParser::kIdPhrase || id == OrvelParser::kIdHeading;
    const std::string_view name = named ? node.Name() : std::string_view();
    std::string_view value;
    if (name == "html") {
      if (node.FindParam("lang", value)) Offer(language_, kDocumentRank, "html", Language(value));
    } else if (name == "title") {
      if (document_title_.empty()) document_title_ = ElementText(node, kMaxElementText);
      return false;
    } else if (name == "meta") {
      MetaTag(node);
    } else if (name == "link") {
      if (node.FindParam("rel", value) && HasToken(value, "canonical") && node.FindParam("href", value)) {
        Offer(canonical_, kDocumentRank, "link", Address(value));
      }
    } else if (name == "script") {
      if (node.FindParam("type", value) && EqualsIgnoringCase(Collapse(value), "application/ld+json")) JsonLd(node);
      return false;
    } else if (name == "style" || name == "template") {
      return false;
    } else if (name == "time") {
      if (node.FindParam("datetime", value)) Offer(date_published_, kTimeRank, "time", NormalizeDate(value));
    } else if (name == "h1") {
      if (first_h1_.empty()) first_h1_ = ElementText(node, kMaxElementText);
    }
    if (node.FindParam("itemprop", value)) Microdata(node, value);
    return Byline(node);
  }

  void MetaTag(const HtmlTreeNode& node) {
    std::string_view content;
    if (!node.FindParam("content", content)) return;
    std::string_view key;
    if (node.FindParam("http-equiv", key) && EqualsIgnoringCase(key, "content-language")) {
      Offer(language_, kMetaRank, "meta", Language(content.substr(0, content.find(','))));
      return;
    }
    if (!node.FindParam("property", key) && !node.FindParam("name", key)) return;
    const std::string k = Lower(Collapse(key));
    const std::string text = Collapse(content);
    auto is = [&k](std::initializer_list<std::string_view> names) {
      return std::find(names.begin(), names.end(), k) != names.end();
    };
    if (k == "og:title") {
      Offer(title_, kOpenGraphRank, "opengraph", text);
    } else if (is({"twitter:title", "title", "dc.title", "parsely-title", "sailthru.title"})) {
      Offer(title_, kMetaRank, "meta", text);
    } else if (k == "og:description") {
      Offer(description_, kOpenGraphRank, "opengraph", text);
    } else if (is({"description", "twitter:description", "dc.description", "dcterms.description"})) {
      Offer(description_, kMetaRank, "meta", text);
    } else if (k == "og:site_name") {
      Offer(site_name_, kOpenGraphRank, "opengraph", text);
    } else if (k == "application-name") {
      Offer(site_name_, kMetaRank, "meta", text);
    } else if (is({"og:image", "og:image:url", "og:image:secure_url"})) {
      Offer(image_, kOpenGraphRank, "opengraph", Address(text));
    } else if (is({"twitter:image", "twitter:image:src"})) {
      Offer(image_, kMetaRank, "meta", Address(text));
    } else if (k == "og:url") {
      Offer(canonical_, kOpenGraphRank, "opengraph", Address(text));
    } else if (k == "og:locale") {
      Offer(language_, kMetaRank, "opengraph", Language(text));
    } else if (is({"article:published_time", "og:published_time", "og:article:published_time"})) {
      Offer(date_published_, kOpenGraphRank, "opengraph", NormalizeDate(text));
    } else if (is({"pubdate", "publishdate", "publish-date", "publish_date", "date", "dc.date", "dc.date.issued",
                   "dcterms.created", "dcterms.date", "dcterms.issued", "sailthru.date", "parsely-pub-date",
                   "article.published", "published_time", "citation_publication_date", "citation_date",
                   "original-publish-date"})) {
      Offer(date_published_, kMetaRank, "meta", NormalizeDate(text));
    } else if (is({"article:modified_time", "og:updated_time", "og:article:modified_time"})) {
      Offer(date_modified_, kOpenGraphRank, "opengraph", NormalizeDate(text));
    } else if (is({"last-modified", "dcterms.modified", "dc.date.modified", "article.updated", "modified_time"})) {
      Offer(date_modified_, kMetaRank, "meta", NormalizeDate(text));
    } else if (k == "article:author" || k == "og:article:author") {
      OfferList(author_, kOpenGraphRank, "opengraph", {Author(text)});
    } else if (is({"author", "dc.creator", "dcterms.creator", "parsely-author", "sailthru.author", "citation_author",
                   "byl"})) {
      OfferList(author_, kMetaRank, "meta", {Author(text)});
    } else if (k == "article:tag" || k == "og:article:tag") {
      OfferList(tags_, kOpenGraphRank, "opengraph", SplitTags(text));
    } else if (is({"keywords", "news_keywords", "parsely-tags", "sailthru.tags"})) {
      OfferList(tags_, kMetaRank, "meta", SplitTags(text));
    }
  }

  void JsonLd(const HtmlTreeNode& script) {
    std::string text;
    for (const HtmlTreeNode::Entry& child : script.Children()) text.append(child->Utf8Text());
    const JsonLdFacts found = ReadJsonLd(text);
    // The first article of the page's scripts is the article.
    if (!found.article || json_ld_read_) return;
    const Metadata& facts = found.facts;
    json_ld_read_ = true;
    const char* source = "json-ld";
    Offer(title_, kJsonLdRank, source, Collapse(facts.title));
    std::vector<std::string> authors;
    for (const std::string& author : facts.author) authors.push_back(Author(author));
    OfferList(author_, kJsonLdRank, source, std::move(authors));
    Offer(date_published_, kJsonLdRank, source, NormalizeDate(facts.date_published));
    Offer(date_modified_, kJsonLdRank, source, NormalizeDate(facts.date_modified));
    Offer(site_name_, kJsonLdRank, source, Collapse(facts.site_name));
    Offer(description_, kJsonLdRank, source, Collapse(facts.description));
    Offer(language_, kJsonLdRank, source, Language(facts.language));
    Offer(canonical_, kJsonLdRank, source, Address(facts.canonical_url));
    Offer(image_, kJsonLdRank, source, Address(facts.image));
    std::vector<std::string> tags;
    for (const std::string& tag : facts.tags) tags.push_back(Collapse(tag));
    OfferList(tags_, kJsonLdRank, source, std::move(tags));
  }

  // The value of a microdata property.
  std::string MicrodataValue(const HtmlTreeNode& node) const {
    const std::string_view name = node.Name();
    std::string_view value;
    if (name == "meta") return node.FindParam("content", value) ? Collapse(value) : std::string();
    if (name == "a" || name == "link" || name == "area") return node.FindParam("href", value) ? std::string(value) : "";
    if (name == "img" || name == "source" || name == "video" || name == "audio") {
      return node.FindParam("src", value) ? std::string(value) : "";
    }
    if (name == "time" && node.FindParam("datetime", value)) return Collapse(value);
    if (node.FindParam("content", value)) return Collapse(value);
    return ElementText(node, kMaxElementText);
  }

  void Microdata(const HtmlTreeNode& node, std::string_view properties) {
    const char* source = "microdata";
    if (HasToken(properties, "headline")) Offer(title_, kMicrodataRank, source, MicrodataValue(node));
    if (HasToken(properties, "datepublished")) {
      Offer(date_published_, kMicrodataRank, source, NormalizeDate(MicrodataValue(node)));
    }
    if (HasToken(properties, "datemodified")) {
      Offer(date_modified_, kMicrodataRank, source, NormalizeDate(MicrodataValue(node)));
    }
    if (HasToken(properties, "description")) Offer(description_, kMicrodataRank, source, MicrodataValue(node));
    if (HasToken(properties, "image")) Offer(image_, kMicrodataRank, source, Address(MicrodataValue(node)));
    if (HasToken(properties, "inlanguage")) Offer(language_, kMicrodataRank, source, Language(MicrodataValue(node)));
    if (HasToken(properties, "keywords")) OfferList(tags_, kMicrodataRank, source, SplitTags(MicrodataValue(node)));
    if (HasToken(properties, "author") || HasToken(properties, "creator")) {
      std::string name;
      std::string_view value;
      if (node.FindParam("itemscope", value)) {
        OrvelParser::WalkNodes(node.Children(), [&](const HtmlTreeNode& inner) {
          if (!name.empty() || inner.IsText()) return false;
          std::string_view inner_properties;
          if (inner.FindParam("itemprop", inner_properties) && HasToken(inner_properties, "name")) {
            name = MicrodataValue(inner);
            return false;
          }
          return true;
        });
      } else {
        name = MicrodataValue(node);
      }
      if (name.size() <= kMaxBylineChars) OfferList(author_, kMicrodataRank, source, {Author(name)});
    }
  }

  // Takes a byline; returns whether to walk into the element.
  bool Byline(const HtmlTreeNode& node) {
    std::string_view value;
    const bool may_have_rel = node.Id() == OrvelParser::kIdAnchor || node.Id() == OrvelParser::kIdHead;
    if (may_have_rel && node.FindParam("rel", value) && HasToken(value, "author")) {
      if (byline_element_taken_) return false;
      const std::string name = ElementText(node, kMaxBylineChars);
      OfferList(author_, kBylineRank, "byline", {Author(name)});
      return false;
    }
    if (author_.rank <= kBylineRank) return true;
    const bool named = (node.FindParam("class", value) && NamesByline(value)) ||
                       (node.FindParam("id", value) && NamesByline(value));
    if (!named) return true;
    const std::string name = Author(ElementText(node, kMaxBylineChars));
    if (name.empty() || name.size() > kMaxBylineChars) return true;
    OfferList(author_, kBylineRank, "byline", {name});
    byline_element_taken_ = true;
    return false;
  }

  // Whether a class or id value names a byline: a token that holds
  // "byline", or is "author" or ends in "-author", "_author", "author-name"
  // or "authorname".
  static bool NamesByline(std::string_view value) {
    // Cheap first: most values hold neither word.
    auto holds = [value](std::string_view word) {
      for (std::size_t i = 0; i + word.size() <= value.size(); ++i) {
        if (LowerChar(value[i]) == word[0] && EqualsIgnoringCase(value.substr(i, word.size()), word)) return true;
      }
      return false;
    };
    if (!holds("author") && !holds("byline")) return false;
    return AnyToken(value, [](std::string_view token) {
      const std::string t = Lower(token);
      return t.find("byline") != std::string::npos || t == "author" || t.ends_with("-author") ||
             t.ends_with("_author") || t.ends_with("author-name") || t.ends_with("authorname") ||
             t.ends_with("author__name");
    });
  }

  // The <title> without the site's name that pages add to it.
  std::string TitleFromDocumentTitle() const {
    const std::string& title = document_title_;
    if (title.empty()) return {};
    if (!first_h1_.empty() && title.starts_with(first_h1_)) return first_h1_;
    static const std::string_view kSeparators[] = {" | ", " - ", " \u2013 ", " \u2014 ", " :: ", " \u00bb ",
                                                   " \u00b7 ", " // "};
    for (std::string_view separator : kSeparators) {
      const std::size_t at = title.rfind(separator);
      if (at == std::string::npos || at == 0) continue;
      const std::string left = title.substr(0, at);
      const std::string right = title.substr(at + separator.size());
      if (!site_name_.value.empty() && left == site_name_.value) return right;
      // The longer side is the article's.
      return std::count(left.begin(), left.end(), ' ') + 1 >= std::count(right.begin(), right.end(), ' ') ? left
                                                                                                         : right;
    }
    return title;
  }

  // `title` without a trailing " | Site" or " - Site" naming the site.
  std::string WithoutSiteName(const std::string& title) const {
    const std::string& site = site_name_.value;
    if (site.empty() || title.size() <= site.size() + 3 || !title.ends_with(site)) return title;
    std::string rest = title.substr(0, title.size() - site.size());
    const std::size_t kept = rest.size();
    for (bool trimmed = true; trimmed && !rest.empty();) {
      trimmed = false;
      for (std::string_view separator : {" ", "|", "-", ":", "\u2013", "\u2014", "\u00b7", "\u00bb"}) {
        if (rest.ends_with(separator)) {
          rest.erase(rest.size() - separator.size());
          trimmed = true;
        }
      }
    }
    // Only a separator before the site's name makes it a suffix.
    return rest.empty() || rest.size() == kept ? title : rest;
  }

  const std::string& page_url_;
  bool json_ld_read_ = false;
  // A byline element was taken: rel="author" links add no more names.
  bool byline_element_taken_ = false;
  std::string document_title_;
  std::string first_h1_;
  Field title_;
  ListField author_;
  Field date_published_;
  Field date_modified_;
  Field site_name_;
  Field description_;
  Field language_;
  Field canonical_;
  Field image_;
  ListField tags_;
};

}  // namespace

Metadata ReadMetadata(const OrvelParser::HtmlDocTree& tree, const std::string& page_url) {
  Gatherer gatherer(page_url);
  gatherer.Walk(tree.TopLevel());
  return gatherer.Result();
}

}  // namespace zestra
