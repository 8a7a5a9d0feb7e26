#include "builder/text_items.h"

#include "builder/constant_strings.h"
#include "zestra/base/beautify_string.h"
#include "zestra/base/wide_chars.h"
#include "zestra/model/count_words.h"
#include "zestra/model/k_cell_item.h"

namespace ZestraNS {
namespace {

using Orvel::IsWhiteSpace;
using Orvel::SmartPtr;

// The cell's last item when it is a text item, else null.
KCellItem* LastTextItem(const KCell& cell) {
  const SmartPtr<KCellItem>* last = cell.Back();
  if (last == cell.End() || last->IsNull() || !(*last)->IsText()) return nullptr;
  return last->Get();
}

void TrimLeadingWhiteSpace(std::u16string& text) {
  std::size_t begin = 0;
  while (begin < text.size() && IsWhiteSpace(text[begin])) ++begin;
  text.erase(0, begin);
}

void TrimTrailingWhiteSpace(std::u16string& text) {
  std::size_t end = text.size();
  while (end > 0 && IsWhiteSpace(text[end - 1])) --end;
  text.erase(end);
}

// Appends a new item holding `text` (a text item even when `text` is empty)
// and counts its words into the cell.
void AddItem(const std::u16string& text, unsigned position, unsigned length, KCell& cell, bool in_link,
             WordCounter count) {
  SmartPtr<KCellItem> item = cell.AddCellItem();
  if (!item) return;  // out of memory: the run is dropped
  item->AppendText(text, position, length);
  const unsigned words = count(text);
  cell.AddWords(words);
  if (in_link) cell.AddWordsInLinksAndImages(words);
}

}  // namespace

void AddTextRun(const std::u16string& raw, unsigned position, unsigned length, SmartPtr<KCell>& cell,
                bool in_link, WordCounter count) {
  std::u16string clean;
  Orvel::BeautifyString(raw, clean, false, true);
  KCellItem* prev = LastTextItem(*cell);

  if (clean.empty() || (clean.size() == 1 && IsWhiteSpace(clean[0]))) {
    if (prev != nullptr && !prev->Text().empty() && !IsWhiteSpace(prev->Text().back())) {
      prev->AppendText(RunSeparatorText(), 0, 0);
    }
    return;
  }

  if (prev == nullptr || prev->Text().empty()) {
    TrimLeadingWhiteSpace(clean);
  } else if (prev->Text().back() == u'\n') {
    if (IsWhiteSpace(clean.front())) TrimLeadingWhiteSpace(clean);
  } else if (clean.front() == u'\n') {
    TrimTrailingWhiteSpace(prev->Text());
  }
  AddItem(clean, position, length, *cell, in_link, count);
}

void AddPreformattedRun(const std::u16string& raw, unsigned position, unsigned length,
                        SmartPtr<KCell>& cell, bool in_link, WordCounter count) {
  const std::u16string& crlf = CrLfText();
  std::u16string text;
  text.reserve(raw.size());
  std::size_t from = 0;
  for (std::size_t at = raw.find(crlf); at != std::u16string::npos; at = raw.find(crlf, from)) {
    text.append(raw, from, at - from);  // up to the CR, which is dropped
    from = at + 1;                      // the LF is copied with the next segment
  }
  text.append(raw, from, std::u16string::npos);
  AddItem(text, position, length, *cell, in_link, count);
}

void AddLineBreak(SmartPtr<KCell>& cell) {
  KCellItem* last = LastTextItem(*cell);
  if (last == nullptr) return;
  const std::u16string& text = last->Text();
  if (text.empty()) return;
  const std::size_t size = text.size();
  if (text[size - 1] == u'\n' && size >= 2 && text[size - 2] == u'\n') return;
  last->AppendText(LineFeedText(), 0, 0);
}

void CloseParagraph(KCell& cell) { cell.MakeParagraph(); }

void EndTableCellText(KCell& cell) {
  if (KCellItem* last = LastTextItem(cell)) last->AppendText(LineFeedText(), 0, 0);
}

}  // namespace ZestraNS
