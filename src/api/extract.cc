#include "zestra/zestra.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <string>

#include "api/article_output.h"
#include "api/extract_text.h"
#include "api/kept_text.h"
#include "api/metadata.h"
#include "builder/build_tree.h"
#include "zestra/api/block_pruning.h"
#include "zestra/api/layout_tuning.h"
#include "builder/keyword_table.h"
#include "zestra/base/charset.h"
#include "zestra/base/memory_pool.h"
#include "zestra/base/memory_ceiling.h"
#include "zestra/model/k_statistics.h"
#include "zestra/model/k_table.h"
#include "zestra/charset/charset_conversion.h"
#include "zestra/charset/charset_detection.h"
#include "zestra/charset/charset_names.h"
#include "zestra/html/html_doc_parser.h"
#include "zestra/html/html_doc_tree.h"
#include "zestra/stream/memory_buffer.h"
#include "zestra/traversal/zestra_text_extractor.h"

namespace zestra {
namespace {

using StreamBuf = Orvel::BinaryStreamBufT<unsigned int>;

// Initial capacity, in bytes, of the buffer the UTF-16 text is written to.
constexpr unsigned int kTextBufferCapacity = 4096;

#define ZESTRA_STRINGIFY_(x) #x
#define ZESTRA_STRINGIFY(x) ZESTRA_STRINGIFY_(x)
constexpr const char kVersion[] = ZESTRA_STRINGIFY(ZESTRA_VERSION_MAJOR) "." ZESTRA_STRINGIFY(
    ZESTRA_VERSION_MINOR) "." ZESTRA_STRINGIFY(ZESTRA_VERSION_PATCH);

// Writes the whole text of the tree under `root`, unranked, and returns the
// type its counters give (which the whole text does not depend on). The
// items written go to `kept` when it is not null.
ZestraNS::DocumentType ExtractWholeText(const Orvel::SmartPtr<ZestraNS::KTable>& root, StreamBuf& out,
                                        ZestraNS::KeptText* kept) {
  ZestraNS::KStatistics document;
  root->Statistics(document, 0xFFFFFFFFu);
  ZestraNS::RecordingTextExtractor extractor(root, true, nullptr, nullptr, kept);
  extractor.GetTextRecording(&out);
  return ZestraNS::ClassifyDocument(document.Words(), document.WordsInLinksAndImages(), document.Links());
}

// The UTF-8 form of the UTF-16LE units that `buffer` holds.
std::string Utf8Text(StreamBuf& buffer) {
  std::string text;
  if (buffer.vSize() == 0) return text;
  std::u16string units;
  units.reserve(buffer.vSize() / 2);
  buffer.DiscardLookAhead();
  buffer.vSeekG(0, Orvel::kSeekBegin, Orvel::kSeekAbsolute);
  buffer.Copy(units, StreamBuf::kAll);
  OrvelCharset::AppendUtf8(units.data(), units.size(), text);
  return text;
}

std::string Utf8(const std::u16string& units) {
  std::string text;
  OrvelCharset::AppendUtf8(units.data(), units.size(), text);
  return text;
}

// The charset the parser is given: the caller's, else the transport
// charset unless the bytes tell their own charset before a declaration
// would (a byte-order mark, unmarked 16-bit text, non-ASCII UTF-8), else
// none, for the parser to sniff.
Orvel::CHARSET ReadingCharset(std::string_view bytes, const Options& options) {
  const auto given = static_cast<Orvel::CHARSET>(options.charset);
  const auto transport = static_cast<Orvel::CHARSET>(options.transport_charset);
  if (options.charset != kSniffCharset || !OrvelCharset::IsSupportedCharset(transport)) return given;
  const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
  if (OrvelDetection::DetectByteOrderMark(data, bytes.size()).charset != Orvel::UnknownCharset ||
      OrvelDetection::DetectUnmarkedUtf16(data, bytes.size()) != Orvel::UnknownCharset ||
      OrvelDetection::IsNonAsciiUtf8(data, bytes.size())) {
    return given;
  }
  return transport;
}

// Ends the extraction when it reached its memory ceiling: a refused
// allocation may have been taken as nothing to add rather than as a
// failure, and the result would be incomplete.
void CheckCeiling(const OrvelMem::MemoryCeiling& ceiling) {
  if (ceiling.Reached()) throw MemoryLimitExceeded(ceiling.Limit());
}

Result ExtractPage(std::string_view bytes, const Options& options, const OrvelMem::MemoryCeiling& ceiling) {
  // The builder, the model and the output buffer do without what the pool
  // cannot give them (a cell, a table's grid, a text, the growth of the
  // text): the text would come out short. Such a result is refused as a
  // whole, with the error the parser gives when memory runs out.
  const uint64_t failed_requests = OrvelMem::MemoryPool::FailedRequests();

  // The parse happens here rather than inside the builder so that the
  // charset the parser settled on can be reported; the tree built from it
  // is the one BuildTreeFromStream would build.
  const unsigned int size = static_cast<unsigned int>(std::min(bytes.size(), kMaxInputBytes));
  OrvelFile::MemoryBuffer input(bytes.data(), size, OrvelFile::MemoryBuffer::kReadInPlace);
  OrvelParser::HtmlDocTree tree(ReadingCharset(bytes.substr(0, size), options));
  OrvelParser::HtmlDocParser(input, ZestraNS::KeywordTable(), tree).Parse();
  CheckCeiling(ceiling);

  Result result;
  // Read before the layout walk, which may release the parsed tree.
  result.metadata = ReadMetadata(tree, options.url);
  const bool formatted = options.format == Format::kMarkdown || options.format == Format::kHtml;
  std::u16string title;
  Orvel::SmartPtr<ZestraNS::KTable> root = ZestraNS::NewRootTable();
  const ZestraNS::LayoutMode mode =
      options.layout == Layout::kTables ? ZestraNS::LayoutMode::kTables : ZestraNS::LayoutMode::kBlocks;
  // The Markdown and HTML are read from the parsed tree: it must stay whole.
  if (formatted) {
    ZestraNS::BuildTreeFromDocTree(tree, root, &title, mode);
  } else {
    ZestraNS::BuildTreeConsumingDocTree(tree, root, &title, mode);
  }
  CheckCeiling(ceiling);

  OrvelFile::MemoryBuffer text(kTextBufferCapacity);
  ZestraNS::DocumentType type = ZestraNS::LinkDocument;
  ZestraNS::KeptText kept;
  if (options.whole_text) {
    type = ExtractWholeText(root, text, formatted ? &kept : nullptr);
  } else {
    ZestraNS::PruningTuning pruning;
    const ZestraNS::PruningTuning* chosen = ZestraNS::TuningOf(mode, static_cast<ZestraNS::Favor>(options.favor)).pruning;
    if (chosen != nullptr) {
      pruning = *chosen;
      if (!options.prune_steps.empty() && !ZestraNS::ChooseSteps(options.prune_steps, pruning)) {
        throw std::invalid_argument("unknown pruning step in \"" + options.prune_steps + "\"");
      }
      pruning.comments = pruning.comments && !options.comments;
    }
    ZestraNS::ExtractText(root, text, &type, mode, formatted ? &kept : nullptr, chosen != nullptr ? &pruning : nullptr);
  }
  root = nullptr;  // the tree is not needed for the conversion
  if (OrvelMem::MemoryPool::FailedRequests() != failed_requests) throw std::bad_alloc();
  CheckCeiling(ceiling);
  if (formatted) {
    result.format = options.format;
    const std::string& page_url = options.url.empty() ? result.metadata.canonical_url : options.url;
    result.formatted = WriteArticle(tree, kept, options.format, page_url, options.images);
  }

  result.text = Utf8Text(text);
  result.title = Utf8(title);
  result.type = type == ZestraNS::ContentDocument ? DocumentType::kContent : DocumentType::kLinks;
  result.charset = tree.DocumentCharset();
  result.charset_name = CharsetName(result.charset);
  result.layout = mode == ZestraNS::LayoutMode::kTables ? Layout::kTables : Layout::kBlocks;
  return result;
}

}  // namespace

Result Extract(std::string_view bytes, const Options& options) {
  const OrvelMem::MemoryCeiling ceiling(options.max_memory);
  try {
    return ExtractPage(bytes, options, ceiling);
  } catch (const MemoryLimitExceeded&) {
    throw;
  } catch (const std::bad_alloc&) {
    // A refusal of the ceiling that ended the work as running out would.
    CheckCeiling(ceiling);
    throw;
  }
}

int CharsetFromLabel(std::string_view label) {
  const Orvel::CHARSET named = OrvelCharset::CharsetFromLabel(label);
  if (named != Orvel::UnknownCharset) return named;
  int number = 0;
  const char* end = label.data() + label.size();
  const auto [stop, error] = std::from_chars(label.data(), end, number);
  if (label.empty() || error != std::errc() || stop != end) return kSniffCharset;
  return OrvelCharset::CanonicalCharset(static_cast<Orvel::CHARSET>(number));
}

std::string CharsetName(int charset) {
  const char* name = OrvelCharset::CharsetName(static_cast<Orvel::CHARSET>(charset));
  std::string lower = name != nullptr ? name : "";
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

const char* LayoutName(Layout layout) { return layout == Layout::kTables ? "tables" : "blocks"; }

bool LayoutFromName(std::string_view name, Layout* layout) {
  if (name == "tables") {
    *layout = Layout::kTables;
  } else if (name == "blocks") {
    *layout = Layout::kBlocks;
  } else {
    return false;
  }
  return true;
}

bool FavorFromName(std::string_view name, Favor* favor) {
  if (name == "balanced") {
    *favor = Favor::kBalanced;
  } else if (name == "precision") {
    *favor = Favor::kPrecision;
  } else if (name == "recall") {
    *favor = Favor::kRecall;
  } else {
    return false;
  }
  return true;
}

const char* FormatName(Format format) {
  switch (format) {
    case Format::kMarkdown:
      return "markdown";
    case Format::kHtml:
      return "html";
    default:
      return "text";
  }
}

bool FormatFromName(std::string_view name, Format* format) {
  if (name == "text") {
    *format = Format::kText;
  } else if (name == "markdown") {
    *format = Format::kMarkdown;
  } else if (name == "html") {
    *format = Format::kHtml;
  } else {
    return false;
  }
  return true;
}

const char* Version() { return kVersion; }

}  // namespace zestra
