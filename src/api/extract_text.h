// The extraction run shared by every Beautify overload: classify the
// document by its word counters, then write its text with a
// ZestraTextExtractor, whole for a link document, ranked otherwise.
//
// Thread-safety: keeps no state; calls on distinct trees and streams may run
// at once.
#ifndef ZESTRA_API_EXTRACT_TEXT_H_
#define ZESTRA_API_EXTRACT_TEXT_H_

#include <cstdint>

#include "zestra/api/beautify.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/builder/layout_mode.h"
#include "zestra/model/k_table.h"
#include "zestra/stream/binary_stream_buf.h"

namespace ZestraNS {

class KeptText;
struct PruningTuning;

// A document is a LinkDocument when its share of words outside links is at
// most kMaxNonLinkShare and its words outside links per link are at most
// kMaxNonLinkWordsPerLink; a value equal to a bound counts as at or below
// it.
inline constexpr double kMaxNonLinkShare = 0.0732258;
inline constexpr double kMaxNonLinkWordsPerLink = 22.7742;

// The DocumentType of a document with `words` words, of which
// `words_in_links` lie in links, and `links` links. With N = words -
// words_in_links, the share N / words (0.0 without words) and N / links
// (0.0 without links) are each formed from the unsigned values converted
// exactly and stored as doubles before they are compared.
// REQUIRES: words_in_links <= words.
DocumentType ClassifyDocument(uint32_t words, uint32_t words_in_links, uint32_t links);

// Sums the counters of the whole tree under `root` (every depth), stores
// its ClassifyDocument in `*type`, and appends the extracted text at the put
// position of `out`: the whole text for a LinkDocument, the ranked
// selection for a ContentDocument (ZestraTextExtractor with the tuning of
// `mode`, zestra/api/layout_tuning.h: its built-in parameters for kTables). `mode` is
// the layout the tree was built with. When `kept` is not null, every text
// item written is recorded in it (api/kept_text.h). When `pruning` is not
// null the selection, ranked or whole, is pruned with it before the text
// is written (zestra/api/block_pruning.h).
// REQUIRES: root and type are not null.
void ExtractText(const Orvel::SmartPtr<KTable>& root, Orvel::BinaryStreamBufT<unsigned int>& out,
                 DocumentType* type, LayoutMode mode = LayoutMode::kTables, KeptText* kept = nullptr,
                 const PruningTuning* pruning = nullptr);

}  // namespace ZestraNS

#endif  // ZESTRA_API_EXTRACT_TEXT_H_
