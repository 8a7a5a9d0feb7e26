// Builds the layout tree of one HTML document under a root table.
//
// The root (from the caller) has 1 column and at least 2 rows; the builder
// puts the document's content into a new cell at column 0, row 1, replacing
// whatever that slot held, and walks the parsed document into it
// (layout_walk.h). A document that parses to no nodes, or whose first
// top-level node has no children, builds no content cell.
//
// `mode` chooses the walk (zestra/builder/layout_mode.h): layout_walk.h for
// kTables, the default, block_layout_walk.h for kBlocks.
//
// attribute_text (may be null) receives the document's title (the text of
// the nodes with the title attribute) when the parse has nodes and that
// text is not empty; otherwise the caller's string is left as it was.
//
// Thread-safety: a build uses only its own tree and the shared, read-only
// keyword table; builds of different documents may run at once.
#ifndef ZESTRA_BUILDER_BUILD_TREE_H_
#define ZESTRA_BUILDER_BUILD_TREE_H_

#include <string>

#include "zestra/base/charset.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/builder/layout_mode.h"
#include "zestra/model/k_table.h"
#include "zestra/html/html_doc_tree.h"
#include "zestra/stream/binary_stream_buf.h"

namespace ZestraNS {

// A new root table for a build: no parent, 1 column, 3 rows, level 0, every
// slot null. Throws std::bad_alloc when the table or its grid cannot be
// allocated, as the parser does when memory runs out: a build needs both.
Orvel::SmartPtr<KTable> NewRootTable();

// Parses the bytes `in` delivers from its get position (not rewound), in
// `charset`, with the shared keyword table, and builds them under `root`.
// Exceptions of the stream and the parser pass through.
// REQUIRES: root is not null, with Cols() >= 1 and Rows() >= 2.
void BuildTreeFromStream(Orvel::BinaryStreamBufT<unsigned int>& in, Orvel::CHARSET charset,
                         Orvel::SmartPtr<KTable>& root, std::u16string* attribute_text,
                         LayoutMode mode = LayoutMode::kTables);

// Builds an already parsed document under `root`; the tree is only read.
// REQUIRES: as above.
void BuildTreeFromDocTree(const OrvelParser::HtmlDocTree& tree, Orvel::SmartPtr<KTable>& root,
                          std::u16string* attribute_text, LayoutMode mode = LayoutMode::kTables);

// Builds as BuildTreeFromDocTree does, with the same result, but releases
// the parts of `tree` it is done with as it goes, so the memory of the
// parsed tree goes back while the layout tree grows: afterwards the tree
// keeps its top-level nodes, node count and charset, and the nodes walked
// have lost their children (a child someone else holds lives on). For a
// caller that drops the tree next; BuildTreeFromStream builds this way.
// REQUIRES: as above.
void BuildTreeConsumingDocTree(OrvelParser::HtmlDocTree& tree, Orvel::SmartPtr<KTable>& root,
                               std::u16string* attribute_text, LayoutMode mode = LayoutMode::kTables);

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_BUILD_TREE_H_
