// The partition reader fills a tree of HtmlDocPartitions from a live
// document object of the platform's HTML engine and from the documents of
// its frames, depth first.
//
// For each document it records the content type (from the MIME-type
// description), obtains the source bytes and settles their charset:
//
// - through IPersistStreamInit: the document saves its source into an
//   in-memory stream; detection names the charset; 16-bit text (1201) is
//   stored converted to UTF-8 (65001), bytes of unknown charset are stored
//   cleaned of junk as Windows-1252 (1252), and any other charset is stored
//   byte for byte under the detected value;
// - without it: the body element's outer HTML, stored as UTF-8.
//
// Frames are the embedded objects of the document's IOleContainer that are
// web browsers hosting an IHTMLDocument2. A frame whose document cannot be
// read keeps its place among the children as an empty partition (no
// stream, UnknownCharset), which is not parsed later.
//
// Every interface obtained is released and every string obtained is freed
// before a function returns, also when an exception passes through. The
// recursion follows the frame nesting of the page; document objects whose
// frames led back to an enclosing document would never end it (a browser
// does not build such pages).
//
// Thread-safety: calls the document objects on the caller's thread; keeps
// no state.
#ifndef ZESTRA_API_PARTITION_READER_H_
#define ZESTRA_API_PARTITION_READER_H_

#include "zestra/api/html_doc_partitions.h"
#include "zestra/platform/com/html_document.h"

namespace ZestraNS {

// Fills `partition` from `document` (ReadPartitionContent) and, when that
// returns S_OK, appends one child per frame and fills it the same way.
// Returns ReadPartitionContent's result for `document` when it is not S_OK
// (no frame is read then), else S_OK: failures below the top document are
// skipped.
// REQUIRES: document is not null; partition is default constructed.
HRESULT ReadPartitionTree(IHTMLDocument2* document, HtmlDocPartitions& partition);

// Fills the one node `partition` from `document`, without frames. Returns:
// - the failure of IPersistStreamInit::Save, with the stream and charset
//   unchanged;
// - ZESTRA_E_CHARSET_NOT_DETECTED when the saved source cannot be read for
//   detection or detection fails, with the same state;
// - otherwise IStream::Stat's result. The partition has a new stream; if
//   the memory behind the saved source cannot be locked, or converting or
//   copying it throws, the stream keeps what was written and the charset is
//   unchanged;
// - without IPersistStreamInit: get_body's result when it fails or yields
//   no element (no stream then), get_outerHTML's result otherwise (the
//   stream exists only when it succeeded).
// The content type is set on every path: TextContent when the MIME-type
// description, read up to its first null unit, equals "Text Document" in
// length and every unit (case matters), else HtmlContent.
// REQUIRES: document is not null.
HRESULT ReadPartitionContent(IHTMLDocument2* document, HtmlDocPartitions& partition);

}  // namespace ZestraNS

#endif  // ZESTRA_API_PARTITION_READER_H_
