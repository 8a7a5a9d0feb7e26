// Running out of memory anywhere in an extraction (the parse, the layout
// tree, its grids, cells and texts, the output) fails the whole call: the
// C++ interface throws std::bad_alloc and the C interface returns
// ZESTRA_OUT_OF_MEMORY without a result. A result is never a part of the
// page's text. The memory pool's fault injection makes each request of an
// extraction fail in turn.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <new>
#include <sstream>
#include <string>

#include "zestra/api/beautify.h"
#include "zestra/base/charset.h"
#include "zestra/base/memory_pool.h"
#include "zestra/stream/memory_buffer.h"
#include "zestra/zestra.h"
#include "zestra/zestra_c.h"

namespace {

using OrvelMem::MemoryPool;

// More requests than any extraction here makes.
constexpr uint64_t kUncounted = uint64_t{1} << 40;

std::string ReadSample() {
  std::ifstream file(std::filesystem::path(ZESTRA_SOURCE_DIR) / "samples" / "article.html", std::ios::binary);
  std::stringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

// The number of pool requests one extraction makes.
uint64_t CountRequests(const std::string& page, const zestra::Options& options) {
  MemoryPool::InjectFailure(kUncounted);
  zestra::Extract(page, options);
  return kUncounted - MemoryPool::InjectFailure(0);
}

TEST(AllocationFailureTest, EveryFailedRequestFailsTheExtraction) {
  // The sample page and a page of wide tables, whose grids are the largest
  // requests.
  std::string tables;
  for (int i = 0; i < 20; ++i) {
    tables += "<table><tr><td colspan=300>cell " + std::to_string(i) + "</td></tr><tr><td>below</td></tr></table>";
  }
  for (const std::string& page : {ReadSample(), tables}) {
    for (const zestra::Layout layout : {zestra::Layout::kTables, zestra::Layout::kBlocks}) {
      for (const bool whole : {false, true}) {
        zestra::Options options;
        options.layout = layout;
        options.whole_text = whole;
        SCOPED_TRACE(std::string(zestra::LayoutName(layout)) + (whole ? " whole" : " ranked"));
        const zestra::Result reference = zestra::Extract(page, options);
        ASSERT_FALSE(reference.text.empty());
        const uint64_t requests = CountRequests(page, options);
        ASSERT_GT(requests, 20u);
        // Every request up to 400, then a spread over the rest.
        const uint64_t step = requests > 400 ? requests / 400 : 1;
        for (uint64_t n = 1; n <= requests; n += step) {
          MemoryPool::InjectFailure(n);
          bool failed = false;
          zestra::Result result;
          try {
            result = zestra::Extract(page, options);
          } catch (const std::bad_alloc&) {
            failed = true;
          }
          EXPECT_EQ(MemoryPool::InjectFailure(0), 0u) << "request " << n << " not reached";
          EXPECT_TRUE(failed) << "request " << n << " of " << requests << " failed, yet a text of "
                              << result.text.size() << " bytes came out (the page's has " << reference.text.size()
                              << ")";
        }
        // Memory back, the same page is whole again.
        EXPECT_EQ(zestra::Extract(page, options).text, reference.text);
      }
    }
  }
}

TEST(AllocationFailureTest, CInterfaceReturnsOutOfMemoryWithoutResult) {
  const std::string page = ReadSample();
  zestra_options options;
  zestra_options_init(&options);
  zestra::Options cpp;
  const uint64_t requests = CountRequests(page, cpp);
  for (const uint64_t n : {uint64_t{1}, requests / 3, requests / 2, requests - 1}) {
    zestra_result* result = reinterpret_cast<zestra_result*>(&options);  // anything but null
    MemoryPool::InjectFailure(n);
    EXPECT_EQ(zestra_extract(page.data(), page.size(), &options, &result), ZESTRA_OUT_OF_MEMORY) << n;
    MemoryPool::InjectFailure(0);
    EXPECT_EQ(result, nullptr);
  }
  zestra_result* result = nullptr;
  ASSERT_EQ(zestra_extract(page.data(), page.size(), &options, &result), ZESTRA_OK);
  EXPECT_EQ(std::string(result->text, result->text_size), zestra::Extract(page).text);
  zestra_result_free(result);
}

// The ZestraNS functions keep their own contract: the tree does without
// what the pool could not give, and an exception of the stream or the
// parser passes through; neither crashes, wherever memory runs out.
TEST(AllocationFailureTest, BeautifyCopesWithEveryFailedRequest) {
  const std::string page = ReadSample();
  const auto beautify = [&page](std::u16string& text) {
    OrvelFile::MemoryBuffer in(page.data(), static_cast<unsigned int>(page.size()),
                               OrvelFile::MemoryBuffer::kReadInPlace);
    ZestraNS::DocumentType type = ZestraNS::LinkDocument;
    ZestraNS::Beautify(in, Orvel::UnknownCharset, text, nullptr, &type);
  };
  std::u16string reference;
  MemoryPool::InjectFailure(kUncounted);
  beautify(reference);
  const uint64_t requests = kUncounted - MemoryPool::InjectFailure(0);
  int shorter = 0;
  for (uint64_t n = 1; n <= requests; ++n) {
    MemoryPool::InjectFailure(n);
    std::u16string text;
    try {
      beautify(text);
    } catch (const std::bad_alloc&) {
      text.clear();
    }
    MemoryPool::InjectFailure(0);
    if (text != reference) ++shorter;
  }
  // Without the failure count these results would pass for the page's.
  EXPECT_GT(shorter, 0);
}

}  // namespace
