#include "builder/block_layout_walk.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "builder/block_analysis.h"
#include "builder/block_word_count.h"
#include "builder/build_tree.h"
#include "builder/html_node_builder.h"
#include "builder/parse_page.h"
#include "builder/keyword_table.h"
#include "zestra/api/document_tree.h"
#include "builder/layout_dump.h"
#include "zestra/model/k_statistics.h"
#include "zestra/model/k_table.h"
#include "zestra/html/html_doc_parser.h"
#include "zestra/html/html_doc_tree.h"
#include "zestra/stream/memory_buffer.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;
using OrvelParser::HtmlDocTree;

std::unique_ptr<HtmlDocTree> Parse(const std::string& page) { return testing::ParsePage(page); }

SmartPtr<KTable> BuildPage(const std::string& page) {
  const auto tree = Parse(page);
  SmartPtr<KTable> root(new KTable(nullptr, 1, 3, 0));
  BuildTreeFromDocTree(*tree, root, nullptr, LayoutMode::kBlocks);
  return root;
}

SmartPtr<KTable> Build(const std::string& body) {
  return BuildPage("<!DOCTYPE html><html><head><title>t</title></head><body>" + body);
}

// The page's words and, after a slash, its words in links.
std::string WordCounts(const std::string& page) {
  KStatistics counts;
  BuildPage(page)->Statistics(counts, 0xFFFFFFFFu);
  return std::to_string(counts.Words()) + "/" + std::to_string(counts.WordsInLinksAndImages());
}

std::string Dump(const std::string& body) { return DumpLayout(*Build(body)); }

