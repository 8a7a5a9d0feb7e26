// Google Benchmark cases: the extraction through Beautify, and the staged
// extraction with each stage's share as a counter, on the sample page and,
// when it lies beside the repository, on the development set.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "page_corpus.h"
#include "staged_extraction.h"

namespace {

using zestra_bench::Page;

// The pages of one benchmark input, loaded once.
const std::vector<Page>& Pages(const std::string& relative) {
  static const std::vector<Page> sample = [] {
    std::vector<Page> pages;
    std::string error;
    zestra_bench::LoadPages(std::string(ZESTRA_SOURCE_DIR) + "/samples/article.html", pages, error);
    return pages;
  }();
  static const std::vector<Page> devset = [] {
    std::vector<Page> pages;
    std::string error;
    zestra_bench::LoadPages(std::string(ZESTRA_SOURCE_DIR) + "/../shared/devset/readability", pages, error);
    return pages;
  }();
  return relative == "sample" ? sample : devset;
}

void BM_Beautify(benchmark::State& state, const char* input) {
  const std::vector<Page>& pages = Pages(input);
  if (pages.empty()) {
    state.SkipWithError("no pages");
    return;
  }
  for (auto _ : state) {
    for (const Page& page : pages) {
      benchmark::DoNotOptimize(zestra_bench::ExtractWithBeautify(page.bytes, Orvel::UnknownCharset));
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * zestra_bench::TotalBytes(pages)));
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * pages.size()));
}

void BM_StagedExtraction(benchmark::State& state, const char* input) {
  const std::vector<Page>& pages = Pages(input);
  if (pages.empty()) {
    state.SkipWithError("no pages");
    return;
  }
  zestra_bench::StageTimes times;
  for (auto _ : state) {
    for (const Page& page : pages) {
      benchmark::DoNotOptimize(zestra_bench::ExtractStaged(page.bytes, Orvel::UnknownCharset, times));
    }
  }
  const double total = times.Total();
  for (int stage = 0; stage < zestra_bench::kStageCount; ++stage) {
    state.counters[zestra_bench::StageName(static_cast<zestra_bench::Stage>(stage))] =
        times.seconds[stage] / total;
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * zestra_bench::TotalBytes(pages)));
}

BENCHMARK_CAPTURE(BM_Beautify, sample, "sample");
BENCHMARK_CAPTURE(BM_Beautify, devset, "devset")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StagedExtraction, sample, "sample");
BENCHMARK_CAPTURE(BM_StagedExtraction, devset, "devset")->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
