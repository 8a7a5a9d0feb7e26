// StagedExtraction runs the extraction of Beautify over bytes (overload 1),
// or the same extraction in another layout (zestra/builder/layout_mode.h),
// stage by stage through the library's internal functions, timing each
// stage in processor time of the running thread, so that the shares of the
// stages come from one and the same run, add up to a real extraction, and
// hold on a busy machine:
//
//   charset      DecodeDocument: detection and conversion to UTF-8
//   parse        LimitNesting, the scan that caps the nesting depth, and
//                GumboTreeConverter::Parse: Gumbo's parse, the conversion
//                of Gumbo's tree into HtmlTreeNodes, and freeing Gumbo's tree
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
// The parse stage mixes Gumbo's work with ours. To split it, the same UTF-8
// text is also parsed and freed by Gumbo alone, right before the stage on
// every other extraction and right after it on the others; that time is
// Gumbo's share of the stage, and the rest of the stage (the depth scan,
// the conversion of Gumbo's tree into nodes, the depth check before
// freeing it) is ours. This
// extra parse is not part of the extraction and not in the total.
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
  kGumbo,       // Gumbo's share of the parse stage
  kConversion,  // the rest of the parse stage: ours
  kMetadata,    // with `article`: the metadata
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
  // Everything but Gumbo's share: the stages that are this library's.
  double Ours() const { return Total() - seconds[kGumbo]; }
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
