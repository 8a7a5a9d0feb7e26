// The Markdown and HTML of zestra::Extract: exact bytes for a page with
// every structure, the same words as the text on the development set, and
// nothing unsafe in the HTML whatever the page holds.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "development_set.h"
#include "snippet_pages.h"
#include "zestra/base/wide_chars.h"
#include "zestra/charset/charset_conversion.h"
#include "zestra/html/html_doc_parser.h"
#include "zestra/html/html_doc_tree.h"
#include "zestra/html/html_tree_node.h"
#include "zestra/stream/memory_buffer.h"
#include "builder/keyword_table.h"
#include "zestra/zestra.h"

namespace zestra {
namespace {

// The words of UTF-8 text, split at white space as the engine sees it.
std::vector<std::u16string> Words(const std::string& utf8) {
  std::u16string units;
  OrvelCharset::AppendUtf16(utf8.data(), utf8.size(), units);
  std::vector<std::u16string> words(1);
  for (char16_t c : units) {
    if (Orvel::IsWhiteSpace(c)) {
      if (!words.back().empty()) words.emplace_back();
    } else {
      words.back() += c;
    }
  }
  if (words.back().empty()) words.pop_back();
  return words;
}

bool IsAsciiPunct(char c) { return c > 0x20 && c < 0x7F && !std::isalnum(static_cast<unsigned char>(c)); }

// The text of the Markdown this library writes, without its markup.
std::string MarkdownText(const std::string& markdown) {
  std::string text;
  std::size_t fence = 0;  // the open code fence's length; 0 outside one
  std::size_t at = 0;
  while (at <= markdown.size()) {
    std::size_t end = markdown.find('\n', at);
    if (end == std::string::npos) end = markdown.size();
    std::string_view line(markdown.data() + at, end - at);
    at = end + 1;
    // Container prefixes: quote marks, list markers, indentation; in code
    // only what can stand before code lines (indentation, quote marks).
    for (bool more = true; more;) {
      more = false;
      while (!line.empty() && line.front() == ' ') line.remove_prefix(1);
      if (line.starts_with(">")) {
        line.remove_prefix(1);
        more = true;
      } else if (fence > 0) {
        continue;
      } else if (line.starts_with("- ")) {
        line.remove_prefix(2);
        more = true;
      } else {
        std::size_t digits = 0;
        while (digits < line.size() && std::isdigit(static_cast<unsigned char>(line[digits]))) ++digits;
        if (digits > 0 && line.substr(digits).starts_with(". ")) {
          line.remove_prefix(digits + 2);
          more = true;
        }
      }
    }
    if (fence > 0) {
      if (line.find_first_not_of('`') == std::string_view::npos && line.size() >= fence) {
        fence = 0;
      } else {
        text.append(line);
        text += '\n';
      }
      continue;
    }
    if (line.starts_with("```")) {
      fence = std::min(line.size(), line.find_first_not_of('`'));
      continue;
    }
    const bool table_row = line.starts_with("|");
    if (line.starts_with("| ---")) continue;
    while (line.starts_with("#")) line.remove_prefix(1);
    for (std::size_t i = 0; i < line.size(); ++i) {
      const char c = line[i];
      if (c == '\\' && i + 1 < line.size() && IsAsciiPunct(line[i + 1])) {
        text += line[++i];
      } else if (c == '\\' && i + 1 == line.size()) {
        text += ' ';  // a line break
      } else if (c == '`') {
        std::size_t run = 1;
        while (i + run < line.size() && line[i + run] == '`') ++run;
        const std::size_t close = line.find(std::string(run, '`'), i + run);
        text.append(line.substr(i + run, close - i - run));
        i = close + run - 1;
      } else if (c == ']' && i + 1 < line.size() && line[i + 1] == '(') {
        std::size_t j = i + 2;
        while (j < line.size() && line[j] != ')') j += line[j] == '\\' ? 2 : 1;
        i = j;
      } else if (c == '|' && table_row) {
        text += ' ';
      } else if (c != '*' && c != '[') {
        text += c;
      }
    }
    text += '\n';
  }
  return text;
}

// The text of the HTML this library writes: block tags are spaces, inline
// tags nothing, the five escapes decoded.
std::string HtmlText(const std::string& html) {
  static const std::set<std::string> kBlocks = {"p",  "h1", "h2",         "h3",  "h4",    "h5", "h6", "ul", "ol",
                                                "li", "br", "blockquote", "pre", "table", "tr", "td", "th"};
  std::string text;
  for (std::size_t i = 0; i < html.size(); ++i) {
    if (html[i] == '<') {
      const std::size_t end = html.find('>', i);
      std::string name = html.substr(i + 1, end - i - 1);
      if (!name.empty() && name[0] == '/') name.erase(0, 1);
      name = name.substr(0, name.find(' '));
      if (kBlocks.count(name) != 0) text += ' ';
      i = end;
    } else if (html[i] == '&') {
      const std::size_t end = html.find(';', i);
      const std::string entity = html.substr(i, end - i + 1);
      text += entity == "&amp;" ? "&" : entity == "&lt;" ? "<" : entity == "&gt;" ? ">" : entity == "&quot;" ? "\"" : "'";
      i = end;
    } else {
      text += html[i];
    }
  }
  return text;
}

// A page with every structure the writers know, inside a page whose
// navigation the ranking drops.
const char kArticle[] = R"page(<!DOCTYPE html><html lang="en"><head><title>Rivers - The Site</title>
<base href="https://example.org/news/">
<script>var tracking = 1;</script><style>p { color: red }</style></head>
<body><nav><a href="/">Home</a> | <a href="/news/">News</a> | <a href="/about">About</a> | <a href="/contact">Contact</a></nav>
<article>
<h1>Rivers of the <em>North</em></h1>
<p>The first paragraph has <em>emphasis</em>, <strong>strong words</strong>, <code>inline_code()</code> and a
<a href="rivers/tay.html">relative link</a>, with enough plain words to be kept by the ranking.</p>
<p>Line one<br>line two with <a href="javascript:alert(1)">a script link</a> and <b>bold <i>both</i></b>.</p>
<h2>Lists</h2>
<ul><li>First item</li><li>Second item<ol start="3"><li>Nested three</li><li>Nested four</li></ol></li><li>Third *item*</li></ul>
<blockquote><p>A quoted sentence with more than a few words in it.</p><p>A second quoted paragraph.</p></blockquote>
<pre><code class="language-cpp">int main() {
  return 0;  // ``ticks``
}
</code></pre>
<table><tr><th>River</th><th>Length</th></tr><tr><td>Tay</td><td>188 km</td></tr><tr><td>Spey | Dee</td><td colspan="1">172 km</td></tr></table>
<p>1. Not a list, # not a heading, and a_snake_case name with _under_ and 5 &lt; 6 &amp; more.</p>
</article>
<footer><a href="/privacy">Privacy</a> | <a href="/terms">Terms</a> | <a href="/cookies">Cookies</a></footer>
</body></html>)page";

const char kArticleMarkdown[] = R"page(# Rivers of the *North*

The first paragraph has *emphasis*, **strong words**, `inline_code()` and a [relative link](https://example.org/news/rivers/tay.html), with enough plain words to be kept by the ranking.

Line one\
line two with a script link and **bold *both***.

## Lists

- First item
- Second item
  3. Nested three
  4. Nested four
- Third \*item\*

> A quoted sentence with more than a few words in it.
>
> A second quoted paragraph.

```cpp
int main() {
  return 0;  // ``ticks``
}
```

| River | Length |
| --- | --- |
| Tay | 188 km |
| Spey \| Dee | 172 km |

1\. Not a list, # not a heading, and a_snake_case name with \_under\_ and 5 \< 6 & more.
)page";

const char kArticleHtml[] = R"page(<h1>Rivers of the <em>North</em></h1>
<p>The first paragraph has <em>emphasis</em>, <strong>strong words</strong>, <code>inline_code()</code> and a <a href="https://example.org/news/rivers/tay.html">relative link</a>, with enough plain words to be kept by the ranking.</p>
<p>Line one<br>
line two with a script link and <strong>bold <em>both</em></strong>.</p>
<h2>Lists</h2>
<ul>
<li>First item</li>
<li>Second item
<ol start="3">
<li>Nested three</li>
<li>Nested four</li>
</ol>
</li>
<li>Third *item*</li>
</ul>
<blockquote>
<p>A quoted sentence with more than a few words in it.</p>
<p>A second quoted paragraph.</p>
</blockquote>
<pre><code>int main() {
  return 0;  // ``ticks``
}
</code></pre>
<table>
<tr><th>River</th><th>Length</th></tr>
<tr><td>Tay</td><td>188 km</td></tr>
<tr><td>Spey | Dee</td><td>172 km</td></tr>
</table>
<p>1. Not a list, # not a heading, and a_snake_case name with _under_ and 5 &lt; 6 &amp; more.</p>
)page";

