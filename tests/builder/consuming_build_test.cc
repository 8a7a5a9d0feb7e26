// Building from a parsed tree while releasing it must give exactly the
// layout tree that building from the same tree kept whole gives.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "builder/build_tree.h"
#include "builder/layout_dump.h"
#include "builder/parse_page.h"
#include "development_set.h"
#include "zestra/model/k_table.h"
#include "zestra/html/html_doc_tree.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;
using OrvelParser::HtmlDocTree;

std::unique_ptr<HtmlDocTree> Parse(const std::string& page) {
  return testing::ParsePage(page, Orvel::UnknownCharset);
}

// The layouts built from `page` kept whole and consumed, as dumps.
std::pair<std::string, std::string> BothWays(const std::string& page, LayoutMode mode) {
  const auto kept = Parse(page);
  SmartPtr<KTable> kept_root(new KTable(nullptr, 1, 3, 0));
  BuildTreeFromDocTree(*kept, kept_root, nullptr, mode);

  const auto consumed = Parse(page);
  SmartPtr<KTable> consumed_root(new KTable(nullptr, 1, 3, 0));
  BuildTreeConsumingDocTree(*consumed, consumed_root, nullptr, mode);
  return {DumpLayout(*kept_root, {true, true}), DumpLayout(*consumed_root, {true, true})};
}

// Nested tables with spans, a table inside a link, hidden and skipped
// parts, blocks of several units, preformatted text: every path of both
// walks that releases children.
constexpr char kPage[] =
    "<html><head><title>T</title><script>var x = 1;</script></head><body>"
    "<nav><a href=/a>Home</a> <a href=/b>News</a></nav>"
    "<div class=main><h1>Head line</h1><p>First paragraph of the story.</p>"
    "<p>Second one, with <a href=/c>a link <b>inside</b></a> and more.</p>"
    "<div hidden><p>hidden words</p></div><pre>  kept\n  as is</pre>"
    "<table><tr><td rowspan=2>left cell<td>right <table><tr><td>inner</td></tr></table>"
    "<tr><td colspan=3>wide</td></tr><tr><td></td><td>   </td></tr></table>"
    "<a href=/d><table><tr><td>in a link</td></tr></table></a>"
    "<table><tr><td><div style='display:none'>no</div></td></tr></table>"
    "<ul><li>one<li>two<li><div>three</div></ul></div>"
    "<footer>Footer words</footer><select><option>never</select></body></html>";

TEST(ConsumingBuildTest, GivesTheSameLayoutAndReleasesTheWalkedNodes) {
  for (const LayoutMode mode : {LayoutMode::kTables, LayoutMode::kBlocks}) {
    SCOPED_TRACE(mode == LayoutMode::kTables ? "tables" : "blocks");
    const auto [kept, consumed] = BothWays(kPage, mode);
    EXPECT_EQ(consumed, kept);
    EXPECT_NE(kept.find("inner"), std::string::npos);

    // The walked nodes are gone; one held elsewhere lives on.
    const auto tree = Parse(kPage);
    const OrvelParser::HtmlTreeNode& html = *tree->TopLevel().front();
    ASSERT_EQ(html.Children().size(), 2u);
    const OrvelParser::HtmlTreeNode::Entry body = html.Children()[1];
    const uint32_t nodes = tree->NodeCount();
    SmartPtr<KTable> root(new KTable(nullptr, 1, 3, 0));
    BuildTreeConsumingDocTree(*tree, root, nullptr, mode);
    EXPECT_TRUE(html.Children().empty());
    EXPECT_TRUE(body->Children().empty());
    EXPECT_EQ(body.Count(), 1);
    EXPECT_EQ(tree->NodeCount(), nodes);
    EXPECT_EQ(DumpLayout(*root, {true, true}), kept);
  }
}

TEST(ConsumingBuildTest, DevelopmentSetPagesGiveTheSameLayout) {
  const auto pages = zestra_testing::DevelopmentPages();
  if (pages.empty()) GTEST_SKIP() << "the development set is not beside the source tree";
  for (const auto& page : pages) {
    for (const LayoutMode mode : {LayoutMode::kTables, LayoutMode::kBlocks}) {
      const auto [kept, consumed] = BothWays(page.bytes, mode);
      ASSERT_EQ(consumed, kept) << page.source << (mode == LayoutMode::kTables ? " tables" : " blocks");
    }
  }
}

}  // namespace
}  // namespace ZestraNS
