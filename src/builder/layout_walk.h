// The layout walk: turns a range of sibling HTML nodes into the content of
// one layout cell, in document order, keeping the cell's counters (Words,
// WordsInLinksAndImages, Links, Tables; never Images).
//
// Each node is treated as its keyword's TreatmentTable entry says (see
// element_treatment.h): text nodes become text runs (text_items.h), BR a
// line break, PRE switches the preformatted flag on for its children, block
// elements close the paragraph before and/or after their content, skipped
// elements vanish with their content, links count one link (an anchor
// inside an anchor counts none) and make an anchor's text in-link, and an
// HTML table becomes a nested KTable whose cells are filled the same way
// with in-link and preformatted off (table_cells.h). Any other element just
// has its children walked, with the preformatted flag off.
//
// The walk keeps its own stack: each pending sibling range carries its
// cell, in-link and preformatted flags; paragraph closing after an element
// and the line-break work after a table cell are pending actions on the
// same stack. The visiting order is that of a depth-first recursion, but
// the call stack does not grow with the nesting depth of the document; the
// heap used is proportional to that depth.
//
// With WalkedNodes::kRelease the walk releases each element's children once
// it is done with them (html_nodes.h); otherwise the nodes are only read.
//
// Thread-safety: none beyond the cell's.
#ifndef ZESTRA_BUILDER_LAYOUT_WALK_H_
#define ZESTRA_BUILDER_LAYOUT_WALK_H_

#include "builder/element_treatment.h"
#include "builder/html_nodes.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/model/k_cell.h"

namespace ZestraNS {

// Walks the nodes [first, end) and everything below them into `cell`, with
// the given in-link and preformatted flags. Always returns true.
// REQUIRES: cell is not null.
bool AddNodesToCell(NodeIterator first, NodeIterator end, Orvel::SmartPtr<KCell>& cell, bool in_link,
                    bool pre, const TreatmentTable& treatment = TablesLayoutTreatment(),
                    WalkedNodes walked = WalkedNodes::kKeep);

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_LAYOUT_WALK_H_