TEST(ArticleOutputTest, EveryStructureExactly) {
  Options options;
  options.format = Format::kMarkdown;
  const Result markdown = Extract(kArticle, options);
  EXPECT_EQ(markdown.formatted, kArticleMarkdown);
  EXPECT_EQ(markdown.format, Format::kMarkdown);
  options.format = Format::kHtml;
  const Result html = Extract(kArticle, options);
  EXPECT_EQ(html.formatted, kArticleHtml);
  // The text is what it is without a format, and has the same words.
  EXPECT_EQ(html.text, Extract(kArticle).text);
  EXPECT_EQ(Words(MarkdownText(markdown.formatted)), Words(markdown.text));
  EXPECT_EQ(Words(HtmlText(html.formatted)), Words(html.text));
  EXPECT_EQ(Extract(kArticle).formatted, "");
}

TEST(ArticleOutputTest, ImagesLinksAndAddressesOnlyWhenSafe) {
  const char page[] =
      "<p>Words before the picture, <a href='../up.html'>up</a>, <a href='#note'>note</a>, "
      "<a href='mailto:a@b.org'>mail</a>, <a href=' JaVaScRiPt:alert(1)'>x</a>, "
      "<a href='data:text/html,hi'>y</a>.<img src='pic.png' alt='A \"pic\"'>"
      "<img src='data:image/png;base64,AAAA' data-src='lazy.png' alt='lazy'><img src='javascript:x' alt='bad'></p>";
  Options options;
  options.format = Format::kMarkdown;
  options.url = "https://host.example/a/b/page.html";
  EXPECT_EQ(Extract(page, options).formatted,
            "Words before the picture, [up](https://host.example/a/up.html), "
            "[note](https://host.example/a/b/page.html#note), [mail](mailto:a@b.org), x, y.\n");
  options.images = true;
  EXPECT_EQ(Extract(page, options).formatted,
            "Words before the picture, [up](https://host.example/a/up.html), "
            "[note](https://host.example/a/b/page.html#note), [mail](mailto:a@b.org), x, "
            "y. ![A \"pic\"](https://host.example/a/b/pic.png)![lazy](https://host.example/a/b/lazy.png)\n");
  options.format = Format::kHtml;
  EXPECT_EQ(Extract(page, options).formatted,
            "<p>Words before the picture, <a href=\"https://host.example/a/up.html\">up</a>, "
            "<a href=\"https://host.example/a/b/page.html#note\">note</a>, <a href=\"mailto:a@b.org\">mail</a>, x, "
            "y. <img src=\"https://host.example/a/b/pic.png\" alt=\"A &quot;pic&quot;\">"
            "<img src=\"https://host.example/a/b/lazy.png\" alt=\"lazy\"></p>\n");
  // Without an address, relative links stay relative.
  options.url.clear();
  options.images = false;
  options.format = Format::kMarkdown;
  EXPECT_EQ(Extract("<p><a href='x/y z.html'>rel</a> words of the page</p>", options).formatted,
            "[rel](x/y%20z.html) words of the page\n");
}

