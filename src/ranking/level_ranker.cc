#include "ranking/level_ranker.h"

#include <cmath>

namespace ZestraNS {
namespace ranking_internal {

// Why a level with depth factor f == 0.0 changes no bit of a rank, under
// the two conditions checked here:
//
// Every term of such a level is (q * w) * 0.0, or ((q * w) * 0.0) / M for
// the cell term, where M = D.MaxWordsPerCell and q is one of
//   1 - a / b  (a, b counters below 2^32, b >= 1), so |q| < 2^32;
//   a / b      likewise, |q| < 2^32;
//   WordsPerCell(), a sum of counters below 2^32 over at least one cell.
// With |w| <= 2^960, q * w is finite, so (q * w) * 0.0 is +0.0 or -0.0, and
// so is its quotient by an M that is neither 0.0 nor NaN (an infinite M
// gives a zero too). The level score starts at +0.0, and +0.0 + (+-0.0) is
// +0.0, so the level adds +0.0 / n = +0.0 to the result. Adding +0.0
// changes no value but -0.0, and the result is never -0.0: it starts at
// +0.0, and a sum rounded to nearest is -0.0 only when both addends are.
// NaN and infinite results stay as they are.
//
// The factor is 0.0 from level 1024 (2^1024 overflows to infinity) to level
// 2^31 - 1; from 2^31 on the level, taken as a signed integer, turns
// negative and the factor would be large again. A walk reaches level L only
// through a path of L + 1 nested tables, all distinct since a tree has no
// cycles, and 2^31 tables need hundreds of gibibytes, so no tree that fits
// in memory gets there: stopping at level 1024 drops only levels that add
// nothing.
//
// A weight outside those bounds, or an M of 0.0 or NaN (statistics of
// another tree), could make a deep term NaN; then every level is walked.
bool ZeroFactorLevelsAddNothing(const KStatistics& document, const KRankParameters& parameters) {
  const double m = document.MaxWordsPerCell();
  if (m == 0.0 || std::isnan(m)) return false;
  const double bound = std::ldexp(1.0, 960);
  for (uint32_t i = 0; i < parameters.MaxDepth(); ++i) {
    for (double w : {parameters.LinkDensity(i), parameters.WordsPerCell(i), parameters.WordCount(i)}) {
      if (!(std::fabs(w) <= bound)) return false;
    }
  }
  return true;
}

}  // namespace ranking_internal
}  // namespace ZestraNS
