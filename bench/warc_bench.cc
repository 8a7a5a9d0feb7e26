// zestra-warc-bench: the cost of reading web archives against extracting
// their pages.
//
//   zestra-warc-bench [--mb N] [--dir DIR] FOLDER...
//
// Builds a WARC of about N MB of pages (default 200; gzip per record, as
// public crawls publish them) from the pages below the folders, repeated,
// and times over it, on one thread and on two:
//  - reading alone (every record inflated, parsed and decoded);
//  - reading and extracting every page;
//  - extracting the same pages from files, each read from disk.
// One-thread figures are processor time of the thread, so that they hold on
// a busy machine; two-thread figures are wall-clock time. Reading must cost
// at most 10% of the extraction. Peak memory is measured in child
// processes reading and extracting an archive of N/10 MB and of N MB: it
// must not grow with the archive.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "page_corpus.h"
#include "warc/warc_builder.h"
#include "zestra/warc.h"
#include "zestra/zestra.h"

namespace {

using Clock = std::chrono::steady_clock;

double ThreadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

double WallSeconds() { return std::chrono::duration<double>(Clock::now().time_since_epoch()).count(); }

// Writes an archive of `megabytes` MB of pages; returns the page of each
// record, in order.
std::vector<std::size_t> WriteArchive(const std::string& path, const std::vector<zestra_bench::Page>& pages,
                                      double megabytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  std::vector<std::size_t> order;
  double written = 0;
  for (std::size_t i = 0; written < megabytes * 1e6; ++i) {
    const std::size_t page = i % pages.size();
    const std::string http =
        "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: " + std::to_string(pages[page].bytes.size()) +
        "\r\n\r\n" + pages[page].bytes;
    out << zestra_testing::Gzip(zestra_testing::WarcRecordBytes(
        "1.1", "response",
        {"WARC-Target-URI: http://example.org/" + std::to_string(i), "WARC-Date: 2024-05-01T12:00:00Z",
         "WARC-Record-ID: <urn:uuid:" + std::to_string(i) + ">"},
        http));
    order.push_back(page);
    written += static_cast<double>(pages[page].bytes.size());
  }
  return order;
}

// Runs `work` on the calling thread, or on `threads` threads at once, and
// returns its time: processor time of the thread for one, wall-clock time
// for more.
template <class Work>
double Timed(unsigned threads, Work& work) {
  const double start = threads == 1 ? ThreadSeconds() : WallSeconds();
  if (threads == 1) {
    work();
    return ThreadSeconds() - start;
  }
  std::vector<std::thread> pool;
  for (unsigned i = 0; i < threads; ++i) pool.emplace_back(work);
  for (std::thread& thread : pool) thread.join();
  return WallSeconds() - start;
}

struct Pass {
  double seconds = 0;
  std::size_t pages = 0;
  double payload_bytes = 0;
};

// Reads the archive on `threads` threads, extracting each page unless
// `read_only`. One thread: processor time; more: wall-clock time.
Pass ArchivePass(const std::string& path, unsigned threads, bool read_only) {
  std::string error;
  zestra::WarcReader reader(zestra::OpenWarcFile(path, &error), path);
  std::mutex mutex;
  Pass pass;
  auto work = [&] {
    zestra::WarcRecord record;
    std::size_t chars = 0;
    for (;;) {
      {
        std::lock_guard<std::mutex> lock(mutex);
        if (!reader.Next(&record)) break;
        ++pass.pages;
        pass.payload_bytes += static_cast<double>(record.payload.size());
      }
      if (!read_only) {
        zestra::Options options;
        options.transport_charset = zestra::CharsetFromLabel(record.charset_label);
        chars += zestra::Extract(record.payload, options).text.size();
      }
    }
    return chars;
  };
  pass.seconds = Timed(threads, work);
  if (!reader.Error().empty()) std::fprintf(stderr, "warning: %s\n", reader.Error().c_str());
  return pass;
}

// Extracts the pages of `order` from their files, each read from disk.
Pass FilePass(const std::vector<zestra_bench::Page>& pages, const std::vector<std::size_t>& order, unsigned threads) {
  std::atomic<std::size_t> next{0};
  std::atomic<std::size_t> bytes{0};
  auto work = [&] {
    for (std::size_t i; (i = next++) < order.size();) {
      std::ifstream file(pages[order[i]].path, std::ios::binary);
      std::stringstream content;
      content << file.rdbuf();
      const std::string html = content.str();
      bytes += html.size();
      zestra::Extract(html);
    }
  };
  const double seconds = Timed(threads, work);
  return {seconds, order.size(), static_cast<double>(bytes)};
}

// The peak resident size, in MB, of a child process that reads (and
// extracts, unless `read_only`) the archive at `path` on one thread.
double ChildPeakMegabytes(const std::string& path, bool read_only) {
  const pid_t child = fork();
  if (child == 0) {
    ArchivePass(path, 1, read_only);
    _exit(0);
  }
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

void Report(const char* what, const Pass& pass, double archive_bytes) {
  std::printf("%-34s %8.2f s %9.1f records/s %8.2f MB/s of pages", what, pass.seconds,
              static_cast<double>(pass.pages) / pass.seconds, pass.payload_bytes / 1e6 / pass.seconds);
  if (archive_bytes > 0) std::printf(" %7.2f MB/s of archive", archive_bytes / 1e6 / pass.seconds);
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  double megabytes = 200;
  std::string dir = std::filesystem::temp_directory_path().string();
  std::vector<std::string> folders;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--mb") == 0 && i + 1 < argc) {
      megabytes = std::atof(argv[++i]);
    } else if (std::strcmp(argv[i], "--dir") == 0 && i + 1 < argc) {
      dir = argv[++i];
    } else {
      folders.push_back(argv[i]);
    }
  }
  std::vector<zestra_bench::Page> pages;
  std::string error;
  for (const std::string& folder : folders) {
    if (!zestra_bench::LoadPages(folder, pages, error)) {
      std::fprintf(stderr, "zestra-warc-bench: %s\n", error.c_str());
      return 2;
    }
  }
  if (pages.empty() || megabytes <= 0) {
    std::fprintf(stderr, "usage: zestra-warc-bench [--mb N] [--dir DIR] FOLDER...\n");
    return 2;
  }
  const std::string big = dir + "/zestra-bench-big.warc.gz";
  const std::string small = dir + "/zestra-bench-small.warc.gz";
  const std::vector<std::size_t> order = WriteArchive(big, pages, megabytes);
  WriteArchive(small, pages, megabytes / 10);
  const double archive_bytes = static_cast<double>(std::filesystem::file_size(big));
  std::printf("archive: %zu records, %.1f MB of pages, %.1f MB gzip per record (%s)\n", order.size(), megabytes,
              archive_bytes / 1e6, big.c_str());

