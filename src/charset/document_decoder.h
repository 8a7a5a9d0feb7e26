// DecodeDocument reads the bytes of an HTML document from a stream and turns
// them into the UTF-8 text that the HTML parser takes, settling the charset
// as browsers do: a byte-order mark wins over the given charset; a document
// of unknown charset, or of one that cannot be converted, is sniffed
// (OrvelDetection::SniffCharset). Invalid bytes become U+FFFD; nothing stops
// the conversion. Memory: the UTF-8 text plus fixed buffers.
#ifndef ZESTRA_CHARSET_DOCUMENT_DECODER_H_
#define ZESTRA_CHARSET_DOCUMENT_DECODER_H_

#include <cstddef>
#include <string>

#include "zestra/base/charset.h"
#include "zestra/stream/binary_stream_buf.h"

namespace OrvelParser {

// The largest UTF-8 form of a document that is parsed: 1 GiB. Source
// positions are 32-bit byte offsets into it.
inline constexpr size_t kMaxDocumentBytes = size_t{1} << 30;

// Reads `input` from its get position to its end and sets `utf8` to the text
// in UTF-8, without a byte-order mark. A text longer than `max_bytes` is cut
// at the last whole character that fits, and the rest of the input is left
// unread. Returns the charset the bytes were read in.
Orvel::CHARSET DecodeDocument(Orvel::BinaryStreamBufT<unsigned int>& input, Orvel::CHARSET charset,
                              std::string& utf8, size_t max_bytes = kMaxDocumentBytes);

}  // namespace OrvelParser

#endif  // ZESTRA_CHARSET_DOCUMENT_DECODER_H_
