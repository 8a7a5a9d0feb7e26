// The article walk: reads the shape of the kept text (headings, paragraphs,
// lists, quotes, preformatted text, tables, emphasis, code, links, line
// breaks, images) from the parsed document the layout tree was built from,
// and reports it to an ArticleSink (article_sink.h).
//
// The text is exactly the text the extraction wrote (KeptText), text node
// by text node: a text node the extraction did not keep is not reported,
// an element without kept text below it is not reported, and the walk does
// not go into it. Inside preformatted elements the text is taken as the
// document writes it, so white space is kept; the words are the same.
// Everything else a writer needs comes from the elements around the kept
// text:
//   - h1-h6 are headings, p a paragraph, pre (listing, xmp, plaintext)
//     preformatted text whose language is read from a "language-x" or
//     "lang-x" class of the pre or of its code element;
//   - ul, ol, menu and dir are lists (ol with its start), li their items;
//     any other kept child of a list becomes an item of its own;
//   - blockquote is a quote;
//   - a table is a table of rows and cells when it reads as data: at least
//     two columns, no table, heading, list, quote or preformatted text
//     inside, and no more blocks than cells. Rows come in the order the
//     layout reads them: head and body rows as written, footer rows last.
//     Any other table is read as blocks;
//   - every other block element (div, section, dl, dd, figure, ...) is a
//     boundary; inside a leaf block, blocks are single spaces;
//   - em, i, cite, dfn and var are emphasis, strong and b strong, code, kbd,
//     samp and tt code, sub and sup themselves, a with an href a link;
//   - br is a line break;
//   - img (with images asked for) is an image, taken where it lies inside
//     an element that holds kept text, unless its markup hides it or it
//     lies in a navigation, aside or similar part; its address is src, or
//     data-src when src is missing or a data: address.
// Addresses are resolved against `base_url` (url_resolver.h); a link whose
// address is not safe (IsSafeUrl) is reported as its text only; an image
// whose address is not http or https is left out.
//
// The walk keeps its own stack: the call stack does not grow with the
// nesting of the document.
//
// Thread-safety: reads the tree and the KeptText only; walks of different
// documents may run at once.
#ifndef ZESTRA_API_ARTICLE_WALK_H_
#define ZESTRA_API_ARTICLE_WALK_H_

#include <string>

#include "api/article_sink.h"
#include "api/kept_text.h"
#include "zestra/html/html_doc_tree.h"

namespace zestra {

struct ArticleWalkSettings {
  // The address relative links and images are resolved against; may be
  // empty.
  std::string base_url;
  // Report images.
  bool images = false;
};

// Walks `tree`, reporting the kept text of `kept` and its shape to `sink`,
// then calls sink.Finish().
void WalkArticle(const OrvelParser::HtmlDocTree& tree, const ZestraNS::KeptText& kept,
                 const ArticleWalkSettings& settings, ArticleSink& sink);

// The href of the document's first <base> element with one, resolved
// against `page_url`; `page_url` when there is none.
std::string DocumentBaseUrl(const OrvelParser::HtmlDocTree& tree, const std::string& page_url);

}  // namespace zestra

#endif  // ZESTRA_API_ARTICLE_WALK_H_
