#include "tree_command.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <new>
#include <system_error>
#include <string>
#include <vector>

#include "article_fields.h"
#include "extract_command.h"
#include "page_list.h"
#include "page_reader.h"
#include "zestra/api/block_pruning.h"
#include "zestra/api/document_tree.h"
#include "zestra/api/layout_tuning.h"
#include "zestra/base/memory_pool.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_statistics.h"
#include "zestra/model/k_table.h"
#include "zestra/charset/charset_conversion.h"
#include "zestra/ranking/k_rank_parameters.h"
#include "zestra/stream/memory_buffer.h"
#include "zestra/traversal/zestra_text_extractor.h"
#include "zestra/traversal/zestra_visitor_strategy.h"
#include "zestra/zestra.h"

namespace zestra_tool {
namespace {

using Orvel::SmartPtr;
using ZestraNS::KCell;
using ZestraNS::KCellItem;
using ZestraNS::KTable;

// Indentation stops growing below this depth; the table lines carry their
// level, so nothing is lost, and a page nested thousands deep does not
// print megabytes of spaces per line.
constexpr std::size_t kMaxIndentDepth = 40;
// Text items longer than this many characters are cut, with "...".
constexpr std::size_t kTextPreviewChars = 72;

// The extractor as the extraction constructs it, opened up to say what its
// selection keeps: the installed strategy decides which tables won and
// which cells are kept.
class Selection : public ZestraNS::ZestraTextExtractor {
 public:
  using ZestraTextExtractor::ZestraTextExtractor;
  SmartPtr<ZestraNS::ZestraVisitorStrategy> Installed() const { return Strategy(); }
};

// `text` on one line: runs of white space made one space, cut after
// kTextPreviewChars characters.
std::string Preview(const std::u16string& text) {
  std::u16string line;
  std::size_t characters = 0;
  bool space = false;
  for (char16_t unit : text) {
    const bool blank = unit == u' ' || unit == u'\n' || unit == u'\r' || unit == u'\t' || unit == u'\f' ||
                       unit == u'\u00a0';
    if (blank) {
      space = !line.empty();
      continue;
    }
    const bool continues_pair = unit >= 0xDC00 && unit <= 0xDFFF;
    if (!continues_pair) {
      if (space) {
        ++characters;
        line += u' ';
        space = false;
      }
      if (++characters > kTextPreviewChars) {
        line += u"...";
        break;
      }
    }
    line += unit;
  }
  std::string utf8;
  OrvelCharset::AppendUtf8(line.data(), line.size(), utf8);
  return utf8;
}

class TreePrinter {
 public:
  // Ranks with `weights`, or with the default weights when it is null.
  TreePrinter(const SmartPtr<KTable>& root, const ZestraNS::KStatistics& document,
              const ZestraNS::ZestraVisitorStrategy& selection, const ZestraNS::ZestraRankWeights* weights)
      : root_(root), document_(document), selection_(selection), parameters_(Parameters(weights)) {
    if (parameters_.IsNull()) throw std::bad_alloc();
  }

  // Prints the tree depth first in the order the extraction walks it: the
  // grid slots row by row, then the caption and the summary; in a cell its
  // items in order. The walk keeps its place in an explicit stack.
  void Print() {
    PrintTable(root_, 0);
    while (!stack_.empty()) {
      Frame& frame = stack_.back();
      if (frame.cell.IsNull()) {
        StepTable(frame);
      } else {
        StepCell(frame);
      }
    }
  }

 private:
  static SmartPtr<ZestraNS::KRankParameters> Parameters(const ZestraNS::ZestraRankWeights* weights) {
    if (weights == nullptr) return SmartPtr<ZestraNS::KRankParameters>(new ZestraNS::KRankParameters());
    return ZestraNS::KRankParameters::WithWeights(weights->link_density.data(), weights->words_per_cell.data(),
                                                  weights->word_count.data(),
                                                  static_cast<uint32_t>(weights->link_density.size()));
  }

