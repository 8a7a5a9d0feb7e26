// GetDocumentTree parses one HTML document and returns its layout tree
// (zestra/model/k_table.h) without ranking it or extracting text, for
// callers that inspect or walk the tree themselves.
//
// The root is a KTable of 1 column, 3 rows and level 0 with no parent:
// row 0 is never filled, row 1 holds the document's content cell (null
// when the document has no content), row 2 stays empty. The cells carry
// the counters the builder keeps (words, words in links, links, tables);
// KTable::Statistics sums them.
//
// Thread-safety: keeps no state; calls on different streams may run on
// different threads at once.
#ifndef ZESTRA_API_DOCUMENT_TREE_H_
#define ZESTRA_API_DOCUMENT_TREE_H_

#include "zestra/base/charset.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/builder/layout_mode.h"
#include "zestra/export.h"
#include "zestra/model/k_table.h"
#include "zestra/stream/binary_stream_buf.h"

namespace ZestraNS {

// Reads the document's bytes from `in`'s get position, in `charset`
// (handed to the parser unchanged: no detection happens here), and returns
// the root of its layout tree, never null. The returned pointer holds one
// reference; the tree lives until the caller drops the last one.
// Exceptions of the stream and parser layers pass through; the partly
// built tree is then released.
ZESTRA_EXPORT Orvel::SmartPtr<KTable> GetDocumentTree(Orvel::BinaryStreamBufT<unsigned int>& in,
                                                      Orvel::CHARSET charset);

// The same, built with the layout `mode` (zestra/builder/layout_mode.h); the
// overload above builds with LayoutMode::kTables.
ZESTRA_EXPORT Orvel::SmartPtr<KTable> GetDocumentTree(Orvel::BinaryStreamBufT<unsigned int>& in,
                                                      Orvel::CHARSET charset, LayoutMode mode);

}  // namespace ZestraNS

#endif  // ZESTRA_API_DOCUMENT_TREE_H_
