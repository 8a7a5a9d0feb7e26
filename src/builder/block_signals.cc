#include "builder/block_signals.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

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
    "comment", "commentform", "commentlist", "comments", "discussion", "disqus", "respond",
};
constexpr std::string_view kBylineWords[] = {
    "author", "authors", "byline", "bylines", "date", "dateline", "meta", "pubdate", "published", "timestamp",
};
constexpr std::string_view kCreditWords[] = {
    "attribution", "copyright", "credit", "credits", "photographer",
};
constexpr std::string_view kCaptionWords[] = {
    "caption", "figcaption", "legend",
};
constexpr std::string_view kHiddenWords[] = {
    "d-none", "hidden", "hide", "invisible", "screen-reader-text", "sr-only", "visually-hidden", "visuallyhidden",
};

constexpr bool IsSorted(const auto& words) { return std::is_sorted(std::begin(words), std::end(words)); }
static_assert(IsSorted(kBoilerplateWords) && IsSorted(kCommentWords) && IsSorted(kHiddenWords));
static_assert(IsSorted(kBylineWords) && IsSorted(kCreditWords) && IsSorted(kCaptionWords));

// Longest word of any list; longer parts can only match by their start.
constexpr std::size_t kLongestWord = 18;

bool IsAsciiSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }

char Lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + ('a' - 'A')) : c; }

// Words at least this long also match as the start of a part: class names
// glue words together ("relatedposts", "sharedaddy", "socialicons"). Shorter
// ones would match too much ("address", "menuitem", "navy").
constexpr std::size_t kShortestPrefix = 5;

// Ids of more parts than this are slugs of headings
// ("sharing-with-a-single-developer"), not names of page parts: only the
// whole id is matched. Class names have no such limit (namespaced names
// such as "wp-volt-gal-main-nav" are long).
constexpr std::size_t kMaxIdParts = 4;
constexpr std::size_t kNoPartLimit = static_cast<std::size_t>(-1);

// A token or part in lower case: its first kLongestWord characters, and its
// full length.
class LowerName {
 public:
  explicit LowerName(std::string_view name) : size_(name.size()) {
    const std::size_t kept = std::min(name.size(), kLongestWord);
    std::transform(name.begin(), name.begin() + static_cast<std::ptrdiff_t>(kept), buffer_.begin(), Lower);
    kept_ = kept;
  }

  bool Empty() const { return size_ == 0; }

  // Whether the name equals a word of `words` or, when `prefixes`, begins
  // with one of at least kShortestPrefix letters.
  template <std::size_t N>
  bool In(const std::string_view (&words)[N], bool prefixes) const {
    if (size_ == 0) return false;
    const std::string_view lower(buffer_.data(), kept_);
    // Only words with the name's first letter can match: a handful.
    const auto [first, last] = std::equal_range(std::begin(words), std::end(words), lower.substr(0, 1),
                                                [](std::string_view a, std::string_view b) { return a[0] < b[0]; });
    for (auto word = first; word != last; ++word) {
      if (size_ == word->size() && lower == *word) return true;
      if (prefixes && word->size() >= kShortestPrefix && word->size() < size_ && lower.starts_with(*word)) return true;
    }
    return false;
  }

 private:
  std::array<char, kLongestWord> buffer_;
  std::size_t kept_ = 0;
  std::size_t size_;
};

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

// Calls `match` on each name of a class or id value as the matching rules
// read it: every token whole, with no prefixes, then each of its '-' and
// '_' parts (when it has no more than `max_parts`), with prefixes. Stops,
// returning true, at the first call that returns true.
template <class Match>
bool AnyName(std::string_view value, std::size_t max_parts, Match&& match) {
  return AnyToken(value, [max_parts, &match](std::string_view token) {
    if (match(LowerName(token), false)) return true;
    if (static_cast<std::size_t>(std::count_if(token.begin(), token.end(),
                                               [](char c) { return c == '-' || c == '_'; })) >= max_parts) {
      return false;
    }
    std::size_t at = 0;
    while (at <= token.size()) {
      std::size_t end = token.find_first_of("-_", at);
      if (end == std::string_view::npos) end = token.size();
      if (match(LowerName(token.substr(at, end - at)), true)) return true;
      at = end + 1;
    }
    return false;
  });
}

std::size_t MaxParts(NameAttribute from) { return from == NameAttribute::kId ? kMaxIdParts : kNoPartLimit; }

// The signal of a class or id value: kComments as soon as a comment word
// is found, else kBoilerplate when a boilerplate word was.
ElementSignal ValueSignal(std::string_view value, NameAttribute from) {
  bool boilerplate = false;
  const bool comments = AnyName(value, MaxParts(from), [&boilerplate](const LowerName& name, bool part) {
    if (name.In(kCommentWords, false)) return true;
    boilerplate = boilerplate || name.In(kBoilerplateWords, part);
    return false;
  });
  return comments ? ElementSignal::kComments : boilerplate ? ElementSignal::kBoilerplate : ElementSignal::kNone;
}

bool EqualsIgnoringCase(std::string_view a, std::string_view lower) {
  return a.size() == lower.size() && std::equal(a.begin(), a.end(), lower.begin(), [](char x, char y) { return Lower(x) == y; });
}

