// Small helpers that build layout trees for the model tests.
#ifndef ZESTRA_TESTS_MODEL_TREE_BUILDERS_H_
#define ZESTRA_TESTS_MODEL_TREE_BUILDERS_H_

#include <cstdint>
#include <string>

#include "zestra/base/smart_ptr.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_table.h"

namespace ZestraNS::testing {

using Orvel::SmartPtr;

// A root table: no parent, level 0.
inline SmartPtr<KTable> NewTable(uint32_t cols, uint32_t rows) {
  return SmartPtr<KTable>(new KTable(nullptr, cols, rows, 0));
}

// Appends a text item holding `text` to `cell`, and counts `words` words of
// which `link_words` lay inside links, as the layout builder would.
inline SmartPtr<KCellItem> AddText(KCell& cell, const std::u16string& text, uint32_t words = 0,
                                   uint32_t link_words = 0) {
  SmartPtr<KCellItem> item = cell.AddCellItem();
  item->AppendText(text, 0, 0);
  cell.AddWords(words);
  cell.AddWordsInLinksAndImages(link_words);
  return item;
}

// Appends a table item holding a new `cols` x `rows` table nested under the
// cell's table, and counts it in the cell's Tables().
inline SmartPtr<KTable> AddTable(KCell& cell, uint32_t cols = 1, uint32_t rows = 1) {
  KTable* parent = cell.ParentTable();
  SmartPtr<KTable> table(new KTable(parent, cols, rows, parent == nullptr ? 0 : parent->Level() + 1));
  cell.AddCellItem()->Table(table);
  cell.AddTables(1);
  return table;
}

// Creates the cell at (`col`, `row`) with one text item counting `words`
// words, `link_words` of them in links.
inline SmartPtr<KCell> AddWordsCell(KTable& table, uint32_t col, uint32_t row, uint32_t words,
                                    uint32_t link_words = 0) {
  SmartPtr<KCell> cell = table.CreateCell(col, row);
  AddText(*cell, u"text", words, link_words);
  return cell;
}

}  // namespace ZestraNS::testing

#endif  // ZESTRA_TESTS_MODEL_TREE_BUILDERS_H_
