#include "progress.h"

#include <algorithm>
#include <cmath>

namespace zestra_tool {
namespace {

constexpr int kBarWidth = 24;
constexpr double kMegabyte = 1e6;

}  // namespace

std::string FormatDuration(double seconds) {
  const long total = std::lround(std::max(0.0, seconds));
  char text[32];
  if (total >= 3600) {
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", total / 3600, total / 60 % 60, total % 60);
  } else {
    std::snprintf(text, sizeof text, "%ld:%02ld", total / 60, total % 60);
  }
  return text;
}

Progress::Progress(std::FILE* out, bool show_bar, std::size_t total_pages, uintmax_t total_bytes)
    : out_(out), show_bar_(show_bar), total_pages_(total_pages), total_bytes_(total_bytes) {}

void Progress::PageDone(uintmax_t bytes, bool failed) {
  ++done_;
  bytes_done_ += bytes;
  if (failed) ++failed_;
}

void Progress::Draw(bool force) {
  if (!show_bar_) return;
  const Clock::time_point now = Clock::now();
  if (!force && drawn_ && now - last_draw_ < std::chrono::milliseconds(100)) return;
  last_draw_ = now;
  const double seconds = std::chrono::duration<double>(now - start_).count();
  const double pages_per_second = seconds > 0 ? static_cast<double>(done_) / seconds : 0.0;
  const double megabytes_per_second = seconds > 0 ? static_cast<double>(bytes_done_) / kMegabyte / seconds : 0.0;
  // Time left from the bytes when their total is known, else from the pages.
  double left = 0.0;
  if (total_bytes_ > bytes_done_ && bytes_done_ > 0) {
    left = seconds * static_cast<double>(total_bytes_ - bytes_done_) / static_cast<double>(bytes_done_);
  } else if (done_ > 0 && total_pages_ > done_) {
    left = seconds * static_cast<double>(total_pages_ - done_) / static_cast<double>(done_);
  }
  const double share = total_pages_ > 0   ? static_cast<double>(done_) / static_cast<double>(total_pages_)
                      : total_bytes_ > 0 ? static_cast<double>(bytes_done_) / static_cast<double>(total_bytes_)
                                         : 0.0;
  std::string bar(static_cast<std::size_t>(std::clamp(kBarWidth * share, 0.0, double{kBarWidth})), '#');
  bar.resize(kBarWidth, '.');
  char count[64];
  if (total_pages_ > 0) {
    std::snprintf(count, sizeof count, "%zu/%zu pages", done_, total_pages_);
  } else if (records_ > 0) {
    std::snprintf(count, sizeof count, "%ju records  %zu pages", records_, done_);
  } else {
    std::snprintf(count, sizeof count, "%zu pages", done_);
  }
  std::fprintf(out_, "\r\033[K[%s] %s  %.1f pages/s  %.2f MB/s  %s left", bar.c_str(), count, pages_per_second,
               megabytes_per_second, FormatDuration(left).c_str());
  std::fflush(out_);
  drawn_ = true;
}

void Progress::Clear() {
  if (!drawn_) return;
  std::fputs("\r\033[K", out_);
  std::fflush(out_);
  drawn_ = false;
}

void Progress::Summary() {
  Clear();
  const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  std::fprintf(out_, "zestra: %zu %s, %zu failed, %.2f MB, %.2f s\n", done_, done_ == 1 ? "page" : "pages", failed_,
               static_cast<double>(bytes_done_) / kMegabyte, seconds);
  std::fflush(out_);
}

}  // namespace zestra_tool
