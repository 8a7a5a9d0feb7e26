#include "zestra/ranking/k_rank_parameters.h"

#include <cmath>
#include <new>

namespace ZestraNS {

KRankParameters::KRankParameters() {
  link_density_.Add(0.3);
  words_per_cell_.Add(0.3);
  word_count_.Add(0.4);
}

Orvel::SmartPtr<KRankParameters> KRankParameters::WithWeights(const double* link_density,
                                                             const double* words_per_cell,
                                                             const double* word_count,
                                                             uint32_t levels) {
  if (levels == 0) return nullptr;
  Orvel::SmartPtr<KRankParameters> parameters;
  try {
    parameters = new KRankParameters();
    if (parameters.IsNull()) return nullptr;
    parameters->link_density_.Clear();
    parameters->words_per_cell_.Clear();
    parameters->word_count_.Clear();
    parameters->link_density_.Append(link_density, levels);
    parameters->words_per_cell_.Append(words_per_cell, levels);
    parameters->word_count_.Append(word_count, levels);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  return parameters;
}

void KRankParameters::Init(double low_threshold, double hi_threshold, double cell_low_score,
                           double winner_low_threshold) noexcept {
  low_threshold_ = low_threshold;
  hi_threshold_ = hi_threshold;
  cell_low_score_ = cell_low_score;
  winner_low_threshold_ = winner_low_threshold;
}

double KRankParameters::DepthFactor(uint32_t level) const noexcept {
  return 1.0 / std::pow(2.0, static_cast<double>(static_cast<int32_t>(level)));
}

bool KRankParameters::EQ(double a, double b) noexcept {
  if (!(b - EPSILON < a)) return false;
  return EPSILON + b > a;
}

}  // namespace ZestraNS
