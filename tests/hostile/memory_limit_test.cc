// The hostile pages with too little memory: whatever runs out, and wherever
// (the parse, the layout tree, its grids, cells and texts, the output), an
// extraction gives either the page's whole text, the same as with memory
// enough, or fails with std::bad_alloc; never a part of the text as if it
// were all. Each page runs in child processes: once with memory enough,
// three times with its address space limited to a part of what that run
// needed (not under the sanitizers, whose shadow memory needs more address
// space than any limit leaves), and three times with one request of the
// memory pool failing, a quarter, half and three quarters into the
// extraction.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "hostile/hostile_pages.h"
#include "hostile/isolated_run.h"
#include "zestra/base/memory_pool.h"
#include "zestra/zestra.h"

namespace zestra_hostile {
namespace {

using OrvelMem::MemoryPool;

// More pool requests than any extraction here makes.
constexpr uint64_t kUncounted = uint64_t{1} << 50;

struct Page {
  const char* name;
  void (*build)(std::string&);
};

const Page kPages[] = {
    {"NestedElements", BuildNestedElements}, {"NestedLists", BuildNestedLists},
    {"NestedTables", BuildNestedTables},     {"HugeSpans", BuildHugeSpans},
    {"TextNode", BuildTextNode},             {"MillionLinks", BuildMillionLinks},
    {"DenseMarkup", BuildDenseMarkup},       {"EveryByteValue", BuildEveryByteValue},
    {"NulBytes", BuildNulBytes},             {"TruncatedUtf8", BuildTruncatedUtf8},
    {"LyingCharset", BuildLyingCharset},     {"UnclosedComment", BuildUnclosedComment},
    {"WideTables", BuildWideTables},
};

// FNV-1a: the children report a digest of the text, not the text.
uint64_t Digest(const std::string& text) {
  uint64_t hash = 14695981039346656037u;
  for (unsigned char c : text) hash = (hash ^ c) * 1099511628211u;
  return hash;
}

// What one extraction gave, as a child reports it: "text SIZE DIGEST" or
// "out of memory"; anything else is a failure of the run.
std::string Outcome(const std::string& input) {
  try {
    const zestra::Result result = zestra::Extract(input);
    return "text " + std::to_string(result.text.size()) + " " + std::to_string(Digest(result.text));
  } catch (const std::bad_alloc&) {
    return "out of memory";
  }
}

class MemoryLimitTest : public testing::TestWithParam<Page> {};

TEST_P(MemoryLimitTest, WholeTextOrFailure) {
  const Page& page = GetParam();
  std::string input;
  const auto prepare = [&] {
    page.build(input);
    return static_cast<uint64_t>(input.size());
  };

  // With memory enough: the text, the pool requests and the address space
  // the extraction needed.
  const IsolatedResult full = RunIsolated(prepare, [&] {
    const uint64_t before = AddressSpaceBytes();
    MemoryPool::InjectFailure(kUncounted);
    const std::string outcome = Outcome(input);
    const uint64_t requests = kUncounted - MemoryPool::InjectFailure(0);
    const uint64_t peak = PeakAddressSpaceBytes();
    return outcome + "\n" + std::to_string(requests) + " " + std::to_string(peak > before ? peak - before : 0);
  });
  ASSERT_TRUE(full.exited_cleanly) << full.failure;
  std::istringstream report(full.failure);
  std::string expected;
  std::getline(report, expected);
  uint64_t requests = 0;
  uint64_t needed = 0;
  report >> requests >> needed;
  ASSERT_EQ(expected.rfind("text ", 0), 0u) << expected;
  std::printf("%s: %s, %llu pool requests, %.1f MB of address space\n", page.name, expected.c_str(),
              static_cast<unsigned long long>(requests), needed / 1048576.0);

  const auto expect_whole_or_failed = [&](const IsolatedResult& run, const std::string& how) {
    EXPECT_TRUE(run.exited_cleanly) << how << ": " << run.failure;
    EXPECT_TRUE(run.failure == expected || run.failure == "out of memory")
        << how << ": gave \"" << run.failure << "\", the page's text is \"" << expected << "\"";
    std::printf("  %s: %s\n", how.c_str(), run.failure == expected ? "whole text" : run.failure.c_str());
  };

  if (!SanitizedBuild()) {
    for (const uint64_t eighths : {1, 3, 6}) {
      const uint64_t headroom = needed * eighths / 8;
      expect_whole_or_failed(RunIsolated(prepare, [&] { return Outcome(input); }, headroom),
                             std::to_string(headroom >> 20) + " MB of address space");
    }
  }
  // One failed pool request fails the extraction, wherever it falls.
  for (const uint64_t quarters : {1, 2, 3}) {
    const uint64_t n = requests * quarters / 4 + 1;
    const IsolatedResult run = RunIsolated(prepare, [&] {
      MemoryPool::InjectFailure(n);
      const std::string outcome = Outcome(input);
      MemoryPool::InjectFailure(0);
      return outcome;
    });
    const std::string how = "pool request " + std::to_string(n) + " failing";
    expect_whole_or_failed(run, how);
    if (n <= requests) {
      EXPECT_EQ(run.failure, "out of memory") << how;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(HostilePages, MemoryLimitTest, testing::ValuesIn(kPages),
                         [](const testing::TestParamInfo<Page>& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace zestra_hostile
