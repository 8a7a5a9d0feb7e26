// LevelRanker computes the rank of a table (KTable::Rank) by walking the
// table and the tables below it one nesting level at a time.
//
// Level 0 holds the ranked table, level n + 1 the child tables of the
// tables of level n, in order. For every table X of a level, a statistics
// record S, cleared once per level, takes X's own cells (Statistics with
// depth 0) and the level score takes three terms, each added as soon as it
// is computed:
//   link term   (1 - S.WordsInLinks / S.Words) * w_link * f     if S.Words > 0
//   cell term   X.WordsPerCell() * w_cell * f / D.MaxWordsPerCell
//                                   if S.Cells > 0 and S.MaxWordsPerCell > 0
//   count term  (S.Words - S.WordsInLinks) / (D.Words - D.WordsInLinks)
//               * w_count * f                     if D.Words != D.WordsInLinks
// with f = DepthFactor(level), the weights at index level % MaxDepth() and D
// the document statistics. Counter differences are taken modulo 2^32 and
// then converted to double. The level adds its score divided by its number
// of tables to the result.
//
// The walk is a loop over levels, never a recursion. It stops at the first
// level whose depth factor is 0.0 when ZeroFactorLevelsAddNothing says that
// such levels cannot change the result (see there); that bounds a walk to
// 1024 levels whatever the depth of the tree.
//
// The tree is reached through a policy `Tree` with
//   using Node;   a table handle
//   using List;   a movable list of Nodes with Add, Size, operator[],
//                 Empty, Clear
//   void AppendChildren(const Node&, List&);        ChildTables order
//   void AddOwnStatistics(const Node&, KStatistics&);  Statistics(S, 0)
//   double WordsPerCell(const Node&);
// so that one implementation serves the direct walk over the tree and the
// walk over a table graph with counts gathered once (table_graph.h).
//
// Thread-safety: one ranker per thread.
#ifndef ZESTRA_RANKING_LEVEL_RANKER_H_
#define ZESTRA_RANKING_LEVEL_RANKER_H_

#include <cstdint>
#include <utility>

#include "zestra/base/fast_vector.h"
#include "zestra/model/k_statistics.h"
#include "zestra/ranking/k_rank_parameters.h"

namespace ZestraNS {
namespace ranking_internal {

// True when every level whose depth factor is 0.0 adds exactly nothing to
// any rank computed with `document` and `parameters`, so that a level walk
// may stop at the first such level without changing a bit of its result.
bool ZeroFactorLevelsAddNothing(const KStatistics& document, const KRankParameters& parameters);

template <class Tree>
class LevelRanker {
 public:
  // All three must outlive the ranker.
  LevelRanker(Tree& tree, const KStatistics& document, const KRankParameters& parameters)
      : tree_(tree),
        document_(document),
        parameters_(parameters),
        stop_at_zero_factor_(ZeroFactorLevelsAddNothing(document, parameters)) {}

  LevelRanker(const LevelRanker&) = delete;
  LevelRanker& operator=(const LevelRanker&) = delete;

  // The rank of `top` and the tables below it.
  double Rank(const typename Tree::Node& top) {
    current_.Clear();
    next_.Clear();
    current_.Add(top);
    double result = 0.0;
    for (uint32_t level = 0; !current_.Empty(); ++level) {
      const double factor = Factor(level);
      if (factor == 0.0 && stop_at_zero_factor_) break;
      result += LevelScore(level, factor) / static_cast<double>(current_.Size());
      std::swap(current_, next_);
      next_.Clear();
    }
    current_.Clear();
    next_.Clear();
    return result;
  }

 private:
  // Sum of the terms of the tables in current_; fills next_ with the level
  // below.
  double LevelScore(uint32_t level, double factor) {
    const uint32_t index = level % parameters_.MaxDepth();
    const double w_link = parameters_.LinkDensity(index);
    const double w_cell = parameters_.WordsPerCell(index);
    const double w_count = parameters_.WordCount(index);
    KStatistics sums;
    double score = 0.0;
    for (uint32_t k = 0; k < current_.Size(); ++k) {
      const typename Tree::Node& table = current_[k];
      tree_.AppendChildren(table, next_);
      tree_.AddOwnStatistics(table, sums);
      if (sums.Words() > 0) {
        score += (1.0 - static_cast<double>(sums.WordsInLinksAndImages()) / static_cast<double>(sums.Words())) *
                 w_link * factor;
      }
      if (sums.Cells() > 0 && sums.MaxWordsPerCell() > 0.0) {
        score += tree_.WordsPerCell(table) * w_cell * factor / document_.MaxWordsPerCell();
      }
      if (document_.Words() != document_.WordsInLinksAndImages()) {
        const uint32_t level_words = sums.Words() - sums.WordsInLinksAndImages();
        const uint32_t document_words = document_.Words() - document_.WordsInLinksAndImages();
        score += static_cast<double>(level_words) / static_cast<double>(document_words) * w_count * factor;
      }
    }
    return score;
  }

  // DepthFactor(level), computed once per level per ranker.
  double Factor(uint32_t level) {
    while (factors_.Size() <= level) factors_.Add(parameters_.DepthFactor(factors_.Size()));
    return factors_[level];
  }

  Tree& tree_;
  const KStatistics& document_;
  const KRankParameters& parameters_;
  const bool stop_at_zero_factor_;
  Orvel::FastVector<double> factors_;
  typename Tree::List current_;
  typename Tree::List next_;
};

}  // namespace ranking_internal
}  // namespace ZestraNS

#endif  // ZESTRA_RANKING_LEVEL_RANKER_H_
