#include "zestra/html/html_doc_parser.h"

#include <string>

#include "charset/document_decoder.h"
#include "html/html_tree_sink.h"
#include "html/tree_builder.h"

namespace OrvelParser {

HtmlDocParser::~HtmlDocParser() = default;

bool HtmlDocParser::Parse() {
  std::string utf8;
  const Orvel::CHARSET charset = DecodeDocument(input_, tree_.Charset(), utf8);
  if (utf8.empty()) {
    tree_.Assign({}, 0, charset);
    return false;
  }
  HtmlTreeSink sink(keywords_);
  TreeBuilder::Build(utf8, sink);
  tree_.Assign(sink.TakeTopLevel(), sink.NodeCount(), charset);
  return tree_.NodeCount() != 0;
}

}  // namespace OrvelParser
