#include "builder/element_treatment.h"

#include <initializer_list>

#include "zestra/html/html_keyword_table.h"

namespace ZestraNS {
namespace {

using K = OrvelParser::KeywordId;
using Ids = std::initializer_list<uint32_t>;

constexpr std::array<ElementTreatment, 256> TablesLayoutEntries() {
  std::array<ElementTreatment, 256> e{};
  e[K::kIdText] = {.action = NodeAction::kText, .ignores_link = true};
  e[K::kIdPre] = {.action = NodeAction::kPreformatted, .ignores_link = true};
  e[K::kIdBr] = {.action = NodeAction::kLineBreak, .ignores_link = true};
  e[K::kIdTable].action = NodeAction::kTable;
  e[K::kIdAnchor].anchor = true;
  e[K::kIdTr].table_role = TableRole::kRow;
  e[K::kIdTd].table_role = TableRole::kCell;
  e[K::kIdTh].table_role = TableRole::kCell;
  e[K::kIdThead].table_role = TableRole::kRowGroup;
  e[K::kIdTbody].table_role = TableRole::kRowGroup;
  e[K::kIdTfoot].table_role = TableRole::kFooterGroup;
  // Ids 23 and 49 close the paragraph before them although no element of
  // the keyword table carries them.
  for (uint32_t id : Ids{K::kIdParagraph, K::kIdDivision, K::kIdHeading, K::kIdList, K::kIdBlockQuote, K::kIdSection}) {
    e[id].close_before = e[id].close_after = true;
  }
  for (uint32_t id : Ids{K::kIdListItem, K::kIdTerm, K::kIdDefinition, K::kIdCaption, 23u, 49u}) e[id].close_before = true;
  e[K::kIdSummary].close_after = true;
  for (uint32_t id : Ids{K::kIdScript, K::kIdStyle, K::kIdHead, K::kIdTemplate, K::kIdOptionList, K::kIdEmbedded, K::kIdGraphics,
                      K::kIdFormControl}) {
    e[id].action = NodeAction::kSkip;
  }
  return e;
}

constexpr TreatmentTable kTablesLayout(TablesLayoutEntries(), OrvelParser::HtmlKeywordTable::kLinkAtt);

}  // namespace

const TreatmentTable& TablesLayoutTreatment() { return kTablesLayout; }

}  // namespace ZestraNS
