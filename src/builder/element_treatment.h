// ElementTreatment says what the layout walk does with an HTML node, looked
// up by the node's keyword id (bits 0-7 of its keyword word). The walk
// itself holds no per-element knowledge: it asks a TreatmentTable, so
// another layout can reuse the walk with a table of its own.
//
// The tables layout treats the keyword ids of the parser adapter
// (zestra/html/html_keyword_table.h, which assigns elements to ids) like this:
//
//   id                        action          paragraph      table role
//   73 text node              text
//   54 PRE                    preformatted
//   28 BR                     line break
//   50 TABLE                  table
//   15 TR                     walk                           row
//   21, 27 TD, TH             walk                           cell
//   3, 39 THEAD, TBODY        walk                           row group
//   9 TFOOT                   walk                           footer group
//   12, 18, 40, 42, 44, 46    walk            closed before and after
//   5, 11, 17, 22, 23, 49     walk            closed before
//   33                        walk            closed after
//   0, 4, 10, 14, 16, 20,     skip
//     26, 32
//   any other id              walk
//
// A node whose keyword word carries the link attribute is a link, whatever
// its id, unless its id's action is text, line break or preformatted; id 31
// (the anchor) is the link that makes its text in-link.
//
// Thread-safety: tables are immutable; any thread may read them.
#ifndef ZESTRA_BUILDER_ELEMENT_TREATMENT_H_
#define ZESTRA_BUILDER_ELEMENT_TREATMENT_H_

#include <array>
#include <cstdint>

namespace ZestraNS {

// What the walk does with a node.
enum class NodeAction : uint8_t {
  kWalk,          // walk the children into the current cell, preformatted off
  kSkip,          // leave out the node and everything inside it
  kText,          // the node's text becomes a text run of the current cell
  kLineBreak,     // a line break on the current cell
  kPreformatted,  // walk the children with the preformatted flag on
  kTable,         // the node becomes a nested table
  kLink,          // count a link, then walk the children (see Classify)
};

// What a node is inside an HTML table, for measuring the table's grid.
enum class TableRole : uint8_t {
  kNone,         // ignored by the grid (captions, column groups, text...)
  kRow,          // one row of the grid
  kCell,         // one cell of its row; reads "rowspan" and "colspan"
  kRowGroup,     // its rows are taken where the group stands
  kFooterGroup,  // its rows are placed after every other row
};

struct ElementTreatment {
  NodeAction action = NodeAction::kWalk;
  bool close_before = false;  // close the current paragraph before the node
  bool close_after = false;   // close it again once the node's children are done
  bool anchor = false;        // as a link: its text counts as in-link
  bool ignores_link = false;  // the link attribute does not make it a link
  TableRole table_role = TableRole::kNone;
};

class TreatmentTable {
 public:
  // Keyword ids take bits 0-7 of a keyword word.
  static constexpr uint32_t kIdMask = 0xFF;

  constexpr TreatmentTable(const std::array<ElementTreatment, 256>& entries, uint32_t link_attribute)
      : entries_(entries), link_attribute_(link_attribute) {}

  // The entry of a keyword id.
  constexpr const ElementTreatment& ForId(uint32_t id) const { return entries_[id & kIdMask]; }

  // The treatment of a node with the given keyword word: its id's entry,
  // turned into a link (without paragraph closing) when the word
  // carries the link attribute and the entry does not ignore it.
  constexpr ElementTreatment Classify(uint32_t keyword_word) const {
    ElementTreatment t = ForId(keyword_word);
    if ((keyword_word & link_attribute_) != 0 && !t.ignores_link) {
      t.action = NodeAction::kLink;
      t.close_before = false;
      t.close_after = false;
    }
    return t;
  }

 private:
  std::array<ElementTreatment, 256> entries_;
  uint32_t link_attribute_;
};

// The table of the tables layout (above).
const TreatmentTable& TablesLayoutTreatment();

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_ELEMENT_TREATMENT_H_
