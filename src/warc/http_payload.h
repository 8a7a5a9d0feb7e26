// The pieces of an HTTP response that a WARC reader needs to hand a page to
// the extractor: the status line, the media type and charset of
// Content-Type, the HTML sniffing of a payload without one, and undoing the
// chunked transfer-encoding and the gzip and deflate content-encodings.
//
// Thread-safety: pure functions.
#ifndef ZESTRA_WARC_HTTP_PAYLOAD_H_
#define ZESTRA_WARC_HTTP_PAYLOAD_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace zestra::warc {

// `text` without the spaces and tabs at either end.
std::string_view TrimSpace(std::string_view text);

// True when `a` and `b` are equal but for the case of ASCII letters.
bool EqualsIgnoringCase(std::string_view a, std::string_view b);

// The status code of an HTTP status line ("HTTP/1.1 200 OK" gives 200); 0
// when `line` is not one.
int HttpStatus(std::string_view line);

// Splits a Content-Type value ("text/html; charset=ISO-8859-1") into its
// media type in lower case ("text/html") and its charset parameter as
// written, without quotes ("ISO-8859-1"; empty when absent).
void ParseContentType(std::string_view value, std::string* media_type, std::string* charset);

// True for the media types of HTML documents: text/html and
// application/xhtml+xml.
bool IsHtmlMediaType(std::string_view media_type);

// True when the payload's first bytes (after white space and a UTF-8
// byte-order mark) are one of the tags that browsers take as the sign of an
// HTML document when no Content-Type says what it is: <!DOCTYPE HTML,
// <html, <head, <body, <script, <title, <div, <p, <table, <!-- and the like.
bool LooksLikeHtml(std::string_view payload);

// Undoes the chunked transfer-encoding of `body` into `out` (at most `limit`
// bytes kept). Chunks are decoded as long as they are well formed; a body
// whose first chunk-size line is not one was not chunked after all (some
// archivers undo the encoding and keep the header) and is copied as it
// stands.
void DecodeChunked(std::string_view body, std::size_t limit, std::string* out);

// Undoes the content-encoding named `coding` ("gzip", "x-gzip", "deflate",
// "identity" or empty) of `body` into `out` (at most `limit` bytes kept).
// Compressed data that ends early or goes bad gives the bytes decoded up to
// there, as a browser shows them. Returns false, leaving `out` empty, for a
// coding it cannot undo (br, compress). Throws std::bad_alloc when memory
// runs out.
bool DecodeContent(std::string_view coding, std::string_view body, std::size_t limit, std::string* out);

}  // namespace zestra::warc

#endif  // ZESTRA_WARC_HTTP_PAYLOAD_H_
