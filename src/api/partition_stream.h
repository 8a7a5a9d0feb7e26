// The byte stream that a document partition keeps its bytes in.
//
// Thread-safety: NewPartitionStream may be called from any thread.
#ifndef ZESTRA_API_PARTITION_STREAM_H_
#define ZESTRA_API_PARTITION_STREAM_H_

#include "zestra/api/html_doc_partitions.h"

namespace ZestraNS {

// Initial capacity, in bytes, of a partition's memory buffer.
inline constexpr unsigned int kPartitionStreamCapacity = 16384;

// A new, empty stream for a partition: a handle that owns a new
// OrvelFile::MemoryBuffer of kPartitionStreamCapacity bytes, in a holder of
// its own. Never empty; throws std::bad_alloc when memory cannot be had.
HtmlDocPartitions::StreamHolder NewPartitionStream();

}  // namespace ZestraNS

#endif  // ZESTRA_API_PARTITION_STREAM_H_
