// HtmlWriter writes an article as a fragment of HTML that is safe to show
// inside another page. Only these elements and attributes are written:
//
//   p, h1-h6, ul, ol (start), li, blockquote, pre, code, table, tr,
//   th (colspan), td (colspan), em, strong, sub, sup, a (href), br,
//   img (src, alt)
//
// Addresses come from the article walk, resolved and checked (http, https,
// mailto or a relative reference for links; http or https for images).
// Every text and attribute value is escaped (&, <, >, and " and ' in
// values; every value is quoted with "), so no markup of the page can reach the output: nothing outside
// the list above is ever written.
//
// Layout of the output: a block element starts on its own line; text
// outside a paragraph in a list item or a table cell stays bare, elsewhere
// it gets a <p>. The output ends with a line feed, or is empty.
//
// Thread-safety: one writer per walk.
#ifndef ZESTRA_API_HTML_WRITER_H_
#define ZESTRA_API_HTML_WRITER_H_

#include <string>
#include <string_view>
#include <vector>

#include "api/flow_writer.h"

namespace zestra {

class HtmlWriter : public FlowWriter {
 public:
  // Appends to `*out`, which must outlive the writer.
  explicit HtmlWriter(std::string* out) : out_(out) {}

 protected:
  void StartLeaf() override;
  void FinishLeaf() override;
  void WriteWords(std::string_view utf8) override;
  void WritePreformatted(std::string_view utf8) override;
  void WriteSpace() override;
  void WriteBreak() override;
  void WriteOpenSpan(const Span& span) override;
  void WriteCloseSpan(const Span& span) override;
  void WriteImage(std::string_view alt, const std::string& src) override;
  void BeginContainer(const Block& block) override;
  void EndContainer(BlockKind kind) override;
  void FinishDocument() override;

 private:
  void NewLine();
  // Appends `text` with &, < and > escaped, and " and ' too in an
  // attribute value.
  void AppendEscaped(std::string_view text, bool attribute);

  std::string* const out_;
  struct Container {
    BlockKind kind;
    std::string close;  // its end tag, with the line feed after it
  };
  std::vector<Container> containers_;
  std::string leaf_close_;  // the end tag of the leaf started
};

}  // namespace zestra

#endif  // ZESTRA_API_HTML_WRITER_H_