  ArchivePass(small, 1, false);  // warm-up
  Pass read1;
  Pass archive1;
  for (unsigned threads : {1u, 2u}) {
    const Pass read = ArchivePass(big, threads, true);
    const Pass archive = ArchivePass(big, threads, false);
    const Pass files = FilePass(pages, order, threads);
    std::printf(threads == 1 ? "\none thread, processor time\n" : "\ntwo threads, wall-clock time\n");
    Report("reading the archive", read, archive_bytes);
    Report("reading and extracting", archive, archive_bytes);
    Report("extracting the page files", files, 0);
    if (threads == 1) {
      read1 = read;
      archive1 = archive;
    }
  }

  const double extraction = archive1.seconds - read1.seconds;
  const double share = read1.seconds / extraction;
  std::printf("\nreading costs %.1f%% of the extraction (one thread; goal: at most 10%%): %s\n", 100 * share,
              share <= 0.10 ? "met" : "NOT MET");

  const double small_read = ChildPeakMegabytes(small, true);
  const double big_read = ChildPeakMegabytes(big, true);
  const double small_all = ChildPeakMegabytes(small, false);
  const double big_all = ChildPeakMegabytes(big, false);
  std::printf("peak resident size, reading: %.1f MB for %.0f MB of pages, %.1f MB for %.0f MB\n", small_read,
              megabytes / 10, big_read, megabytes);
  std::printf("peak resident size, reading and extracting: %.1f MB for %.0f MB of pages, %.1f MB for %.0f MB\n",
              small_all, megabytes / 10, big_all, megabytes);
  std::filesystem::remove(big);
  std::filesystem::remove(small);
  return share <= 0.10 ? 0 : 1;
}
