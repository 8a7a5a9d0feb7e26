// The byte stream that a document partition keeps its bytes in, and the
// UTF-8 form in which wide source text enters the streams.
//
// Thread-safety: NewPartitionStream may be called from any thread.
#ifndef ZESTRA_API_PARTITION_STREAM_H_
#define ZESTRA_API_PARTITION_STREAM_H_

#include <string>
#include <string_view>

#include "zestra/api/html_doc_partitions.h"
#include "zestra/stream/binary_stream_buf.h"

namespace ZestraNS {

// Initial capacity, in bytes, of a partition's memory buffer.
inline constexpr unsigned int kPartitionStreamCapacity = 16384;

// A new, empty stream for a partition: a handle that owns a new
// OrvelFile::MemoryBuffer of kPartitionStreamCapacity bytes, in a holder of
// its own. Never empty; throws std::bad_alloc when memory cannot be had.
HtmlDocPartitions::StreamHolder NewPartitionStream();

// A new partition stream (as NewPartitionStream) holding the UTF-8 form of
// the 16-bit units `text`.
HtmlDocPartitions::StreamHolder NewUtf8PartitionStream(std::u16string_view text);

// Writes the UTF-8 form of the 16-bit units `text` at the put position of
// `out`. Unpaired surrogates become U+FFFD. A memory buffer holds at most
// 0xFFFFFFFF bytes: bytes beyond that are not written.
void PutUtf8(std::u16string_view text, Orvel::BinaryStreamBufT<unsigned int>& out);

}  // namespace ZestraNS

#endif  // ZESTRA_API_PARTITION_STREAM_H_
