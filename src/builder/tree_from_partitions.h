// The layout tree of a page made of several documents (HtmlDocPartitions):
// each partition becomes a root table of its own, and the roots of its
// children hang below it as table items.
//
// Each root is a KTable of 1 column and 3 rows at level 0 without parent:
// - (0,0) is never filled;
// - (0,1) holds the partition's own document as BuildTreeFromStream makes
//   it, when the partition has a stream and a known charset (both content
//   types are parsed as HTML); null otherwise or when the document has no
//   content;
// - (0,2) is the frames cell, always made: one table item per child
//   partition, in order, each holding that child's root (level 0, no
//   parent table), and Tables() equal to the number of children.
//
// The partitions' streams are parsed from their get positions as they
// stand; nothing rewinds them, so a second build over the same partitions
// finds their bytes consumed. The tree shares nothing else with the
// partitions.
//
// Thread-safety: keeps no state; distinct partition trees may be built on
// distinct threads at once.
#ifndef ZESTRA_BUILDER_TREE_FROM_PARTITIONS_H_
#define ZESTRA_BUILDER_TREE_FROM_PARTITIONS_H_

#include <string>

#include "zestra/api/html_doc_partitions.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/model/k_table.h"

namespace ZestraNS {

// Builds the tree of `partition` and, depth first, of its children; the
// recursion follows the depth of the partition tree. `attribute_text` (may
// be null) receives the attribute text of `partition`'s own document under
// the builder's rule; frames never fill it. An empty child holder counts as
// an empty partition. Never returns null: throws std::bad_alloc when the
// root or its frames cell cannot be allocated.
Orvel::SmartPtr<KTable> BuildTreeFromPartitions(const HtmlDocPartitions& partition, std::u16string* attribute_text);

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_TREE_FROM_PARTITIONS_H_
