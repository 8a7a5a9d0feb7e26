// The record parser: a version line, header fields up to an empty line, a
// block of Content-Length bytes, and two line ends. A response's block
// starts with the HTTP status line and header fields; the rest is the
// payload.
#include <charconv>
#include <utility>

#include "warc/archive_input.h"
#include "warc/http_payload.h"
#include "zestra/warc.h"

namespace zestra {

using warc::ArchiveInput;

class WarcReader::Impl {
 public:
  // A null `source` makes a reader that fails at once.
  Impl(std::unique_ptr<WarcSource> source, std::string name, Limits limits)
      : no_source_(source == nullptr),
        input_(no_source_ ? WarcMemorySource({}) : std::move(source)),
        name_(std::move(name)),
        limits_(limits) {
    if (no_source_) {
      done_ = true;
      error_ = name_ + ": no input to read";
    }
  }

  bool Next(WarcRecord* record);
  const std::string& Error() const { return error_; }
  const WarcCounts& Counts() {
    counts_.input_bytes = input_.InputBytes();
    return counts_;
  }

 private:
  // Why a record is not returned.
  enum class Outcome { kPage, kSkipped, kFailed };

  // Reads one record into `record`.
  Outcome ReadRecord(WarcRecord* record);
  // Reads header fields up to an empty line, at most `max` bytes, into
  // `headers`. False, with the error set, when they do not end in time.
  // `too_long` is the problem reported when they do not.
  bool ReadHeaders(std::size_t max, const std::string& too_long, WarcHeaders* headers, std::uint64_t* used);
  // Reads `size` bytes of the block and drops them.
  bool SkipBlock(std::uint64_t size);
  // Reads the two line ends that close a record.
  bool ReadRecordEnd();
  // Stops the archive with `problem`, found in the record that starts at
  // record_start_.
  bool Fail(const std::string& problem);

