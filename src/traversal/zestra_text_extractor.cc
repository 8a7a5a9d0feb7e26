#include "zestra/traversal/zestra_text_extractor.h"

#include <bit>
#include <new>
#include <string>

#include "zestra/model/k_statistics.h"
#include "zestra/ranking/find_winning_tables.h"
#include "zestra/traversal/zestra_ranked_strategy.h"
#include "zestra/traversal/zestra_visitor_strategy.h"

namespace ZestraNS {
namespace {

// The built-in tuning, in the order of the caller's parameter vector.
constexpr double kBuiltInValues[9] = {
    0.212131, 0.596276, 0.436295, 0.453539,  // first set
    0.515806, 0.560831, 0.202551, 0.568495,  // second set
    0.635552,                                // minWordShare
};
constexpr std::size_t kParameterValueCount = 9;

constexpr unsigned char kLineFeed[2] = {0x0A, 0x00};

template <class T>
Orvel::SmartPtr<T> Make() {
  Orvel::SmartPtr<T> object(new T());
  if (object.IsNull()) throw std::bad_alloc();
  return object;
}

// A parameter set with the caller's weights when they are usable, with the
// defaults otherwise.
Orvel::SmartPtr<KRankParameters> MakeParameters(const ZestraRankWeights* weights) {
  if (weights == nullptr || weights->link_density.empty() ||
      weights->words_per_cell.size() != weights->link_density.size() ||
      weights->word_count.size() != weights->link_density.size()) {
    return Make<KRankParameters>();
  }
  Orvel::SmartPtr<KRankParameters> parameters =
      KRankParameters::WithWeights(weights->link_density.data(), weights->words_per_cell.data(),
                                   weights->word_count.data(), static_cast<uint32_t>(weights->link_density.size()));
  if (parameters.IsNull()) throw std::bad_alloc();
  return parameters;
}

// Sets the thresholds of both sets and the share from values[0..9).
void ApplyValues(const double* values, KRankParameters& first, KRankParameters& second, double& min_word_share) {
  first.Init(values[0], values[1], values[2], values[3]);
  second.Init(values[4], values[5], values[6], values[7]);
  min_word_share = values[8];
}

}  // namespace

ZestraTextExtractor::ZestraTextExtractor(const Orvel::SmartPtr<KTable>& root, bool whole_text,
                                         const std::vector<double>* parameter_values)
    : ZestraTextExtractor(root, whole_text, parameter_values, nullptr) {}

ZestraTextExtractor::ZestraTextExtractor(const Orvel::SmartPtr<KTable>& root, bool whole_text,
                                         const std::vector<double>* parameter_values,
                                         const ZestraRankWeights* weights)
    : root_(root) {
  if (whole_text) {
    Strategy(Make<ZestraVisitorStrategy>());
    return;
  }
  KStatistics document;
  document.Clear();
  root_->Statistics(document, 0xFFFFFFFFu);

  const Orvel::SmartPtr<KRankParameters> first = MakeParameters(weights);
  const Orvel::SmartPtr<KRankParameters> second = MakeParameters(weights);
  double min_word_share = 0.0;
  if (parameter_values != nullptr && parameter_values->size() >= kParameterValueCount) {
    ApplyValues(parameter_values->data(), *first, *second, min_word_share);
  } else {
    InitParameters(first, second, min_word_share);
  }

  Select(document, first);
  const uint32_t kept = CountingWalk();
  // A product that is not a number is not greater: the first selection stays.
  if (static_cast<double>(document.Words()) * min_word_share > static_cast<double>(kept)) {
    Select(document, second);
  }
}

ZestraTextExtractor::~ZestraTextExtractor() { root_ = nullptr; }

void ZestraTextExtractor::InitParameters(const Orvel::SmartPtr<KRankParameters>& first,
                                         const Orvel::SmartPtr<KRankParameters>& second,
                                         double& min_word_share) const {
  ApplyValues(kBuiltInValues, *first, *second, min_word_share);
}

void ZestraTextExtractor::Select(const KStatistics& document, const Orvel::SmartPtr<KRankParameters>& parameters) {
  KWinners winners(new KTableSet());
  FindWinningTables(root_, document, parameters, winners);
  Orvel::SmartPtr<ZestraVisitorStrategy> strategy(new ZestraRankedStrategy(parameters, winners));
  if (strategy.IsNull()) throw std::bad_alloc();
  Strategy(strategy);
}

uint32_t ZestraTextExtractor::CountWords() { return CountingWalk(); }

uint32_t ZestraTextExtractor::CountingWalk() {
  mode_ = kCounting;
  word_count_ = 0;
  ParseTree(root_);
  mode_ = kIdle;
  return word_count_;
}

void ZestraTextExtractor::GetText(Orvel::BinaryStreamBufT<unsigned int>* output) {
  mode_ = kWriting;
  output_ = output;
  ParseTree(root_);
  mode_ = kIdle;
  output_ = nullptr;
}

void ZestraTextExtractor::VisitTableInfix(const Orvel::SmartPtr<KTable>&) {
  if (mode_ == kWriting) EndLine();
}

void ZestraTextExtractor::VisitTablePostfix(const Orvel::SmartPtr<KTable>&) {
  if (mode_ == kWriting) EndLine();
}

void ZestraTextExtractor::VisitCellInfix(const Orvel::SmartPtr<KCell>& cell) {
  if (mode_ == kCounting) {
    word_count_ += cell->Words();
  } else if (mode_ == kWriting && cell->IsEmpty()) {
    EndLine();
  }
}

void ZestraTextExtractor::VisitCellText(const Orvel::SmartPtr<KCellItem>& item) {
  if (mode_ != kWriting) return;
  const std::u16string& text = item->Text();
  const unsigned int bytes = static_cast<unsigned int>(text.size() * 2);
  if constexpr (std::endian::native == std::endian::little) {
    output_->Put(text.data(), bytes);
  } else {
    std::u16string swapped(text);
    for (char16_t& unit : swapped) unit = static_cast<char16_t>((unit >> 8) | (unit << 8));
    output_->Put(swapped.data(), bytes);
  }
}

void ZestraTextExtractor::VisitCellPostfix(const Orvel::SmartPtr<KCell>&) {}

// Reads back the last whole unit counted from the start of the stream
// instead of tracking what was written last, so text a caller's stream held
// before the walk counts too. A stream of one byte holds no whole unit: the
// position below wraps past the size and nothing is read.
void ZestraTextExtractor::EndLine() {
  const unsigned int size = output_->vSize();
  if (size == 0) return;
  unsigned char last[2] = {0, 0};
  const unsigned int position = (size / 2 - 1) * 2;
  if (position < size) {
    if (position == 0) output_->DiscardLookAhead();
    output_->vSeekG(position, Orvel::kSeekBegin, Orvel::kSeekAbsolute);
    output_->Get(last, 2);
  }
  if (last[0] != kLineFeed[0] || last[1] != kLineFeed[1]) output_->Put(kLineFeed, 2);
}

}  // namespace ZestraNS
