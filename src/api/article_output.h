// The kept text of an extraction as Markdown or HTML: the article walk
// (article_walk.h) over the parsed document, into the writer of the format
// (markdown_writer.h, html_writer.h).
//
// Thread-safety: reads the tree and the KeptText only.
#ifndef ZESTRA_API_ARTICLE_OUTPUT_H_
#define ZESTRA_API_ARTICLE_OUTPUT_H_

#include <string>

#include "api/kept_text.h"
#include "zestra/html/html_doc_tree.h"
#include "zestra/zestra.h"

namespace zestra {

// The kept text of `tree` in `format` (kMarkdown or kHtml; empty for any
// other). Links and images resolve against the document's <base>, itself
// resolved against `page_url` (may be empty), else against `page_url`.
std::string WriteArticle(const OrvelParser::HtmlDocTree& tree, const ZestraNS::KeptText& kept, Format format,
                         const std::string& page_url, bool images);

}  // namespace zestra

#endif  // ZESTRA_API_ARTICLE_OUTPUT_H_