  struct Frame {
    SmartPtr<KTable> table;  // the table of a table frame; the cell's table in a cell frame
    SmartPtr<KCell> cell;    // null in a table frame
    std::size_t next = 0;    // the next slot or item
    std::size_t depth = 0;
  };

  void Indent(std::size_t depth) const {
    std::printf("%*s", static_cast<int>(2 * std::min(depth, kMaxIndentDepth)), "");
  }

  void PrintTable(const SmartPtr<KTable>& table, std::size_t depth) {
    const double rank = table->Rank(document_, parameters_);
    Indent(depth);
    std::printf("table %ux%u  level %u  rank %.4f  %s\n", table->Cols(), table->Rows(), table->Level(), rank,
                selection_.IsGoodTable(table) ? "won" : "lost");
    stack_.push_back(Frame{table, SmartPtr<KCell>(), 0, depth});
  }

  void PrintCell(const SmartPtr<KCell>& cell, const SmartPtr<KTable>& table, const char* where, std::size_t depth) {
    const bool table_good = selection_.IsGoodTable(table);
    const bool cell_good = selection_.IsGoodCell(cell);
    Indent(depth);
    const auto step = static_cast<ZestraNS::PruneStep>(cell->Marks().dropped_by);
    const std::string verdict = step != ZestraNS::PruneStep::kNone
                                    ? std::string("dropped (") + ZestraNS::PruneStepName(step) + ")"
                                : table_good && cell_good ? "kept"
                                : table_good              ? "dropped (cell rank)"
                                                          : "dropped (table lost)";
    std::printf("cell %s  words %u  link words %u  links %u  tables %u  rank %.4f  %s\n", where, cell->Words(),
                cell->WordsInLinksAndImages(), cell->Links(), cell->Tables(), cell->Rank(), verdict.c_str());
    stack_.push_back(Frame{table, cell, 0, depth});
  }

  void StepTable(Frame& frame) {
    const SmartPtr<KTable> table = frame.table;
    const std::size_t depth = frame.depth + 1;
    const std::size_t slots = static_cast<std::size_t>(table->End() - table->Begin());
    while (frame.next < slots + 2) {
      const std::size_t index = frame.next++;
      if (index < slots) {
        const SmartPtr<KCell>& cell = table->Begin()[index];
        if (cell.IsNull()) continue;
        const std::string where = "(" + std::to_string(index % table->Cols()) + "," +
                                  std::to_string(index / table->Cols()) + ")";
        PrintCell(cell, table, where.c_str(), depth);  // invalidates `frame`
        return;
      }
      const SmartPtr<KCell>& extra = index == slots ? table->Caption() : table->Summary();
      if (extra.IsNull()) continue;
      PrintCell(extra, table, index == slots ? "caption" : "summary", depth);
      return;
    }
    stack_.pop_back();
  }

  void StepCell(Frame& frame) {
    const SmartPtr<KCell> cell = frame.cell;
    const std::size_t depth = frame.depth + 1;
    const std::size_t items = static_cast<std::size_t>(cell->End() - cell->Begin());
    while (frame.next < items) {
      const SmartPtr<KCellItem>& item = cell->Begin()[frame.next++];
      if (item->IsText()) {
        Indent(depth);
        std::printf("text \"%s\"\n", Preview(item->Text()).c_str());
      } else if (item->IsTable()) {
        PrintTable(item->Table(), depth);  // invalidates `frame`
        return;
      }
    }
    stack_.pop_back();
  }

