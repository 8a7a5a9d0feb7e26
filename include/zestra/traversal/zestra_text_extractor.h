// ZestraTextExtractor is the visitor that turns a layout tree into its
// extracted text. Its constructor decides once what is kept:
//
// - with `whole_text`, everything (a ZestraVisitorStrategy);
// - otherwise the ranked selection: the document statistics are gathered
//   once, a first parameter set selects winners (FindWinningTables) for a
//   ZestraRankedStrategy, and a counting walk counts the words that this
//   selection keeps. When the document's Words() * minWordShare is strictly
//   greater than that count, a second parameter set selects afresh and its
//   strategy replaces the first (without another count).
//
// The thresholds of both sets and minWordShare are the built-in values
// (InitParameters) or, when the caller gives a vector of at least nine
// values, those values: 0-3 the first set's LowThreshold, HiThreshold,
// CellLowScore, WinnerLowThreshold; 4-7 the same for the second set; 8
// minWordShare. A vector of fewer than nine values is ignored.
//
// The weight tables of both sets are the defaults of KRankParameters, or
// the caller's ZestraRankWeights: a layout that shapes its tree otherwise
// (the blocks layout) ranks with weights of its own.
//
// GetText then writes the kept text as UTF-16 code units, two bytes each
// with the low byte first, no byte-order mark, no terminator: the text of
// every reported item as it stands, plus a line feed (EndLine) before and
// after every reported table and in place of every reported cell without
// items, unless the output is empty or already ends with a line feed.
//
// Ownership: shares the root for its whole life; the tree must not change
// while the extractor exists. The output stream of GetText is borrowed for
// the call only.
//
// Thread-safety: one walk at a time per extractor (the walk's state lives in
// the object); separate extractors over separate trees may run on separate
// threads.
#ifndef ZESTRA_TRAVERSAL_ZESTRA_TEXT_EXTRACTOR_H_
#define ZESTRA_TRAVERSAL_ZESTRA_TEXT_EXTRACTOR_H_

#include <cstdint>
#include <vector>

#include "zestra/base/smart_ptr.h"
#include "zestra/export.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_table.h"
#include "zestra/ranking/k_rank_parameters.h"
#include "zestra/stream/binary_stream_buf.h"
#include "zestra/traversal/zestra_visitor.h"

namespace ZestraNS {

// Weight tables for both parameter sets of an extractor, one entry per
// level as KRankParameters::WithWeights takes them. Used only when the
// three tables have the same, non-zero, number of entries.
struct ZestraRankWeights {
  std::vector<double> link_density;
  std::vector<double> words_per_cell;
  std::vector<double> word_count;
};

class ZESTRA_EXPORT ZestraTextExtractor : public ZestraVisitor {
 public:
  // Chooses the selection as described above. `parameter_values` may be
  // null; it is only read, during the call.
  // REQUIRES: `root` is not null.
  ZestraTextExtractor(const Orvel::SmartPtr<KTable>& root, bool whole_text,
                      const std::vector<double>* parameter_values);
  // The same, ranking with `weights` when it is not null and usable (see
  // ZestraRankWeights), with the default weights otherwise. `weights` is
  // only read, during the call.
  ZestraTextExtractor(const Orvel::SmartPtr<KTable>& root, bool whole_text,
                      const std::vector<double>* parameter_values, const ZestraRankWeights* weights);

  ZestraTextExtractor(const ZestraTextExtractor&) = delete;
  ZestraTextExtractor& operator=(const ZestraTextExtractor&) = delete;
  // Releases the root, then the strategy.
  ~ZestraTextExtractor() override;

  // Appends the kept text at the put position of `output`; the stream is
  // neither cleared nor rewound, so each call appends the whole text again.
  // Leaves the get position of `output` after the last unit it read back.
  // REQUIRES: `output` is not null and supports seeking its get position
  // and reading back what was written.
  void GetText(Orvel::BinaryStreamBufT<unsigned int>* output);

  // The words that the selection keeps: the sum of Words() over the
  // reported cells, modulo 2^32.
  uint32_t CountWords();

 protected:
  // Sets the thresholds of `first` and `second` and `min_word_share` to
  // the built-in values. The weight tables are not touched.
  void InitParameters(const Orvel::SmartPtr<KRankParameters>& first,
                      const Orvel::SmartPtr<KRankParameters>& second, double& min_word_share) const;

  // Writing: EndLine. Counting: nothing.
  void VisitTableInfix(const Orvel::SmartPtr<KTable>& table) override;
  // Writing: EndLine. Counting: nothing.
  void VisitTablePostfix(const Orvel::SmartPtr<KTable>& table) override;
  // Writing: EndLine when the cell has no items. Counting: adds Words().
  void VisitCellInfix(const Orvel::SmartPtr<KCell>& cell) override;
  // Writing: puts all the item's code units in one call. Counting: nothing.
  void VisitCellText(const Orvel::SmartPtr<KCellItem>& item) override;
  // Nothing.
  void VisitCellPostfix(const Orvel::SmartPtr<KCell>& cell) override;

 private:
  // What the hooks do.
  enum Mode : int32_t {
    kIdle = 0,      // nothing
    kCounting = 1,  // add the words of reported cells to word_count_
    kWriting = 2,   // write the reported text to output_
  };

  // A counting walk with the installed strategy; returns its count.
  uint32_t CountingWalk();
  // Selects winners with `parameters` and installs a ranked strategy over
  // them.
  void Select(const KStatistics& document, const Orvel::SmartPtr<KRankParameters>& parameters);
  // Writes a line feed unless the output is empty or ends with one.
  void EndLine();

  Orvel::SmartPtr<KTable> root_;
  Mode mode_ = kIdle;
  uint32_t word_count_ = 0;
  Orvel::BinaryStreamBufT<unsigned int>* output_ = nullptr;  // not owned; null outside GetText
};

}  // namespace ZestraNS

#endif  // ZESTRA_TRAVERSAL_ZESTRA_TEXT_EXTRACTOR_H_
