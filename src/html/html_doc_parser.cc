#include "zestra/html/html_doc_parser.h"

#include <string>

#include "charset/document_decoder.h"
#include "html/gumbo_tree_converter.h"
#include "html/html_nesting_limit.h"

namespace OrvelParser {

HtmlDocParser::~HtmlDocParser() = default;

bool HtmlDocParser::Parse() {
  std::string utf8;
  const Orvel::CHARSET charset = DecodeDocument(input_, tree_.Charset(), utf8);
  LimitNesting(utf8);
  GumboTreeConverter::Parse(utf8, keywords_, tree_, charset);
  return tree_.NodeCount() != 0;
}

}  // namespace OrvelParser
