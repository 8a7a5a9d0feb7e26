// Extraction on eight threads at once: every entry point that takes a
// document (zestra::Extract, the Beautify overloads over bytes, over a
// parsed tree and over partitions, and GetBeautifiedTextFromString) run
// concurrently over
// different pages gives exactly what it gives on one thread. Built with
// -DZESTRA_SANITIZE=thread (`make test-thread`) this also lets
// ThreadSanitizer look for races in everything the calls share: the keyword
// table, the constant strings, the memory pool and the reference counts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "builder/keyword_table.h"
#include "zestra/api/beautified_text.h"
#include "zestra/api/beautify.h"
#include "zestra/api/html_doc_partitions.h"
#include "zestra/platform/com/bstr.h"
#include "zestra/platform/com/variant.h"
#include "zestra/html/html_doc_parser.h"
#include "zestra/html/html_doc_tree.h"
#include "zestra/stream/binary_stream.h"
#include "zestra/stream/memory_buffer.h"
#include "zestra/zestra.h"

namespace {

using OrvelFile::MemoryBuffer;
using ZestraNS::DocumentType;

constexpr int kThreads = 8;
// Pages per thread; each thread gets its own.
constexpr size_t kPagesPerThread = 2;

// Everything one page gives through each entry point, as bytes for easy
// comparison.
struct Results {
  std::string extracted;            // zestra::Extract: text
  std::string extracted_title;      // its title
  int extracted_charset = 0;        // the charset it read the page in
  std::u16string from_bytes;        // overload 1
  std::u16string from_bytes_title;  // its attribute text
  std::string streamed;             // overload 5
  std::u16string from_tree;         // overload 2
  std::string tree_streamed;        // overload 3
  std::u16string from_partitions;   // overload 4
  std::string partitions_streamed;  // overload 6
  std::u16string from_string;       // GetBeautifiedTextFromString
  int types = 0;                    // the DocumentTypes, one bit per call

