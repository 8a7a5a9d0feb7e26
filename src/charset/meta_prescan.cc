// The <meta> prescan of the WHATWG HTML standard ("prescan a byte stream to
// determine its encoding"), over the first kPrescanBytes bytes. Names and
// values are lower-cased as they are read, as the algorithm does.
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "zestra/charset/charset_detection.h"
#include "zestra/charset/charset_names.h"

namespace OrvelDetection {
namespace {

using Orvel::CHARSET;

bool IsSpace(uint8_t b) { return b == 0x09 || b == 0x0A || b == 0x0C || b == 0x0D || b == 0x20; }
bool IsAlpha(uint8_t b) { return (b >= 'a' && b <= 'z') || (b >= 'A' && b <= 'Z'); }
char Lower(uint8_t b) { return static_cast<char>(b >= 'A' && b <= 'Z' ? b + ('a' - 'A') : b); }

// The encoding named in a content attribute's value ("text/html;
// charset=koi8-r"), as "extracting a character encoding from a meta element"
// finds it; empty when there is none.
std::string_view CharsetInContent(std::string_view content) {
  size_t pos = 0;
  for (;;) {
    const size_t found = content.find("charset", pos);
    if (found == std::string_view::npos) return {};
    pos = found + 7;
    while (pos < content.size() && IsSpace(content[pos])) ++pos;
    if (pos >= content.size() || content[pos] != '=') continue;
    ++pos;
    while (pos < content.size() && IsSpace(content[pos])) ++pos;
    if (pos >= content.size()) return {};
    const char c = content[pos];
    if (c == '"' || c == '\'') {
      const size_t close = content.find(c, pos + 1);
      if (close == std::string_view::npos) return {};
      return content.substr(pos + 1, close - pos - 1);
    }
    size_t end = pos;
    while (end < content.size() && !IsSpace(content[end]) && content[end] != ';') ++end;
    return content.substr(pos, end - pos);
  }
}

// The charset a declared label stands for, with the prescan's own rules:
// 16-bit text means UTF-8 and "x-user-defined" means Windows-1252.
// `label` is lower case already.
CHARSET DeclaredCharset(std::string_view label) {
  const CHARSET charset = OrvelCharset::CharsetFromLabel(label);
  if (charset == Orvel::Utf16LECharset || charset == OrvelCharset::Utf16BECharset) {
    return Orvel::Utf8Charset;
  }
  while (!label.empty() && IsSpace(label.front())) label.remove_prefix(1);
  while (!label.empty() && IsSpace(label.back())) label.remove_suffix(1);
  if (label == "x-user-defined") return Orvel::Windows1252Charset;
  return charset;
}

class Prescanner {
 public:
  Prescanner(const uint8_t* data, size_t size) : data_(data), size_(std::min(size, kPrescanBytes)) {}

  CHARSET Run() {
    size_t pos = 0;
    while (pos < size_) {
      if (At(pos, "<!--")) {
        // The comment ends at the first "-->" whose dashes may be those of
        // "<!--" itself ("<!-->" is a whole comment).
        const size_t end = Find("-->", pos + 2);
        if (end == kNotFound) return Orvel::UnknownCharset;
        pos = end + 2;
      } else if (AtIgnoringCase(pos, "<meta") && pos + 5 < size_ &&
                 (IsSpace(data_[pos + 5]) || data_[pos + 5] == '/')) {
        pos += 6;
        bool ended = false;
        const CHARSET charset = Meta(pos, ended);
        if (ended) return Orvel::UnknownCharset;
        if (charset != Orvel::UnknownCharset) return charset;
      } else if (data_[pos] == '<' && pos + 1 < size_ &&
                 (IsAlpha(data_[pos + 1]) ||
                  (data_[pos + 1] == '/' && pos + 2 < size_ && IsAlpha(data_[pos + 2])))) {
        while (pos < size_ && !IsSpace(data_[pos]) && data_[pos] != '>') ++pos;
        Attribute attribute;
        Result result;
        while ((result = GetAttribute(pos, attribute)) == Result::kAttribute) {
        }
        if (result == Result::kEnded) return Orvel::UnknownCharset;
      } else if (At(pos, "<!") || At(pos, "</") || At(pos, "<?")) {
        pos = Find(">", pos + 2);
        if (pos == kNotFound) return Orvel::UnknownCharset;
      }
      ++pos;
    }
    return Orvel::UnknownCharset;
  }

 private:
  static constexpr size_t kNotFound = static_cast<size_t>(-1);

  enum class Result { kAttribute, kNone, kEnded };
  struct Attribute {
    std::string name;
    std::string value;
  };

