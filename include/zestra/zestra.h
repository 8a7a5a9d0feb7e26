// The UTF-8 interface of the library: one call takes the bytes of an HTML
// document and returns its main text, its title, its document type and the
// charset its bytes were read in, all as UTF-8.
//
//   #include <zestra/zestra.h>
//
//   zestra::Result page = zestra::Extract(html_bytes);
//   std::cout << page.title << "\n\n" << page.text;
//
// Extract runs the ranking engine of ZestraNS::Beautify over bytes
// (zestra/api/beautify.h) on a layout tree of its choice (Layout): with
// Layout::kTables it gives Beautify's text exactly, converted from UTF-16 to
// UTF-8. Programs in other languages use the C interface, zestra_c.h.
//
// Thread-safety: Extract keeps no state between calls and takes no lock;
// any number of threads may call it at once, also on the same bytes.
#ifndef ZESTRA_ZESTRA_H_
#define ZESTRA_ZESTRA_H_

#include <cstddef>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zestra/export.h"

// The version of these headers. zestra::Version() gives that of the library
// a program runs with.
#define ZESTRA_VERSION_MAJOR 0
#define ZESTRA_VERSION_MINOR 1
#define ZESTRA_VERSION_PATCH 0

namespace zestra {

// The charset value that asks Extract to find the charset itself, as a
// browser does: a byte-order mark, else 16-bit text told by its zero bytes,
// else bytes that are valid UTF-8 beyond ASCII, else a <meta> declaration
// in the first 1024 bytes, else a statistical guess, else windows-1252.
inline constexpr int kSniffCharset = -1;

// Extract reads at most this many bytes of a document (4 GiB - 1); bytes
// beyond are ignored. The text parsed is further limited to 1 GiB of UTF-8.
inline constexpr std::size_t kMaxInputBytes = 0xFFFFFFFFu;

// What a document is made of, judged from its share of words inside links.
enum class DocumentType : int {
  // Nearly every word lies inside a link, with few words outside links per
  // link: a page of links, such as a site map or an index. Its whole text
  // is returned, unranked. A document without words is one too.
  kLinks = 0,
  // Every other document. Only the text of the tables that win the ranking
  // is returned: the article, without navigation, link lists and footers.
  kContent = 1,
};

// How Extract reads the layout of a page before it ranks it.
enum class Layout : int {
  // Pages laid out with HTML tables, as the web was written in the 1990s:
  // only HTML tables are tables of the layout tree. The reference
  // behaviour, the text of ZestraNS::Beautify byte for byte.
  kTables = 0,
  // Pages laid out with block elements, as today's are: a block of several
  // paragraphs, list items or boxes is a table of its own, content a reader
  // never sees is left out, and navigation, sidebars, share bars and
  // comments weigh as links. Tables of the page still read as tables.
  kBlocks = 1,
};
// Extract reads any other value as kBlocks.

// The form of Result::formatted.
enum class Format : int {
  // None: Result::text is the only text.
  kText = 0,
  // CommonMark with pipe tables: headings, paragraphs, lists, quotes, code
  // blocks, tables, emphasis, code, links and (with Options::images)
  // images of the kept text.
  kMarkdown = 1,
  // A fragment of HTML with the same structure, safe to show inside another
  // page: only p, h1-h6, ul, ol, li, blockquote, pre, code, table, tr, th,
  // td, em, strong, sub, sup, a, br and img, with only the attributes
  // href, src, alt, start and colspan; only http, https and mailto
  // addresses, or relative ones; every text and value escaped.
  kHtml = 2,
};
// Extract reads any other value as kText.

// What the blocks layout favours when it prunes, from the tables that won,
// what sits beside the article (menus, teaser lists, credits, bylines):
// kBalanced, the default, drops what the development sets showed to be
// nearly never the article's; kPrecision drops more (link bars, labels,
// short captions) and may cut some of the article; kRecall drops only
// comment sections and, on pages of links, the site's furniture. Unused by
// Layout::kTables.
enum class Favor : int {
  kBalanced = 0,
  kPrecision = 1,
  kRecall = 2,
};
// Extract reads any other value as kBalanced.

// Facts about the article that the page's markup states. Every string is
// UTF-8 and empty when the page does not state it. Sources, best first:
// JSON-LD (an Article, NewsArticle, BlogPosting, ... object, also inside
// @graph), Open Graph <meta property="og:...">, other <meta> names and the
// document's own markup (<html lang>, <link rel="canonical">), microdata
// (itemprop), <time datetime>, bylines in the page (rel="author", byline
// and author classes), dates in the page's address, and the <title>.
struct Metadata {
  // The article's own title: without the site's name that <title> often
  // adds ("Title - Site").
  std::string title;
  // The authors' names, in the order the source gives them.
  std::vector<std::string> author;
  // ISO 8601: "2024-03-05", "2024-03-05T14:07:09", "2024-03-05T14:07:09Z",
  // "2024-03-05T14:07:09+01:00"; the zone is the one written.
  std::string date_published;
  std::string date_modified;
  std::string site_name;
  std::string description;
  // A language tag, as "en" or "en-US".
  std::string language;
  // Absolute http or https addresses.
  std::string canonical_url;
  std::string image;
  std::vector<std::string> tags;
  // Where each field that was found came from: (field name, source) pairs
  // in the order of the fields above, the source being one of "json-ld",
  // "opengraph", "meta", "html", "link", "microdata", "time", "byline",
  // "url", "title".
  std::vector<std::pair<std::string, std::string>> sources;
};

// How Extract reads a document. New fields are added at the end with a
// default that keeps the behaviour of earlier versions, save `layout`,
// whose default is the layout that serves today's pages.
struct Options {
  // The code page of the bytes (65001 UTF-8, 1252 windows-1252, 1201
  // UTF-16LE, 1251 windows-1251, 932 Shift_JIS, ...; CharsetFromLabel maps
  // a name to it), or kSniffCharset. A byte-order mark at the start of the
  // bytes overrides it; a code page the library cannot convert is sniffed
  // as kSniffCharset is.
  int charset = kSniffCharset;
  // True: return every text of the document, unranked, whatever its type.
  bool whole_text = false;
  // The layout the page is read with; see Layout.
  Layout layout = Layout::kBlocks;
  // The most memory, in bytes, the extraction of the page may take for its
  // parse and the trees it builds (zestra/base/memory_ceiling.h says what
  // is counted); 0 sets no ceiling. Whatever the page, the extraction needs
  // at most about 20 times its size plus a few MB (README, "Limits"); a
  // service that runs many at once may bound each lower. A page that needs
  // more fails with MemoryLimitExceeded, and no other page or thread is
  // affected.
  std::size_t max_memory = 0;
  // The charset the page came with from outside its bytes: the charset
  // parameter of an HTTP Content-Type header (a code page, as `charset`),
  // or kSniffCharset when there was none. Used only when `charset` is
  // kSniffCharset: it is believed ahead of the page's <meta> declaration,
  // as browsers believe it, but after a byte-order mark, 16-bit text told
  // by its zero bytes and bytes that are valid UTF-8 beyond ASCII, which
  // servers' default labels often contradict. A code page the library
  // cannot convert counts as none.
  int transport_charset = kSniffCharset;
  // Also write the kept text as Markdown or HTML (Result::formatted).
  Format format = Format::kText;
  // Include images in the Markdown or HTML.
  bool images = false;
  // The page's address, which relative links and images are resolved
  // against where the document sets no <base>, and which holds dates and
  // serves as canonical_url when the page names none. May be empty.
  std::string url;
  // Keep comment sections with the article. By default the blocks layout
  // leaves them out (save on a page where they are nearly all the text).
  bool comments = false;
  // See Favor.
  Favor favor = Favor::kBalanced;
  // The pruning steps to run instead of those `favor` runs, by name,
  // separated by commas: comments, link-furniture, before-title,
  // teaser-run, credit, caption, byline, link-heavy, form, short-label;
  // "none" runs none. Empty: the favour's. An unknown name makes Extract
  // throw std::invalid_argument. For measuring the steps one by one.
  std::string prune_steps;
};

// Thrown by Extract when a page needs more memory than Options::max_memory
// allows. It is a std::bad_alloc, so callers that handle running out of
// memory handle it too.
class ZESTRA_EXPORT MemoryLimitExceeded : public std::bad_alloc {
 public:
  explicit MemoryLimitExceeded(std::size_t limit) noexcept : limit_(limit) {}
  const char* what() const noexcept override { return "the page needs more memory than max_memory allows"; }
  // The ceiling that was reached, in bytes.
  std::size_t Limit() const noexcept { return limit_; }

