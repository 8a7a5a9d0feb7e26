#include "builder/block_signals.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "builder/parse_page.h"
#include "zestra/html/html_doc_tree.h"

namespace ZestraNS {
namespace {

using OrvelParser::HtmlDocTree;
using OrvelParser::HtmlTreeNode;

// Parses `body` and returns the tree; the element of interest carries
// id="t" (which no list names).
std::unique_ptr<HtmlDocTree> Parse(const std::string& body) {
  return testing::ParsePage("<!DOCTYPE html><body>" + body);
}

const HtmlTreeNode* ById(const HtmlDocTree& tree, std::string_view id) {
  const HtmlTreeNode* found = nullptr;
  OrvelParser::WalkNodes(tree.TopLevel(), [&](const HtmlTreeNode& node) {
    std::string_view value;
    if (found == nullptr && node.FindParam("id", value) && value == id) found = &node;
    return found == nullptr;
  });
  return found;
}

bool Boilerplate(std::string_view value) { return HasClassWord(value, ClassWords::kBoilerplate); }

TEST(BlockSignalsTest, ClassWordsAreWholeWordsOrHyphenAndUnderscoreParts) {
  EXPECT_TRUE(Boilerplate("nav"));
  EXPECT_TRUE(Boilerplate("main-nav"));
  EXPECT_TRUE(Boilerplate("nav_links"));
  EXPECT_TRUE(Boilerplate("NAV"));
  EXPECT_TRUE(Boilerplate("Site-Menu"));
  EXPECT_TRUE(Boilerplate("  clearfix\tsidebar  "));
  EXPECT_TRUE(Boilerplate("--ad--"));  // empty parts around a word
  EXPECT_TRUE(Boilerplate("wp-volt-gal-main-nav"));  // class names of many parts
  // Never inside a part: MathJax's context-menu hook is not a menu, a
  // canvas or a shadow holds no nav or ad, a badge or a header no ad.
  EXPECT_FALSE(Boilerplate("CtxtMenu"));
  EXPECT_FALSE(Boilerplate("MathJax_CtxtMenu_Box"));
  EXPECT_FALSE(Boilerplate("canvas shadow badge header load"));
  // Words of five letters or more also match the start of a part.
  EXPECT_TRUE(Boilerplate("jp-relatedposts"));
  EXPECT_TRUE(Boilerplate("SocialIcons"));
  EXPECT_TRUE(Boilerplate("a-relatedpostswithaverylongname"));  // a long part: its start
  EXPECT_FALSE(Boilerplate("navy menuitem address"));  // shorter words: whole parts only
  EXPECT_FALSE(Boilerplate("unrelated"));
  EXPECT_FALSE(Boilerplate(""));
  EXPECT_FALSE(Boilerplate(" - _ "));
  // A part longer than any listed word.
  EXPECT_FALSE(Boilerplate("a-verylongpartthatmatchesnothing-b"));

  EXPECT_TRUE(HasClassWord("comment-list", ClassWords::kComments));
  EXPECT_TRUE(HasClassWord("Comments", ClassWords::kComments));
  EXPECT_FALSE(HasClassWord("commentary", ClassWords::kComments));
  EXPECT_FALSE(HasClassWord("comment-list", ClassWords::kBoilerplate));
}

TEST(BlockSignalsTest, LongIdsAreHeadingSlugs) {
  // Up to four parts an id is a name; from five on, a slug of a heading.
  EXPECT_TRUE(HasClassWord("top-main-site-nav", ClassWords::kBoilerplate, NameAttribute::kId));
  EXPECT_FALSE(HasClassWord("sharing-with-a-single-developer", ClassWords::kBoilerplate, NameAttribute::kId));
  EXPECT_TRUE(HasClassWord("sharing-with-a-single-developer", ClassWords::kBoilerplate, NameAttribute::kClass));
  // A whole id token still matches.
  EXPECT_TRUE(HasClassWord("sidebar", ClassWords::kBoilerplate, NameAttribute::kId));
}

TEST(BlockSignalsTest, HidingClassesAreWholeTokens) {
  EXPECT_TRUE(HasClassWord("hidden", ClassWords::kHidden));
  EXPECT_TRUE(HasClassWord("label sr-only", ClassWords::kHidden));
  EXPECT_TRUE(HasClassWord("Visually-Hidden", ClassWords::kHidden));
  // Hidden on small screens only, or a word that merely contains "hidden".
  EXPECT_FALSE(HasClassWord("hidden-xs", ClassWords::kHidden));
  EXPECT_FALSE(HasClassWord("is_hidden_on_print", ClassWords::kHidden));
  EXPECT_FALSE(HasClassWord("unhidden", ClassWords::kHidden));
}

TEST(BlockSignalsTest, HiddenElements) {
  const auto tree = Parse(
      "<div id=a hidden>x</div>"
      "<div id=b aria-hidden=TRUE>x</div>"
      "<div id=c aria-hidden=false>x</div>"
      "<div id=d style='color: red; Display : NONE !important'>x</div>"
      "<div id=e style='visibility:hidden'>x</div>"
      "<div id=f style='max-display:none;display:none-ish;visibility:hiddenx'>x</div>"
      "<div id=g class='note sr-only'>x</div>"
      "<div id=h class='hidden-xs'>x</div>"
      "<div id=i style='{display:none}'>x</div>"
      "<div id=j>x</div>");
  for (const char* id : {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"}) {
    const HtmlTreeNode* node = ById(*tree, id);
    ASSERT_NE(node, nullptr) << id;
    const bool hidden = std::string_view("abdegi").find(id[0]) != std::string_view::npos;
    EXPECT_EQ(IsHiddenElement(*node), hidden) << id;
    EXPECT_FALSE(IsHiddenElement(*node->Children()[0])) << id;  // a text node
  }
}

TEST(BlockSignalsTest, ElementSignals) {
  const auto tree = Parse(
      "<nav id=a>x</nav><aside id=b>x</aside><header id=c>x</header><footer id=d>x</footer>"
      "<div id=e role='contentinfo'>x</div><div id=f role='main'>x</div>"
      "<section id=g class='comments nav'>x</section><div id=h class='related-posts'>x</div>"
      "<article id=i class='post'>x</article><div id=comments>x</div><section id=j>x</section>");
  for (const char* id : {"a", "b", "c", "d", "e", "h"}) {
    EXPECT_EQ(SignalOf(*ById(*tree, id)), ElementSignal::kBoilerplate) << id;
  }
  EXPECT_EQ(SignalOf(*ById(*tree, "g")), ElementSignal::kComments);  // comments come first
  EXPECT_EQ(SignalOf(*ById(*tree, "comments")), ElementSignal::kComments);
  for (const char* id : {"f", "i", "j"}) EXPECT_EQ(SignalOf(*ById(*tree, id)), ElementSignal::kNone) << id;
}

}  // namespace
}  // namespace ZestraNS