  bool At(size_t pos, std::string_view s) const {
    return size_ - pos >= s.size() && std::equal(s.begin(), s.end(), data_ + pos);
  }
  bool AtIgnoringCase(size_t pos, std::string_view s) const {
    if (size_ - pos < s.size()) return false;
    for (size_t i = 0; i < s.size(); ++i) {
      if (Lower(data_[pos + i]) != s[i]) return false;
    }
    return true;
  }
  size_t Find(std::string_view s, size_t from) const {
    for (size_t pos = from; pos < size_; ++pos) {
      if (At(pos, s)) return pos;
    }
    return kNotFound;
  }
  void SkipSpaces(size_t& pos) const {
    while (pos < size_ && IsSpace(data_[pos])) ++pos;
  }

  // "Get an attribute": reads one attribute at pos into `attribute`. kNone
  // when pos reaches the '>' that ends the element, kEnded when the window
  // ends first.
  Result GetAttribute(size_t& pos, Attribute& attribute) const {
    while (pos < size_ && (IsSpace(data_[pos]) || data_[pos] == '/')) ++pos;
    if (pos >= size_) return Result::kEnded;
    if (data_[pos] == '>') return Result::kNone;
    attribute.name.clear();
    attribute.value.clear();
    for (;; ++pos) {
      if (pos >= size_) return Result::kEnded;
      const uint8_t b = data_[pos];
      if (b == '=' && !attribute.name.empty()) break;
      if (IsSpace(b)) {
        SkipSpaces(pos);
        if (pos >= size_) return Result::kEnded;
        if (data_[pos] != '=') return Result::kAttribute;
        break;
      }
      if (b == '/' || b == '>') return Result::kAttribute;
      attribute.name.push_back(Lower(b));
    }
    ++pos;  // past '='
    SkipSpaces(pos);
    if (pos >= size_) return Result::kEnded;
    const uint8_t first = data_[pos];
    if (first == '"' || first == '\'') {
      for (++pos; pos < size_; ++pos) {
        if (data_[pos] == first) {
          ++pos;
          return Result::kAttribute;
        }
        attribute.value.push_back(Lower(data_[pos]));
      }
      return Result::kEnded;
    }
    if (first == '>') return Result::kAttribute;
    for (; pos < size_; ++pos) {
      if (IsSpace(data_[pos]) || data_[pos] == '>') return Result::kAttribute;
      attribute.value.push_back(Lower(data_[pos]));
    }
    return Result::kEnded;
  }

  // The attributes of a <meta> element from pos; the charset it declares or
  // UnknownCharset. Sets `ended` when the window ends inside the element.
  CHARSET Meta(size_t& pos, bool& ended) const {
    enum class NeedPragma { kUnset, kYes, kNo };
    std::vector<std::string> seen;
    bool got_pragma = false;
    NeedPragma need_pragma = NeedPragma::kUnset;
    bool charset_set = false;
    CHARSET charset = Orvel::UnknownCharset;
    Attribute attribute;
    for (;;) {
      const Result result = GetAttribute(pos, attribute);
      if (result == Result::kEnded) {
        ended = true;
        return Orvel::UnknownCharset;
      }
      if (result == Result::kNone) break;
      if (std::find(seen.begin(), seen.end(), attribute.name) != seen.end()) continue;
      seen.push_back(attribute.name);
      if (attribute.name == "http-equiv") {
        if (attribute.value == "content-type") got_pragma = true;
      } else if (attribute.name == "content") {
        const std::string_view label = CharsetInContent(attribute.value);
        const CHARSET declared = label.empty() ? Orvel::UnknownCharset : DeclaredCharset(label);
        if (declared != Orvel::UnknownCharset && !charset_set) {
          charset = declared;
          charset_set = true;
          need_pragma = NeedPragma::kYes;
        }
      } else if (attribute.name == "charset") {
        charset = DeclaredCharset(attribute.value);
        charset_set = true;
        need_pragma = NeedPragma::kNo;
      }
    }
    if (need_pragma == NeedPragma::kUnset) return Orvel::UnknownCharset;
    if (need_pragma == NeedPragma::kYes && !got_pragma) return Orvel::UnknownCharset;
    return charset;
  }

  const uint8_t* data_;
  size_t size_;
};

}  // namespace

CHARSET PrescanMetaCharset(const uint8_t* data, size_t size) {
  if (data == nullptr || size == 0) return Orvel::UnknownCharset;
  return Prescanner(data, size).Run();
}

}  // namespace OrvelDetection
