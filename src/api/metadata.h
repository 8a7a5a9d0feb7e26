// Reads an article's facts (zestra::Metadata, zestra.h) from its parsed
// document: one walk over the whole tree gathers every candidate of every
// source, then each field takes the best candidate.
//
// Ranks, best first: JSON-LD (json_ld.h); Open Graph (og:*, article:*);
// the document's own markup (<html lang>, <link rel="canonical">); other
// <meta> names (twitter:*, description, author, keywords, Dublin Core,
// publication dates, og:locale); microdata (itemprop); <time datetime>;
// bylines (rel="author" links, elements whose class or id names a byline
// or an author, at most 100 characters, "By " cut off); a date in the
// page's address; the <title>, cut of the site's name. Within one rank the
// first candidate in document order wins; authors and tags of the winning
// source are gathered from all its candidates.
//
// Values are cleaned: white space runs become one space, dates are read
// into ISO 8601 (date_normalize.h; a date that cannot be read is no
// candidate), addresses are resolved against the page's address and must
// be http or https, author values that are addresses are dropped, authors
// and tags are deduplicated (tags at most kMaxTags), and a title that ends
// with the site's name (" | Site", " - Site") loses it.
//
// Thread-safety: reads the tree only.
#ifndef ZESTRA_API_METADATA_H_
#define ZESTRA_API_METADATA_H_

#include <cstddef>
#include <string>

#include "zestra/html/html_doc_tree.h"
#include "zestra/zestra.h"

namespace zestra {

inline constexpr std::size_t kMaxTags = 64;

// The facts of `tree`. `page_url` (may be empty) is the page's address: it
// resolves relative addresses, may hold the date, and is the
// canonical_url (source "url") when the page names none.
Metadata ReadMetadata(const OrvelParser::HtmlDocTree& tree, const std::string& page_url);

}  // namespace zestra

#endif  // ZESTRA_API_METADATA_H_
