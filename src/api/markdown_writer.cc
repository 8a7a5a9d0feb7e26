#include "api/markdown_writer.h"

#include <algorithm>

namespace zestra {
namespace {

bool IsAsciiAlnum(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }
bool IsAsciiDigit(char c) { return c >= '0' && c <= '9'; }

// A link destination: parentheses and backslashes escaped (the address is
// resolved, so it holds no space or angle bracket).
std::string Destination(const std::string& href) {
  std::string escaped;
  escaped.reserve(href.size());
  for (char c : href) {
    if (c == '(' || c == ')' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

// What opens and closes an emphasis or strong span; nothing for the spans
// Markdown has no mark for (subscript, superscript).
std::string Delimiter(SpanKind kind) {
  return kind == SpanKind::kEmphasis ? "*" : kind == SpanKind::kStrong ? "**" : "";
}

}  // namespace

std::string& MarkdownWriter::Target() {
  if (code_spans_ > 0) return code_;
  if (in_cell_) return rows_.back().back().text;
  return *out_;
}

std::string MarkdownWriter::Fence(std::string_view text, char mark, std::size_t least) {
  std::size_t longest = 0;
  std::size_t run = 0;
  for (char c : text) {
    run = c == mark ? run + 1 : 0;
    longest = std::max(longest, run);
  }
  return std::string(std::max(least, longest + 1), mark);
}

std::string MarkdownWriter::RestPrefix(bool trimmed) const {
  std::string prefix;
  for (const Container& container : containers_) {
    // A blank line before a container's first line is outside it.
    if (trimmed && !container.written) break;
    prefix += container.rest;
  }
  if (trimmed) {
    while (!prefix.empty() && prefix.back() == ' ') prefix.pop_back();
  }
  return prefix;
}

void MarkdownWriter::StartBlockLine() {
  if (!out_->empty()) {
    *out_ += '\n';
    // Items of a list follow each other without a blank line, and so does
    // a list that goes on from the text of the item holding it.
    const std::size_t n = containers_.size();
    const bool tight = n >= 2 && containers_[n - 1].kind == BlockKind::kListItem && !containers_[n - 1].first_used &&
                       (containers_[n - 2].written ||
                        (n >= 3 && containers_[n - 3].kind == BlockKind::kListItem && containers_[n - 3].written));
    if (!tight) {
      *out_ += RestPrefix(true);
      *out_ += '\n';
    }
  }
  for (Container& container : containers_) container.written = true;
  for (Container& container : containers_) {
    if (!container.first_used) {
      *out_ += container.first;
      container.first_used = true;
    } else {
      *out_ += container.rest;
    }
  }
}

void MarkdownWriter::StartLeaf() {
  if (in_cell_) {
    if (!rows_.back().back().text.empty()) rows_.back().back().text += ' ';
    return;
  }
  if (Leaf().kind == BlockKind::kPre) {
    pre_.clear();
    return;
  }
  StartBlockLine();
  if (Leaf().kind == BlockKind::kHeading) {
    *out_ += std::string(std::clamp(Leaf().level, 1, 6), '#');
    *out_ += ' ';
    at_line_start_ = false;
  } else {
    at_line_start_ = true;
  }
}

void MarkdownWriter::FinishLeaf() {
  at_line_start_ = false;
  if (in_cell_ || Leaf().kind != BlockKind::kPre) return;
  std::string_view text = pre_;
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  while (!text.empty() && text.front() == '\n') text.remove_prefix(1);
  if (text.empty()) return;
  const std::string fence = Fence(text, '`', 3);
  StartBlockLine();
  *out_ += fence;
  *out_ += Leaf().language;
  while (true) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    *out_ += '\n';
    *out_ += RestPrefix(line.empty());
    *out_ += line;
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  *out_ += '\n';
  *out_ += RestPrefix(false);
  *out_ += fence;
}

void MarkdownWriter::AppendEscaped(std::string_view text, std::string& to) {
  const bool heading = Leaf().kind == BlockKind::kHeading && !in_cell_;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (at_line_start_ && IsAsciiDigit(c)) {
      std::size_t end = i;
      while (end < text.size() && IsAsciiDigit(text[end])) ++end;
      to.append(text.substr(i, end - i));
      if (end < text.size() && (text[end] == '.' || text[end] == ')')) {
        to += '\\';
        to += text[end];
        ++end;
      }
      at_line_start_ = false;
      i = end - 1;
      continue;
    }
    bool escape = false;
    switch (c) {
      case '\\':
      case '`':
      case '*':
      case '[':
      case ']':
      case '<':
        escape = true;
        break;
      case '_': {
        const char before = i > 0 ? text[i - 1] : (to.empty() ? ' ' : to.back());
        const char after = i + 1 < text.size() ? text[i + 1] : ' ';
        escape = !(IsAsciiAlnum(before) && IsAsciiAlnum(after));
        break;
      }
      case '&':
        escape = i + 1 < text.size() && (text[i + 1] == '#' || IsAsciiAlnum(text[i + 1]));
        break;
      case '|':
        escape = in_table_ || at_line_start_;
        break;
      case '#':
        escape = heading || at_line_start_;
        break;
      case '>':
      case '-':
      case '+':
      case '=':
        escape = at_line_start_;
        break;
      default:
        break;
    }
    if (escape) to += '\\';
    to += c;
    at_line_start_ = false;
  }
}

void MarkdownWriter::WriteWords(std::string_view utf8) {
  if (code_spans_ > 0) {
    code_.append(utf8);
  } else {
    AppendEscaped(utf8, Target());
  }
}

void MarkdownWriter::WritePreformatted(std::string_view utf8) {
  if (!in_cell_) {
    pre_.append(utf8);
    return;
  }
  std::string& cell = rows_.back().back().text;
  for (char c : utf8) {
    const bool space = c == ' ' || c == '\n' || c == '\t';
    if (!space) {
      AppendEscaped(std::string_view(&c, 1), cell);
    } else if (!cell.empty() && cell.back() != ' ') {
      cell += ' ';
    }
  }
}

void MarkdownWriter::WriteSpace() { Target() += ' '; }

void MarkdownWriter::WriteBreak() {
  if (in_cell_ || code_spans_ > 0 || Leaf().kind == BlockKind::kHeading) {
    Target() += ' ';
    return;
  }
  *out_ += "\\\n";
  *out_ += RestPrefix(false);
  at_line_start_ = true;
}

void MarkdownWriter::WriteOpenSpan(const Span& span) {
  if (span.kind == SpanKind::kCode) {
    if (code_spans_++ == 0) code_.clear();
    return;
  }
  if (code_spans_ > 0) return;
  Target() += span.kind == SpanKind::kLink ? "[" : Delimiter(span.kind);
  at_line_start_ = false;
}

void MarkdownWriter::WriteCloseSpan(const Span& span) {
  if (span.kind == SpanKind::kCode) {
    if (--code_spans_ > 0 || code_.empty()) return;
    std::string code;
    for (char c : code_) {
      if (c == '|' && in_table_) code += '\\';
      code += c;
    }
    const std::string fence = Fence(code, '`', 1);
    const char* pad = code.front() == '`' || code.back() == '`' ? " " : "";
    Target() += fence + pad + code + pad + fence;
    at_line_start_ = false;
    return;
  }
  if (code_spans_ > 0) return;
  Target() += span.kind == SpanKind::kLink ? "](" + Destination(span.href) + ")" : Delimiter(span.kind);
}

void MarkdownWriter::WriteImage(std::string_view alt, const std::string& src) {
  if (code_spans_ > 0) {
    code_.append(alt);
    return;
  }
  std::string& to = Target();
  to += "![";
  at_line_start_ = false;
  AppendEscaped(alt, to);
  to += "](" + Destination(src) + ")";
}

void MarkdownWriter::BeginContainer(const Block& block) {
  switch (block.kind) {
    case BlockKind::kList: {
      Container list{BlockKind::kList, "", "", true, false, block.ordered, block.start};
      containers_.push_back(list);
      return;
    }
    case BlockKind::kListItem: {
      std::string marker = "- ";
      if (!containers_.empty() && containers_.back().kind == BlockKind::kList && containers_.back().ordered) {
        marker = std::to_string(containers_.back().next_number++) + ". ";
      }
      containers_.push_back(Container{BlockKind::kListItem, marker, std::string(marker.size(), ' ')});
      return;
    }
    case BlockKind::kQuote:
      containers_.push_back(Container{BlockKind::kQuote, "> ", "> "});
      return;
    case BlockKind::kTable:
      in_table_ = true;
      rows_.clear();
      return;
    case BlockKind::kRow:
      if (in_table_) rows_.emplace_back();
      return;
    case BlockKind::kCell:
      if (in_table_ && !rows_.empty()) {
        rows_.back().push_back(Cell{"", block.colspan});
        in_cell_ = true;
      }
      return;
    default:
      return;
  }
}

void MarkdownWriter::EndContainer(BlockKind kind) {
  switch (kind) {
    case BlockKind::kList:
    case BlockKind::kListItem:
    case BlockKind::kQuote:
      if (!containers_.empty() && containers_.back().kind == kind) containers_.pop_back();
      return;
    case BlockKind::kCell:
      if (in_cell_) {
        std::string& text = rows_.back().back().text;
        while (!text.empty() && text.back() == ' ') text.pop_back();
      }
      in_cell_ = false;
      return;
    case BlockKind::kTable:
      in_table_ = false;
      WriteTable();
      return;
    default:
      return;
  }
}

void MarkdownWriter::WriteTable() {
  std::size_t columns = 0;
  for (const std::vector<Cell>& row : rows_) {
    std::size_t width = 0;
    for (const Cell& cell : row) width += static_cast<std::size_t>(cell.colspan);
    columns = std::max(columns, width);
  }
  if (columns == 0) {
    rows_.clear();
    return;
  }
  StartBlockLine();
  for (std::size_t r = 0; r < rows_.size(); ++r) {
    if (r > 0) {
      *out_ += '\n';
      *out_ += RestPrefix(false);
    }
    *out_ += '|';
    std::size_t width = 0;
    for (const Cell& cell : rows_[r]) {
      *out_ += ' ' + cell.text + " |";
      for (int span = 1; span < cell.colspan; ++span) *out_ += "  |";
      width += static_cast<std::size_t>(cell.colspan);
    }
    for (; width < columns; ++width) *out_ += "  |";
    if (r == 0) {
      *out_ += '\n';
      *out_ += RestPrefix(false);
      *out_ += '|';
      for (std::size_t c = 0; c < columns; ++c) *out_ += " --- |";
    }
  }
  at_line_start_ = false;
  rows_.clear();
}

void MarkdownWriter::FinishDocument() {
  if (!out_->empty()) *out_ += '\n';
}

}  // namespace zestra
