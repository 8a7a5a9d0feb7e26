#include "api/html_writer.h"

#include <algorithm>

namespace zestra {
namespace {

const char* SpanTag(SpanKind kind) {
  switch (kind) {
    case SpanKind::kEmphasis:
      return "em";
    case SpanKind::kStrong:
      return "strong";
    case SpanKind::kCode:
      return "code";
    case SpanKind::kLink:
      return "a";
    case SpanKind::kSubscript:
      return "sub";
    case SpanKind::kSuperscript:
      return "sup";
  }
  return "span";
}

}  // namespace

void HtmlWriter::NewLine() {
  if (!out_->empty() && out_->back() != '\n') *out_ += '\n';
}

void HtmlWriter::AppendEscaped(std::string_view text, bool attribute) {
  for (char c : text) {
    if (!attribute && (c == '"' || c == '\'')) {
      *out_ += c;
      continue;
    }
    switch (c) {
      case '&':
        *out_ += "&amp;";
        break;
      case '<':
        *out_ += "&lt;";
        break;
      case '>':
        *out_ += "&gt;";
        break;
      case '"':
        *out_ += "&quot;";
        break;
      case '\'':
        *out_ += "&#39;";
        break;
      default:
        *out_ += c;
    }
  }
}

void HtmlWriter::StartLeaf() {
  const Block& leaf = Leaf();
  switch (leaf.kind) {
    case BlockKind::kHeading: {
      const std::string level = std::to_string(std::clamp(leaf.level, 1, 6));
      NewLine();
      *out_ += "<h" + level + ">";
      leaf_close_ = "</h" + level + ">\n";
      return;
    }
    case BlockKind::kPre:
      NewLine();
      *out_ += "<pre><code>";
      leaf_close_ = "</code></pre>\n";
      return;
    default:
      break;
  }
  const bool bare = !ExplicitLeaf() && !containers_.empty() &&
                    (containers_.back().kind == BlockKind::kListItem || containers_.back().kind == BlockKind::kCell);
  if (bare) {
    // A second bare run in the same item or cell is set apart by a space.
    if (!out_->empty() && out_->back() != '>' && out_->back() != '\n') *out_ += ' ';
    leaf_close_.clear();
    return;
  }
  NewLine();
  *out_ += "<p>";
  leaf_close_ = "</p>\n";
}

void HtmlWriter::FinishLeaf() { *out_ += leaf_close_; }

void HtmlWriter::WriteWords(std::string_view utf8) { AppendEscaped(utf8, false); }

void HtmlWriter::WritePreformatted(std::string_view utf8) { AppendEscaped(utf8, false); }

void HtmlWriter::WriteSpace() { *out_ += ' '; }

void HtmlWriter::WriteBreak() { *out_ += "<br>\n"; }

void HtmlWriter::WriteOpenSpan(const Span& span) {
  if (span.kind == SpanKind::kLink) {
    *out_ += "<a href=\"";
    AppendEscaped(span.href, true);
    *out_ += "\">";
    return;
  }
  *out_ += '<';
  *out_ += SpanTag(span.kind);
  *out_ += '>';
}

void HtmlWriter::WriteCloseSpan(const Span& span) {
  *out_ += "</";
  *out_ += SpanTag(span.kind);
  *out_ += '>';
}

void HtmlWriter::WriteImage(std::string_view alt, const std::string& src) {
  *out_ += "<img src=\"";
  AppendEscaped(src, true);
  *out_ += "\" alt=\"";
  AppendEscaped(alt, true);
  *out_ += "\">";
}

void HtmlWriter::BeginContainer(const Block& block) {
  std::string close;
  switch (block.kind) {
    case BlockKind::kList:
      NewLine();
      if (!block.ordered) {
        *out_ += "<ul>\n";
      } else if (block.start != 1) {
        *out_ += "<ol start=\"" + std::to_string(block.start) + "\">\n";
      } else {
        *out_ += "<ol>\n";
      }
      close = block.ordered ? "</ol>\n" : "</ul>\n";
      break;
    case BlockKind::kListItem:
      NewLine();
      *out_ += "<li>";
      close = "</li>\n";
      break;
    case BlockKind::kQuote:
      NewLine();
      *out_ += "<blockquote>\n";
      close = "</blockquote>\n";
      break;
    case BlockKind::kTable:
      NewLine();
      *out_ += "<table>\n";
      close = "</table>\n";
      break;
    case BlockKind::kRow:
      NewLine();
      *out_ += "<tr>";
      close = "</tr>\n";
      break;
    case BlockKind::kCell:
      *out_ += block.header ? "<th" : "<td";
      if (block.colspan > 1) *out_ += " colspan=\"" + std::to_string(block.colspan) + "\"";
      *out_ += '>';
      close = block.header ? "</th>" : "</td>";
      break;
    default:
      return;
  }
  containers_.push_back({block.kind, std::move(close)});
}

void HtmlWriter::EndContainer(BlockKind kind) {
  if (containers_.empty() || containers_.back().kind != kind) return;
  // Block end tags start a line; an item's or a cell's follows its content.
  if (kind != BlockKind::kListItem && kind != BlockKind::kCell && kind != BlockKind::kRow) NewLine();
  *out_ += containers_.back().close;
  containers_.pop_back();
}

void HtmlWriter::FinishDocument() { NewLine(); }

}  // namespace zestra
