#include "builder/block_signals.h"

#include <algorithm>
#include <array>
#include <string>

namespace ZestraNS {
namespace {

using OrvelParser::HtmlTreeNode;

// Each list is sorted, lower case, for binary search.
constexpr std::string_view kBoilerplateWords[] = {
    "ad",          "ads",        "advert",    "advertisement", "advertising", "adverts",  "banner",
    "breadcrumb",  "breadcrumbs", "consent",  "cookie",        "cookies",     "footer",   "masthead",
    "menu",        "menubar",    "nav",       "navbar",        "navigation",  "newsletter", "popup",
    "promo",       "promos",     "promotion", "recommended",   "related",     "share",    "sharing",
    "sidebar",     "signup",     "social",    "sponsor",       "sponsored",   "subscribe", "toolbar",
    "trending",    "widget",     "widgets",
};
constexpr std::string_view kCommentWords[] = {
    "comment", "commentlist", "comments", "discussion", "disqus",
};
constexpr std::string_view kHiddenWords[] = {
    "d-none", "hidden", "hide", "invisible", "screen-reader-text", "sr-only", "visually-hidden", "visuallyhidden",
};

constexpr bool IsSorted(const auto& words) { return std::is_sorted(std::begin(words), std::end(words)); }
static_assert(IsSorted(kBoilerplateWords) && IsSorted(kCommentWords) && IsSorted(kHiddenWords));

// Longest word of any list; longer parts can only match by their start.
constexpr std::size_t kLongestWord = 18;

bool IsAsciiSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }

char Lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + ('a' - 'A')) : c; }

// Words at least this long also match as the start of a part: class names
// glue words together ("relatedposts", "sharedaddy", "socialicons"). Shorter
// ones would match too much ("address", "menuitem", "navy").
constexpr std::size_t kShortestPrefix = 5;

// Whether `part` equals a word of `words` or, when `prefixes`, begins with
// one of at least kShortestPrefix letters; ASCII case is ignored.
template <std::size_t N>
bool InList(std::string_view part, const std::string_view (&words)[N], bool prefixes = false) {
  if (part.empty()) return false;
  std::array<char, kLongestWord> buffer;
  const std::size_t size = std::min(part.size(), kLongestWord);
  std::transform(part.begin(), part.begin() + static_cast<std::ptrdiff_t>(size), buffer.begin(), Lower);
  const std::string_view lower(buffer.data(), size);
  // Only words with the part's first letter can match: a handful.
  const auto [first, last] = std::equal_range(std::begin(words), std::end(words), lower.substr(0, 1),
                                              [](std::string_view a, std::string_view b) { return a[0] < b[0]; });
  for (auto word = first; word != last; ++word) {
    if (part.size() == word->size() && lower == *word) return true;
    if (prefixes && word->size() >= kShortestPrefix && word->size() < part.size() && lower.starts_with(*word)) {
      return true;
    }
  }
  return false;
}

// Calls `match` on each white-space separated token of `value` until it
// returns true; returns whether one did.
template <class Match>
bool AnyToken(std::string_view value, Match&& match) {
  std::size_t at = 0;
  while (at < value.size()) {
    while (at < value.size() && IsAsciiSpace(value[at])) ++at;
    std::size_t end = at;
    while (end < value.size() && !IsAsciiSpace(value[end])) ++end;
    if (end > at && match(value.substr(at, end - at))) return true;
    at = end;
  }
  return false;
}

// Ids of more parts than this are slugs of headings
// ("sharing-with-a-single-developer"), not names of page parts: only the
// whole id is matched. Class names have no such limit (namespaced names
// such as "wp-volt-gal-main-nav" are long).
constexpr std::size_t kMaxIdParts = 4;
constexpr std::size_t kNoPartLimit = static_cast<std::size_t>(-1);

template <std::size_t N>
bool TokenOrPartInList(std::string_view token, const std::string_view (&words)[N], std::size_t max_parts,
                       bool prefixes) {
  if (InList(token, words)) return true;
  if (static_cast<std::size_t>(std::count_if(token.begin(), token.end(), [](char c) { return c == '-' || c == '_'; })) >=
      max_parts) {
    return false;
  }
  std::size_t at = 0;
  while (at <= token.size()) {
    std::size_t end = token.find_first_of("-_", at);
    if (end == std::string_view::npos) end = token.size();
    if (InList(token.substr(at, end - at), words, prefixes)) return true;
    at = end + 1;
  }
  return false;
}

