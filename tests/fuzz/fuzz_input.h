// What the fuzz targets share: how a fuzz input names a charset, and the
// checks every document tree must pass.
#ifndef ZESTRA_TESTS_FUZZ_FUZZ_INPUT_H_
#define ZESTRA_TESTS_FUZZ_FUZZ_INPUT_H_

#include <cstdint>
#include <cstdlib>
#include <iterator>

#include "zestra/base/charset.h"
#include "zestra/base/ref_count_vector.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/model/k_statistics.h"
#include "zestra/model/k_table.h"

namespace zestra_fuzz {

// The charsets a fuzz input may name with its first byte, which stays part
// of the document: unknown (the parser then detects), the three the library
// itself uses, and converters of multi-byte, stateful and 32-bit encodings.
// UTF-8 sits at index 12 so that a page beginning with '<' (0x3C) is read as
// UTF-8, and the pages of the starting corpus work as they are.
inline constexpr int32_t kCharsets[] = {
    -1, 1201, 1252, 932, 936, 949, 950, 51932, 50220, 54936, 12000, 12001, 65001, 1251, 20866, 28591,
};
static_assert(kCharsets['<' % std::size(kCharsets)] == 65001);

// The charset that `byte` names.
inline Orvel::CHARSET CharsetOf(uint8_t byte) {
  return static_cast<Orvel::CHARSET>(kCharsets[byte % std::size(kCharsets)]);
}

// Stops the run, so that the fuzzer keeps the input, when `condition` fails.
inline void Check(bool condition) {
  if (!condition) std::abort();
}

// Checks a tree from GetDocumentTree: the root's shape, link words within
// words, and every table FindAllTables lists held and one level below its
// parent. Leaves the list in `tables`.
inline void CheckDocumentTree(const Orvel::SmartPtr<ZestraNS::KTable>& root,
                              Orvel::RefCountVector<ZestraNS::KTable>& tables) {
  Check(root && root->Cols() == 1 && root->Rows() == 3 && root->Level() == 0);
  ZestraNS::KStatistics statistics;
  root->Statistics(statistics, 0xFFFFFFFFu);
  Check(statistics.WordsInLinksAndImages() <= statistics.Words());
  root->FindAllTables(tables);
  for (uint32_t i = 0; i < tables.Size(); ++i) {
    Check(static_cast<bool>(tables[i]));
    const ZestraNS::KTable* parent = tables[i]->ParentTable();
    Check(tables[i]->Level() == (parent != nullptr ? parent->Level() + 1 : 0));
  }
}

}  // namespace zestra_fuzz

#endif  // ZESTRA_TESTS_FUZZ_FUZZ_INPUT_H_
