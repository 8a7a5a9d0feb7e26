// ArchiveInput is the byte stream a WARC reader parses: the bytes of a
// WarcSource, inflated member by member when they are gzip, seen through a
// window of fixed size. Records are read from it line by line and block by
// block; nothing but the window is held, so an archive of any size reads in
// bounded memory.
//
// Positions are offsets in the uncompressed stream. FileOffset maps one to
// where it lies in the file: itself for a plain file, the start of the gzip
// member it lies in for a compressed one (with one member per record, the
// record's own offset, where a reader can seek to).
//
// Thread-safety: one thread at a time.
#ifndef ZESTRA_WARC_ARCHIVE_INPUT_H_
#define ZESTRA_WARC_ARCHIVE_INPUT_H_

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "zestra/warc.h"

namespace zestra::warc {

class ArchiveInput {
 public:
  // Reads `source`, which it owns.
  explicit ArchiveInput(std::unique_ptr<WarcSource> source);
  ArchiveInput(const ArchiveInput&) = delete;
  ArchiveInput& operator=(const ArchiveInput&) = delete;
  ~ArchiveInput();

  // How a line ended.
  enum class Line {
    kComplete,  // a line feed ended it (removed, with a carriage return before it)
    kTooLong,   // `max` bytes came without a line feed
    kEnd,       // the input ended first (the bytes before the end are in `line`)
  };
  // Reads the next line into `line` (replacing its content), looking at most
  // `max` bytes ahead.
  Line ReadLine(std::string* line, std::size_t max);

  // Appends the next `size` bytes to `out`, of which only the first `keep`
  // are stored (the others are read and dropped). Returns the number of
  // bytes read, less than `size` only at the end of the input.
  std::uint64_t Read(std::uint64_t size, std::uint64_t keep, std::string* out);

  // The next byte without reading it; -1 at the end of the input.
  int Peek();

  // The offset of the next byte in the uncompressed stream.
  std::uint64_t Position() const { return position_; }

  // Where the byte at `position` (not before the last call's position) lies
  // in the file; see above.
  std::uint64_t FileOffset(std::uint64_t position);

  // True when the input is gzip.
  bool Compressed() const { return compressed_; }

  // Bytes read from the source so far.
  std::uint64_t InputBytes() const { return input_bytes_; }

  // Empty while the input reads well; else why it stopped ("compressed data
  // cut short", a read error of the source). The input then ends.
  const std::string& Error() const { return error_; }

 private:
  // Refills the window when it is empty. Returns false at the end of the
  // input or on an error.
  bool Fill();
  bool FillPlain();
  bool FillCompressed();
  // Reads more of the source into the compressed buffer; false at its end.
  bool ReadSource();

  std::unique_ptr<WarcSource> source_;
  std::unique_ptr<char[]> window_;  // the uncompressed bytes at hand
  std::size_t begin_ = 0;           // the next byte of window_
  std::size_t end_ = 0;             // one past the last byte of window_
  std::uint64_t position_ = 0;      // offset of window_[begin_]
  std::uint64_t input_bytes_ = 0;
  bool compressed_ = false;
  bool at_end_ = false;
  std::string error_;

  // gzip: the compressed bytes at hand and the inflater.
  std::unique_ptr<char[]> compressed_buffer_;
  z_stream zstream_{};
  bool zstream_ready_ = false;
  bool in_member_ = false;  // a member was started and has not ended
  // The members that begin at or after the oldest position still asked
  // about: {uncompressed start, file offset}.
  struct Member {
    std::uint64_t position;
    std::uint64_t file_offset;
  };
  std::deque<Member> members_;
};

}  // namespace zestra::warc

#endif  // ZESTRA_WARC_ARCHIVE_INPUT_H_
