// Text items: how the runs of a document's text land in the cells of the
// layout tree.
//
// One text node becomes one text item, except a run whose cleaned text is
// empty or a single white-space character: that run at most adds one space
// to the text before it. Paragraphs are not separate items; a paragraph ends
// where an item's text ends in two line feeds. The text extractor later
// writes item texts one after another, so the spaces and line feeds placed
// here are the layout of the extracted text:
//
//   «a», BR, «b»                         -> «a\n», «b»
//   «a», a block closing the paragraph,  -> «a\n\n», «b»
//     then «b»
//   a table row of two cells «a», «b»    -> «a\n», «b\n\n»
//
// The functions change only the given cell (its last item, a new item and
// its word counters). Thread-safety: none beyond that of the cell.
#ifndef ZESTRA_BUILDER_TEXT_ITEMS_H_
#define ZESTRA_BUILDER_TEXT_ITEMS_H_

#include <string>

#include <cstdint>

#include "zestra/base/smart_ptr.h"
#include "zestra/model/count_words.h"
#include "zestra/model/k_cell.h"

namespace ZestraNS {

// How a layout counts the words of a run: CountWords for the tables layout;
// the blocks layout passes its own count (block_word_count.h).
using WordCounter = uint32_t (*)(const std::u16string& text);

// Cleans `raw` (white-space runs become one space, non-space controls go)
// and adds it to `cell`:
//  - a clean text that is empty or one white-space character makes no item;
//    it appends one space to the cell's last text item when that text is
//    not empty and does not already end in white space;
//  - otherwise a new text item holds the clean text, joined to the previous
//    text item without doubled spaces: leading white space is dropped after
//    no text or after a line feed, and a clean text starting with a line
//    feed trims the previous text's trailing white space;
//  - the words of the clean text (`count`) are added to the cell's Words,
//    and to WordsInLinksAndImages too when `in_link`.
// `position` and `length` are the run's source span (length 0: none).
// REQUIRES: cell is not null.
void AddTextRun(const std::u16string& raw, unsigned position, unsigned length,
                Orvel::SmartPtr<KCell>& cell, bool in_link, WordCounter count = CountWords);

// Adds the text of a preformatted run as a new item, as it stands except
// that every CR immediately followed by LF is dropped (lone CRs stay). Words
// are counted as AddTextRun counts them.
// REQUIRES: cell is not null.
void AddPreformattedRun(const std::u16string& raw, unsigned position, unsigned length,
                        Orvel::SmartPtr<KCell>& cell, bool in_link, WordCounter count = CountWords);

// Appends one line feed to the cell's last item when that item is a text
// item whose text is not empty and ends in fewer than two line feeds;
// otherwise does nothing. A run of breaks thus never leaves more than two.
// REQUIRES: cell is not null.
void AddLineBreak(Orvel::SmartPtr<KCell>& cell);

// Closes the paragraph of the cell's latest text: when the last item is a
// text item, its trailing white space is trimmed and a non-empty text ends
// with "\n\n". No items, or a last item that is empty or a table: nothing.
void CloseParagraph(KCell& cell);

// Ends the content of a table cell: when the cell's last item is a text
// item, appends one line feed to it unconditionally (span unchanged).
void EndTableCellText(KCell& cell);

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_TEXT_ITEMS_H_
