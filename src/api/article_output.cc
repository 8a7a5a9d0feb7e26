#include "api/article_output.h"

#include "api/article_walk.h"
#include "api/html_writer.h"
#include "api/markdown_writer.h"

namespace zestra {

std::string WriteArticle(const OrvelParser::HtmlDocTree& tree, const ZestraNS::KeptText& kept, Format format,
                         const std::string& page_url, bool images) {
  std::string out;
  ArticleWalkSettings settings;
  settings.base_url = DocumentBaseUrl(tree, page_url);
  settings.images = images;
  if (format == Format::kMarkdown) {
    MarkdownWriter writer(&out);
    WalkArticle(tree, kept, settings, writer);
  } else if (format == Format::kHtml) {
    HtmlWriter writer(&out);
    WalkArticle(tree, kept, settings, writer);
  }
  return out;
}

}  // namespace zestra
