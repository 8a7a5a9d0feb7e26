// MarkdownWriter writes an article as CommonMark with GitHub's pipe tables:
//
//   - headings as "# " to "###### " lines; paragraphs separated by a blank
//     line, each on one line, with a line break as a backslash at the end
//     of a line;
//   - lists with "- " or "1. " (from the list's start), items tight, nested
//     lists and an item's further blocks indented to its text;
//   - quotes with "> ";
//   - preformatted text as a fenced code block, longer than any run of
//     backquotes inside, with the language after the opening fence;
//   - tables as pipe tables whose first row is the header row, short rows
//     padded, a cell spanning columns followed by empty cells; every block
//     of a cell joined on its one line;
//   - *emphasis*, **strong**, `code` (with enough backquotes), [links](url),
//     ![images](url); subscript and superscript as plain text.
// Text is escaped so that it reads as text: backslashes, backquotes, '*',
// '_' (not inside a word), '[', ']', '<', '&' before a letter or '#', '|' in
// tables, '#' in headings, and at a line's start '#', '>', '-', '+', '=', '|' and
// the '.' or ')' after a number. The output ends with one line feed, or is
// empty.
//
// Thread-safety: one writer per walk.
#ifndef ZESTRA_API_MARKDOWN_WRITER_H_
#define ZESTRA_API_MARKDOWN_WRITER_H_

#include <string>
#include <string_view>
#include <vector>

#include "api/flow_writer.h"

namespace zestra {

class MarkdownWriter : public FlowWriter {
 public:
  // Appends to `*out`, which must outlive the writer.
  explicit MarkdownWriter(std::string* out) : out_(out) {}

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
  // A list, an item or a quote: what it puts before the lines inside it.
  struct Container {
    BlockKind kind;
    std::string first;  // before its first line
    std::string rest;   // before every later line
    bool first_used = false;
    bool written = false;  // a line was written inside it
    bool ordered = false;
    int next_number = 1;  // lists
  };
  struct Cell {
    std::string text;
    int colspan = 1;
  };

  // Where inline output goes: the code span being gathered, the cell at
  // hand, or the document.
  std::string& Target();
  // Ends the line before a new block (with a blank line unless the block
  // opens a list item) and writes the prefixes of its first line.
  void StartBlockLine();
  // The prefixes of a line after a block's first; for a blank line
  // between blocks (`trimmed`) only those of the containers written into,
  // without trailing spaces.
  std::string RestPrefix(bool trimmed) const;
  void AppendEscaped(std::string_view text, std::string& to);
  void WriteTable();
  static std::string Fence(std::string_view text, char mark, std::size_t least);

  std::string* const out_;
  std::vector<Container> containers_;
  bool at_line_start_ = false;
  std::string pre_;           // the preformatted text of the leaf at hand
  std::string code_;          // the code span being gathered
  std::size_t code_spans_ = 0;  // code spans open: their content goes to code_
  bool in_table_ = false;
  bool in_cell_ = false;
  std::vector<std::vector<Cell>> rows_;
};

}  // namespace zestra

#endif  // ZESTRA_API_MARKDOWN_WRITER_H_
