#include "builder/layout_dump.h"

#include <cstdio>

#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"

namespace ZestraNS {
namespace {

void DumpTable(const KTable& table, const DumpOptions& options, int depth, std::string& out);

void Indent(int depth, std::string& out) { out.append(static_cast<std::size_t>(depth) * 2, ' '); }

void DumpCell(const KCell& cell, const DumpOptions& options, int depth, std::string& out) {
  Indent(depth, out);
  out += "cell " + std::to_string(cell.Col()) + "," + std::to_string(cell.Row()) + " words " +
         std::to_string(cell.Words()) + " inlink " + std::to_string(cell.WordsInLinksAndImages()) +
         " links " + std::to_string(cell.Links()) + " tables " + std::to_string(cell.Tables()) + "\n";
  for (const Orvel::SmartPtr<KCellItem>* it = cell.Begin(); it != cell.End(); ++it) {
    const KCellItem& item = **it;
    if (item.IsText()) {
      Indent(depth + 1, out);
      out += "text \"" + EscapeText(item.Text()) + "\"";
      if (options.spans) {
        out += " @" + std::to_string(item.SourcePosition()) + "+" + std::to_string(item.SourceLength());
      }
      out += "\n";
    }
    if (item.IsTable()) DumpTable(*item.Table(), options, depth + 1, out);
    if (item.IsEmpty()) {
      Indent(depth + 1, out);
      out += "empty\n";
    }
  }
}

void DumpTable(const KTable& table, const DumpOptions& options, int depth, std::string& out) {
  Indent(depth, out);
  out += "table " + std::to_string(table.Cols()) + "x" + std::to_string(table.Rows()) + " level " +
         std::to_string(table.Level()) + "\n";
  for (uint32_t r = 0; r < table.Rows(); ++r) {
    for (uint32_t c = 0; c < table.Cols(); ++c) {
      const Orvel::SmartPtr<KCell>& cell = table.GetCell(c, r);
      if (cell) {
        DumpCell(*cell, options, depth + 1, out);
      } else if (options.null_slots) {
        Indent(depth + 1, out);
        out += "cell " + std::to_string(c) + "," + std::to_string(r) + " (null)\n";
      }
    }
  }
}

}  // namespace

std::string EscapeText(const std::u16string& text) {
  std::string out;
  for (char16_t c : text) {
    switch (c) {
      case u'\n': out += "\\n"; break;
      case u'\r': out += "\\r"; break;
      case u'\t': out += "\\t"; break;
      case u'"': out += "\\\""; break;
      case u'\\': out += "\\\\"; break;
      default:
        if (c >= 0x20 && c < 0x7F) {
          out += static_cast<char>(c);
        } else {
          char buffer[16];
          std::snprintf(buffer, sizeof buffer, "\\u{%04X}", static_cast<unsigned>(c));
          out += buffer;
        }
    }
  }
  return out;
}

std::string DumpLayout(const KTable& table, DumpOptions options) {
  std::string out;
  DumpTable(table, options, 0, out);
  return out;
}

}  // namespace ZestraNS
