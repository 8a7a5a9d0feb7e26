#include "zestra/api/document_tree.h"

#include <gtest/gtest.h>
#include <iconv.h>
#include <sys/resource.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "builder/layout_dump.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"
#include "zestra/model/k_statistics.h"
#include "development_set.h"
#include "zestra/stream/memory_buffer.h"

#if defined(__SANITIZE_ADDRESS__)
#define ZESTRA_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZESTRA_TEST_SANITIZED 1
#endif
#endif

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;

SmartPtr<KTable> TreeOf(const std::string& bytes, Orvel::CHARSET charset = Orvel::Utf8Charset) {
  OrvelFile::MemoryBuffer buffer(static_cast<unsigned>(bytes.size() + 1));
  buffer.Put(bytes.data(), static_cast<unsigned>(bytes.size()));
  return GetDocumentTree(buffer, charset);
}

std::string DumpOf(const std::string& html, DumpOptions options = {}) {
  return DumpLayout(*TreeOf(html), options);
}

KStatistics TotalsOf(const KTable& root) {
  KStatistics totals;
  root.Statistics(totals, 0xFFFFFFFF);
  return totals;
}

// Checks the invariants of a built tree without recursing: every cell in
// the slot it names with its table as parent, in-link words within words,
// Tables() equal to the table items, nested tables one level down with the
// right parent, no item both text and table. Returns the number of tables
// and the deepest level seen.
std::pair<uint64_t, uint32_t> CheckInvariants(const KTable& root) {
  std::vector<const KTable*> pending = {&root};
  uint64_t tables = 0;
  uint32_t deepest = 0;
  while (!pending.empty()) {
    const KTable& table = *pending.back();
    pending.pop_back();
    ++tables;
    deepest = std::max(deepest, table.Level());
    EXPECT_FALSE(table.Caption());
    EXPECT_FALSE(table.Summary());
    for (uint32_t r = 0; r < table.Rows(); ++r) {
      for (uint32_t c = 0; c < table.Cols(); ++c) {
        const SmartPtr<KCell>& cell = table.GetCell(c, r);
        if (!cell) continue;
        EXPECT_EQ(cell->Col(), c);
        EXPECT_EQ(cell->Row(), r);
        EXPECT_EQ(cell->ParentTable(), &table);
        EXPECT_LE(cell->WordsInLinksAndImages(), cell->Words());
        EXPECT_EQ(cell->Images(), 0u);
        uint32_t table_items = 0;
        for (const SmartPtr<KCellItem>* it = cell->Begin(); it != cell->End(); ++it) {
          EXPECT_EQ((*it)->ParentCell(), cell.Get());
          EXPECT_FALSE((*it)->IsText() && (*it)->IsTable());
          if (!(*it)->IsTable()) continue;
          ++table_items;
          const KTable& nested = *(*it)->Table();
          EXPECT_EQ(nested.ParentTable(), &table);
          EXPECT_EQ(nested.Level(), table.Level() + 1);
          pending.push_back(&nested);
        }
        EXPECT_EQ(cell->Tables(), table_items);
      }
    }
  }
  return {tables, deepest};
}

// Converts UTF-8 text to the iconv encoding `to`.
std::string Iconv(const std::string& utf8, const char* to) {
  iconv_t cd = iconv_open(to, "UTF-8");
  EXPECT_NE(cd, reinterpret_cast<iconv_t>(-1)) << to;
  std::string out(utf8.size() * 4 + 16, '\0');
  char* in_ptr = const_cast<char*>(utf8.data());
  size_t in_left = utf8.size();
  char* out_ptr = out.data();
  size_t out_left = out.size();
  const size_t converted = iconv(cd, &in_ptr, &in_left, &out_ptr, &out_left);
  EXPECT_NE(converted, static_cast<size_t>(-1)) << to;
  iconv(cd, nullptr, nullptr, &out_ptr, &out_left);  // shift back to the initial state
  iconv_close(cd);
  out.resize(out.size() - out_left);
  return out;
}

long PeakResidentMiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