  bool operator==(const Results&) const = default;
};

std::string Contents(MemoryBuffer& buffer) {
  std::string bytes;
  buffer.DiscardLookAhead();
  buffer.vSeekG(0, Orvel::kSeekBegin, Orvel::kSeekAbsolute);
  buffer.Copy(bytes, 0xFFFFFFFFu);
  return bytes;
}

ZestraNS::HtmlDocPartitions Partition(const std::string& page) {
  auto* buffer = new MemoryBuffer(page.data(), static_cast<unsigned int>(page.size()), MemoryBuffer::kCopyBytes);
  ZestraNS::HtmlDocPartitions::StreamHolder stream(new Orvel::BinaryStreamT<unsigned int>(buffer, true));
  return ZestraNS::HtmlDocPartitions(stream, Orvel::Utf8Charset, ZestraNS::HtmlDocPartitions::HtmlContent);
}

// The page's bytes read as Windows-1252, one unit per byte: a source string
// that GetBeautifiedTextFromString turns back into the page's UTF-8 bytes
// only for ASCII pages, and into some other valid page for the rest.
std::u16string Units(const std::string& page) {
  std::u16string units;
  units.reserve(page.size());
  for (unsigned char c : page) units.push_back(c == 0 ? u' ' : c);
  return units;
}

Results ExtractAll(const std::string& page) {
  Results r;
  DocumentType type = ZestraNS::LinkDocument;
  const auto note = [&r, &type](int call) { r.types |= static_cast<int>(type) << call; };
  const auto size = static_cast<unsigned int>(page.size());
  {
    const zestra::Result result = zestra::Extract(page);
    r.extracted = result.text;
    r.extracted_title = result.title;
    r.extracted_charset = result.charset;
    r.types |= static_cast<int>(result.type) << 6;
  }
  {
    MemoryBuffer in(page.data(), size, MemoryBuffer::kReadInPlace);
    ZestraNS::Beautify(in, Orvel::Utf8Charset, r.from_bytes, &r.from_bytes_title, &type);
    note(0);
  }
  {
    MemoryBuffer in(page.data(), size, MemoryBuffer::kReadInPlace);
    MemoryBuffer out(4096);
    ZestraNS::Beautify(in, Orvel::Utf8Charset, out, nullptr, &type);
    r.streamed = Contents(out);
    note(1);
  }
  {
    MemoryBuffer in(page.data(), size, MemoryBuffer::kReadInPlace);
    OrvelParser::HtmlDocTree tree(Orvel::Utf8Charset);
    OrvelParser::HtmlDocParser parser(in, ZestraNS::KeywordTable(), tree);
    parser.Parse();
    ZestraNS::Beautify(tree, r.from_tree, nullptr, &type);
    note(2);
    MemoryBuffer out(4096);
    ZestraNS::Beautify(tree, out, nullptr, &type);
    r.tree_streamed = Contents(out);
    note(3);
  }
  {
    ZestraNS::Beautify(Partition(page), r.from_partitions, nullptr, &type);
    note(4);
    MemoryBuffer out(4096);
    ZestraNS::Beautify(Partition(page), out, nullptr, &type);
    r.partitions_streamed = Contents(out);
    note(5);
  }
  {
    const std::u16string units = Units(page);
    VARIANT source;
    VARIANT text;
    VARIANT title;
    VariantInit(&source);
    VariantInit(&text);
    VariantInit(&title);
    source.vt = VT_BSTR;
    source.bstrVal = SysAllocStringLen(units.data(), static_cast<UINT>(units.size()));
    if (GetBeautifiedTextFromString(&source, &text, &title) == S_OK && text.vt == VT_BSTR) {
      r.from_string.assign(text.bstrVal, SysStringLen(text.bstrVal));
    }
    VariantClear(&source);
    VariantClear(&text);
    VariantClear(&title);
  }
  return r;
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

// Pages of the development set beside the repository when it is there,
// else the sample page and variations of it; sorted, so every run takes the
// same ones.
std::vector<std::string> LoadPages(size_t count) {
  std::vector<std::filesystem::path> paths;
  const std::filesystem::path devset = std::filesystem::path(ZESTRA_SOURCE_DIR) / ".." / "shared" / "devset";
  std::error_code error;
  if (std::filesystem::is_directory(devset, error)) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(devset, error)) {
      if (entry.is_regular_file() && entry.path().extension() == ".html") paths.push_back(entry.path());
    }
  }
  std::sort(paths.begin(), paths.end());
  std::vector<std::string> pages;
  // Every n-th page, for a spread of sizes and layouts.
  const size_t step = std::max<size_t>(1, paths.size() / count);
  for (size_t i = 0; i < paths.size() && pages.size() < count; i += step) pages.push_back(ReadFile(paths[i]));
  const std::string sample = ReadFile(std::filesystem::path(ZESTRA_SOURCE_DIR) / "samples" / "article.html");
  for (size_t i = 0; pages.size() < count; ++i) {
    std::string page = sample;
    for (size_t j = 0; j < i; ++j) page += "<p><a href=/more>One more link</a> and words number " + std::to_string(j) + "</p>";
    pages.push_back(page);
  }
  return pages;
}

TEST(ConcurrentExtractionTest, EightThreadsGiveTheSingleThreadedResults) {
  const std::vector<std::string> pages = LoadPages(kThreads * kPagesPerThread);
  std::vector<Results> expected;
  for (const std::string& page : pages) expected.push_back(ExtractAll(page));

  std::vector<std::vector<Results>> got(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &pages, &got] {
      for (size_t i = static_cast<size_t>(t); i < pages.size(); i += kThreads) got[t].push_back(ExtractAll(pages[i]));
    });
  }
  for (std::thread& thread : threads) thread.join();

  for (int t = 0; t < kThreads; ++t) {
    for (size_t k = 0; k < got[t].size(); ++k) {
      const size_t page = static_cast<size_t>(t) + k * kThreads;
      EXPECT_TRUE(got[t][k] == expected[page]) << "page " << page << " on thread " << t;
    }
  }
  // The pages are real work: most give text.
  const auto with_text = std::count_if(expected.begin(), expected.end(),
                                       [](const Results& r) { return !r.from_bytes.empty(); });
  EXPECT_GE(with_text, static_cast<long>(pages.size() / 2));
}

}  // namespace
