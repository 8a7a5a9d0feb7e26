// The Beautify family: the library's entry points for callers that link
// against it. Each call takes one document (bytes in a stream with their
// charset, a tree the caller already parsed, or a page with its frames as
// HtmlDocPartitions), builds its layout tree, decides its DocumentType from
// its share of link words, extracts the main text and hands it back as a
// wide string or appended to a caller's stream.
//
// The text is UTF-16: in a wide string one code unit per element; in a
// stream two bytes per unit, low byte first, no byte-order mark, no
// terminator.
//
// Common parameters:
// - attribute_text (may be null): receives the text that the parsed
//   document yields for the parser's node attribute 0x100. It is assigned
//   only when the parsed tree is not empty and that text is not empty;
//   otherwise the caller's string is left exactly as it was. For partitions
//   only the top document fills it, never a frame.
// - type (may be null): receives the document's DocumentType, whatever the
//   result.
// - The result: false means that no text was produced; for the overloads
//   that append to a stream, that the stream is empty after the call.
//
// No call throws an exception of its own; exceptions of the stream, parser
// and charset layers pass through, and everything the call made is
// released on the way out.
//
// Thread-safety: no state between calls; calls on distinct documents and
// outputs may run at once on different threads. One stream, tree or
// partition must not be used by two calls at once.
#ifndef ZESTRA_API_BEAUTIFY_H_
#define ZESTRA_API_BEAUTIFY_H_

#include <cstdint>
#include <string>

#include "zestra/api/html_doc_partitions.h"
#include "zestra/base/charset.h"
#include "zestra/export.h"
#include "zestra/stream/binary_stream_buf.h"

namespace OrvelParser {
class HtmlDocTree;
}  // namespace OrvelParser

namespace ZestraNS {

// What a document is made of, judged from its word counters.
enum DocumentType : int32_t {
  // Nearly every word lies inside a link and there are few non-link words
  // per link (a page of links); the whole text is extracted, unranked. A
  // document without words is one too.
  LinkDocument = 0,
  // Every other document; only the text of the winning tables is extracted.
  ContentDocument = 1,
};

// 1. Reads the document's bytes from `in`'s get position, in `charset`
// (used as given, no detection). `text` is emptied first and receives the
// extracted text. Returns true when text was extracted.
ZESTRA_EXPORT bool Beautify(Orvel::BinaryStreamBufT<unsigned int>& in, Orvel::CHARSET charset,
                            std::u16string& text, std::u16string* attribute_text, DocumentType* type);

// 2. Takes a document the caller has parsed. `text` is emptied first and
// receives the extracted text. Returns true when text was extracted.
ZESTRA_EXPORT bool Beautify(OrvelParser::HtmlDocTree& tree, std::u16string& text,
                            std::u16string* attribute_text, DocumentType* type);

// 3. Takes a document the caller has parsed and appends the extracted text
// at `out`'s put position; `out` is not touched when no text came out.
// Returns true when text was extracted.
ZESTRA_EXPORT bool Beautify(OrvelParser::HtmlDocTree& tree, Orvel::BinaryStreamBufT<unsigned int>& out,
                            std::u16string* attribute_text, DocumentType* type);

// 4. Takes a page and its frames. `text` is emptied first and receives the
// extracted text. Returns true when text was extracted. Each partition's
// bytes are read from its stream's get position and not rewound, so a
// second call over the same partitions finds them consumed.
ZESTRA_EXPORT bool Beautify(const HtmlDocPartitions& document, std::u16string& text,
                            std::u16string* attribute_text, DocumentType* type);

// 5. Reads the document's bytes from `in`'s get position, in `charset`, and
// writes the text straight into `out` at its put position; `out` is not
// cleared, and its last unit decides whether a line feed is needed before
// the first table's text. Returns true when `out` holds any byte after the
// call, so a stream that already held bytes gives true even without text.
ZESTRA_EXPORT bool Beautify(Orvel::BinaryStreamBufT<unsigned int>& in, Orvel::CHARSET charset,
                            Orvel::BinaryStreamBufT<unsigned int>& out, std::u16string* attribute_text,
                            DocumentType* type);

// 6. Takes a page and its frames (read as in overload 4) and writes the
// text straight into `out`, with the result rule of overload 5.
ZESTRA_EXPORT bool Beautify(const HtmlDocPartitions& document, Orvel::BinaryStreamBufT<unsigned int>& out,
                            std::u16string* attribute_text, DocumentType* type);

}  // namespace ZestraNS

#endif  // ZESTRA_API_BEAUTIFY_H_