TEST(DocumentTreeTest, RootShape) {
  for (const std::string& html : {std::string(), std::string("<!-- only a comment -->"), std::string("Hello")}) {
    SmartPtr<KTable> root = TreeOf(html);
    ASSERT_TRUE(root);
    EXPECT_EQ(root->Cols(), 1u);
    EXPECT_EQ(root->Rows(), 3u);
    EXPECT_EQ(root->Level(), 0u);
    EXPECT_EQ(root->ParentTable(), nullptr);
    EXPECT_EQ(root->NbRef(), 1);
    EXPECT_FALSE(root->GetCell(0, 0));
    EXPECT_FALSE(root->GetCell(0, 2));
  }
  EXPECT_FALSE(TreeOf("")->GetCell(0, 1));

  SmartPtr<KTable> hello = TreeOf("Hello");
  const SmartPtr<KCell>& content = hello->GetCell(0, 1);
  ASSERT_TRUE(content);
  EXPECT_EQ(content->ParentTable(), hello.Get());
  EXPECT_EQ(DumpLayout(*hello, {.spans = true}),
            "table 1x3 level 0\n"
            "  cell 0,1 words 1 inlink 0 links 0 tables 0\n"
            "    text \"Hello\" @0+5\n");

  // Two calls on equal input: two trees, same content.
  SmartPtr<KTable> again = TreeOf("Hello");
  EXPECT_NE(again.Get(), hello.Get());
  EXPECT_EQ(DumpLayout(*again, {.spans = true}), DumpLayout(*hello, {.spans = true}));
}

TEST(DocumentTreeTest, NavigationAndContentColumns) {
  const std::string html =
      "<html><head><title>Page</title></head><body>\n"
      "<table><tr><td><a href=\"/\">Home</a><br><a href=\"/news\">News</a></td>\n"
      "<td><h1>Title</h1><p>First paragraph text.</p><p>Second one.</p></td></tr></table>\n"
      "</body></html>\n";
  SmartPtr<KTable> root = TreeOf(html);
  EXPECT_EQ(DumpLayout(*root, {.spans = true}),
            "table 1x3 level 0\n"
            "  cell 0,1 words 0 inlink 0 links 0 tables 1\n"
            "    table 2x1 level 1\n"
            "      cell 0,0 words 2 inlink 2 links 2 tables 0\n"
            "        text \"Home\\n\" @72+4\n"
            "        text \"News\\n\" @100+4\n"
            "      cell 1,0 words 6 inlink 0 links 0 tables 0\n"
            "        text \"Title\\n\\n\" @122+5\n"
            "        text \"First paragraph text.\\n\\n\" @135+21\n"
            "        text \"Second one.\\n\\n\\n\" @163+11\n");
  EXPECT_EQ(html.substr(135, 21), "First paragraph text.");
  const KStatistics totals = TotalsOf(*root);
  EXPECT_EQ(totals.Words(), 8u);
  EXPECT_EQ(totals.WordsInLinksAndImages(), 2u);
  EXPECT_EQ(totals.Links(), 2u);
  EXPECT_EQ(totals.Tables(), 1u);
  EXPECT_EQ(totals.Cells(), 3u);
}

