// zestra-bench: throughput of the extraction over folders of pages.
//
//   zestra-bench [--passes N] [--warmup N] [--threads N] [--layout blocks|tables] [--article] DIR...
//
// Loads every page (.html, .html.gz) below the folders into memory, checks
// that the staged extraction gives Beautify's text for every page (with
// --layout blocks: zestra::Extract's text in that layout; this also warms
// up), runs --warmup more passes, then --passes measured passes over
// all pages on one thread, and prints pages per second, MB/s of input and
// the share of time and the MB/s of input of each stage
// (staged_extraction.h), all in processor time of that thread. With --threads N it
// then runs the extraction through Beautify (zestra::Extract for blocks) on
// 1, 2, ..., N threads sharing
// the pages and prints the scaling. Last, the peak resident size of the
// process and the largest page.
//
// Exit status: 0; 1 when a page's staged text differs from Beautify's; 2 on
// a usage or input error.
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "page_corpus.h"
#include "staged_extraction.h"

namespace {

using zestra_bench::Page;
using zestra_bench::StageTimes;

// Pages are given to the library with no charset: it detects, as for a page
// of unknown origin.
constexpr Orvel::CHARSET kCharset = Orvel::UnknownCharset;

struct Options {
  int passes = 5;
  int warmup = 1;
  int threads = 0;  // 0: no scaling run
  ZestraNS::LayoutMode layout = ZestraNS::LayoutMode::kTables;
  bool article = false;
  std::vector<std::string> folders;
};

int Usage() {
  std::fprintf(stderr,
               "usage: zestra-bench [--passes N] [--warmup N] [--threads N] [--layout blocks|tables] [--article] "
               "DIR...\n");
  return 2;
}

bool ParseCount(const char* text, int minimum, int& value) {
  char* end = nullptr;
  const long parsed = std::strtol(text, &end, 10);
  if (end == text || *end != '\0' || parsed < minimum || parsed > 1000000) return false;
  value = static_cast<int>(parsed);
  return true;
}

bool ParseOptions(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    int* target = arg == "--passes" ? &options.passes
                  : arg == "--warmup" ? &options.warmup
                  : arg == "--threads" ? &options.threads
                  : nullptr;
    if (target != nullptr) {
      if (i + 1 == argc || !ParseCount(argv[++i], arg == "--warmup" ? 0 : 1, *target)) return false;
    } else if (arg == "--article") {
      options.article = true;
    } else if (arg == "--layout") {
      const std::string name = i + 1 < argc ? argv[++i] : "";
      if (name != "blocks" && name != "tables") return false;
      options.layout = name == "blocks" ? ZestraNS::LayoutMode::kBlocks : ZestraNS::LayoutMode::kTables;
    } else if (arg.size() > 1 && arg[0] == '-') {
      return false;
    } else {
      options.folders.push_back(arg);
    }
  }
  return !options.folders.empty();
}

double MegaBytes(double bytes) { return bytes / 1e6; }

