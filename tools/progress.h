// The progress display of a batch on standard error: one line redrawn in
// place with the pages done (and the archive records read, for web
// archives), pages per second, megabytes per second and the
// time left, and the summary line that ends the batch.
//
// Thread-safety: used by one thread.
#ifndef ZESTRA_TOOLS_PROGRESS_H_
#define ZESTRA_TOOLS_PROGRESS_H_

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

namespace zestra_tool {

class Progress {
 public:
  // A display for `total_pages` pages (0 when unknown: the bar then follows
  // the bytes) holding about `total_bytes` bytes (0 when unknown), written
  // to `out`. Nothing is drawn unless `show_bar`.
  Progress(std::FILE* out, bool show_bar, std::size_t total_pages, uintmax_t total_bytes);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Counts one page of `bytes` bytes as done; `failed` when it failed.
  void PageDone(uintmax_t bytes, bool failed);
  // Counts `bytes` more bytes as read, without a page.
  void AddBytes(uintmax_t bytes) { bytes_done_ += bytes; }
  // Sets the number of archive records read so far; from the first call
  // on, the bar shows it beside the pages.
  void RecordsRead(uintmax_t records) { records_ = records; }
  // Redraws the bar when the last drawing is older than a tenth of a
  // second, or when `force`.
  void Draw(bool force = false);
  // Removes the bar so that a message can be written on a clean line; the
  // next Draw puts it back.
  void Clear();
  // Removes the bar and writes "zestra: P pages, F failed, M MB, S s".
  void Summary();

  std::size_t Failures() const { return failed_; }

 private:
  using Clock = std::chrono::steady_clock;

  std::FILE* out_;
  bool show_bar_;
  std::size_t total_pages_;
  uintmax_t total_bytes_;
  std::size_t done_ = 0;
  std::size_t failed_ = 0;
  uintmax_t bytes_done_ = 0;
  uintmax_t records_ = 0;
  Clock::time_point start_ = Clock::now();
  Clock::time_point last_draw_{};
  bool drawn_ = false;  // a bar is on the screen
};

// The seconds `seconds` as "0:07" or "1:02:03".
std::string FormatDuration(double seconds);

}  // namespace zestra_tool

#endif  // ZESTRA_TOOLS_PROGRESS_H_
