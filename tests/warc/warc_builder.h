// Building WARC archives in memory for the reader's tests: records with an
// HTTP response, chunked or gzip-encoded bodies, and the three ways archives
// are compressed.
#ifndef ZESTRA_TESTS_WARC_WARC_BUILDER_H_
#define ZESTRA_TESTS_WARC_WARC_BUILDER_H_

#include <zlib.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace zestra_testing {

// `data` as one gzip member.
inline std::string Gzip(const std::string& data) {
  z_stream stream{};
  if (deflateInit2(&stream, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK) throw std::bad_alloc();
  std::string out(deflateBound(&stream, data.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
  stream.avail_in = static_cast<uInt>(data.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  if (deflate(&stream, Z_FINISH) != Z_STREAM_END) throw std::runtime_error("deflate");
  out.resize(stream.total_out);
  deflateEnd(&stream);
  return out;
}

// A record of type `type` with the header lines `fields` ("Name: value",
// each without its line end) and `block`.
inline std::string WarcRecordBytes(const std::string& version, const std::string& type,
                                   const std::vector<std::string>& fields, const std::string& block) {
  std::string record = "WARC/" + version + "\r\nWARC-Type: " + type + "\r\n";
  for (const std::string& field : fields) record += field + "\r\n";
  record += "Content-Length: " + std::to_string(block.size()) + "\r\n\r\n" + block + "\r\n\r\n";
  return record;
}

// The body in chunks of `size` bytes.
inline std::string Chunked(const std::string& body, std::size_t size) {
  std::string out;
  char line[32];
  for (std::size_t at = 0; at < body.size(); at += size) {
    const std::string piece = body.substr(at, size);
    std::snprintf(line, sizeof line, "%zx\r\n", piece.size());
    out += line + piece + "\r\n";
  }
  return out + "0\r\n\r\n";
}

enum class Compression { kNone, kPerRecord, kWhole };

// The archive of `records`, and in `offsets` where each record starts in it.
inline std::string Archive(const std::vector<std::string>& records, Compression compression,
                           std::vector<std::size_t>* offsets = nullptr) {
  std::string out;
  for (const std::string& record : records) {
    if (offsets != nullptr) offsets->push_back(out.size());
    out += compression == Compression::kPerRecord ? Gzip(record) : record;
  }
  return compression == Compression::kWhole ? Gzip(out) : out;
}

}  // namespace zestra_testing

#endif  // ZESTRA_TESTS_WARC_WARC_BUILDER_H_
