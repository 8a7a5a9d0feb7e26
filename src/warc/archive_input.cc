#include "warc/archive_input.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace zestra::warc {
namespace {

// Size of the uncompressed window and of the compressed buffer. A line is
// looked for within the window, so it bounds nothing but the copy sizes.
constexpr std::size_t kWindowBytes = std::size_t{1} << 18;
constexpr std::size_t kCompressedBytes = std::size_t{1} << 16;

// inflateInit2's window bits for a gzip stream.
constexpr int kGzipWindowBits = 15 + 16;

}  // namespace

ArchiveInput::ArchiveInput(std::unique_ptr<WarcSource> source)
    : source_(std::move(source)), window_(new char[kWindowBytes]) {
  // The first two bytes tell gzip (1F 8B) from plain text: a WARC record
  // starts with "WARC/".
  while (end_ < 2 && !at_end_) {
    std::string error;
    const std::size_t got = source_->Read(window_.get() + end_, 2 - end_, &error);
    if (got == 0) {
      at_end_ = true;
      error_ = error;
    }
    end_ += got;
    input_bytes_ += got;
  }
  compressed_ = end_ == 2 && static_cast<unsigned char>(window_[0]) == 0x1F &&
                static_cast<unsigned char>(window_[1]) == 0x8B;
  if (!compressed_) return;
  compressed_buffer_.reset(new char[kCompressedBytes]);
  std::memcpy(compressed_buffer_.get(), window_.get(), 2);
  end_ = 0;
  at_end_ = false;
  zstream_.next_in = reinterpret_cast<Bytef*>(compressed_buffer_.get());
  zstream_.avail_in = 2;
  if (inflateInit2(&zstream_, kGzipWindowBits) != Z_OK) throw std::bad_alloc();
  zstream_ready_ = true;
}

ArchiveInput::~ArchiveInput() {
  if (zstream_ready_) inflateEnd(&zstream_);
}

bool ArchiveInput::Fill() {
  if (begin_ < end_) return true;
  if (at_end_) return false;
  begin_ = end_ = 0;
  return compressed_ ? FillCompressed() : FillPlain();
}

bool ArchiveInput::FillPlain() {
  const std::size_t got = source_->Read(window_.get(), kWindowBytes, &error_);
  input_bytes_ += got;
  end_ = got;
  if (got == 0) at_end_ = true;
  return got > 0;
}

bool ArchiveInput::ReadSource() {
  const std::size_t got = source_->Read(compressed_buffer_.get(), kCompressedBytes, &error_);
  input_bytes_ += got;
  zstream_.next_in = reinterpret_cast<Bytef*>(compressed_buffer_.get());
  zstream_.avail_in = static_cast<uInt>(got);
  return got > 0;
}

bool ArchiveInput::FillCompressed() {
  zstream_.next_out = reinterpret_cast<Bytef*>(window_.get());
  zstream_.avail_out = static_cast<uInt>(kWindowBytes);
  while (zstream_.avail_out == kWindowBytes) {
    if (zstream_.avail_in == 0 && !ReadSource()) {
      at_end_ = true;
      if (error_.empty() && in_member_) error_ = "compressed data cut short";
      break;
    }
    if (!in_member_) {
      // A member starts at the next compressed byte.
      members_.push_back({position_ + (kWindowBytes - zstream_.avail_out), input_bytes_ - zstream_.avail_in});
      in_member_ = true;
    }
    const int status = inflate(&zstream_, Z_NO_FLUSH);
    if (status == Z_STREAM_END) {
      in_member_ = false;
      inflateReset(&zstream_);
    } else if (status == Z_MEM_ERROR) {
      throw std::bad_alloc();
    } else if (status != Z_OK && status != Z_BUF_ERROR) {
      at_end_ = true;
      error_ = "invalid compressed data";
      break;
    }
  }
  end_ = kWindowBytes - zstream_.avail_out;
  return end_ > 0;
}

ArchiveInput::Line ArchiveInput::ReadLine(std::string* line, std::size_t max) {
  line->clear();
  while (Fill()) {
    const std::size_t room = max - line->size();
    const std::size_t look = std::min(end_ - begin_, room);
    const char* start = window_.get() + begin_;
    const char* feed = static_cast<const char*>(std::memchr(start, '\n', look));
    const std::size_t take = feed != nullptr ? static_cast<std::size_t>(feed - start) + 1 : look;
    line->append(start, take);
    begin_ += take;
    position_ += take;
    if (feed != nullptr) {
      line->pop_back();
      if (!line->empty() && line->back() == '\r') line->pop_back();
      return Line::kComplete;
    }
    if (line->size() >= max) return Line::kTooLong;
  }
  return Line::kEnd;
}

std::uint64_t ArchiveInput::Read(std::uint64_t size, std::uint64_t keep, std::string* out) {
  std::uint64_t done = 0;
  while (done < size && Fill()) {
    const std::size_t take = static_cast<std::size_t>(std::min<std::uint64_t>(end_ - begin_, size - done));
    if (done < keep) {
      out->append(window_.get() + begin_, static_cast<std::size_t>(std::min<std::uint64_t>(take, keep - done)));
    }
    begin_ += take;
    position_ += take;
    done += take;
  }
  return done;
}

int ArchiveInput::Peek() { return Fill() ? static_cast<unsigned char>(window_[begin_]) : -1; }

std::uint64_t ArchiveInput::FileOffset(std::uint64_t position) {
  if (!compressed_) return position;
  while (members_.size() > 1 && members_[1].position <= position) members_.pop_front();
  return members_.empty() ? 0 : members_.front().file_offset;
}

}  // namespace zestra::warc