// Every element and attribute of `html`, parsed as a browser would, is in
// the writer's allowlist, and every address is http, https or mailto.
void ExpectOnlyAllowed(const std::string& html) {
  static const std::set<std::string> kElements = {
      "html", "head", "body", "p",     "h1", "h2", "h3", "h4", "h5", "h6",  "ul",  "ol", "li", "blockquote",
      "pre",  "code", "table", "tbody", "tr", "th", "td", "em", "strong", "sub", "sup", "a",  "br", "img"};
  static const std::set<std::string> kAttributes = {"href", "src", "alt", "start", "colspan"};
  OrvelFile::MemoryBuffer input(html.data(), static_cast<unsigned int>(html.size()), OrvelFile::MemoryBuffer::kReadInPlace);
  OrvelParser::HtmlDocTree tree(Orvel::Utf8Charset);
  OrvelParser::HtmlDocParser(input, ZestraNS::KeywordTable(), tree).Parse();
  OrvelParser::WalkNodes(tree.TopLevel(), [&](const OrvelParser::HtmlTreeNode& node) {
    if (node.IsText()) return false;
    EXPECT_EQ(kElements.count(std::string(node.Name())), 1u) << "element " << node.Name() << " in " << html;
    for (const char* name : {"onclick", "onerror", "onload", "style", "class", "id", "srcdoc", "formaction"}) {
      std::string_view value;
      EXPECT_FALSE(node.FindParam(name, value)) << name << " in " << html;
    }
    for (const char* name : {"href", "src"}) {
      std::string_view value;
      if (!node.FindParam(name, value)) continue;
      const bool safe = value.starts_with("https://") || value.starts_with("http://") || value.starts_with("mailto:");
      EXPECT_TRUE(safe) << name << "=" << value << " in " << html;
    }
    return true;
  });
  (void)kAttributes;
}

