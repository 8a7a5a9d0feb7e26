// The bound of a page, row by row: spans over whole tables, many
// attributes, dense paragraphs, huge lists, deep nesting, random bytes and
// an open comment, each run in a child process in both layouts (the tables
// layout through Beautify, the blocks layout through zestra::Extract) with
// its peak resident size held to 20 times the input plus a constant (or
// the documented factor of the few denser constructs); and the scaling
// check: the same construct at sizes n and 4n costs about 4 times as much.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>

#include "hostile/hostile_case.h"
#include "hostile/isolated_run.h"
#include "zestra/api/beautify.h"
#include "zestra/api/document_tree.h"
#include "zestra/base/charset.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_table.h"
#include "zestra/charset/charset_conversion.h"
#include "zestra/stream/memory_buffer.h"
#include "zestra/zestra.h"

namespace zestra_hostile {
namespace {

using Orvel::CHARSET;
using OrvelFile::MemoryBuffer;

// Markup denser than about one element per 20 bytes is beyond the bound:
// the parsed tree and the layout tree take about 60 and 100 bytes per
// element with its text. <p><b>x</b>, three nodes and a layout cell per
// 11 bytes, peaks at about 25 times its size in the blocks layout.
constexpr uint64_t kDenseParagraphsFactor = 30;

// Which layouts a case runs: the tables layout through Beautify, and the
// blocks layout through zestra::Extract.
enum class Layouts { kTables, kBoth };

// Checks that a run ended normally, without failure, and within
// `bytes_per_input_byte` times its input plus kFixedBytes of memory.
void ExpectWithinBound(const IsolatedResult& result, uint64_t bytes_per_input_byte) {
  EXPECT_TRUE(result.exited_cleanly) << result.failure;
  EXPECT_EQ(result.failure, "");
  ExpectPeakWithin(result, bytes_per_input_byte);
}

// Extracts `input` in `charset`: the tables layout through Beautify over
// bytes, the blocks layout through zestra::Extract (its text as UTF-16).
Extraction Extract(const std::string& input, CHARSET charset, zestra::Layout layout) {
  if (layout == zestra::Layout::kTables) return zestra_hostile::Extract(input, charset);
  Extraction e;
  zestra::Options options;
  options.charset = charset;
  options.layout = layout;
  const zestra::Result result = zestra::Extract(input, options);
  OrvelCharset::AppendUtf16(result.text.data(), result.text.size(), e.text);
  e.produced = !result.text.empty();
  e.type = result.type == zestra::DocumentType::kContent ? ZestraNS::ContentDocument : ZestraNS::LinkDocument;
  return e;
}

// Builds the input with `build`, extracts its text in a child process with
// `charset` in each of `layouts`, and checks the outcome with `check`
// (empty string: passed).
void ExpectHostile(const std::function<void(std::string&)>& build, CHARSET charset,
                   const std::function<std::string(const Extraction&)>& check,
                   uint64_t bytes_per_input_byte = kBytesPerInputByte, Layouts layouts = Layouts::kTables) {
  for (const zestra::Layout layout : {zestra::Layout::kTables, zestra::Layout::kBlocks}) {
    if (layout == zestra::Layout::kBlocks && layouts == Layouts::kTables) break;
    SCOPED_TRACE(zestra::LayoutName(layout));
    std::string input;
    const IsolatedResult result = RunIsolated(
        [&] {
          build(input);
          return static_cast<uint64_t>(input.size());
        },
        [&] { return check(Extract(input, charset, layout)); });
    ExpectWithinBound(result, bytes_per_input_byte);
  }
}

std::string SpanTables(size_t tables) {
  return Repeat("<table>" + Repeat("<tr><td colspan=1000 rowspan=65534>x</td>", 200) + "</table>", tables);
}

std::string ExpectCount(const Extraction& e, char16_t c, size_t count) {
  const size_t found = static_cast<size_t>(std::count(e.text.begin(), e.text.end(), c));
  if (found == count) return "";
  return "expected " + std::to_string(count) + " of '" + Utf8(std::u16string(1, c)) + "', found " +
         std::to_string(found) + ": " + Describe(e.text);
}

TEST(HostileTest, TablesOfHugeSpans) {
  for (const size_t tables : {1u, 50u}) {
    SCOPED_TRACE(tables);
    ExpectHostile([tables](std::string& in) { in = SpanTables(tables); }, Orvel::Utf8Charset,
                  [tables](const Extraction& e) { return ExpectCount(e, u'x', 200 * tables); }, kBytesPerInputByte,
                  Layouts::kBoth);
  }
}

// An element with `count` attributes of different names.
std::string ManyAttributes(size_t count) {
  std::string in = "<div";
  for (size_t i = 0; i < count; ++i) in += " a" + std::to_string(i) + "=x";
  return in + ">text of the division</div>";
}

TEST(HostileTest, TenThousandAttributes) {
  ExpectHostile([](std::string& in) { in = ManyAttributes(10000); }, Orvel::Utf8Charset,
                [](const Extraction& e) { return ExpectContains(e, u"text of the division"); }, kBytesPerInputByte,
                Layouts::kBoth);
}

TEST(HostileTest, DenseParagraphsAndBold) {
  ExpectHostile([](std::string& in) { in = Repeat("<p><b>x</b>", 250000); }, Orvel::Utf8Charset,
                [](const Extraction& e) { return ExpectCount(e, u'x', 250000); }, kDenseParagraphsFactor,
                Layouts::kBoth);
}

std::string ListItems(size_t count) { return "<ul>" + Repeat("<li>item words</li>\n", count) + "</ul>"; }

TEST(HostileTest, MillionListItems) {
  ExpectHostile([](std::string& in) { in = ListItems(1000000); }, Orvel::Utf8Charset,
                [](const Extraction& e) { return ExpectCount(e, u'w', 1000000); }, kBytesPerInputByte,
                Layouts::kBoth);
}

TEST(HostileTest, MillionNestedDivisionsAndUnclosedBold) {
  ExpectHostile([](std::string& in) { in = Repeat("<div>", 1000000) + "deepest words" + Repeat("</div>", 1000000); },
                Orvel::Utf8Charset, [](const Extraction& e) { return ExpectContains(e, u"deepest words"); },
                kBytesPerInputByte, Layouts::kBoth);
  ExpectHostile([](std::string& in) { in = Repeat("<b>", 1000000) + "bold words"; }, Orvel::Utf8Charset,
                [](const Extraction& e) { return ExpectContains(e, u"bold words"); }, kBytesPerInputByte,
                Layouts::kBoth);
}

TEST(HostileTest, HundredThousandNestedTables) {
  ExpectHostile([](std::string& in) { in = Repeat("<table><tr><td>", 100000) + "innermost cell"; },
                Orvel::Utf8Charset, [](const Extraction& e) { return ExpectContains(e, u"innermost cell"); },
                kBytesPerInputByte, Layouts::kBoth);
}

// Bytes from a fixed generator: every value, no structure.
std::string RandomBytes(size_t size) {
  std::string in(size, '\0');
  uint64_t state = 0x9E3779B97F4A7C15u;
  for (char& c : in) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    c = static_cast<char>(state >> 56);
  }
  return in;
}

TEST(HostileTest, RandomBytesAndOpenComment) {
  ExpectHostile([](std::string& in) { in = RandomBytes(5u << 20); }, Orvel::UnknownCharset,
                [](const Extraction&) { return std::string(); }, kBytesPerInputByte, Layouts::kBoth);
  ExpectHostile([](std::string& in) { in = "<p>before the comment</p><!--" + std::string(20u << 20, 'c'); },
                Orvel::Utf8Charset, [](const Extraction& e) { return ExpectContains(e, u"before the comment"); },
                kBytesPerInputByte, Layouts::kBoth);
}

// The same construct at sizes n and 4n costs at most about 4 times the
// time and memory, measured in the child that runs it: 6 times, for the
// noise of a shared machine, plus 50 ms and 4 MB for what does not grow
// with the page. Not in sanitized builds, whose costs are not the
// library's.
TEST(HostileTest, CostGrowsLinearly) {
  if (SanitizedBuild()) GTEST_SKIP() << "the sanitizers' costs are not the library's";
  struct Construct {
    const char* name;
    std::function<std::string(size_t)> build;  // the page at size n
    size_t n;
    double scaling;  // allowed growth from n to 4n, noise not included
  };
  const Construct constructs[] = {
      {"span tables", [](size_t n) { return SpanTables(n); }, 25, 4},
      {"list items", [](size_t n) { return ListItems(n); }, 50000, 4},
      {"nested divisions", [](size_t n) { return Repeat("<div>", n) + "x" + Repeat("</div>", n); }, 100000, 4},
      {"dense bold", [](size_t n) { return Repeat("<b>x</b>", n); }, 100000, 4},
      {"links", [](size_t n) { return Repeat("<a href=\"/item\">item</a>\n", n); }, 40000, 4},
      {"random bytes", [](size_t n) { return RandomBytes(n); }, 1u << 20, 4},
      {"attributes", [](size_t n) { return ManyAttributes(n); }, 2500, 4},
  };
  for (const Construct& construct : constructs) {
    for (const zestra::Layout layout : {zestra::Layout::kTables, zestra::Layout::kBlocks}) {
      SCOPED_TRACE(std::string(construct.name) + ", " + zestra::LayoutName(layout));
      IsolatedResult runs[2];
      for (int i = 0; i < 2; ++i) {
        std::string input;
        const size_t n = construct.n << (2 * i);
        runs[i] = RunIsolated(
            [&] {
              input = construct.build(n);
              return static_cast<uint64_t>(input.size());
            },
            [&] {
              Extract(input, Orvel::UnknownCharset, layout);
              return std::string();
            });
        ASSERT_TRUE(runs[i].exited_cleanly) << runs[i].failure;
      }
      const double allowed = construct.scaling * 1.5;
      std::printf("%s, %s: %.3f s, %.1f MB at %.2f MB; %.3f s, %.1f MB at %.2f MB\n", construct.name,
                  zestra::LayoutName(layout), runs[0].work_seconds, runs[0].peak_bytes / 1048576.0,
                  runs[0].input_bytes / 1048576.0, runs[1].work_seconds, runs[1].peak_bytes / 1048576.0,
                  runs[1].input_bytes / 1048576.0);
      EXPECT_LE(runs[1].work_seconds, allowed * runs[0].work_seconds + 0.05);
      if (runs[0].memory_measured) {
        EXPECT_LE(static_cast<double>(runs[1].peak_bytes), allowed * runs[0].peak_bytes + (4 << 20));
      }
    }
  }
}

}  // namespace
}  // namespace zestra_hostile
