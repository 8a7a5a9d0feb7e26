#include "builder/element_treatment.h"

#include <initializer_list>

namespace ZestraNS {
namespace {

// Keyword ids of the parser adapter that the tables layout treats specially.
constexpr uint32_t kTheadId = 3;
constexpr uint32_t kTfootId = 9;
constexpr uint32_t kTrId = 15;
constexpr uint32_t kTdId = 21;
constexpr uint32_t kThId = 27;
constexpr uint32_t kBrId = 28;
constexpr uint32_t kAnchorId = 31;
constexpr uint32_t kTbodyId = 39;
constexpr uint32_t kTableId = 50;
constexpr uint32_t kPreId = 54;
constexpr uint32_t kTextId = 73;

constexpr uint32_t kLinkAttribute = 0x40000;

constexpr std::array<ElementTreatment, 256> TablesLayoutEntries() {
  std::array<ElementTreatment, 256> e{};
  e[kTextId] = {.action = NodeAction::kText, .yields_to_link = false};
  e[kPreId] = {.action = NodeAction::kPreformatted, .yields_to_link = false};
  e[kBrId] = {.action = NodeAction::kLineBreak, .yields_to_link = false};
  e[kTableId].action = NodeAction::kTable;
  e[kAnchorId].anchor = true;
  e[kTrId].table_role = TableRole::kRow;
  e[kTdId].table_role = TableRole::kCell;
  e[kThId].table_role = TableRole::kCell;
  e[kTheadId].table_role = TableRole::kRowGroup;
  e[kTbodyId].table_role = TableRole::kRowGroup;
  e[kTfootId].table_role = TableRole::kFooterGroup;
  for (uint32_t id : {12u, 18u, 40u, 42u, 44u, 46u}) e[id].close_before = e[id].close_after = true;
  for (uint32_t id : {5u, 11u, 17u, 22u, 23u, 49u}) e[id].close_before = true;
  e[33].close_after = true;
  for (uint32_t id : {0u, 4u, 10u, 14u, 16u, 20u, 26u, 32u}) e[id].action = NodeAction::kSkip;
  return e;
}

constexpr TreatmentTable kTablesLayout(TablesLayoutEntries(), kLinkAttribute);

}  // namespace

const TreatmentTable& TablesLayoutTreatment() { return kTablesLayout; }

}  // namespace ZestraNS