TEST(ArticleOutputTest, HostileMarkupLeavesNothingOutsideTheAllowlist) {
  const char* const kHostile[] = {
      "<p>Some words <script>alert(1)</script> and <style>*{}</style> more words here.</p>",
      "<p onclick='alert(1)' style='x' class='c' id='i'>Handlers <b onmouseover=alert(1)>bold</b> words.</p>",
      "<p>Links <a href='javascript:alert(1)'>one</a> <a href='JAVASCRIPT:alert(1)'>two</a> "
      "<a href='java\tscript:alert(1)'>three</a> <a href='data:text/html;base64,PHNjcmlwdD4='>four</a> "
      "<a href='vbscript:x'>five</a> <a href='  javascript:x'>six</a> words of text.</p>",
      "<p>Pictures <img src=x onerror=alert(1)> <img src='javascript:alert(1)'> <img src='data:image/svg+xml,<svg/onload=alert(1)>'> "
      "words of text.</p>",
      "<p>Vector <svg><script>alert(1)</script><a xlink:href='javascript:alert(1)'><text>svg link</text></a></svg> "
      "<math><mi xlink:href='javascript:alert(1)'>x</mi></math> words.</p>",
      "<p>Frames <iframe src='https://evil.example/'>inside</iframe><object data='x'></object> "
      "<form action='https://evil.example/'><input value='v'><button formaction='javascript:x'>go</button></form> words.</p>",
      "<p>Breaking out <a href='https://ok.example/\"><script>alert(1)</script>'>quote</a> "
      "<a href=\"https://ok.example/'onmouseover='alert(1)\">apostrophe</a> "
      "<img src='https://ok.example/x.png\" onerror=\"alert(1)' alt='\"><script>alert(1)</script>'> and "
      "&lt;script&gt;alert(1)&lt;/script&gt; as text.</p>",
      "<p>Broken <a href=\"https://ok.example/<b onclick=alert(1)>\">link</a> <p title='</p><script>x</script>'>"
      "<em <script>>odd</em> <table><tr><td onclick=x>cell</td><td>two</td></tr></table> words</p>",
  };
  for (const char* page : kHostile) {
    Options options;
    options.format = Format::kHtml;
    options.images = true;
    options.url = "https://host.example/";
    options.whole_text = true;
    const Result result = Extract(page, options);
    SCOPED_TRACE(page);
    EXPECT_FALSE(result.formatted.empty());
    EXPECT_EQ(result.formatted.find("<script"), std::string::npos);
    EXPECT_EQ(result.formatted.find("javascript:"), std::string::npos);
    EXPECT_EQ(result.formatted.find("data:"), std::string::npos);
    ExpectOnlyAllowed(result.formatted);
    options.format = Format::kMarkdown;
    const Result markdown = Extract(page, options);
    EXPECT_EQ(markdown.formatted.find("javascript:"), std::string::npos) << markdown.formatted;
    // No raw HTML: every '<' is escaped.
    for (std::size_t at = markdown.formatted.find('<'); at != std::string::npos; at = markdown.formatted.find('<', at + 1)) {
      EXPECT_TRUE(at > 0 && markdown.formatted[at - 1] == '\\') << markdown.formatted;
    }
  }
}

