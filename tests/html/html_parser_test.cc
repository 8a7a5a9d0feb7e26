#include "zestra/html/html_doc_parser.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include "charset/charset_test_util.h"
#include "charset/document_decoder.h"
#include "html/html_element_table.h"
#include "zestra/charset/charset_names.h"
#include "zestra/stream/memory_buffer.h"

namespace {

using Orvel::CHARSET;
using OrvelFile::MemoryBuffer;
using OrvelParser::HtmlDocTree;
using OrvelParser::HtmlKeywordTable;
using OrvelParser::HtmlTreeNode;
using zestra_test::Convert;
using zestra_test::Cs;

const HtmlKeywordTable& Keywords() {
  static const HtmlKeywordTable table(0);
  return table;
}

std::unique_ptr<HtmlDocTree> Parse(const std::string& bytes, CHARSET charset = Orvel::Utf8Charset) {
  MemoryBuffer input(bytes.data(), static_cast<unsigned int>(bytes.size()), MemoryBuffer::kReadInPlace);
  auto tree = std::make_unique<HtmlDocTree>(charset);
  OrvelParser::HtmlDocParser parser(input, Keywords(), *tree);
  const bool parsed = parser.Parse();
  EXPECT_EQ(parsed, tree->NodeCount() != 0);
  return tree;
}

// The first node, depth first, whose keyword id is `id`; null when none.
const HtmlTreeNode* Find(const HtmlDocTree& tree, uint32_t id, int skip = 0) {
  const HtmlTreeNode* found = nullptr;
  OrvelParser::WalkNodes(tree.TopLevel(), [&](const HtmlTreeNode& node) {
    if (found == nullptr && node.Id() == id && skip-- == 0) found = &node;
    return found == nullptr;
  });
  return found;
}

// The tree as text: ids, with text nodes in quotes and children in brackets.
std::string Dump(const HtmlTreeNode::List& list) {
  std::string out;
  for (const HtmlTreeNode::Entry& entry : list) {
    if (!out.empty()) out += ",";
    if (entry->IsText()) {
      out += "'" + std::string(entry->Utf8Text()) + "'";
      continue;
    }
    out += std::to_string(entry->Id());
    if (!entry->Children().empty()) out += "[" + Dump(entry->Children()) + "]";
  }
  return out;
}

std::u16string Text(const HtmlTreeNode& node) {
  std::u16string text = u"stale";
  node.GetText(text);
  return text;
}

// Runs `work` on a thread with a stack of `stack_bytes`.
void RunWithStack(size_t stack_bytes, const std::function<void()>& work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, stack_bytes);
  pthread_t thread;
  auto* task = new std::function<void()>(work);
  ASSERT_EQ(pthread_create(
                &thread, &attributes,
                [](void* argument) -> void* {
                  auto* f = static_cast<std::function<void()>*>(argument);
                  (*f)();
                  delete f;
                  return nullptr;
                },
                task),
            0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

TEST(HtmlKeywordTable, GivesElementsTheirIdsAndAttributes) {
  const HtmlKeywordTable& k = Keywords();
  EXPECT_EQ(k.Word("pre"), 54u);
  EXPECT_EQ(k.Word("br"), 28u);
  EXPECT_EQ(k.Word("a"), 31u | HtmlKeywordTable::kLinkAtt);
  EXPECT_EQ(k.Word("area"), 6u | HtmlKeywordTable::kLinkAtt);
  EXPECT_EQ(k.Word("title"), 10u | HtmlKeywordTable::kTitleAtt);
  EXPECT_EQ(k.Word("table"), 50u);
  EXPECT_EQ(k.Word("tr"), 15u);
  EXPECT_EQ(k.Word("td"), 21u);
  EXPECT_EQ(k.Word("th"), 27u);
  EXPECT_EQ(k.Word("thead"), 3u);
  EXPECT_EQ(k.Word("tbody"), 39u);
  EXPECT_EQ(k.Word("tfoot"), 9u);
  EXPECT_EQ(k.Word("p"), 12u);
  EXPECT_EQ(k.Word("h3"), 40u);
  EXPECT_EQ(k.Word("li"), 5u);
  EXPECT_EQ(k.Word("summary"), 33u);
  EXPECT_EQ(k.Word("script"), 0u);
  EXPECT_EQ(k.Word("select"), 16u);
  EXPECT_EQ(k.Word("my-widget"), 7u);
  EXPECT_EQ(k.Word(""), 7u);
  EXPECT_EQ(k.Word("P"), 7u);  // names are lower case
}

TEST(HtmlKeywordTable, ElementTableIsConsistent) {
  std::set<std::string> names;
  std::set<uint32_t> ids;
  for (const OrvelParser::HtmlElementRow& row : OrvelParser::HtmlElementTable()) {
    EXPECT_TRUE(names.insert(row.name).second) << row.name;
    EXPECT_LT(row.id, 256u) << row.name;
    EXPECT_EQ(row.attributes & HtmlKeywordTable::kIdMask, 0u) << row.name;
    EXPECT_NE(row.id, uint32_t{OrvelParser::kIdText}) << row.name;
    ids.insert(row.id);
  }
  // Every id the layout treats specially has an element, but for two of the
  // paragraph-before ids, which no element needs.
  for (uint32_t id : {0, 4, 10, 14, 16, 20, 26, 32, 12, 18, 40, 42, 44, 46, 5, 11, 17, 22, 33, 54, 28, 31, 50,
                      15, 21, 27, 3, 39, 9}) {
    EXPECT_EQ(ids.count(id), 1u) << id;
  }
  EXPECT_EQ(ids.count(23), 0u);
  EXPECT_EQ(ids.count(49), 0u);
}

TEST(HtmlKeywordTable, ElementNumbersTellElementsOfOneIdApart) {
  const HtmlKeywordTable& k = Keywords();
  const auto rows = OrvelParser::HtmlElementTable();
  for (size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(k.Element(rows[i].name), i + 1) << rows[i].name;
    EXPECT_EQ(HtmlKeywordTable::ElementName(static_cast<OrvelParser::ElementNumber>(i + 1)), rows[i].name);
  }
  EXPECT_EQ(k.Word("nav"), k.Word("footer"));
  EXPECT_NE(k.Element("nav"), k.Element("footer"));
  EXPECT_EQ(k.Element("my-widget"), OrvelParser::kNoElement);
  EXPECT_EQ(HtmlKeywordTable::ElementName(OrvelParser::kNoElement), "");
  EXPECT_EQ(HtmlKeywordTable::ElementName(static_cast<OrvelParser::ElementNumber>(rows.size() + 1)), "");
}

TEST(HtmlDocParser, NodesKnowTheirElementAndWhichAttributesArePresent) {
  const auto tree = Parse("<nav hidden class=\"\" ARIA-HIDDEN=true>x</nav><my-box>y</my-box><svg><a>z</a></svg>");
  const HtmlTreeNode* nav = Find(*tree, OrvelParser::kIdSection);
  ASSERT_NE(nav, nullptr);
  EXPECT_EQ(nav->Name(), "nav");
  EXPECT_EQ(nav->Element(), Keywords().Element("nav"));
  std::string_view value = "stale";
  EXPECT_TRUE(nav->FindParam("hidden", value));
  EXPECT_EQ(value, "");
  EXPECT_TRUE(nav->FindParam("class", value));
  EXPECT_EQ(value, "");
  EXPECT_TRUE(nav->FindParam("aria-hidden", value));
  EXPECT_EQ(value, "true");
  EXPECT_FALSE(nav->FindParam("id", value));
  EXPECT_FALSE(nav->FindParam("hidde", value));
  EXPECT_EQ(nav->Children()[0]->Name(), "");  // a text node
  EXPECT_FALSE(nav->Children()[0]->FindParam("hidden", value));
  const HtmlTreeNode* custom = Find(*tree, OrvelParser::kIdOther);
  ASSERT_NE(custom, nullptr);
  EXPECT_EQ(custom->Name(), "");
  // Inside SVG only the root has an element: the <a> there is not a link.
  const HtmlTreeNode* svg = Find(*tree, OrvelParser::kIdGraphics);
  ASSERT_NE(svg, nullptr);
  EXPECT_EQ(svg->Name(), "svg");
  EXPECT_EQ(svg->Children()[0]->Element(), OrvelParser::kNoElement);
}

TEST(HtmlDocParser, BuildsTheTreeOfADocument) {
  const auto tree = Parse(
      "<!-- first --><!DOCTYPE html><html><head><title> My \n  Page </title>"
      "<script>var x = '<p>';</script></head>"
      "<body><p class=intro>Hello &amp; <a href=\"/x?a=1&amp;b=2\">bye&nbsp;now</a></p>"
      "<map><area href=y></map><svg><title>icon</title></svg></body></html>");
  // The comment never stands first: the list holds the html element only.
  ASSERT_EQ(tree->TopLevel().size(), 1u);
  EXPECT_EQ(tree->TopLevel()[0]->Id(), 1u);
  EXPECT_EQ(Dump(tree->TopLevel()),
            "1[10[10[' My \n  Page '],0['var x = '<p>';']],"
            "1[12['Hello & ',31['bye\xC2\xA0now']],13[6],26[7['icon']]]]");
  EXPECT_EQ(tree->NodeCount(), 16u);
  EXPECT_EQ(tree->DocumentCharset(), Orvel::Utf8Charset);

  // The title, and only the HTML one, carries the title attribute.
  std::u16string title = u"stale";
  tree->GetText(title, HtmlKeywordTable::kTitleAtt);
  EXPECT_EQ(title, u"My Page");

  const HtmlTreeNode* p = Find(*tree, OrvelParser::kIdParagraph);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(Text(*p->Children()[0]), u"Hello & ");
  EXPECT_EQ(Text(*p), u"Hello & bye\u00a0now");
  std::string value = "stale";
  p->GetParam("class", value);
  EXPECT_EQ(value, "intro");
  p->GetParam("id", value);
  EXPECT_EQ(value, "");

  const HtmlTreeNode* anchor = Find(*tree, OrvelParser::kIdAnchor);
  ASSERT_NE(anchor, nullptr);
  EXPECT_TRUE(anchor->HasAttribute(HtmlKeywordTable::kLinkAtt));
  anchor->GetParam("href", value);
  EXPECT_EQ(value, "/x?a=1&b=2");
  const HtmlTreeNode* area = Find(*tree, OrvelParser::kIdArea);
  ASSERT_NE(area, nullptr);
  EXPECT_EQ(area->Keyword(), 6u | HtmlKeywordTable::kLinkAtt);
  EXPECT_FALSE(p->HasAttribute(HtmlKeywordTable::kLinkAtt));
}

// The tree the parser builds for markup that the tree-construction rules
// repair, in keyword ids: misnested formatting (the adoption agency), text
// foster-parented out of a table, implied rows and bodies, SVG content (kIdOther
// below the svg root), a comment that keeps the text on its two sides apart,
// select content, and a second <body> whose attributes join the first.
TEST(HtmlDocParser, RepairsMarkupAsTheStandardDoes) {
  const struct {
    const char* html;
    const char* tree;
  } kCases[] = {
      {"<p><b>1<i>2</b>3</i>4", "1[10,1[12[2['1',2['2']],2['3'],'4']]]"},
      {"<table>x<tr><td>c</table>", "1[10,1['x',50[39[15[21['c']]]]]]"},
      {"<svg><a>s</a><title>t</title></svg>", "1[10,1[26[7['s'],7['t']]]]"},
      {"<div>a <!-- c --> b</div>", "1[10,1[18['a ',' b']]]"},
      {"<select><div>o</div></select>", "1[10,1[16[18['o']]]]"},
      {"<body a=1><body b=2>x", "1[10,1['x']]"},
      {"<ul><li>a<li>b</ul>", "1[10,1[42[5['a'],5['b']]]]"},
  };
  for (const auto& c : kCases) {
    const auto tree = Parse(c.html);
    EXPECT_EQ(Dump(tree->TopLevel()), c.tree) << c.html;
  }
  const auto bodies = Parse("<body a=1><body b=2>x");
  std::string value;
  bodies->TopLevel()[0]->Children()[1]->GetParam("b", value);
  EXPECT_EQ(value, "2");
  // An element closed by its end tag spans to the end of it; one closed by
  // the parser spans its start tag alone.
  const std::string page = "<div><p>one<p>two</div>";
  const auto spans = Parse(page);
  const HtmlTreeNode* first = Find(*spans, OrvelParser::kIdParagraph);
  const HtmlTreeNode* div = Find(*spans, OrvelParser::kIdDivision);
  ASSERT_NE(first, nullptr);
  ASSERT_NE(div, nullptr);
  EXPECT_EQ(first->SourceLength(), 3u);
  EXPECT_EQ(div->SourceLength(), page.size());
}

TEST(HtmlDocParser, ReadsSpansAndTableStructure) {
  const auto tree = Parse("<table><tr><td rowspan=\"2\" COLSPAN=3>a</td><th>b</th></tr></table>"
                          "<pre>\r\nx\n</pre><br><ul><li>one<li>two</ul>");
  EXPECT_EQ(Dump(tree->TopLevel()),
            "1[10,1[50[39[15[21['a'],27['b']]]],54['x\n'],28,42[5['one'],5['two']]]]");
  const HtmlTreeNode* td = Find(*tree, OrvelParser::kIdTd);
  ASSERT_NE(td, nullptr);
  std::string value;
  td->GetParam("rowspan", value);
  EXPECT_EQ(value, "2");
  td->GetParam("colspan", value);
  EXPECT_EQ(value, "3");
}

TEST(HtmlDocParser, SourcePositionsAreByteOffsetsOfTheUtf8Text) {
  const std::string page = "<body><p>ab&amp;c</p>\xC3\xA9<b>x</b>";
  const auto tree = Parse(page);
  const HtmlTreeNode* p = Find(*tree, OrvelParser::kIdParagraph);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(p->SourcePosition(), page.find("<p>"));
  EXPECT_EQ(p->SourceLength(), std::string("<p>ab&amp;c</p>").size());
  const HtmlTreeNode& text = *p->Children()[0];
  EXPECT_EQ(text.SourcePosition(), page.find("ab&amp;c"));
  EXPECT_EQ(text.SourceLength(), 8u);
  const HtmlTreeNode* bold = Find(*tree, OrvelParser::kIdPhrase);
  ASSERT_NE(bold, nullptr);
  EXPECT_EQ(bold->Children()[0]->SourcePosition(), page.find("x</b>"));
  // The html and head elements are implied: no span.
  EXPECT_EQ(tree->TopLevel()[0]->SourceLength(), 0u);
  // In Windows-1252 the same document has one byte fewer before the <b>, but
  // positions count the UTF-8 form.
  const auto latin = Parse("<body><p>ab&amp;c</p>\xE9<b>x</b>", Orvel::Windows1252Charset);
  EXPECT_EQ(Find(*latin, OrvelParser::kIdPhrase)->Children()[0]->SourcePosition(), page.find("x</b>"));
  // A byte-order mark is not part of the text.
  const auto marked = Parse("\xEF\xBB\xBF" + page);
  EXPECT_EQ(Find(*marked, OrvelParser::kIdParagraph)->SourcePosition(), page.find("<p>"));
}

TEST(HtmlDocParser, EmptyInputGivesNoNodes) {
  const auto tree = Parse("");
  EXPECT_EQ(tree->NodeCount(), 0u);
  EXPECT_TRUE(tree->TopLevel().empty());
  std::u16string title = u"stale";
  tree->GetText(title, HtmlKeywordTable::kTitleAtt);
  EXPECT_EQ(title, u"");
}

TEST(HtmlDocParser, NulAndInvalidBytesDoNotStopTheParse) {
  const char page[] = "<p>a\0b\xFF" "c</p><p>d</p>";
  const auto tree = Parse(std::string(page, sizeof page - 1));
  const HtmlTreeNode* second = Find(*tree, OrvelParser::kIdParagraph, 1);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(Text(*second), u"d");
  const std::u16string first = Text(*Find(*tree, OrvelParser::kIdParagraph));
  EXPECT_EQ(first.find(u'\0'), std::u16string::npos);
  EXPECT_NE(first.find(u"\uFFFDc"), std::u16string::npos);
}

TEST(HtmlDocParser, FindsTheCharsetAsBrowsersDo) {
  const std::string utf8 = "<html><head><meta charset=windows-1251></head><body><p>Съешь же ещё</p></body></html>";
  const std::string cp1251 = Convert(Orvel::Utf8Charset, Cs(1251), utf8);
  const std::string expected = Dump(Parse(utf8)->TopLevel());
  // Declared by the document, given by the caller, or both.
  auto tree = Parse(cp1251, Orvel::UnknownCharset);
  EXPECT_EQ(tree->DocumentCharset(), Cs(1251));
  EXPECT_EQ(Dump(tree->TopLevel()), expected);
  EXPECT_EQ(Dump(Parse(cp1251, Cs(1251))->TopLevel()), expected);
  // Valid UTF-8 is UTF-8, whatever the page declares.
  EXPECT_EQ(Parse(utf8, Orvel::UnknownCharset)->DocumentCharset(), Orvel::Utf8Charset);
  // A charset this system cannot convert counts as unknown.
  EXPECT_EQ(Parse(cp1251, Cs(4242))->DocumentCharset(), Cs(1251));
  // A byte-order mark wins over the given charset and the declaration.
  tree = Parse("\xEF\xBB\xBF" + utf8, Cs(1251));
  EXPECT_EQ(tree->DocumentCharset(), Orvel::Utf8Charset);
  EXPECT_EQ(Dump(tree->TopLevel()), expected);
  // 16-bit text, with and without a byte-order mark.
  const std::string wide = Convert(Orvel::Utf8Charset, Orvel::Utf16LECharset, utf8);
  EXPECT_EQ(Dump(Parse(wide, Orvel::Utf16LECharset)->TopLevel()), expected);
  EXPECT_EQ(Dump(Parse("\xFF\xFE" + wide, Orvel::Windows1252Charset)->TopLevel()), expected);
  EXPECT_EQ(Dump(Parse(Convert(Orvel::Utf8Charset, OrvelCharset::Utf16BECharset, utf8),
                       Orvel::UnknownCharset)->TopLevel()),
            expected);
  // Nothing to go by: Windows-1252.
  EXPECT_EQ(Parse("<p>caf\xE9</p>", Orvel::UnknownCharset)->DocumentCharset(), Orvel::Windows1252Charset);
}

TEST(HtmlDocParser, EveryCharsetFamilyGivesTheTreeOfItsUtf8Form) {
  const std::pair<int32_t, const char*> pages[] = {
      {28592, "Zażółć gęślą jaźń"}, {28595, "Съешь же ещё"},   {28597, "Ξεσκεπάζω"},
      {1250, "Příliš žluťoučký"},   {1251, "Съешь же ещё"},    {1253, "Ξεσκεπάζω"},
      {1254, "yağız şoföre"},       {1255, "דג סקרן"},          {1256, "صِف خَلقَ"},
      {1257, "Įlinkdama"},          {20866, "Съешь же ещё"},   {21866, "Чуєш їх"},
      {932, "いろはにほへと 日本語"}, {51932, "いろはにほへと"}, {50220, "いろはにほへと"},
      {936, "我能吞下玻璃"},         {54936, "我能吞下玻璃"},    {950, "我能吞下玻璃"},
      {949, "나는 유리를"},          {874, "เป็นมนุษย์"},         {1252, "Œuvre à €5"},
  };
  for (const auto& [code_page, text] : pages) {
    const std::string page = std::string("<title>") + text + "</title><table><tr><td>" + text +
                             "<a href=x>" + text + "</a></td></tr></table><p>" + text + "</p>";
    const std::string encoded = Convert(Orvel::Utf8Charset, Cs(code_page), page);
    ASSERT_NE(encoded, page) << code_page;
    const auto tree = Parse(encoded, Cs(code_page));
    EXPECT_EQ(Dump(tree->TopLevel()), Dump(Parse(page)->TopLevel())) << code_page;
    std::u16string title;
    tree->GetText(title, HtmlKeywordTable::kTitleAtt);
    std::u16string expected;
    OrvelCharset::AppendUtf16(text, std::strlen(text), expected);
    EXPECT_EQ(title, expected) << code_page;
  }
}

TEST(DecodeDocument, CutsAtTheLimitOnACharacterBoundary) {
  const std::string page = "abcd\xC3\xA9" "f";
  MemoryBuffer input(page.data(), static_cast<unsigned int>(page.size()), MemoryBuffer::kReadInPlace);
  std::string utf8;
  EXPECT_EQ(OrvelParser::DecodeDocument(input, Orvel::Utf8Charset, utf8, 5), Orvel::Utf8Charset);
  EXPECT_EQ(utf8, "abcd");
  MemoryBuffer again(page.data(), static_cast<unsigned int>(page.size()), MemoryBuffer::kReadInPlace);
  OrvelParser::DecodeDocument(again, Orvel::Utf8Charset, utf8, 6);
  EXPECT_EQ(utf8, "abcd\xC3\xA9");
  // Larger than the first read, and ending in a truncated character.
  const std::string big = std::string(3 << 20, 'x') + "\xE2\x82";
  MemoryBuffer large(big.data(), static_cast<unsigned int>(big.size()), MemoryBuffer::kReadInPlace);
  OrvelParser::DecodeDocument(large, Orvel::Utf8Charset, utf8);
  EXPECT_EQ(utf8.size(), (3u << 20) + 3);
  EXPECT_EQ(utf8.substr(utf8.size() - 4), "x\xEF\xBF\xBD");
}

// The deepest nesting of element nodes below `list`.
size_t Depth(const HtmlTreeNode::List& list) {
  size_t deepest = 0;
  std::vector<std::pair<const HtmlTreeNode::List*, size_t>> stack{{&list, 1}};
  while (!stack.empty()) {
    auto [current, depth] = stack.back();
    stack.pop_back();
    for (const HtmlTreeNode::Entry& entry : *current) {
      deepest = std::max(deepest, depth);
      stack.emplace_back(&entry->Children(), depth + 1);
    }
  }
  return deepest;
}

std::string Nested(int levels, const std::string& open, const std::string& close) {
  std::string page;
  for (int i = 0; i < levels; ++i) page += open;
  page += "deep";
  for (int i = 0; i < levels; ++i) page += close;
  return page;
}

// The tree builder caps its stack of open elements at 512 (html is depth
// 1): a start tag that would open an element deeper is dropped and its
// content goes into the element at the limit. Parsing needs no stack frame
// per level, so deep documents parse on a small stack.
TEST(HtmlDocParser, CapsTheNestingDepthAndNeedsNoDeepStack) {
  RunWithStack(1 << 20, [] {
    const auto divs = Parse(Nested(20000, "<div>", "</div>"));
    EXPECT_EQ(Depth(divs->TopLevel()), 513u);  // 512 elements, then the text
    std::u16string text;
    divs->TopLevel()[0]->GetText(text);
    EXPECT_EQ(text, u"deep");
    const auto tables = Parse(Nested(20000, "<table><tr><td>", "</td></tr></table>"));
    EXPECT_LE(Depth(tables->TopLevel()), 517u);  // implied tbody and tr may pass the cap by a few
    tables->TopLevel()[0]->GetText(text);
    EXPECT_EQ(text, u"deep");
    const auto svg = Parse(Nested(20000, "<svg><g>", "</g></svg>"));
    EXPECT_LE(Depth(svg->TopLevel()), 513u);
  });
  // Void and raw-text elements still come at the limit; the dropped
  // element's end tags close what they name in the elements kept.
  const auto page = Parse(Nested(600, "<div>", "</div>") + "<p>after</p>");
  const HtmlTreeNode* p = Find(*page, OrvelParser::kIdParagraph);
  ASSERT_NE(p, nullptr);
  std::u16string text;
  page->TopLevel()[0]->GetText(text);
  EXPECT_EQ(text, u"deepafter");
  const auto at_limit = Parse(Nested(600, "<div>", "</div>").insert(3000, "<br><script>s()</script>"));
  EXPECT_NE(Find(*at_limit, OrvelParser::kIdBr), nullptr);
  EXPECT_NE(Find(*at_limit, OrvelParser::kIdScript), nullptr);
}

TEST(HtmlTreeNode, ReleasesDeepTreesWithoutRecursionAndKeepsSharedSubtrees) {
  RunWithStack(256 << 10, [] {
    OrvelParser::NodeArena arena;
    HtmlTreeNode::Entry root = HtmlTreeNode::Make(arena, OrvelParser::kIdDivision, 0, 0);
    HtmlTreeNode::Entry kept;
    HtmlTreeNode* tip = root.Get();
    for (int i = 0; i < 1000000; ++i) {
      HtmlTreeNode::Entry child = HtmlTreeNode::Make(arena, OrvelParser::kIdDivision, 0, 0);
      tip->Children().PushBack(arena, child);
      tip = child.Get();
      if (i == 10) kept = child;
    }
    HtmlTreeNode::Entry leaf = HtmlTreeNode::Make(arena, OrvelParser::kIdText, 0, 0);
    leaf->SetText(arena, "end");
    tip->Children().PushBack(arena, leaf);
    leaf.Reset();
    root.Reset();
    // The subtree held elsewhere outlives its parent, whole.
    EXPECT_EQ(kept.Count(), 1);
    EXPECT_EQ(Depth(kept->Children()), 999990u);
    std::u16string text;
    kept->GetText(text);
    EXPECT_EQ(text, u"end");
  });
}

TEST(HtmlDocParser, ParsesAFiftyMegabyteTextNode) {
  const std::string page = "<p>" + std::string(50 << 20, 'a') + "</p>";
  const auto tree = Parse(page);
  const HtmlTreeNode* p = Find(*tree, OrvelParser::kIdParagraph);
  ASSERT_NE(p, nullptr);
  ASSERT_EQ(p->Children().size(), 1u);
  EXPECT_EQ(p->Children()[0]->Utf8Text().size(), 50u << 20);
  EXPECT_EQ(p->Children()[0]->SourceLength(), 50u << 20);
}

}  // namespace
