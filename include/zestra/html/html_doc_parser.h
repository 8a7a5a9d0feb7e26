// HtmlDocParser parses the bytes of one HTML document into an HtmlDocTree.
//
// The bytes are read from the buffer's get position to its end and
// converted to UTF-8 from the tree's charset: a byte-order mark wins over
// it, and an unknown or unsupported charset is found as browsers find it
// (byte-order mark, <meta> prescan, statistical guess, then Windows-1252).
// Invalid bytes become U+FFFD. The UTF-8 text, at most kMaxDocumentBytes
// (1 GiB) of it, is parsed by the library's own HTML5 parser (a WHATWG
// tokenizer and tree builder, html/tree_builder.h), so malformed markup is
// repaired as browsers repair it and character references are decoded.
// The parse is that of a browser with scripting disabled (<noscript>
// content is markup, which the element table then skips). As browsers cap
// their trees, the stack of open elements is capped at 512: a start tag
// that would open an element deeper is dropped, and its content stays in
// the element at the limit.
//
// Thread-safety: a parser is used by one thread; the keyword table may be
// shared by parsers on many threads.
#ifndef ZESTRA_HTML_HTML_DOC_PARSER_H_
#define ZESTRA_HTML_HTML_DOC_PARSER_H_

#include "zestra/export.h"
#include "zestra/html/html_doc_tree.h"
#include "zestra/html/html_keyword_table.h"
#include "zestra/stream/binary_stream_buf.h"

namespace OrvelParser {

class ZESTRA_EXPORT HtmlDocParser {
 public:
  // Prepares to parse what `input` delivers into `tree`. All three must
  // outlive the parser. Nothing is read until Parse.
  HtmlDocParser(Orvel::BinaryStreamBufT<unsigned int>& input, const HtmlKeywordTable& keywords,
                HtmlDocTree& tree) noexcept
      : input_(input), keywords_(keywords), tree_(tree) {}
  HtmlDocParser(const HtmlDocParser&) = delete;
  HtmlDocParser& operator=(const HtmlDocParser&) = delete;
  ~HtmlDocParser();

  // Reads the input to its end and replaces the tree's content with the
  // parse. Returns whether the tree has nodes (an empty input gives none).
  // Throws std::bad_alloc when memory runs out, and what the input buffer
  // throws.
  bool Parse();

 private:
  Orvel::BinaryStreamBufT<unsigned int>& input_;
  const HtmlKeywordTable& keywords_;
  HtmlDocTree& tree_;
};

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_HTML_DOC_PARSER_H_
