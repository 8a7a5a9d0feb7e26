// Link addresses of an extracted article: resolving the references a page
// writes (href, src) against the page's address, and deciding which
// addresses may be shown to a reader.
//
// Resolution follows RFC 3986 section 5 with the clean-up browsers apply
// first (WHATWG URL): leading and trailing spaces and control characters go,
// tabs and line feeds inside go, and in http and https addresses a
// backslash is a slash. Schemes come out in lower case, dot segments are
// removed, and spaces, quotes, angle brackets, backquotes and control
// characters are percent-encoded, so that a resolved address never breaks
// out of an HTML attribute or a Markdown link.
//
// Thread-safety: pure functions.
#ifndef ZESTRA_API_URL_RESOLVER_H_
#define ZESTRA_API_URL_RESOLVER_H_

#include <string>
#include <string_view>

namespace zestra {

// The lower-case scheme of `url` ("http"), or empty when it has none (a
// relative reference). `url` is taken as it stands.
std::string UrlScheme(std::string_view url);

// `reference` resolved against `base`. An absolute reference comes out
// cleaned up; a relative one is resolved when `base` is an absolute
// hierarchical address ("scheme://host/path"), and comes out as a cleaned
// up relative reference otherwise. Empty when `reference` is empty after
// clean-up.
std::string ResolveUrl(std::string_view base, std::string_view reference);

// Whether a resolved address may be linked to from shown content: its
// scheme is http, https or mailto, or it is a relative reference without a
// scheme (it then stays inside the showing page's site).
bool IsSafeUrl(std::string_view resolved);

}  // namespace zestra

#endif  // ZESTRA_API_URL_RESOLVER_H_
