#include "warc/http_payload.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <new>

namespace zestra::warc {
namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool StartsWithIgnoringCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && EqualsIgnoringCase(text.substr(0, prefix.size()), prefix);
}

// The tags of the WHATWG MIME sniffing rules for HTML, each followed by a
// space or ">" in the payload.
constexpr std::array<std::string_view, 17> kHtmlSignatures = {
    "<!doctype html", "<html", "<head",  "<script", "<iframe", "<h1", "<div", "<font", "<table",
    "<a",             "<style", "<title", "<b",      "<body",   "<br", "<p",  "<!--"};

// Inflates `body` with zlib window bits `window_bits` into `out`, member
// after member for gzip. Returns false when not a byte could be decoded.
bool Inflate(std::string_view body, int window_bits, std::size_t limit, std::string* out) {
  z_stream stream{};
  if (inflateInit2(&stream, window_bits) != Z_OK) throw std::bad_alloc();
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(body.data()));
  stream.avail_in = static_cast<uInt>(std::min<std::size_t>(body.size(), 0xFFFFFFFFu));
  std::array<char, 1 << 15> chunk;
  bool any = false;
  for (;;) {
    stream.next_out = reinterpret_cast<Bytef*>(chunk.data());
    stream.avail_out = static_cast<uInt>(chunk.size());
    const int status = inflate(&stream, Z_NO_FLUSH);
    const std::size_t produced = chunk.size() - stream.avail_out;
    out->append(chunk.data(), std::min(produced, limit - out->size()));
    any = any || produced > 0 || status == Z_STREAM_END;
    if (status == Z_MEM_ERROR) {
      inflateEnd(&stream);
      throw std::bad_alloc();
    }
    if (out->size() >= limit) break;
    if (status == Z_STREAM_END && stream.avail_in > 0 && window_bits > 15) {
      inflateReset(&stream);  // another gzip member follows
      continue;
    }
    if (status != Z_OK) break;  // the end, data cut short or bad data
  }
  inflateEnd(&stream);
  return any;
}

}  // namespace

std::string_view TrimSpace(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  const std::size_t last = text.find_last_not_of(" \t");
  return text.substr(first, last - first + 1);
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return Lower(x) == Lower(y);
         });
}

int HttpStatus(std::string_view line) {
  if (!StartsWithIgnoringCase(line, "HTTP/")) return 0;
  const std::size_t space = line.find(' ');
  if (space == std::string_view::npos) return 0;
  const std::string_view code = TrimSpace(line.substr(space + 1)).substr(0, 3);
  int status = 0;
  const auto [end, error] = std::from_chars(code.data(), code.data() + code.size(), status);
  if (error != std::errc() || end != code.data() + code.size() || code.size() != 3) return 0;
  return status;
}

void ParseContentType(std::string_view value, std::string* media_type, std::string* charset) {
  media_type->clear();
  charset->clear();
  const std::size_t semicolon = value.find(';');
  for (char c : TrimSpace(value.substr(0, semicolon))) media_type->push_back(Lower(c));
  std::string_view rest = semicolon == std::string_view::npos ? std::string_view() : value.substr(semicolon + 1);
  while (!rest.empty()) {
    const std::size_t next = rest.find(';');
    const std::string_view parameter = TrimSpace(rest.substr(0, next));
    rest = next == std::string_view::npos ? std::string_view() : rest.substr(next + 1);
    const std::size_t equals = parameter.find('=');
    if (equals == std::string_view::npos || !EqualsIgnoringCase(TrimSpace(parameter.substr(0, equals)), "charset")) {
      continue;
    }
    std::string_view label = TrimSpace(parameter.substr(equals + 1));
    if (label.size() >= 2 && (label.front() == '"' || label.front() == '\'') && label.back() == label.front()) {
      label = label.substr(1, label.size() - 2);
    }
    charset->assign(TrimSpace(label));
    return;
  }
}

bool IsHtmlMediaType(std::string_view media_type) {
  return media_type == "text/html" || media_type == "application/xhtml+xml";
}

bool LooksLikeHtml(std::string_view payload) {
  if (payload.substr(0, 3) == "\xEF\xBB\xBF") payload.remove_prefix(3);
  const std::size_t first = payload.find_first_not_of(" \t\n\f\r");
  if (first == std::string_view::npos) return false;
  payload.remove_prefix(first);
  for (std::string_view signature : kHtmlSignatures) {
    if (!StartsWithIgnoringCase(payload, signature) || payload.size() == signature.size()) continue;
    const char after = payload[signature.size()];
    if (after == ' ' || after == '>' || signature == "<!--") return true;
  }
  return false;
}

void DecodeChunked(std::string_view body, std::size_t limit, std::string* out) {
  out->clear();
  std::string_view rest = body;
  bool first = true;
  while (!rest.empty()) {
    const std::size_t line_end = rest.find('\n');
    std::string_view size_line = rest.substr(0, line_end);
    size_line = TrimSpace(size_line.substr(0, size_line.find_first_of(";\r")));
    std::uint64_t size = 0;
    const auto [end, error] = std::from_chars(size_line.data(), size_line.data() + size_line.size(), size, 16);
    if (line_end == std::string_view::npos || size_line.empty() || error != std::errc() ||
        end != size_line.data() + size_line.size()) {
      if (first) out->assign(body.substr(0, limit));
      return;
    }
    first = false;
    rest.remove_prefix(line_end + 1);
    if (size == 0) return;  // the last chunk; trailer fields follow
    const std::size_t take = static_cast<std::size_t>(std::min<std::uint64_t>(size, rest.size()));
    out->append(rest.substr(0, std::min(take, limit - out->size())));
    if (out->size() >= limit) return;
    rest.remove_prefix(take);
    // The line end that closes the chunk's data.
    if (!rest.empty() && rest.front() == '\r') rest.remove_prefix(1);
    if (!rest.empty() && rest.front() == '\n') rest.remove_prefix(1);
  }
}

bool DecodeContent(std::string_view coding, std::string_view body, std::size_t limit, std::string* out) {
  out->clear();
  coding = TrimSpace(coding);
  if (coding.empty() || EqualsIgnoringCase(coding, "identity")) {
    out->assign(body.substr(0, limit));
    return true;
  }
  if (EqualsIgnoringCase(coding, "gzip") || EqualsIgnoringCase(coding, "x-gzip")) {
    return Inflate(body, 15 + 16, limit, out);
  }
  if (EqualsIgnoringCase(coding, "deflate")) {
    // The standard says zlib format; some servers send raw deflate.
    if (Inflate(body, 15, limit, out)) return true;
    out->clear();
    return Inflate(body, -15, limit, out);
  }
  return false;
}

}  // namespace zestra::warc
