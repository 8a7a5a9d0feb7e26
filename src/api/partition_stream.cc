#include "api/partition_stream.h"

#include <new>

#include "zestra/stream/memory_buffer.h"

namespace ZestraNS {

HtmlDocPartitions::StreamHolder NewPartitionStream() {
  // Pool allocations yield null instead of throwing; every step checks.
  auto* buffer = new OrvelFile::MemoryBuffer(kPartitionStreamCapacity);
  if (buffer == nullptr) throw std::bad_alloc();
  auto* handle = new Orvel::BinaryStreamT<unsigned int>(buffer, true);
  if (handle == nullptr) {
    delete buffer;
    throw std::bad_alloc();
  }
  // The holder deletes the handle (and with it the buffer) when it cannot
  // allocate its counter.
  HtmlDocPartitions::StreamHolder holder(handle);
  if (!holder) throw std::bad_alloc();
  return holder;
}

}  // namespace ZestraNS