 private:
  std::size_t limit_;
};

// What Extract found. Every string is UTF-8.
struct Result {
  // The main text: paragraphs end with a blank line, table cells with a
  // line feed. Empty when the document has none (an empty or binary input,
  // a page without words).
  std::string text;
  // The document's title, with white space runs made one space; empty when
  // it has none.
  std::string title;
  // See DocumentType.
  DocumentType type = DocumentType::kLinks;
  // The code page the bytes were read in: the one asked for, the one a
  // byte-order mark announced, or the one found by sniffing.
  int charset = kSniffCharset;
  // The name of `charset` in lower case, as the WHATWG Encoding Standard
  // spells it: "utf-8", "windows-1252", "shift_jis", "utf-16le".
  std::string charset_name;
  // The layout the page was read with (Options::layout).
  Layout layout = Layout::kBlocks;
  // The same text as `text`, word for word, as Markdown or HTML
  // (Options::format); empty for Format::kText or when nothing is kept.
  std::string formatted;
  // The form of `formatted` (Options::format).
  Format format = Format::kText;
  // The article's facts; see Metadata. Unlike `title` above, which is the
  // document's <title> as it stands, metadata.title is the article's.
  Metadata metadata;
};

// Extracts the main text of the HTML document in `bytes` (at most
// kMaxInputBytes of them are read). Any bytes are accepted: markup is
// repaired as browsers repair it, and bytes that are invalid in the charset
// become U+FFFD. Throws MemoryLimitExceeded when the page needs more than
// options.max_memory, std::bad_alloc when memory runs out.
ZESTRA_EXPORT Result Extract(std::string_view bytes, const Options& options = {});

// The code page named by `label`: a label of the WHATWG Encoding Standard
// ("utf-8", "latin1", "Shift_JIS", "gb2312"; case and surrounding white
// space do not matter) or a decimal code page number the library supports
// ("1252", "65001"). kSniffCharset when the library knows no such charset.
ZESTRA_EXPORT int CharsetFromLabel(std::string_view label);

// The lower-case WHATWG name of a code page ("windows-1252"); empty when the
// library does not support it. Synonyms give the name of their charset
// (28591, ISO-8859-1, gives "windows-1252", as browsers read it).
ZESTRA_EXPORT std::string CharsetName(int charset);

// The name of a layout: "tables" or "blocks".
ZESTRA_EXPORT const char* LayoutName(Layout layout);

// The layout named `name` ("tables" or "blocks", lower case); false, with
// `*layout` unchanged, for any other name.
ZESTRA_EXPORT bool LayoutFromName(std::string_view name, Layout* layout);

// The favour named `name` ("balanced", "precision" or "recall", lower
// case); false, with `*favor` unchanged, for any other name.
ZESTRA_EXPORT bool FavorFromName(std::string_view name, Favor* favor);

// The name of a format: "text", "markdown" or "html".
ZESTRA_EXPORT const char* FormatName(Format format);

// The format named `name` ("text", "markdown" or "html"); false, with
// `*format` unchanged, for any other name.
ZESTRA_EXPORT bool FormatFromName(std::string_view name, Format* format);

// The version of the library, "MAJOR.MINOR.PATCH".
ZESTRA_EXPORT const char* Version();

}  // namespace zestra

#endif  // ZESTRA_ZESTRA_H_