// Empty when `got` and `want` are equal; else where they part, with a few
// words of each around it.
std::string FirstDifference(const std::vector<std::u16string>& got, const std::vector<std::u16string>& want) {
  std::size_t at = 0;
  while (at < got.size() && at < want.size() && got[at] == want[at]) ++at;
  if (at == got.size() && at == want.size()) return {};
  auto around = [at](const std::vector<std::u16string>& words) {
    std::u16string joined;
    for (std::size_t i = at >= 5 ? at - 5 : 0; i < std::min(words.size(), at + 6); ++i) joined += words[i] + u" ";
    std::string utf8;
    OrvelCharset::AppendUtf8(joined.data(), joined.size(), utf8);
    return utf8;
  };
  return "word " + std::to_string(at) + ": got [" + around(got) + "] want [" + around(want) + "]";
}

// Empty when the words of `formatted` are those of `text`, except that a
// word of the text may be several words of `formatted`: the text runs the
// last word of a block into the next one where a run starting with a line
// feed trims the break before it (text_items.h), which the Markdown and
// HTML do not copy. Else where they part.
std::string WordDifference(const std::vector<std::u16string>& formatted, const std::vector<std::u16string>& text) {
  std::size_t f = 0;
  for (std::size_t t = 0; t < text.size(); ++t) {
    std::u16string joined;
    while (f < formatted.size() && joined.size() < text[t].size()) joined += formatted[f++];
    if (joined != text[t]) return FirstDifference(formatted, text);
  }
  return f == formatted.size() ? std::string() : FirstDifference(formatted, text);
}

// The Markdown and the HTML hold the words of the text, in order, on every
// page of `pages`; nearly always without joining any.
void ExpectSameWords(const std::vector<zestra_testing::DevelopmentPage>& pages) {
  std::size_t same = 0;  // pages whose words are the same without joining any
  for (const zestra_testing::DevelopmentPage& page : pages) {
    SCOPED_TRACE(page.source.string());
    Options options;
    options.format = Format::kMarkdown;
    const Result markdown = Extract(page.bytes, options);
    const std::vector<std::u16string> text = Words(markdown.text);
    EXPECT_EQ(WordDifference(Words(MarkdownText(markdown.formatted)), text), "");
    options.format = Format::kHtml;
    const Result html = Extract(page.bytes, options);
    EXPECT_EQ(WordDifference(Words(HtmlText(html.formatted)), text), "");
    same += Words(MarkdownText(markdown.formatted)) == text ? 1 : 0;
  }
  // On the development set only toc-missing runs a code block's last word
  // into the next paragraph.
  EXPECT_GE(same * 100, pages.size() * 98) << same << " of " << pages.size();
}

TEST(ArticleOutputTest, SameWordsAsTheTextOnDevelopmentSet) {
  const std::vector<zestra_testing::DevelopmentPage> pages = zestra_testing::DevelopmentPages();
  if (pages.empty()) GTEST_SKIP() << "no development set beside the source tree";
  ExpectSameWords(pages);
}

TEST(ArticleOutputTest, SameWordsAsTheTextOnSnippetPages) {
  const std::vector<zestra_testing::DevelopmentPage> pages = zestra_testing::SnippetPages();
  if (pages.empty()) GTEST_SKIP() << "no snippet pages beside the source tree";
  ExpectSameWords(pages);
}

}  // namespace
}  // namespace zestra