  const SmartPtr<KTable>& root_;
  const ZestraNS::KStatistics& document_;
  const ZestraNS::ZestraVisitorStrategy& selection_;
  // Ranks use the weights of the layout, as both parameter sets of the
  // extraction do; only their thresholds differ.
  SmartPtr<ZestraNS::KRankParameters> parameters_;
  std::vector<Frame> stack_;
};

// Prints the tree of one page; false, with `error` set, when it cannot be
// read or memory runs out.
bool PrintPageTree(const TreeSettings& settings, const std::string& path, std::string& error) {
  std::string bytes;
  std::string reason;
  if (!ReadPage(path, bytes, reason, zestra::kMaxInputBytes)) {
    error = "cannot read '" + path + "': " + reason;
    return false;
  }
  // A tree built while memory ran out may lack cells and texts: the page
  // fails instead, as Extract does.
  const uint64_t failed_requests = OrvelMem::MemoryPool::FailedRequests();
  // Extract settles the charset and the document type; the tree is then
  // built in that charset, as the extraction built it.
  zestra::Options options;
  options.charset = settings.charset;
  options.layout = settings.layout;
  options.url = settings.url;
  const zestra::Result result = zestra::Extract(bytes, options);
  OrvelFile::MemoryBuffer input(bytes.data(), static_cast<unsigned int>(std::min(bytes.size(), zestra::kMaxInputBytes)),
                                OrvelFile::MemoryBuffer::kReadInPlace);
  const ZestraNS::LayoutMode mode =
      settings.layout == zestra::Layout::kTables ? ZestraNS::LayoutMode::kTables : ZestraNS::LayoutMode::kBlocks;
  const SmartPtr<KTable> root = ZestraNS::GetDocumentTree(input, static_cast<Orvel::CHARSET>(result.charset), mode);

  ZestraNS::KStatistics document;
  root->Statistics(document, 0xFFFFFFFFu);
  const bool links = result.type == zestra::DocumentType::kLinks;
  const ZestraNS::LayoutTuning tuning = ZestraNS::TuningOf(mode, static_cast<ZestraNS::Favor>(settings.favor));
  Selection selection(root, links, tuning.values, tuning.weights);
  if (tuning.pruning != nullptr) {
    ZestraNS::PruningTuning pruning = *tuning.pruning;
    pruning.comments = pruning.comments && !settings.comments;
    ZestraNS::PruneSelection(root, *selection.Installed(), pruning, links);
  }
  if (OrvelMem::MemoryPool::FailedRequests() != failed_requests) throw std::bad_alloc();
  std::printf("document  words %u  link words %u  links %u  tables %u  %s  charset %s  layout %s\n",
              document.Words(), document.WordsInLinksAndImages(), document.Links(), document.Tables(),
              links ? "link document" : "content document", result.charset_name.c_str(),
              zestra::LayoutName(result.layout));
  std::printf("kept      %u words, %s\n", selection.CountWords(),
              links ? "the whole text" : "the cells kept in the tables that won");
  PrintMetadata(result.metadata, stdout);
  TreePrinter(root, document, *selection.Installed(), tuning.weights).Print();
  return true;
}

}  // namespace

int RunTree(const TreeSettings& settings) {
  std::vector<PageEntry> pages;
  bool batch = false;
  if (!ListCommandPages(settings.inputs, &pages, &batch)) return kExitError;
  std::size_t failures = 0;
  for (const PageEntry& page : pages) {
    std::string error = page.error;
    if (batch && error.empty()) std::printf("==> %s <==\n", page.path.c_str());
    try {
      if (error.empty()) PrintPageTree(settings, page.path, error);
    } catch (const std::bad_alloc&) {
      error = "cannot build the tree of '" + page.path + "': out of memory";
    }
    if (batch && page.error.empty()) std::printf("\n");
    if (!error.empty()) {
      std::fflush(stdout);
      std::fprintf(stderr, "zestra: %s\n", error.c_str());
      ++failures;
    }
  }
  if (std::fflush(stdout) != 0) {
    std::fprintf(stderr, "zestra: cannot write standard output: %s\n",
                 std::generic_category().message(errno).c_str());
    return kExitError;
  }
  return failures == 0 ? kExitOk : failures < pages.size() ? kExitSomeFailed : kExitError;
}

}  // namespace zestra_tool
