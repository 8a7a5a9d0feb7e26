#include "staged_extraction.h"

#include <time.h>

#include <memory>
#include <optional>

#include "api/article_output.h"
#include "api/extract_text.h"
#include "api/kept_text.h"
#include "api/metadata.h"
#include "builder/build_tree.h"
#include "builder/keyword_table.h"
#include "charset/document_decoder.h"
#include "html/html_tree_sink.h"
#include "html/tree_builder.h"
#include "zestra/api/beautify.h"
#include "zestra/api/layout_tuning.h"
#include "zestra/model/k_statistics.h"
#include "zestra/model/k_table.h"
#include "zestra/html/html_doc_tree.h"
#include "zestra/stream/memory_buffer.h"
#include "zestra/charset/charset_conversion.h"
#include "zestra/traversal/zestra_text_extractor.h"
#include "zestra/zestra.h"

namespace zestra_bench {
namespace {

using OrvelFile::MemoryBuffer;

// The processor time of the calling thread, in seconds: on a busy machine
// the time other processes take does not land in whichever stage was
// running.
double ThreadSeconds() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// Adds the time since the last lap to one stage at each call.
class Laps {
 public:
  explicit Laps(StageTimes& times) : times_(times), last_(ThreadSeconds()) {}
  void To(Stage stage) {
    const double now = ThreadSeconds();
    times_.seconds[stage] += now - last_;
    last_ = now;
  }
  // Restarts the clock without booking the time since the last lap.
  void Skip() { last_ = ThreadSeconds(); }

 private:
  StageTimes& times_;
  double last_;
};

}  // namespace

const char* StageName(Stage stage) {
  switch (stage) {
    case kCharset:
      return "charset conversion";
    case kParse:
      return "HTML parsing";
    case kMetadata:
      return "metadata";
    case kLayout:
      return "layout tree building";
    case kRanking:
      return "statistics and ranking";
    case kWriting:
      return "text writing";
    case kArticle:
      return "Markdown writing";
    case kFreeing:
      return "freeing the trees";
    case kStageCount:
      break;
  }
  return "?";
}

double StageTimes::Total() const {
  double total = 0;
  for (double s : seconds) total += s;
  return total;
}

StageTimes& StageTimes::operator+=(const StageTimes& other) {
  for (int i = 0; i < kStageCount; ++i) seconds[i] += other.seconds[i];
  extractions += other.extractions;
  return *this;
}

std::u16string ExtractStaged(std::string_view page, Orvel::CHARSET charset, StageTimes& times,
                             ZestraNS::LayoutMode layout, bool article) {
  Laps laps(times);
  MemoryBuffer in(page.data(), static_cast<unsigned int>(page.size()), MemoryBuffer::kReadInPlace);
  std::string utf8;
  const Orvel::CHARSET read_as = OrvelParser::DecodeDocument(in, charset, utf8);
  auto tree = std::make_unique<OrvelParser::HtmlDocTree>(charset);
  laps.To(kCharset);
  ++times.extractions;
  if (!utf8.empty()) {
    OrvelParser::HtmlTreeSink sink(ZestraNS::KeywordTable());
    OrvelParser::TreeBuilder::Build(utf8, sink);
    tree->Assign(sink.TakeTopLevel(), sink.NodeCount(), read_as);
  }
  laps.To(kParse);

  if (article) {
    zestra::ReadMetadata(*tree, std::string());
    laps.To(kMetadata);
  }

  Orvel::SmartPtr<ZestraNS::KTable> root(new ZestraNS::KTable(nullptr, 1, 3, 0));
  std::u16string title;
  if (article) {
    ZestraNS::BuildTreeFromDocTree(*tree, root, &title, layout);
  } else {
    ZestraNS::BuildTreeConsumingDocTree(*tree, root, &title, layout);
  }
  laps.To(kLayout);

  ZestraNS::KStatistics document;
  root->Statistics(document, 0xFFFFFFFFu);
  const ZestraNS::DocumentType type =
      ZestraNS::ClassifyDocument(document.Words(), document.WordsInLinksAndImages(), document.Links());
  std::optional<ZestraNS::RecordingTextExtractor> extractor;
  ZestraNS::KeptText kept;
  const ZestraNS::LayoutTuning tuning = ZestraNS::TuningOf(layout);
  extractor.emplace(root, type == ZestraNS::LinkDocument, tuning.values, tuning.weights, article ? &kept : nullptr);
  if (tuning.pruning != nullptr) extractor->Prune(*tuning.pruning, type == ZestraNS::LinkDocument);
  laps.To(kRanking);

  MemoryBuffer buffer(4096);
  extractor->GetTextRecording(&buffer);
  std::u16string text;
  text.reserve(buffer.vSize() / 2);
  buffer.DiscardLookAhead();
  buffer.vSeekG(0, Orvel::kSeekBegin, Orvel::kSeekAbsolute);
  buffer.Copy(text, 0xFFFFFFFFu);
  laps.To(kWriting);

  if (article) {
    zestra::WriteArticle(*tree, kept, zestra::Format::kMarkdown, std::string(), false);
    laps.To(kArticle);
  }

  extractor.reset();
  root = nullptr;
  tree.reset();
  laps.To(kFreeing);
  return text;
}

std::u16string ExtractWithBeautify(std::string_view page, Orvel::CHARSET charset) {
  MemoryBuffer in(page.data(), static_cast<unsigned int>(page.size()), MemoryBuffer::kReadInPlace);
  std::u16string text;
  ZestraNS::Beautify(in, charset, text, nullptr, nullptr);
  return text;
}

std::u16string ExtractPublic(std::string_view page, Orvel::CHARSET charset, ZestraNS::LayoutMode layout) {
  if (layout == ZestraNS::LayoutMode::kTables) return ExtractWithBeautify(page, charset);
  zestra::Options options;
  options.charset = charset;
  options.layout = zestra::Layout::kBlocks;
  const std::string utf8 = zestra::Extract(page, options).text;
  std::u16string text;
  OrvelCharset::AppendUtf16(utf8.data(), utf8.size(), text);
  return text;
}

}  // namespace zestra_bench