  const bool no_source_;
  ArchiveInput input_;
  const std::string name_;
  const Limits limits_;
  WarcCounts counts_;
  std::string error_;
  bool done_ = false;
  std::uint64_t record_start_ = 0;  // uncompressed offset of the record being read
  std::string line_;
  std::string raw_;      // the undecoded payload of the record at hand
  std::string decoded_;  // the payload with its transfer-encoding undone
};

bool WarcReader::Impl::Fail(const std::string& problem) {
  done_ = true;
  error_ = name_ + ": record at byte " + std::to_string(input_.FileOffset(record_start_));
  if (input_.Compressed()) error_ += " (byte " + std::to_string(record_start_) + " uncompressed)";
  error_ += ": ";
  error_ += input_.Error().empty() ? problem : input_.Error();
  return false;
}

bool WarcReader::Impl::ReadHeaders(std::size_t max, const std::string& too_long, WarcHeaders* headers,
                                   std::uint64_t* used) {
  headers->clear();
  std::size_t total = 0;
  for (;;) {
    const std::uint64_t before = input_.Position();
    const ArchiveInput::Line end = input_.ReadLine(&line_, max - total);
    total += static_cast<std::size_t>(input_.Position() - before);
    if (end == ArchiveInput::Line::kEnd) return Fail("truncated header");
    if (end == ArchiveInput::Line::kTooLong) return Fail(too_long);
    if (line_.empty()) break;
    if ((line_[0] == ' ' || line_[0] == '\t') && !headers->empty()) {
      // A folded line continues the field before it.
      headers->back().second += ' ';
      headers->back().second += warc::TrimSpace(line_);
      continue;
    }
    const std::size_t colon = line_.find(':');
    if (colon == std::string::npos) return Fail("header line without a colon");
    headers->emplace_back(std::string(warc::TrimSpace(std::string_view(line_).substr(0, colon))),
                          std::string(warc::TrimSpace(std::string_view(line_).substr(colon + 1))));
  }
  if (used != nullptr) *used = total;
  return true;
}

bool WarcReader::Impl::SkipBlock(std::uint64_t size) {
  if (input_.Read(size, 0, nullptr) != size) return Fail("truncated");
  return true;
}

bool WarcReader::Impl::ReadRecordEnd() {
  for (int i = 0; i < 2; ++i) {
    if (input_.Peek() < 0 && input_.Error().empty()) return true;  // a last record without its line ends
    const ArchiveInput::Line end = input_.ReadLine(&line_, 2);
    if (end != ArchiveInput::Line::kComplete || !line_.empty()) {
      return Fail("the record does not end where its Content-Length says");
    }
  }
  return true;
}

WarcReader::Impl::Outcome WarcReader::Impl::ReadRecord(WarcRecord* record) {
  // Line ends between records beyond the two required are tolerated.
  for (;;) {
    const int next = input_.Peek();
    if (next == '\r' || next == '\n') {
      input_.ReadLine(&line_, 2);
      continue;
    }
    if (next < 0) {
      done_ = true;
      if (!input_.Error().empty()) {
        record_start_ = input_.Position();
        Fail("");
      }
      return Outcome::kFailed;
    }
    break;
  }
  record_start_ = input_.Position();
  const ArchiveInput::Line version_end = input_.ReadLine(&line_, 64);
  if (version_end == ArchiveInput::Line::kEnd && std::string_view("WARC/").substr(0, line_.size()) ==
                                                     std::string_view(line_).substr(0, 5)) {
    return Fail("truncated header"), Outcome::kFailed;
  }
  if (version_end != ArchiveInput::Line::kComplete || line_.compare(0, 5, "WARC/") != 0) {
    return Fail("not a WARC record"), Outcome::kFailed;
  }
  record->version = line_.substr(5);
  if (!ReadHeaders(limits_.max_header_bytes, "header longer than " + std::to_string(limits_.max_header_bytes) + " bytes",
                   &record->headers, nullptr)) {
    return Outcome::kFailed;
  }
  ++counts_.records;

  const std::string_view length_text = FindWarcHeader(record->headers, "Content-Length");
  std::uint64_t length = 0;
  const auto [length_end, length_error] =
      std::from_chars(length_text.data(), length_text.data() + length_text.size(), length);
  if (length_text.empty() || length_error != std::errc() || length_end != length_text.data() + length_text.size()) {
    return Fail("missing or invalid Content-Length"), Outcome::kFailed;
  }
  record->content_length = length;
  record->offset = input_.FileOffset(record_start_);
  record->type = FindWarcHeader(record->headers, "WARC-Type");
  record->url = FindWarcHeader(record->headers, "WARC-Target-URI");
  // WARC/1.0 wrote the address in angle brackets in some writers' hands.
  if (record->url.size() >= 2 && record->url.front() == '<' && record->url.back() == '>') {
    record->url = record->url.substr(1, record->url.size() - 2);
  }
  record->record_id = FindWarcHeader(record->headers, "WARC-Record-ID");
  record->date = FindWarcHeader(record->headers, "WARC-Date");
  record->http_status = 0;
  record->http_status_line.clear();
  record->http_headers.clear();
  record->payload.clear();

  const bool response = record->type == "response";
  if (!response && record->type != "resource") {
    ++counts_.skipped_type;
    return SkipBlock(length) && ReadRecordEnd() ? Outcome::kSkipped : Outcome::kFailed;
  }

  std::uint64_t left = length;
  std::string content_type = std::string(FindWarcHeader(record->headers, "Content-Type"));
  std::string_view transfer_coding;
  std::string_view content_coding;
  if (response) {
    // The HTTP head lies inside the block; a block without one is no page.
    const std::uint64_t before = input_.Position();
    const ArchiveInput::Line end =
        input_.ReadLine(&line_, static_cast<std::size_t>(std::min<std::uint64_t>(left, 8192)));
    left -= input_.Position() - before;
    record->http_status = end == ArchiveInput::Line::kComplete ? warc::HttpStatus(line_) : 0;
    if (record->http_status == 0) {
      if (end == ArchiveInput::Line::kEnd && left > 0) return Fail("truncated"), Outcome::kFailed;
      ++counts_.skipped_status;
      return SkipBlock(left) && ReadRecordEnd() ? Outcome::kSkipped : Outcome::kFailed;
    }
    record->http_status_line = line_;
    std::uint64_t head = 0;
    const std::size_t head_room =
        static_cast<std::size_t>(std::min<std::uint64_t>(left, limits_.max_header_bytes));
    const std::string too_long = head_room == left ? "HTTP header runs past the record's Content-Length"
                                                   : "HTTP header longer than " +
                                                         std::to_string(limits_.max_header_bytes) + " bytes";
    if (!ReadHeaders(head_room, too_long, &record->http_headers, &head)) return Outcome::kFailed;
    left -= head;
    if (record->http_status != 200) {
      ++counts_.skipped_status;
      return SkipBlock(left) && ReadRecordEnd() ? Outcome::kSkipped : Outcome::kFailed;
    }
    content_type = FindWarcHeader(record->http_headers, "Content-Type");
    transfer_coding = FindWarcHeader(record->http_headers, "Transfer-Encoding");
    content_coding = FindWarcHeader(record->http_headers, "Content-Encoding");
  }
  warc::ParseContentType(content_type, &record->content_type, &record->charset_label);
  if (!record->content_type.empty() && !warc::IsHtmlMediaType(record->content_type)) {
    ++counts_.skipped_not_html;
    return SkipBlock(left) && ReadRecordEnd() ? Outcome::kSkipped : Outcome::kFailed;
  }

  raw_.clear();
  if (input_.Read(left, limits_.max_payload_bytes, &raw_) != left) return Fail("truncated"), Outcome::kFailed;
  if (!ReadRecordEnd()) return Outcome::kFailed;

  std::string_view body = raw_;
  if (transfer_coding.find("chunked") != std::string_view::npos) {
    warc::DecodeChunked(body, limits_.max_payload_bytes, &decoded_);
    body = decoded_;
  }
  if (!warc::DecodeContent(content_coding, body, limits_.max_payload_bytes, &record->payload)) {
    ++counts_.skipped_not_html;
    return Outcome::kSkipped;
  }
  if (record->content_type.empty() && !warc::LooksLikeHtml(record->payload)) {
    ++counts_.skipped_not_html;
    return Outcome::kSkipped;
  }
  ++counts_.pages;
  return Outcome::kPage;
}

bool WarcReader::Impl::Next(WarcRecord* record) {
  while (!done_) {
    switch (ReadRecord(record)) {
      case Outcome::kPage:
        return true;
      case Outcome::kSkipped:
        continue;
      case Outcome::kFailed:
        return false;
    }
  }
  return false;
}

WarcSource::~WarcSource() = default;

std::string_view FindWarcHeader(const WarcHeaders& headers, std::string_view name) {
  for (const auto& [field, value] : headers) {
    if (warc::EqualsIgnoringCase(field, name)) return warc::TrimSpace(value);
  }
  return {};
}

WarcReader::WarcReader(std::unique_ptr<WarcSource> source, std::string name, Limits limits)
    : impl_(std::make_unique<Impl>(std::move(source), std::move(name), limits)) {}

WarcReader::WarcReader(std::unique_ptr<WarcSource> source, std::string name)
    : WarcReader(std::move(source), std::move(name), Limits()) {}

WarcReader::~WarcReader() = default;

bool WarcReader::Next(WarcRecord* record) { return impl_->Next(record); }

const std::string& WarcReader::Error() const { return impl_->Error(); }

const WarcCounts& WarcReader::Counts() const { return impl_->Counts(); }

}  // namespace zestra
