// KRankParameters holds the numbers the ranking is tuned with: three
// per-level weight tables that KTable::Rank applies to the terms of a table's
// rank (the share of words outside links, the words per cell, the share of
// the document's words), and four thresholds that decide which tables win
// (FindWinningTables) and which cells pass the ranked strategy.
//
// The three weight tables always have the same number of entries, at least
// one. A level L of a rank uses the entries at index L % MaxDepth(). The
// default object has one entry per table (0.3, 0.3, 0.4); WithWeights makes
// an object with tables of the caller's choosing. The tables never change
// after construction; the thresholds change only through Init.
//
// Thread-safety: AddRef, Release and NbRef may be called concurrently.
// Reading from several threads is safe while nobody calls Init.
#ifndef ZESTRA_RANKING_K_RANK_PARAMETERS_H_
#define ZESTRA_RANKING_K_RANK_PARAMETERS_H_

#include <cstdint>

#include "zestra/base/fast_vector.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/base/sp_ref_counter.h"
#include "zestra/export.h"

namespace ZestraNS {

class ZESTRA_EXPORT KRankParameters : public Orvel::RefCounted<KRankParameters> {
 public:
  // Default weights: LinkDensity 0.3, WordsPerCell 0.3, WordCount 0.4, one
  // level. Default thresholds: LowThreshold 0.2, HiThreshold 0.05,
  // CellLowScore 0.5, WinnerLowThreshold 0.3. Reference count 0.
  KRankParameters();

  // A new object whose three weight tables hold `levels` entries each, read
  // from the three arrays; thresholds as in the default constructor.
  // Returns null when `levels` is 0 or memory cannot be had.
  // REQUIRES: each array holds `levels` doubles.
  static Orvel::SmartPtr<KRankParameters> WithWeights(const double* link_density,
                                                      const double* words_per_cell,
                                                      const double* word_count, uint32_t levels);

  // A copy has the same tables and thresholds and a reference count of 0.
  KRankParameters(const KRankParameters&) = default;
  KRankParameters& operator=(const KRankParameters&) = default;
  ~KRankParameters() = default;

  // Weight of the share of non-link words at table index `index`.
  // REQUIRES: index < MaxDepth().
  double LinkDensity(uint32_t index) const noexcept { return link_density_[index]; }
  // Weight of the words-per-cell term at table index `index`.
  // REQUIRES: index < MaxDepth().
  double WordsPerCell(uint32_t index) const noexcept { return words_per_cell_[index]; }
  // Weight of the document word share term at table index `index`.
  // REQUIRES: index < MaxDepth().
  double WordCount(uint32_t index) const noexcept { return word_count_[index]; }

  // Number of entries of each weight table; at least 1.
  uint32_t MaxDepth() const noexcept { return link_density_.Size(); }

  // Tables ranked below it are dropped before winners are chosen.
  double LowThreshold() const noexcept { return low_threshold_; }
  // Relative margin below the best rank inside which tables win.
  double HiThreshold() const noexcept { return hi_threshold_; }
  // A cell passes the ranked strategy only with a rank strictly above it.
  double CellLowScore() const noexcept { return cell_low_score_; }
  // A table below a winner joins the winners when its rank reaches it.
  double WinnerLowThreshold() const noexcept { return winner_low_threshold_; }

  // Stores the four thresholds, in argument order. The weight tables are
  // not touched.
  void Init(double low_threshold, double hi_threshold, double cell_low_score,
            double winner_low_threshold) noexcept;

  // The weight of nesting level `level`: 1.0 / 2^level, with the level
  // taken as a signed 32-bit integer (1.0, 0.5, 0.25, ...; exactly 0.0 from
  // level 1024 on, where 2^level overflows).
  double DepthFactor(uint32_t level) const noexcept;

 private:
  friend struct KRankParametersPeer;  // lets tests reach EQ

  // Tolerance of EQ.
  static constexpr double EPSILON = 1e-05;

  // True when `a` lies strictly inside (b - EPSILON, b + EPSILON); false
  // when either is not a number.
  static bool EQ(double a, double b) noexcept;

  Orvel::FastVector<double> link_density_;
  Orvel::FastVector<double> words_per_cell_;
  Orvel::FastVector<double> word_count_;
  double low_threshold_ = 0.2;
  double hi_threshold_ = 0.05;
  double cell_low_score_ = 0.5;
  double winner_low_threshold_ = 0.3;
};

}  // namespace ZestraNS

#endif  // ZESTRA_RANKING_K_RANK_PARAMETERS_H_
