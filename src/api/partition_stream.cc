#include "api/partition_stream.h"

#include <cstdint>
#include <new>

#include "zestra/charset/convert_stream.h"
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

HtmlDocPartitions::StreamHolder NewUtf8PartitionStream(std::u16string_view text) {
  HtmlDocPartitions::StreamHolder stream = NewPartitionStream();
  PutUtf8(text, *stream->Buffer());
  return stream;
}

void PutUtf8(std::u16string_view text, Orvel::BinaryStreamBufT<unsigned int>& out) {
  std::string bytes;
  OrvelCharset::ConvertWideText(Orvel::Utf16LECharset, Orvel::Utf8Charset, text.data(),
                                static_cast<uint32_t>(text.size()), bytes);
  constexpr unsigned int kMaxBytes = Orvel::BinaryStreamBufT<unsigned int>::kAll;
  out.Put(bytes.data(), bytes.size() > kMaxBytes ? kMaxBytes : static_cast<unsigned int>(bytes.size()));
}

}  // namespace ZestraNS
