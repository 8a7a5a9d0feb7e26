// StagedExtraction runs the extraction of Beautify over bytes (overload 1),
// or the same extraction in another layout (zestra/builder/layout_mode.h),
// stage by stage through the library's internal functions, timing each
// stage in processor time of the running thread, so that the shares of the
// stages come from one and the same run, add up to a real extraction, and
// hold on a busy machine:
//
//   charset      DecodeDocument: detection and conversion to UTF-8
//   parse        the tokenizer and the tree builder, straight into the
//                HtmlDocTree's nodes
//   metadata     (with `article`) the article's metadata
//   layout       BuildTreeConsumingDocTree: the layout tree and the title, in
//                the layout asked for
//   ranking      the document statistics and type (as ExtractText does),
//                and the ZestraTextExtractor constructor: winner selection
//                and the counting walk
//   writing      GetText into a working buffer, and the copy of the buffer
//                into the wide string
//   article      (with `article`) the Markdown of the kept text
//   freeing      releasing the layout tree and the parsed document
//
// Thread-safety: an object is used by one thread; objects on different
// threads are independent.
#ifndef ZESTRA_BENCH_STAGED_EXTRACTION_H_
#define ZESTRA_BENCH_STAGED_EXTRACTION_H_

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "zestra/base/charset.h"
#include "zestra/builder/layout_mode.h"

namespace zestra_bench {

enum Stage : int {
  kCharset,
  kParse,
  kMetadata,  // with `article`: the metadata
  kLayout,
  kRanking,
  kWriting,
  kArticle,  // with `article`: the Markdown
  kFreeing,
  kStageCount,
};

// The name of `stage` for reports.
const char* StageName(Stage stage);

// Processor seconds spent per stage, summed over extractions.
struct StageTimes {
  std::array<double, kStageCount> seconds{};
  // Extractions timed into this record.
  uint64_t extractions = 0;

  double Total() const;
  StageTimes& operator+=(const StageTimes& other);
};

// Extracts the text of `page`, read in `charset`, as Beautify over bytes
// does with `layout` kTables, or as zestra::Extract does in `layout`,
// adding the time of each stage to `times`; returns the text. With
// `article`, as zestra::Extract does with Format::kMarkdown: the metadata
// is read after the parse (stage kMetadata), the layout keeps the parsed
// tree whole, the text items written are recorded, and the Markdown is
// written after the text (stage kArticle).
std::u16string ExtractStaged(std::string_view page, Orvel::CHARSET charset, StageTimes& times,
                             ZestraNS::LayoutMode layout = ZestraNS::LayoutMode::kTables, bool article = false);

// The same extraction through the public entry point, untimed.
std::u16string ExtractWithBeautify(std::string_view page, Orvel::CHARSET charset);

// The extraction of `layout` through its public entry point, untimed:
// Beautify for kTables, zestra::Extract for the others (its UTF-8 text
// read back into UTF-16).
std::u16string ExtractPublic(std::string_view page, Orvel::CHARSET charset, ZestraNS::LayoutMode layout);

}  // namespace zestra_bench

#endif  // ZESTRA_BENCH_STAGED_EXTRACTION_H_
