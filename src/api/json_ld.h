// The article facts of a page's JSON-LD (<script type="application/ld+json">).
//
// A script holds one object, an array of objects, or objects with an
// "@graph" array; the first object whose @type (a name or an array of
// names) is Article, NewsArticle, BlogPosting or another type ending in
// "Article" or "Posting" is the article. Its facts:
//   title           headline, else name
//   author          author: a name, an object with a name, an @id that
//                   names a Person elsewhere in the script, or an array of
//                   these
//   date_published  datePublished, else dateCreated (as written)
//   date_modified   dateModified (as written)
//   site_name       publisher's name, else the name of a WebSite object
//   description     description
//   language        inLanguage (a code, or an object with one)
//   canonical_url   url, else mainEntityOfPage (a string or an @id)
//   image           image: an address, an ImageObject's url, or the first of
//                   an array
//   tags            keywords: an array, or a string split at commas
// Text that is not JSON (including JSON wrapped in an HTML comment marker
// that is not cut off) is skipped, never an error; so is a script larger
// than kMaxJsonLdBytes. Nested values are read at most kMaxJsonLdDepth
// objects deep.
//
// Thread-safety: pure function.
#ifndef ZESTRA_API_JSON_LD_H_
#define ZESTRA_API_JSON_LD_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "zestra/zestra.h"

namespace zestra {

inline constexpr std::size_t kMaxJsonLdBytes = std::size_t{1} << 20;
inline constexpr int kMaxJsonLdDepth = 8;

struct JsonLdFacts {
  bool article = false;  // an article object was found; `facts` is empty otherwise
  // The facts as written (dates not yet read, addresses not resolved);
  // `sources` stays empty.
  Metadata facts;
};

// The facts of the script text `json`.
JsonLdFacts ReadJsonLd(std::string_view json);

}  // namespace zestra

#endif  // ZESTRA_API_JSON_LD_H_
