// Test helper: a page's bytes parsed into an HtmlDocTree with the shared
// keyword table, as the builder receives it.
#ifndef ZESTRA_TESTS_BUILDER_PARSE_PAGE_H_
#define ZESTRA_TESTS_BUILDER_PARSE_PAGE_H_

#include <memory>
#include <string_view>

#include "builder/keyword_table.h"
#include "zestra/base/charset.h"
#include "zestra/html/html_doc_parser.h"
#include "zestra/html/html_doc_tree.h"
#include "zestra/stream/memory_buffer.h"

namespace ZestraNS::testing {

// `page` read in `charset` (UnknownCharset: sniffed) and parsed.
inline std::unique_ptr<OrvelParser::HtmlDocTree> ParsePage(std::string_view page,
                                                           Orvel::CHARSET charset = Orvel::Utf8Charset) {
  OrvelFile::MemoryBuffer input(page.data(), static_cast<unsigned int>(page.size()),
                                OrvelFile::MemoryBuffer::kReadInPlace);
  auto tree = std::make_unique<OrvelParser::HtmlDocTree>(charset);
  OrvelParser::HtmlDocParser(input, KeywordTable(), *tree).Parse();
  return tree;
}

}  // namespace ZestraNS::testing

#endif  // ZESTRA_TESTS_BUILDER_PARSE_PAGE_H_
