#include "builder/block_word_count.h"

#include "zestra/model/count_words.h"

namespace ZestraNS {

uint32_t CountBlockWords(const std::u16string& text) {
  uint32_t words = CountWords(text);
  // All of these lie in the basic plane: surrogates never match.
  for (char16_t unit : text) {
    if (IsIdeograph(unit)) ++words;
  }
  return words;
}

}  // namespace ZestraNS
