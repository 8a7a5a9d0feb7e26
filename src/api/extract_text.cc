#include "api/extract_text.h"

#include "api/kept_text.h"

#include "zestra/api/layout_tuning.h"
#include "zestra/model/k_statistics.h"
#include "zestra/traversal/zestra_text_extractor.h"

namespace ZestraNS {

DocumentType ClassifyDocument(uint32_t words, uint32_t words_in_links, uint32_t links) {
  const uint32_t non_link_words = words - words_in_links;
  const double non_link_share =
      words > 0 ? static_cast<double>(non_link_words) / static_cast<double>(words) : 0.0;
  const double non_link_words_per_link =
      links > 0 ? static_cast<double>(non_link_words) / static_cast<double>(links) : 0.0;
  if (non_link_share <= kMaxNonLinkShare && non_link_words_per_link <= kMaxNonLinkWordsPerLink) {
    return LinkDocument;
  }
  return ContentDocument;
}

void ExtractText(const Orvel::SmartPtr<KTable>& root, Orvel::BinaryStreamBufT<unsigned int>& out,
                 DocumentType* type, LayoutMode mode, KeptText* kept, const PruningTuning* pruning) {
  KStatistics document;
  root->Statistics(document, 0xFFFFFFFFu);
  *type = ClassifyDocument(document.Words(), document.WordsInLinksAndImages(), document.Links());
  // The extractor lives only for this one walk.
  const LayoutTuning tuning = TuningOf(mode);
  RecordingTextExtractor extractor(root, *type == LinkDocument, tuning.values, tuning.weights, kept);
  if (pruning != nullptr) extractor.Prune(*pruning, *type == LinkDocument);
  extractor.GetTextRecording(&out);
}

}  // namespace ZestraNS