// Whether an inline style hides the element: display:none or
// visibility:hidden, ignoring ASCII case and white space ("Display : NONE").
// The property must start a declaration ("max-display" is not display) and
// the value must end it ("none-ish" is not none).
bool StyleHides(std::string_view style) {
  std::string compact;
  compact.reserve(style.size());
  for (char c : style) {
    if (!IsAsciiSpace(c)) compact.push_back(Lower(c));
  }
  for (std::string_view wanted : {std::string_view("display:none"), std::string_view("visibility:hidden")}) {
    for (std::size_t at = compact.find(wanted); at != std::string::npos; at = compact.find(wanted, at + 1)) {
      const bool starts = at == 0 || compact[at - 1] == ';' || compact[at - 1] == '{';
      const std::size_t after = at + wanted.size();
      const bool ends =
          after == compact.size() || compact[after] == ';' || compact[after] == '!' || compact[after] == '}';
      if (starts && ends) return true;
    }
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

// The attributes the rules read, found in one pass over an element's
// attributes, so that an element with many costs one pass and not one per
// name. Each is the first of its name, as FindParam finds it; absent when
// the element has none (or is a text node).
struct BlockAttributes {
  explicit BlockAttributes(const HtmlTreeNode& node) {
    node.ForEachParam([this](std::string_view name, std::string_view value) {
      std::optional<std::string_view>* slot = nullptr;
      if (name == "hidden") {
        slot = &hidden;
      } else if (name == "aria-hidden") {
        slot = &aria_hidden;
      } else if (name == "style") {
        slot = &style;
      } else if (name == "class") {
        slot = &class_names;
      } else if (name == "id") {
        slot = &id;
      } else if (name == "role") {
        slot = &role;
      } else if (name == "rel") {
        slot = &rel;
      }
      if (slot != nullptr && !*slot) *slot = value;
      return true;
    });
  }

  std::optional<std::string_view> hidden;
  std::optional<std::string_view> aria_hidden;
  std::optional<std::string_view> style;
  std::optional<std::string_view> class_names;
  std::optional<std::string_view> id;
  std::optional<std::string_view> role;
  std::optional<std::string_view> rel;
};

// The LineSignal bits of a class or id value.
uint8_t ValueLines(std::string_view value, NameAttribute from) {
  uint8_t lines = 0;
  AnyName(value, MaxParts(from), [&lines](const LowerName& name, bool part) {
    if (name.In(kBylineWords, part)) lines |= kLineByline;
    if (name.In(kCreditWords, part)) lines |= kLineCredit;
    if (name.In(kCaptionWords, part)) lines |= kLineCaption;
    return false;
  });
  return lines;
}

// The signal of an element from its name, role and the attributes read.
ElementSignal SignalFrom(const HtmlTreeNode& node, const BlockAttributes& a) {
  ElementSignal signal = ElementSignal::kNone;
  if (a.class_names) signal = ValueSignal(*a.class_names, NameAttribute::kClass);
  if (signal == ElementSignal::kComments) return signal;
  if (a.id) signal = std::max(signal, ValueSignal(*a.id, NameAttribute::kId));
  if (signal != ElementSignal::kNone) return signal;
  if (IsBoilerplateElement(node.Name())) return ElementSignal::kBoilerplate;
  if (a.role && IsBoilerplateRole(*a.role)) return ElementSignal::kBoilerplate;
  return ElementSignal::kNone;
}

}  // namespace

bool HasClassWord(std::string_view value, ClassWords words, NameAttribute from) {
  switch (words) {
    case ClassWords::kBoilerplate:
      return AnyName(value, MaxParts(from),
                     [](const LowerName& name, bool part) { return name.In(kBoilerplateWords, part); });
    case ClassWords::kComments:
      return AnyName(value, MaxParts(from), [](const LowerName& name, bool) { return name.In(kCommentWords, false); });
    case ClassWords::kHidden:
      return AnyToken(value, [](std::string_view token) { return LowerName(token).In(kHiddenWords, false); });
  }
  return false;
}

bool IsHiddenElement(const HtmlTreeNode& node) {
  const BlockAttributes a(node);
  if (a.hidden) return true;
  if (a.aria_hidden && EqualsIgnoringCase(*a.aria_hidden, "true")) return true;
  if (a.style && StyleHides(*a.style)) return true;
  return a.class_names && HasClassWord(*a.class_names, ClassWords::kHidden);
}

ElementSignal SignalOf(const HtmlTreeNode& node) { return SignalsOf(node).signal; }

ElementSignals SignalsOf(const HtmlTreeNode& node) {
  const BlockAttributes a(node);
  ElementSignals result;
  const std::string_view element = node.Name();
  if (element == "figcaption") result.lines |= kLineCaption;
  if (element == "address" || element == "time") result.lines |= kLineByline;
  if (element == "form") result.lines |= kLineForm;
  if (a.rel && EqualsIgnoringCase(*a.rel, "author")) result.lines |= kLineByline;
  if (a.class_names) result.lines |= ValueLines(*a.class_names, NameAttribute::kClass);
  if (a.id) result.lines |= ValueLines(*a.id, NameAttribute::kId);
  result.signal = SignalFrom(node, a);
  return result;
}

}  // namespace ZestraNS