TEST(BlockLayoutTest, BlocksOfSeveralUnitsBecomeTablesOfOneColumn) {
  // The body holds two units, a heading and a division; the division holds
  // three: a paragraph, a run of inline content, a list. The list's items
  // are its units.
  EXPECT_EQ(Dump("<h1>Title</h1><div><p>One two.</p>Run <a href=x>link</a> <b>bold</b>"
                 "<ul><li>a</li><li>b c</li></ul></div>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 0 inlink 0 links 0 tables 1\n"
            "    table 1x2 level 1\n"
            "      cell 0,0 words 1 inlink 0 links 0 tables 0\n"
            "        text \"Title\\n\\n\"\n"
            "      cell 0,1 words 0 inlink 0 links 0 tables 1\n"
            "        table 1x3 level 2\n"
            "          cell 0,0 words 2 inlink 0 links 0 tables 0\n"
            "            text \"One two.\\n\\n\"\n"
            "          cell 0,1 words 3 inlink 1 links 1 tables 0\n"
            "            text \"Run \"\n"
            "            text \"link \"\n"
            "            text \"bold\\n\\n\"\n"
            "          cell 0,2 words 0 inlink 0 links 0 tables 1\n"
            "            table 1x2 level 3\n"
            "              cell 0,0 words 1 inlink 0 links 0 tables 0\n"
            "                text \"a\\n\\n\"\n"
            "              cell 0,1 words 2 inlink 0 links 0 tables 0\n"
            "                text \"b c\\n\\n\"\n");
}

TEST(BlockLayoutTest, DocumentTreeOfEachLayout) {
  const std::string page = "<p>a</p><p>b</p>";
  const auto tree_of = [&page](auto... mode) {
    OrvelFile::MemoryBuffer input(page.data(), static_cast<unsigned int>(page.size()),
                                  OrvelFile::MemoryBuffer::kReadInPlace);
    return DumpLayout(*GetDocumentTree(input, Orvel::Utf8Charset, mode...));
  };
  EXPECT_EQ(tree_of(LayoutMode::kBlocks), DumpLayout(*BuildPage(page)));
  EXPECT_EQ(tree_of(LayoutMode::kTables),
            "table 1x3 level 0\n"
            "  cell 0,1 words 2 inlink 0 links 0 tables 0\n"
            "    text \"a\\n\\n\"\n"
            "    text \"b\\n\\n\"\n");
  EXPECT_EQ(tree_of(), tree_of(LayoutMode::kTables));
}

TEST(BlockLayoutTest, WrappersOfOneUnitAddNoLevel) {
  // Chains of wrappers around one unit, blocks without text and white space
  // between blocks add nothing; a block without text still ends a run.
  EXPECT_EQ(Dump("<div><div><section> <div><p>Only</p></div> </section></div></div>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 1 inlink 0 links 0 tables 0\n"
            "    text \"Only\\n\\n\"\n");
  EXPECT_EQ(Dump("<div>left<div> </div>right</div>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 0 inlink 0 links 0 tables 1\n"
            "    table 1x2 level 1\n"
            "      cell 0,0 words 1 inlink 0 links 0 tables 0\n"
            "        text \"left\\n\\n\"\n"
            "      cell 0,1 words 1 inlink 0 links 0 tables 0\n"
            "        text \"right\\n\\n\"\n");
  // Text before a block that holds the rest: the text ends its paragraph.
  EXPECT_EQ(Dump("<p>a<br>b</p>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 2 inlink 0 links 0 tables 0\n"
            "    text \"a\\n\"\n"
            "    text \"b\\n\\n\"\n");
}

TEST(BlockLayoutTest, InlineElementsWrappingBlocksAreBlocks) {
  // A card: a link around a heading and a paragraph. Its words are in-link
  // in both of its cells; the link counts once, where the card stands.
  EXPECT_EQ(Dump("<p>Before</p><a href=x><h3>Card</h3><p>Teaser text</p></a>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 0 inlink 0 links 0 tables 1\n"
            "    table 1x2 level 1\n"
            "      cell 0,0 words 1 inlink 0 links 0 tables 0\n"
            "        text \"Before\\n\\n\"\n"
            "      cell 0,1 words 0 inlink 0 links 1 tables 1\n"
            "        table 1x2 level 2\n"
            "          cell 0,0 words 1 inlink 1 links 0 tables 0\n"
            "            text \"Card\\n\\n\"\n"
            "          cell 0,1 words 2 inlink 2 links 0 tables 0\n"
            "            text \"Teaser text\\n\\n\"\n");
}

TEST(BlockLayoutTest, HiddenContentNeverEntersTheTree) {
  const std::string dump = Dump(
      "<p>seen</p><div hidden><p>h1</p></div><p style='display:none'>h2</p>"
      "<span aria-hidden=true>h3</span><div class='sr-only'>h4</div><p>also <span hidden>h5</span>seen</p>"
      "<script>h6</script><noscript>h7</noscript><template><p>h8</p></template>");
  EXPECT_EQ(dump,
            "table 1x3 level 0\n"
            "  cell 0,1 words 0 inlink 0 links 0 tables 1\n"
            "    table 1x2 level 1\n"
            "      cell 0,0 words 1 inlink 0 links 0 tables 0\n"
            "        text \"seen\\n\\n\"\n"
            "      cell 0,1 words 2 inlink 0 links 0 tables 0\n"
            "        text \"also \"\n"
            "        text \"seen\\n\\n\"\n");
  // Hidden units are no units: the page is a single unit then.
  EXPECT_EQ(Dump("<div hidden>a</div><p>b</p><p hidden>c</p>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 1 inlink 0 links 0 tables 0\n"
            "    text \"b\\n\\n\"\n");
}

TEST(BlockLayoutTest, BoilerplateWordsCountAsLinkWords) {
  // Ten words of article, two in a nav, two in a "share" bar: both small
  // enough (at most a fifth of the page) to count as boilerplate.
  EXPECT_EQ(WordCounts("<nav>Home News</nav><article><p>one two three four five six seven eight nine ten</p>"
                       "<div class='share-bar'>Share this</div></article>"),
            "14/4");
  // A wrapper with a "sidebar" class around the whole page holds more than
  // a fifth of its words: its words stay ordinary words.
  EXPECT_EQ(WordCounts("<div class='sidebar-layout'><p>one two three four five six seven eight</p><p>nine ten</p>"
                       "</div><nav>Home</nav>"),
            "11/1");
  // A comment section counts whatever its size; the body never does.
  EXPECT_EQ(WordCounts("<p>one two</p><section id=comments><p>three four five six seven eight</p></section>"),
            "8/6");
  EXPECT_EQ(WordCounts("<body class='f_comment_flag_on has-comments nav'><p>a b</p><p>c</p>"), "3/0");
}

TEST(BlockLayoutTest, HtmlTablesTakeTheTablePathWithBlockCells) {
  // A cell of several units holds a table of its units; a hidden cell's
  // content is not seen but its slot is taken. A cell's content is closed as
  // a block ("\n\n"), then as a table cell ("\n").
  EXPECT_EQ(Dump("<table><tr><td><p>a</p><p>b</p></td><td>c</td><td style='display:none'>d</td></tr></table>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 0 inlink 0 links 0 tables 1\n"
            "    table 3x1 level 1\n"
            "      cell 0,0 words 0 inlink 0 links 0 tables 1\n"
            "        table 1x2 level 2\n"
            "          cell 0,0 words 1 inlink 0 links 0 tables 0\n"
            "            text \"a\\n\\n\"\n"
            "          cell 0,1 words 1 inlink 0 links 0 tables 0\n"
            "            text \"b\\n\\n\"\n"
            "      cell 1,0 words 1 inlink 0 links 0 tables 0\n"
            "        text \"c\\n\\n\\n\"\n"
            "      cell 2,0 words 0 inlink 0 links 0 tables 0\n");
}

TEST(BlockLayoutTest, PreformattedTextIsOneUnit) {
  // The block inside the preformatted one closes the paragraph before it:
  // the line feed before it is trimmed (its word stays counted, as in the
  // tables layout), and its own text is cleaned.
  EXPECT_EQ(Dump("<p>x</p><pre>a\r\n<b>b</b>\n<div>c</div></pre>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 0 inlink 0 links 0 tables 1\n"
            "    table 1x2 level 1\n"
            "      cell 0,0 words 1 inlink 0 links 0 tables 0\n"
            "        text \"x\\n\\n\"\n"
            "      cell 0,1 words 4 inlink 0 links 0 tables 0\n"
            "        text \"a\\n\"\n"
            "        text \"b\"\n"
            "        text \"\"\n"
            "        text \"c\\n\\n\"\n");
}

TEST(BlockLayoutTest, FormulasAreTextWithTokensApart) {
  // MathML tokens are words a reader sees, each apart from the next; other
  // graphics stay out, and so does a formula hidden for a picture of it.
  EXPECT_EQ(Dump("<p>If <math><msup><mi>x</mi><mn>2</mn></msup><mo>=</mo><mn>4</mn></math>, then"
                 "<img alt=picture><svg><text>drawn</text></svg>"
                 "<span style='display:none'><math><mi>y</mi></math></span></p>"),
            "table 1x3 level 0\n"
            "  cell 0,1 words 7 inlink 0 links 0 tables 0\n"  // ", then" counts 2
            "    text \"If \"\n"
            "    text \"x \"\n"
            "    text \"2 \"\n"
            "    text \"= \"\n"
            "    text \"4\"\n"
            "    text \", then\\n\\n\"\n");
}

TEST(BlockLayoutTest, IdeographsCountAsWords) {
  EXPECT_EQ(CountBlockWords(u"word"), 1u);
  EXPECT_EQ(CountBlockWords(u"\u4e2d\u6587"), 3u);  // one run, two ideographs
  EXPECT_EQ(CountBlockWords(u"\u3072\u3089 and \u30ab"), 6u);
  EXPECT_EQ(CountBlockWords(u""), 0u);
  const SmartPtr<KTable> root = Build("<p>\u4e2d\u56fd\u9752\u5e74</p>");
  EXPECT_EQ(root->GetCell(0, 1)->Words(), 5u);
}

TEST(BlockLayoutTest, RoughWordsOfUtf8) {
  bool has_text = true;
  EXPECT_EQ(RoughWords("", has_text), 0u);
  EXPECT_FALSE(has_text);
  EXPECT_EQ(RoughWords(" \t\xC2\xA0\xE3\x80\x80\x01 ", has_text), 0u);  // spaces, a control
  EXPECT_FALSE(has_text);
  EXPECT_EQ(RoughWords("two words", has_text), 2u);
  EXPECT_TRUE(has_text);
  EXPECT_EQ(RoughWords("\xE4\xB8\xAD\xE6\x96\x87x", has_text), 3u);  // two ideographs, then a word
  EXPECT_EQ(RoughWords("\xF0\x9F\x98\x80", has_text), 1u);  // a four-byte character
  EXPECT_EQ(RoughWords("\xE4\xB8", has_text), 1u);          // cut short: still a character
}

TEST(BlockLayoutTest, DeepNestingWalksWithoutRecursion) {
  using testing::El;
  using testing::Node;
  using testing::NodeList;
  using testing::Text;
  // A million nested wrappers around one paragraph: no table at all.
  constexpr int kWrappers = 1000000;
  Node inner = El(OrvelParser::kIdParagraph, {Text("deep")});
  for (int i = 0; i < kWrappers; ++i) inner = El(i % 2 ? OrvelParser::kIdDivision : OrvelParser::kIdPhrase, {inner});
  NodeList nodes = {inner};
  inner = Node();
  SmartPtr<KTable> root(new KTable(nullptr, 1, 3, 0));
  SmartPtr<KCell> cell = root->CreateCell(0, 1);
  AddNodesToBlocks(nodes, cell);
  EXPECT_EQ(DumpLayout(*root),
            "table 1x3 level 0\n"
            "  cell 0,1 words 1 inlink 0 links 0 tables 0\n"
            "    text \"deep\\n\\n\"\n");

  // 100,000 nested blocks of two units, the second holding the next level.
  constexpr int kLevels = 100000;
  inner = El(OrvelParser::kIdParagraph, {Text("deepest")});
  for (int i = 0; i < kLevels; ++i) inner = El(OrvelParser::kIdSection, {El(OrvelParser::kIdParagraph, {Text("x")}), inner});
  nodes = {inner};
  inner = Node();
  root = SmartPtr<KTable>(new KTable(nullptr, 1, 3, 0));
  cell = root->CreateCell(0, 1);
  AddNodesToBlocks(nodes, cell);
  nodes.Clear();
  const KCell* current = cell.Get();
  uint32_t levels = 0;
  while (current->Tables() == 1) {
    const KTable& nested = *(*current->Begin())->Table();
    ASSERT_EQ(nested.Level(), ++levels);
    ASSERT_EQ(nested.Rows(), 2u);
    current = nested.GetCell(0, 1).Get();
  }
  EXPECT_EQ(levels, static_cast<uint32_t>(kLevels));
  EXPECT_EQ((*current->Begin())->Text(), u"deepest\n\n");
}

}  // namespace
}  // namespace ZestraNS
