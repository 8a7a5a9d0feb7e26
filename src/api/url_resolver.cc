#include "api/url_resolver.h"

#include <cctype>
#include <cstddef>

namespace zestra {
namespace {

bool IsAsciiAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// The reference as browsers read it: no leading or trailing C0 controls or
// spaces, no tabs or line feeds anywhere, unsafe bytes percent-encoded.
std::string Clean(std::string_view text) {
  std::size_t begin = 0;
  std::size_t end = text.size();
  while (begin < end && static_cast<unsigned char>(text[begin]) <= 0x20) ++begin;
  while (end > begin && static_cast<unsigned char>(text[end - 1]) <= 0x20) --end;
  static const char kHex[] = "0123456789ABCDEF";
  std::string clean;
  clean.reserve(end - begin);
  for (std::size_t i = begin; i < end; ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c == '\t' || c == '\n' || c == '\r') continue;
    if (c <= 0x20 || c == 0x7F || c == '"' || c == '\'' || c == '<' || c == '>' || c == '`') {
      clean += '%';
      clean += kHex[c >> 4];
      clean += kHex[c & 0xF];
    } else {
      clean += static_cast<char>(c);
    }
  }
  return clean;
}

// Length of the scheme of `url` including its colon; 0 when there is none.
std::size_t SchemeLength(std::string_view url) {
  if (url.empty() || !IsAsciiAlpha(url[0])) return 0;
  for (std::size_t i = 1; i < url.size(); ++i) {
    const char c = url[i];
    if (c == ':') return i + 1;
    if (!IsAsciiAlpha(c) && !(c >= '0' && c <= '9') && c != '+' && c != '-' && c != '.') return 0;
  }
  return 0;
}

// RFC 3986 section 5.2.4.
std::string RemoveDotSegments(std::string_view path) {
  std::string out;
  std::size_t i = 0;
  while (i < path.size()) {
    const std::string_view rest = path.substr(i);
    if (rest.starts_with("../")) {
      i += 3;
    } else if (rest.starts_with("./")) {
      i += 2;
    } else if (rest.starts_with("/./")) {
      i += 2;
    } else if (rest == "/.") {
      out += '/';
      break;
    } else if (rest.starts_with("/../") || rest == "/..") {
      const std::size_t cut = out.rfind('/');
      out.erase(cut == std::string::npos ? 0 : cut);
      if (rest == "/..") {
        out += '/';
        break;
      }
      i += 3;
    } else if (rest == "." || rest == "..") {
      break;
    } else {
      std::size_t next = path.find('/', i + 1);
      if (next == std::string_view::npos) next = path.size();
      out.append(path.substr(i, next - i));
      i = next;
    }
  }
  return out;
}

// The parts of an absolute hierarchical address.
struct Parts {
  std::string scheme;     // with its colon
  std::string authority;  // with its leading "//"
  std::string path;
  std::string query;  // with its '?', or empty
};

// Splits a cleaned absolute address; false when it is not "scheme://...".
bool Split(const std::string& url, Parts& parts) {
  const std::size_t scheme = SchemeLength(url);
  if (scheme == 0 || url.compare(scheme, 2, "//") != 0) return false;
  parts.scheme = url.substr(0, scheme);
  std::size_t at = url.find_first_of("/?#", scheme + 2);
  if (at == std::string::npos) at = url.size();
  parts.authority = url.substr(scheme, at - scheme);
  std::size_t query = url.find_first_of("?#", at);
  if (query == std::string::npos) query = url.size();
  parts.path = url.substr(at, query - at);
  std::size_t fragment = url.find('#', query);
  if (fragment == std::string::npos) fragment = url.size();
  parts.query = url.substr(query, fragment - query);
  return true;
}

std::string LowerScheme(std::string url) {
  const std::size_t scheme = SchemeLength(url);
  for (std::size_t i = 0; i < scheme; ++i) url[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(url[i])));
  const std::string_view name(url.data(), scheme);
  if (name == "http:" || name == "https:") {
    for (std::size_t i = scheme; i < url.size() && url[i] != '?' && url[i] != '#'; ++i) {
      if (url[i] == '\\') url[i] = '/';
    }
  }
  return url;
}

}  // namespace

std::string UrlScheme(std::string_view url) {
  const std::size_t length = SchemeLength(url);
  std::string scheme(url.substr(0, length == 0 ? 0 : length - 1));
  for (char& c : scheme) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return scheme;
}

std::string ResolveUrl(std::string_view base, std::string_view reference) {
  std::string ref = Clean(reference);
  if (ref.empty()) return ref;
  if (SchemeLength(ref) != 0) return LowerScheme(std::move(ref));
  Parts parts;
  if (!Split(LowerScheme(Clean(base)), parts)) return ref;
  if (parts.scheme == "http:" || parts.scheme == "https:") {
    for (std::size_t i = 0; i < ref.size() && ref[i] != '?' && ref[i] != '#'; ++i) {
      if (ref[i] == '\\') ref[i] = '/';
    }
  }
  if (ref.starts_with("//")) return parts.scheme + ref;
  if (ref[0] == '#') return parts.scheme + parts.authority + parts.path + parts.query + ref;
  if (ref[0] == '?') return parts.scheme + parts.authority + parts.path + ref;
  std::size_t path_end = ref.find_first_of("?#");
  if (path_end == std::string::npos) path_end = ref.size();
  std::string path;
  if (ref[0] == '/') {
    path = ref.substr(0, path_end);
  } else {
    const std::size_t slash = parts.path.rfind('/');
    path = (slash == std::string::npos ? std::string("/") : parts.path.substr(0, slash + 1)) + ref.substr(0, path_end);
  }
  return parts.scheme + parts.authority + RemoveDotSegments(path) + ref.substr(path_end);
}

bool IsSafeUrl(std::string_view resolved) {
  if (resolved.empty()) return false;
  const std::string scheme = UrlScheme(resolved);
  if (scheme.empty()) return resolved.find(':') == std::string_view::npos || resolved.find_first_of("/?#") < resolved.find(':');
  return scheme == "http" || scheme == "https" || scheme == "mailto";
}

}  // namespace zestra