TEST(DocumentTreeTest, WorkedSpanExampleAndNestedSpans) {
  EXPECT_EQ(DumpOf("<table><tr><td rowspan=2>A</td><td colspan=2>B</td></tr><tr><td>C</td></tr></table>",
                   {.null_slots = true}),
            "table 1x3 level 0\n"
            "  cell 0,0 (null)\n"
            "  cell 0,1 words 0 inlink 0 links 0 tables 1\n"
            "    table 3x2 level 1\n"
            "      cell 0,0 words 1 inlink 0 links 0 tables 0\n"
            "        text \"A\\n\"\n"
            "      cell 1,0 words 1 inlink 0 links 0 tables 0\n"
            "        text \"B\\n\\n\"\n"
            "      cell 2,0 (null)\n"
            "      cell 0,1 (null)\n"
            "      cell 1,1 words 1 inlink 0 links 0 tables 0\n"
            "        text \"C\\n\\n\"\n"
            "      cell 2,1 (null)\n"
            "  cell 0,2 (null)\n");

  // A span table nested in a layout table: counters stay with the cells
  // that receive the text; the holding cell only counts the table.
  EXPECT_EQ(DumpOf("<table><tr><td><table><tr><td rowspan=2>n1</td><td colspan=2>n2 <a href=1>l</a></td></tr>"
                   "<tr><td>n3</td></tr></table></td><td>outer</td></tr>"
                   "<tr><td colspan=2>footer text</td></tr></table>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 0 inlink 0 links 0 tables 1\n"
            "    table 2x2 level 1\n"
            "      cell 0,0 words 0 inlink 0 links 0 tables 1\n"
            "        table 3x2 level 2\n"
            "          cell 0,0 words 1 inlink 0 links 0 tables 0\n"
            "            text \"n1\\n\"\n"
            "          cell 1,0 words 2 inlink 1 links 1 tables 0\n"
            "            text \"n2 \"\n"
            "            text \"l\\n\\n\"\n"
            "          cell 1,1 words 1 inlink 0 links 0 tables 0\n"
            "            text \"n3\\n\\n\"\n"
            "      cell 1,0 words 1 inlink 0 links 0 tables 0\n"
            "        text \"outer\\n\\n\"\n"
            "      cell 0,1 words 2 inlink 0 links 0 tables 0\n"
            "        text \"footer text\\n\\n\"\n");
}

TEST(DocumentTreeTest, Preformatted) {
  // The parser turns CR LF in the source into LF; a CR written as a
  // character reference reaches the builder, which drops it before LF.
  // Elements nested in PRE are cleaned, links are not; a table in PRE has
  // cleaned cells.
  EXPECT_EQ(DumpOf("<pre>\nline one&#13;\n  indented\r\n<b>bold   text</b>\n<a href=x>link&#13;\ntext</a>"
                   "<table><tr><td> cell\n  text </td></tr></table></pre>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 8 inlink 2 links 1 tables 1\n"
            "    text \"line one\\n  indented\\n\"\n"
            "    text \"bold text\"\n"
            "    text \"\\n\"\n"
            "    text \"link\\ntext\"\n"
            "    table 1x1 level 1\n"
            "      cell 0,0 words 2 inlink 0 links 0 tables 0\n"
            "        text \"cell text \\n\\n\"\n");
}

TEST(DocumentTreeTest, LinksAroundAndInsideTables) {
  // In-link does not enter a nested table; the anchor counts one link in
  // the outer cell.
  EXPECT_EQ(DumpOf("<a href=x>before<table><tr><td>inside <a href=y>here</a></td></tr></table>after</a>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 2 inlink 2 links 1 tables 1\n"
            "    text \"before\"\n"
            "    table 1x1 level 1\n"
            "      cell 0,0 words 2 inlink 1 links 1 tables 0\n"
            "        text \"inside \"\n"
            "        text \"here\\n\\n\"\n"
            "    text \"after\"\n");
  // Image maps: AREA is a link without in-link text.
  EXPECT_EQ(DumpOf("<p>see <map><area href=a><area href=b></map>map</p>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 2 inlink 0 links 2 tables 0\n"
            "    text \"see \"\n"
            "    text \"map\\n\\n\"\n");
}

TEST(DocumentTreeTest, RowGroupsAndEmptyCells) {
  EXPECT_EQ(DumpOf("<table><tfoot><tr><td>foot</td></tr></tfoot><tbody><tr><td>body</td></tr></tbody></table>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 0 inlink 0 links 0 tables 1\n"
            "    table 1x2 level 1\n"
            "      cell 0,0 words 1 inlink 0 links 0 tables 0\n"
            "        text \"body\\n\\n\"\n"
            "      cell 0,1 words 1 inlink 0 links 0 tables 0\n"
            "        text \"foot\\n\\n\"\n");
  // Empty cells leave null slots, white-space cells make cells without
  // items; a row without content repeats the break on the earlier cell.
  EXPECT_EQ(DumpOf("<table><caption>lost caption</caption><tr><td></td><td> \n </td><td>x</td></tr>"
                   "<tr><td></td></tr><tr><th>y</th><td>z</td></tr></table>",
                   {.null_slots = true}),
            "table 1x3 level 0\n"
            "  cell 0,0 (null)\n"
            "  cell 0,1 words 0 inlink 0 links 0 tables 1\n"
            "    table 3x3 level 1\n"
            "      cell 0,0 (null)\n"
            "      cell 1,0 words 0 inlink 0 links 0 tables 0\n"
            "      cell 2,0 words 1 inlink 0 links 0 tables 0\n"
            "        text \"x\\n\\n\"\n"
            "      cell 0,1 (null)\n"
            "      cell 1,1 (null)\n"
            "      cell 2,1 (null)\n"
            "      cell 0,2 words 1 inlink 0 links 0 tables 0\n"
            "        text \"y\\n\"\n"
            "      cell 1,2 words 1 inlink 0 links 0 tables 0\n"
            "        text \"z\\n\\n\"\n"
            "      cell 2,2 (null)\n"
            "  cell 0,2 (null)\n");
  // A table without cells adds nothing, its text included.
  EXPECT_EQ(DumpOf("<p>a</p><table><caption>c</caption></table><table><tr></tr></table>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 1 inlink 0 links 0 tables 0\n"
            "    text \"a\\n\\n\"\n");
}

TEST(DocumentTreeTest, BlocksAndHiddenContent) {
  EXPECT_EQ(DumpOf("<title>Not in the tree</title><h2>Head</h2>intro<ul><li>one<li>two</ul>"
                   "<p>after<script>var x;</script><style>p{}</style> end</p><div>d1</div><div>d2</div>"
                   "<select><option>opt</select><img alt=img>tail<br>next<br><br><br>last"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 12 inlink 0 links 0 tables 0\n"
            "    text \"Head\\n\\n\"\n"
            "    text \"intro\\n\\n\"\n"
            "    text \"one\\n\\n\"\n"
            "    text \"two\\n\\n\"\n"
            "    text \"after\"\n"
            "    text \" end\\n\\n\"\n"
            "    text \"d1\\n\\n\"\n"
            "    text \"d2\\n\\n\"\n"
            "    text \"tail\\n\"\n"
            "    text \"next\\n\\n\"\n"
            "    text \"last\"\n");
}

// One page per charset family, written in UTF-8 and converted with iconv:
// each must give the tree of its UTF-8 form, source spans included (they
// count bytes of the UTF-8 form).
TEST(DocumentTreeTest, CharsetFamiliesRoundTrip) {
  struct Family {
    const char* iconv_name;
    Orvel::CHARSET code_page;
    const char* nav1;
    const char* nav2;
    const char* heading;
    const char* paragraph;
  };
  const Family families[] = {
      {"WINDOWS-1251", Orvel::CHARSET(1251), "Главная", "Новости", "Заголовок", "Это первый абзац, текст."},
      {"KOI8-R", Orvel::CHARSET(20866), "Главная", "Новости", "Заголовок", "Это первый абзац, текст."},
      {"SHIFT_JIS", Orvel::CHARSET(932), "ホーム", "ニュース", "見出し", "これは本文の段落です。 日本語"},
      {"EUC-JP", Orvel::CHARSET(51932), "ホーム", "ニュース", "見出し", "これは本文の段落です。 日本語"},
      {"ISO-2022-JP", Orvel::CHARSET(50220), "ホーム", "ニュース", "見出し", "これは本文の段落です。 日本語"},
      {"GBK", Orvel::CHARSET(936), "首页", "新闻", "标题", "这是正文段落。 中文"},
      {"BIG5", Orvel::CHARSET(950), "首頁", "新聞", "標題", "這是正文段落。 中文"},
      {"EUC-KR", Orvel::CHARSET(949), "홈", "뉴스", "제목", "이것은 본문 단락입니다."},
      {"UTF-16LE", Orvel::Utf16LECharset, "Главная", "ホーム", "首頁 홈", "Mixed: абзац, 段落, 단락 😀."},
      {"WINDOWS-1252", Orvel::Windows1252Charset, "Café", "Über uns", "Naïve résumé",
       "“Quoted” – €5, ½ and façade."},
  };
  for (const Family& f : families) {
    const std::string page = std::string("<html><head><title>") + f.heading +
                             "</title></head><body><table><tr><td><a href=\"/1\">" + f.nav1 +
                             "</a><br><a href=\"/2\">" + f.nav2 + "</a></td><td><h1>" + f.heading + "</h1><p>" +
                             f.paragraph + "</p><pre>  " + f.nav1 + "\n  " + f.nav2 +
                             "</pre></td></tr></table></body></html>";
    const std::string utf8_tree = DumpLayout(*TreeOf(page), {.spans = true});
    const std::string converted = Iconv(page, f.iconv_name);
    ASSERT_NE(converted, page) << f.iconv_name;
    EXPECT_EQ(DumpLayout(*TreeOf(converted, f.code_page), {.spans = true}), utf8_tree) << f.iconv_name;
    // The paragraph really came through as its characters.
    const std::string paragraph_line = "text \"" + EscapeText(std::u16string(
                                           reinterpret_cast<const char16_t*>(Iconv(f.paragraph, "UTF-16LE").data()),
                                           Iconv(f.paragraph, "UTF-16LE").size() / 2)) + "\\n\\n\"";
    EXPECT_NE(utf8_tree.find(paragraph_line), std::string::npos) << f.iconv_name << "\n" << utf8_tree;
  }

  // With the charset unknown, the page's own declaration is found.
  const std::string koi8 = Iconv("<meta charset=\"koi8-r\"><p>Это первый абзац.</p>", "KOI8-R");
  EXPECT_EQ(DumpOf("<meta charset=\"utf-8\"><p>Это первый абзац.</p>"),
            DumpLayout(*TreeOf(koi8, Orvel::UnknownCharset)));
}

TEST(DocumentTreeTest, DeepNestingBuildsWithoutRecursion) {
  constexpr int kDepth = 20000;
  std::string divs;  // kDepth elements: block and inline alternating
  for (int i = 0; i < kDepth / 2; ++i) divs += "<div><span>";
  divs += "deep";
  EXPECT_EQ(DumpOf(divs),
            "table 1x3 level 0\n"
            "  cell 0,1 words 1 inlink 0 links 0 tables 0\n"
            "    text \"deep\\n\\n\"\n");

  // The parser flattens elements past depth 512, and each table level is
  // four elements deep (table, the implied tbody, tr, td): 127 levels stay.
  constexpr uint32_t kTablesKept = 127;
  std::string tables;
  for (int i = 0; i < kDepth; ++i) tables += "<table><tr><td>";
  tables += "deep";
  SmartPtr<KTable> root = TreeOf(tables);
  const auto [table_count, deepest] = CheckInvariants(*root);
  EXPECT_EQ(table_count, kTablesKept + 1);
  EXPECT_EQ(deepest, kTablesKept);
  const KStatistics totals = TotalsOf(*root);
  EXPECT_EQ(totals.Words(), 1u);
  EXPECT_EQ(totals.Tables(), kTablesKept);
}

TEST(DocumentTreeTest, SpanLimits) {
  // colspan is capped at 1000.
  SmartPtr<KTable> wide = TreeOf("<table><tr><td colspan=5000>a</td></tr></table>");
  EXPECT_EQ((*wide->GetCell(0, 1)->Begin())->Table()->Cols(), 1000u);

  // rowspan is capped at 65534 after the clamp to the rows remaining.
  std::string tall = "<table><tr><td rowspan=70000>a<td>b";
  for (int i = 1; i < 70000; ++i) tall += "<tr><td>c";
  SmartPtr<KTable> root = TreeOf(tall);
  const KTable& table = *(*root->GetCell(0, 1)->Begin())->Table();
  ASSERT_EQ(table.Rows(), 70000u);
  ASSERT_EQ(table.Cols(), 2u);
  EXPECT_TRUE(table.GetCell(0, 0));
  EXPECT_TRUE(table.GetCell(1, 65533));
  EXPECT_FALSE(table.GetCell(0, 65533));
  EXPECT_TRUE(table.GetCell(0, 65534));
  EXPECT_FALSE(table.GetCell(1, 65534));

  // A grid beyond the slot budget (100 rows of 1,000 cells spanning 1,000
  // columns each) is clamped to 4 slots per row and cell plus the 1 << 18
  // a document's tables share, and no cell's text is lost.
  std::string huge = "<table>";
  for (int r = 0; r < 100; ++r) {
    huge += "<tr>";
    for (int c = 0; c < 1000; ++c) huge += "<td colspan=1000>w";
  }
  huge += "</table>";
  SmartPtr<KTable> clamped = TreeOf(huge);
  const KTable& grid = *(*clamped->GetCell(0, 1)->Begin())->Table();
  EXPECT_EQ(grid.Rows(), 100u);
  EXPECT_EQ(grid.Cols(), (4u * (100 + 100 * 1000) + (1u << 18)) / 100);
  EXPECT_EQ(TotalsOf(*clamped).Words(), 100u * 1000u);
  CheckInvariants(*clamped);
}

TEST(DocumentTreeTest, NulBytesAndInvalidSequences) {
  std::string page("<p>a\0b</p>", 10);
  page += std::string(1 << 20, '\0');
  page += "<p>c \xff\xfe d</p>";
  SmartPtr<KTable> root = TreeOf(page);
  CheckInvariants(*root);
  const std::string dump = DumpLayout(*root);
  EXPECT_NE(dump.find("text \"c \\u{FFFD}\\u{FFFD} d\\n\\n\""), std::string::npos) << dump;
  for (Orvel::CHARSET charset : {Orvel::UnknownCharset, Orvel::Windows1252Charset, Orvel::Utf16LECharset,
                                 Orvel::CHARSET(932), Orvel::CHARSET(50220)}) {
    CheckInvariants(*TreeOf(page, charset));
  }
}

// Large inputs finish with memory proportional to their size. Sanitized
// builds use a quarter of the sizes and allow for the sanitizer's own
// memory. Most of the peak is the parse (the parser's tree and the node
// tree made from it exist at once), not the layout tree.
TEST(DocumentTreeTest, LargeInputs) {
#ifdef ZESTRA_TEST_SANITIZED
  constexpr size_t kScale = 4;
  constexpr long kFactor = 3;
#else
  constexpr size_t kScale = 1;
  constexpr long kFactor = 1;
#endif
  const std::string word = "word ";
  {
    // One text node of 50 MB.
    const size_t words = (50u << 20) / word.size() / kScale;
    std::string page = "<p>";
    page.reserve(words * word.size() + 8);
    for (size_t i = 0; i < words; ++i) page += word;
    page += "</p>";
    SmartPtr<KTable> root = TreeOf(page);
    EXPECT_EQ(root->GetCell(0, 1)->Words(), words);
    EXPECT_LT(PeakResidentMiB(), kFactor * (20 * static_cast<long>(page.size() >> 20) + 256));
  }
  {
    // 100 MB of paragraphs, links and small tables.
    const std::string unit =
        "<div><p>Some <b>bold</b> text and <a href=\"/x\">a link</a> in a paragraph of moderate length, "
        "written to look like prose.</p><table><tr><td>cell one</td><td>cell two</td></tr></table></div>\n";
    const size_t units = (100u << 20) / unit.size() / kScale;
    std::string page;
    page.reserve(units * unit.size());
    for (size_t i = 0; i < units; ++i) page += unit;
    SmartPtr<KTable> root = TreeOf(page);
    const KStatistics totals = TotalsOf(*root);
    // Per unit: "Some " 1, "bold" 1, " text and " 3, "a link" 2, " in a ...
    // prose." 12 (a leading separator counts), the two cells 2 each.
    EXPECT_EQ(totals.Words(), units * 23);
    EXPECT_EQ(totals.Links(), units);
    EXPECT_EQ(totals.Tables(), units);
    EXPECT_LT(PeakResidentMiB(), kFactor * (48 * static_cast<long>(page.size() >> 20) + 256));
  }
}

// Every page of the development set builds a sane tree.
TEST(DocumentTreeTest, DevelopmentSetPages) {
  const std::vector<zestra_testing::DevelopmentPage> dev_pages = zestra_testing::DevelopmentPages();
  if (dev_pages.empty()) GTEST_SKIP() << "no development set beside the source tree";
  int pages = 0;
  for (const zestra_testing::DevelopmentPage& page : dev_pages) {
    const std::filesystem::path& source = page.source;
    SmartPtr<KTable> root = TreeOf(page.bytes, Orvel::UnknownCharset);
    ASSERT_TRUE(root) << source;
    EXPECT_TRUE(root->GetCell(0, 1)) << source;
    CheckInvariants(*root);
    EXPECT_GT(TotalsOf(*root).Words(), 0u) << source;
    ++pages;
  }
  EXPECT_GT(pages, 0);
}

}  // namespace
}  // namespace ZestraNS