bool EqualsIgnoringCase(std::string_view a, std::string_view lower) {
  return a.size() == lower.size() && std::equal(a.begin(), a.end(), lower.begin(), [](char x, char y) { return Lower(x) == y; });
}

// Whether an inline style sets `property` to `value`, ignoring ASCII case
// and white space: "Display : NONE" sets display to none.
bool StyleSets(std::string_view style, std::string_view property, std::string_view value) {
  std::string compact;
  compact.reserve(style.size());
  for (char c : style) {
    if (!IsAsciiSpace(c)) compact.push_back(Lower(c));
  }
  std::string wanted;
  wanted.append(property).append(":").append(value);
  for (std::size_t at = compact.find(wanted); at != std::string::npos; at = compact.find(wanted, at + 1)) {
    // The property must start a declaration ("max-display" is not display)
    // and the value must end it ("none-ish" is not none).
    const bool starts = at == 0 || compact[at - 1] == ';' || compact[at - 1] == '{';
    const std::size_t after = at + wanted.size();
    const bool ends =
        after == compact.size() || compact[after] == ';' || compact[after] == '!' || compact[after] == '}';
    if (starts && ends) return true;
  }
  return false;
}

bool IsBoilerplateElement(std::string_view name) {
  return name == "nav" || name == "aside" || name == "header" || name == "footer";
}

bool IsBoilerplateRole(std::string_view role) {
  return AnyToken(role, [](std::string_view token) {
    for (std::string_view r : {"banner", "complementary", "contentinfo", "menu", "menubar", "navigation", "toolbar"}) {
      if (EqualsIgnoringCase(token, r)) return true;
    }
    return false;
  });
}

}  // namespace

bool HasClassWord(std::string_view value, ClassWords words, NameAttribute from) {
  const std::size_t max_parts = from == NameAttribute::kId ? kMaxIdParts : kNoPartLimit;
  switch (words) {
    case ClassWords::kBoilerplate:
      return AnyToken(value, [max_parts](std::string_view t) {
        return TokenOrPartInList(t, kBoilerplateWords, max_parts, true);
      });
    case ClassWords::kComments:
      return AnyToken(value, [max_parts](std::string_view t) {
        return TokenOrPartInList(t, kCommentWords, max_parts, false);
      });
    case ClassWords::kHidden:
      return AnyToken(value, [](std::string_view t) { return InList(t, kHiddenWords); });
  }
  return false;
}

bool IsHiddenElement(const HtmlTreeNode& node) {
  if (node.IsText()) return false;
  std::string_view value;
  if (node.FindParam("hidden", value)) return true;
  if (node.FindParam("aria-hidden", value) && EqualsIgnoringCase(value, "true")) return true;
  if (node.FindParam("style", value) &&
      (StyleSets(value, "display", "none") || StyleSets(value, "visibility", "hidden"))) {
    return true;
  }
  return node.FindParam("class", value) && HasClassWord(value, ClassWords::kHidden);
}

ElementSignal SignalOf(const HtmlTreeNode& node) {
  std::string_view class_value;
  std::string_view id_value;
  const bool has_class = node.FindParam("class", class_value);
  const bool has_id = node.FindParam("id", id_value);
  const auto any = [&](ClassWords words) {
    return (has_class && HasClassWord(class_value, words, NameAttribute::kClass)) ||
           (has_id && HasClassWord(id_value, words, NameAttribute::kId));
  };
  if (any(ClassWords::kComments)) return ElementSignal::kComments;
  if (IsBoilerplateElement(node.Name())) return ElementSignal::kBoilerplate;
  std::string_view role;
  if (node.FindParam("role", role) && IsBoilerplateRole(role)) return ElementSignal::kBoilerplate;
  return any(ClassWords::kBoilerplate) ? ElementSignal::kBoilerplate : ElementSignal::kNone;
}

}  // namespace ZestraNS