// Runs `passes` passes of Beautify over all pages on `threads` threads,
// which take the pages one by one; returns the wall time in seconds.
double TimeThreads(const std::vector<Page>& pages, int threads, int passes, ZestraNS::LayoutMode layout) {
  const auto start = std::chrono::steady_clock::now();
  for (int pass = 0; pass < passes; ++pass) {
    std::atomic<size_t> next{0};
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
      workers.emplace_back([&] {
        for (size_t i; (i = next.fetch_add(1)) < pages.size();) {
          zestra_bench::ExtractPublic(pages[i].bytes, kCharset, layout);
        }
      });
    }
    for (std::thread& worker : workers) worker.join();
  }
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!ParseOptions(argc, argv, options)) return Usage();

  std::vector<Page> pages;
  for (const std::string& folder : options.folders) {
    std::string error;
    if (!zestra_bench::LoadPages(folder, pages, error)) {
      std::fprintf(stderr, "zestra-bench: %s\n", error.c_str());
      return 2;
    }
  }
  if (pages.empty()) {
    std::fprintf(stderr, "zestra-bench: no .html or .html.gz page found\n");
    return 2;
  }
  const double bytes = static_cast<double>(zestra_bench::TotalBytes(pages));
  const auto largest =
      std::max_element(pages.begin(), pages.end(), [](const Page& a, const Page& b) { return a.bytes.size() < b.bytes.size(); });
  const bool tables = options.layout == ZestraNS::LayoutMode::kTables;
  const char* reference = tables ? "Beautify's" : "zestra::Extract's";
  std::printf("pages: %zu, %.2f MB in all, %s layout\n", pages.size(), MegaBytes(bytes), tables ? "tables" : "blocks");

  // The check pass: the staged extraction is the real one.
  size_t mismatches = 0;
  StageTimes discarded;
  for (const Page& page : pages) {
    if (zestra_bench::ExtractStaged(page.bytes, kCharset, discarded, options.layout) !=
        zestra_bench::ExtractPublic(page.bytes, kCharset, options.layout)) {
      std::printf("differs from %s text: %s\n", reference, page.path.c_str());
      ++mismatches;
    }
  }
  std::printf("staged text equals %s on %zu of %zu pages\n", reference, pages.size() - mismatches, pages.size());
  for (int pass = 0; pass < options.warmup; ++pass) {
    for (const Page& page : pages) zestra_bench::ExtractStaged(page.bytes, kCharset, discarded, options.layout);
  }

  StageTimes times;
  StageTimes article_times;
  for (int pass = 0; pass < options.passes; ++pass) {
    for (const Page& page : pages) zestra_bench::ExtractStaged(page.bytes, kCharset, times, options.layout);
    if (!options.article) continue;
    for (const Page& page : pages) {
      zestra_bench::ExtractStaged(page.bytes, kCharset, article_times, options.layout, true);
    }
  }
  const double extractions = static_cast<double>(pages.size()) * options.passes;
  auto print_stages = [&](const StageTimes& run, const char* what) {
    const double total = run.Total();
    std::printf("\n%sone thread, %d passes after %d warm-up, processor time: %.1f pages/s, %.2f MB/s\n", what,
                options.passes, options.warmup + 1, extractions / total, MegaBytes(bytes * options.passes) / total);
    std::printf("%-26s %12s %8s %9s\n", "stage", "ms per pass", "share", "MB/s");
    for (int stage = 0; stage < zestra_bench::kStageCount; ++stage) {
      const double seconds = run.seconds[stage];
      if (seconds == 0 && (stage == zestra_bench::kMetadata || stage == zestra_bench::kArticle)) continue;
      std::printf("%-26s %12.1f %7.1f%% %9.1f\n", zestra_bench::StageName(static_cast<zestra_bench::Stage>(stage)),
                  1e3 * seconds / options.passes, 100.0 * seconds / total,
                  MegaBytes(bytes * options.passes) / seconds);
    }
    std::printf("%-26s %12.1f %7.1f%% %9.1f\n", "end to end", 1e3 * total / options.passes, 100.0,
                MegaBytes(bytes * options.passes) / total);
  };
  print_stages(times, "");
  if (options.article) {
    print_stages(article_times, "with Markdown and metadata: ");
    const double plain = times.Total();
    const double with = article_times.Total();
    std::printf("Markdown and metadata add %.1f%% to the extraction's time (%.1f against %.1f ms per pass)\n",
                100.0 * (with - plain) / plain, 1e3 * with / options.passes, 1e3 * plain / options.passes);
  }

  if (options.threads > 0) {
    std::printf("\nthreads  pages/s     MB/s  speed-up (%s, %d passes, wall-clock time)\n",
                tables ? "Beautify" : "zestra::Extract", options.passes);
    double one = 0;
    for (int threads = 1; threads <= options.threads; ++threads) {
      const double seconds = TimeThreads(pages, threads, options.passes, options.layout);
      if (threads == 1) one = seconds;
      std::printf("%7d %8.1f %8.2f %9.2f\n", threads, extractions / seconds,
                  MegaBytes(bytes * options.passes) / seconds, one / seconds);
    }
  }

  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  std::printf("\npeak resident size: %.1f MB (the pages themselves: %.1f MB)\n", usage.ru_maxrss / 1024.0,
              MegaBytes(bytes));
  std::printf("largest page: %s, %.2f MB\n", largest->path.c_str(), MegaBytes(static_cast<double>(largest->bytes.size())));
  return mismatches == 0 ? 0 : 1;
}
