// The blocks layout walk: turns a parsed document laid out with block
// elements (divisions, sections, lists, paragraphs) into a layout tree that
// the table ranking can read, the way the tables layout walk
// (layout_walk.h) does for documents laid out with HTML tables.
//
// The shape, with units as in block_analysis.h:
//   - A block whose children form two or more units becomes a nested KTable
//     of one column and one row per unit, hung into the current cell as a
//     table item (the cell counts one more table). Each unit is walked into
//     the cell of its row, and that cell's text ends with a paragraph break.
//   - A block with a single unit adds no table: its content goes into the
//     current cell, with the paragraph closed before and after it. Chains
//     of wrapper divisions thus add no level.
//   - A block without text adds nothing.
//   - An HTML table takes the table path of the tables layout (table_cells.h);
//     each table cell's content is then laid out as a block.
//   - Text, line breaks, preformatted text and links follow the rules of
//     the tables layout (text_items.h): the same items, junctions, paragraph
//     breaks and Links, Words and WordsInLinksAndImages counters.
//   - Nodes a reader does not see (block_analysis.h) are left out with
//     everything inside them.
//   - MathML formulas are text, with a space before every token that does
//     not bring its own: x<sup>2</sup> in MathML reads "x 2", not "x2".
//   - Of an SVG drawing only the HTML its foreignObjects hold is read, as
//     HTML anywhere is; the drawing's own labels are not.
//   - Words are counted with CountBlockWords (block_word_count.h).
//
// Boilerplate: the words inside an element that SignalOf marks as
// boilerplate count as words in links, the engine's measure of words a
// reader did not come for, unless the element holds more than a fifth of
// the page's words (a page wrapper with a "sidebar" or "nav" class must not
// sink the whole page). Comment sections count so whatever their size.
//
// Like the tables walk it keeps an explicit stack: the call stack does not
// grow with the nesting of the document.
//
// With WalkedNodes::kRelease the walk releases each element's children once
// it is done with them (html_nodes.h); otherwise the nodes are only read.
//
// Marks for the pruning that follows the ranking (KCellMarks): a cell
// whose every text lies inside a comment section, a boilerplate element,
// a byline, a credit or a caption (block_signals.h) carries that kind; each
// cell of a unit carries the unit's shape (its elements and classes,
// hashed), so that runs of alike boxes can be told; the cell holding the
// heading that names the article is marked as the title's.
//
// Thread-safety: none beyond the cell's.
#ifndef ZESTRA_BUILDER_BLOCK_LAYOUT_WALK_H_
#define ZESTRA_BUILDER_BLOCK_LAYOUT_WALK_H_

#include <string_view>

#include "builder/html_nodes.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/model/k_cell.h"

namespace ZestraNS {

// Lays out the document whose top-level nodes are `top` into `cell`.
// `node_count`, when not 0, is the number of nodes below `top` (the tree's
// NodeCount), so that the walk sizes its per-node records once. `title`
// (UTF-8, may be empty) is the document's <title>: the cell that receives
// the first h1 or h2 naming the article by it is marked KCellMarks::kTitle.
// REQUIRES: cell is not null.
void AddNodesToBlocks(const OrvelParser::HtmlTreeNode::List& top, Orvel::SmartPtr<KCell>& cell,
                      WalkedNodes walked = WalkedNodes::kKeep, uint32_t node_count = 0,
                      std::string_view title = {});

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_BLOCK_LAYOUT_WALK_H_
