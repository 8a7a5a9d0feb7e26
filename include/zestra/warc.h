// Reading web archives: WARC files (WARC/1.0 and WARC/1.1) as crawlers write
// them, plain or compressed with gzip (one gzip member per record, as public
// crawls publish them, or the whole file as one stream).
//
//   std::string error;
//   std::unique_ptr<zestra::WarcSource> source = zestra::OpenWarcFile("crawl.warc.gz", &error);
//   if (!source) { ... `error` says why ... }
//   zestra::WarcReader reader(std::move(source), "crawl.warc.gz");
//   zestra::WarcRecord record;
//   while (reader.Next(&record)) {
//     zestra::Options options;
//     options.transport_charset = zestra::CharsetFromLabel(record.charset_label);
//     zestra::Result page = zestra::Extract(record.payload, options);
//   }
//   if (!reader.Error().empty()) { ... the archive ended with a bad record ... }
//
// WarcReader is a pull reader: it holds one record and a fixed window of the
// input at a time, so an archive of any size is read in bounded memory. It
// returns the HTML pages of the archive, each with its payload decoded
// (chunked transfer-encoding undone, gzip or deflate content-encoding
// inflated), and counts the records it skips: records other than `response`
// and `resource`, responses whose status is not 200, and payloads that are
// not HTML (by their Content-Type, or by their first bytes when it is
// absent).
//
// Thread-safety: a WarcReader and its source are used by one thread at a
// time; different readers share nothing and may run at once.
#ifndef ZESTRA_WARC_H_
#define ZESTRA_WARC_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zestra/export.h"

namespace zestra {

// Where a WarcReader reads the archive's bytes from: a file, a pipe, memory.
class ZESTRA_EXPORT WarcSource {
 public:
  WarcSource() = default;
  WarcSource(const WarcSource&) = delete;
  WarcSource& operator=(const WarcSource&) = delete;
  virtual ~WarcSource();

  // Copies up to `size` bytes (size > 0) of the input to `buffer` and
  // returns their number; 0 at the end of the input. On a read failure
  // returns 0 and sets `*error` to the reason ("Input/output error").
  virtual std::size_t Read(char* buffer, std::size_t size, std::string* error) = 0;
};

// The source that reads the file at `path` from byte `offset` on (the
// start of a record, or of the gzip member that holds one, to read part of
// an archive; offsets of records are then counted from there); "-" reads
// standard input, from where it stands. Null, with `*error` set to the
// reason ("No such file or directory", "Is a directory"), when it cannot be
// opened or `offset` cannot be reached.
ZESTRA_EXPORT std::unique_ptr<WarcSource> OpenWarcFile(const std::string& path, std::string* error,
                                                       std::uint64_t offset = 0);

// The source that reads the bytes of `data`, which must outlive it.
ZESTRA_EXPORT std::unique_ptr<WarcSource> WarcMemorySource(std::string_view data);

// The fields of a header block in their order, names as written.
using WarcHeaders = std::vector<std::pair<std::string, std::string>>;

// The value of the first field named `name` (names match in any case), with
// white space around it removed; empty when there is none.
ZESTRA_EXPORT std::string_view FindWarcHeader(const WarcHeaders& headers, std::string_view name);

// One HTML page of an archive.
struct WarcRecord {
  // The record's version line without "WARC/": "1.0", "1.1".
  std::string version;
  // WARC-Type: "response" or "resource".
  std::string type;
  // WARC-Target-URI: the page's address; empty when the record has none.
  std::string url;
  // WARC-Record-ID, with its angle brackets: "<urn:uuid:...>".
  std::string record_id;
  // WARC-Date, as written: "2024-05-01T12:00:00Z".
  std::string date;
  // Every field of the record's header, WARC-Type and the others included.
  WarcHeaders headers;
  // Content-Length: the size of the record's block in bytes, as declared
  // (and found true).
  std::uint64_t content_length = 0;
  // Where the record starts: the offset in the file of its first byte, or
  // for a gzip-compressed file the offset of the gzip member it starts in.
  std::uint64_t offset = 0;

  // For a response record, the HTTP status code (200), the status line
  // ("HTTP/1.1 200 OK") and the HTTP header fields; 0 and empty for a
  // resource record.
  int http_status = 0;
  std::string http_status_line;
  WarcHeaders http_headers;

  // The media type of the payload in lower case ("text/html"); empty when
  // none was declared and the payload was sniffed as HTML. From the HTTP
  // Content-Type of a response, the WARC Content-Type of a resource.
  std::string content_type;
  // The charset parameter of that Content-Type as written ("ISO-8859-1"),
  // without quotes; empty when there is none. zestra::CharsetFromLabel
  // turns it into the transport charset of the page (Options).
  std::string charset_label;
  // The page's bytes as the server sent them, transfer and content
  // encodings undone; at most WarcReader::Limits::max_payload_bytes.
  std::string payload;
};

// What a reader has met so far.
struct WarcCounts {
  // Records read, skipped ones included.
  std::uint64_t records = 0;
  // HTML pages returned by Next.
  std::uint64_t pages = 0;
  // Records skipped because their type is neither response nor resource
  // (warcinfo, request, metadata, revisit, conversion, ...).
  std::uint64_t skipped_type = 0;
  // Responses skipped because their HTTP status is not 200, or because
  // their block holds no HTTP response.
  std::uint64_t skipped_status = 0;
  // Records skipped because their payload is not HTML, or is encoded in a
  // way the reader cannot undo (br, compress).
  std::uint64_t skipped_not_html = 0;
  // Bytes read from the source (compressed bytes for a gzip file).
  std::uint64_t input_bytes = 0;
};

class ZESTRA_EXPORT WarcReader {
 public:
  // Bounds on what one record may hold. A payload beyond max_payload_bytes
  // is cut there (the rest of the record is read and dropped), as a page
  // file is read only up to a limit; a header block beyond max_header_bytes
  // makes the record corrupt.
  struct Limits {
    std::size_t max_payload_bytes = std::size_t{256} << 20;
    std::size_t max_header_bytes = std::size_t{1} << 20;
  };

  // A reader of the archive that `source` delivers; `name` (a path) names
  // it in error messages. The input is gzip when it starts with the gzip
  // magic bytes, plain otherwise. A null `source` (an OpenWarcFile that
  // failed) gives a reader whose Next returns false with the Error
  // "NAME: no input to read".
  WarcReader(std::unique_ptr<WarcSource> source, std::string name, Limits limits);
  WarcReader(std::unique_ptr<WarcSource> source, std::string name);
  WarcReader(const WarcReader&) = delete;
  WarcReader& operator=(const WarcReader&) = delete;
  ~WarcReader();

  // Reads records up to the next HTML page and sets `*record` to it.
  // Returns false at the end of the archive, or when a record is truncated
  // or corrupt (Error() then says where), and on every call after that.
  // Throws std::bad_alloc when memory runs out.
  bool Next(WarcRecord* record);

  // Empty while the archive reads well and after a clean end; else one
  // line naming the archive, the byte offset of the record (see
  // WarcRecord::offset; for gzip also the uncompressed one) and the
  // problem: "crawl.warc.gz: record at byte 10240 (byte 81920
  // uncompressed): compressed data cut short", "crawl.warc: record at byte
  // 0: not a WARC record".
  const std::string& Error() const;

  // The counts so far.
  const WarcCounts& Counts() const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace zestra

#endif  // ZESTRA_WARC_H_
