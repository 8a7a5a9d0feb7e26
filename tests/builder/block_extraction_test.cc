// End to end in the blocks layout: small pages of today's kind, built,
// ranked with the blocks tuning and written, compared byte for byte.
#include <gtest/gtest.h>

#include <string>

#include "api/extract_text.h"
#include "builder/build_tree.h"
#include "zestra/model/k_table.h"
#include "zestra/charset/charset_conversion.h"
#include "zestra/stream/memory_buffer.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;

// The text as UTF-8, for readable failures.
std::string Extract(const std::string& page, LayoutMode mode = LayoutMode::kBlocks) {
  OrvelFile::MemoryBuffer input(page.data(), static_cast<unsigned int>(page.size()),
                                OrvelFile::MemoryBuffer::kReadInPlace);
  SmartPtr<KTable> root(new KTable(nullptr, 1, 3, 0));
  BuildTreeFromStream(input, Orvel::Utf8Charset, root, nullptr, mode);
  OrvelFile::MemoryBuffer out(4096);
  DocumentType type = LinkDocument;
  ExtractText(root, out, &type, mode);
  std::u16string text(out.vSize() / 2, u'\0');
  out.vSeekG(0, Orvel::kSeekBegin, Orvel::kSeekAbsolute);
  out.Get(text.data(), out.vSize());
  std::string utf8;
  OrvelCharset::AppendUtf8(text.data(), text.size(), utf8);
  return utf8;
}

const char kArticle[] =
    "<h1>Rivers Return to the Valley</h1>"
    "<p class=byline>By Ana Ruiz</p>"
    "<p>After three dry summers the rivers of the valley are running again, and the farmers who "
    "stayed are planting the fields their parents planted, with grain they kept in jars.</p>"
    "<p>The water came back slowly. First the springs in the hills, then the creeks, and in "
    "April the old riverbed filled from bank to bank for the first time since the drought.</p>"
    "<p>Nobody in the village expects the rain to last. But for now the mills turn, the school "
    "garden is green, and the market on Saturday sells tomatoes grown a mile away.</p>";

const char kArticleText[] =
    "Rivers Return to the Valley\n\n"
    "By Ana Ruiz\n\n"
    "After three dry summers the rivers of the valley are running again, and the farmers who stayed are "
    "planting the fields their parents planted, with grain they kept in jars.\n\n"
    "The water came back slowly. First the springs in the hills, then the creeks, and in April the old "
    "riverbed filled from bank to bank for the first time since the drought.\n\n"
    "Nobody in the village expects the rain to last. But for now the mills turn, the school garden is "
    "green, and the market on Saturday sells tomatoes grown a mile away.\n\n";

std::string ModernPage(const std::string& article) {
  return std::string(
             "<!DOCTYPE html><html><head><title>Rivers</title><style>.x{}</style></head><body>"
             "<header class=site-header><a href=/>Daily Valley</a>"
             "<nav><ul><li><a href=/n>News</a></li><li><a href=/s>Sport</a></li>"
             "<li><a href=/w>Weather</a></li><li><a href=/c>Culture</a></li></ul></nav></header>"
             "<div class=page><main><article>") +
         article +
         "<div class='share-buttons'><a href=#f>Share on Facebook</a> <a href=#t>Share on Twitter</a>"
         " Send this story to a friend by email</div>"
         "<section class=related><h2>Related stories</h2><ul>"
         "<li><a href=/1>Drought leaves farmers counting the cost</a></li>"
         "<li><a href=/2>The mills that outlived the river</a></li>"
         "<li><a href=/3>What the valley grows when the rain comes back</a></li></ul></section>"
         "<section id=comments><h2>Comments</h2>"
         "<div class=comment><p class=author>Pedro</p><p>My grandfather told us the river would come "
         "back one day and we did not believe him, now the children swim in it every evening.</p></div>"
         "<div class=comment><p class=author>Lucia</p><p>Good to read some good news for once, thank "
         "you for this story and for the photos of the fields last week.</p></div>"
         "</section></article></main>"
         "<aside class=sidebar><h2>Most read</h2><ol><li><a href=/a>Bridge closed for repairs</a></li>"
         "<li><a href=/b>New bakery opens on the square</a></li></ol>"
         "<p>Sign up for our newsletter and get the valley news every morning.</p></aside></div>"
         "<footer><p>Daily Valley is an independent newspaper owned by its readers since 1921.</p>"
         "<p><a href=/about>About</a> <a href=/privacy>Privacy</a> <a href=/contact>Contact</a></p></footer>"
         "</body></html>";
}

TEST(BlockExtractionTest, ModernArticlePageGivesTheArticle) {
  EXPECT_EQ(Extract(ModernPage(kArticle)), kArticleText);
  // The tables layout, built for pages laid out with tables, keeps every
  // word of it.
  EXPECT_NE(Extract(ModernPage(kArticle), LayoutMode::kTables).find("Share on Facebook"), std::string::npos);
}

TEST(BlockExtractionTest, HiddenBlocksNeverAppear) {
  const std::string article = std::string(kArticle) +
                              "<div hidden><p>Hidden paragraph with many words that a reader never sees on "
                              "the page and that no extraction may return to its caller.</p></div>"
                              "<p style='display:none'>Collapsed paragraph never shown to the reader.</p>";
  EXPECT_EQ(Extract(ModernPage(article)), kArticleText);
}

TEST(BlockExtractionTest, WrapperNamedSidebarHoldingThePageIsKept) {
  const std::string page = std::string("<!DOCTYPE html><body><div class='has-sidebar sidebar-left'>") +
                           kArticle + "<nav><a href=/1>One</a> <a href=/2>Two</a></nav></div>";
  EXPECT_EQ(Extract(page), kArticleText);
}

}  // namespace
}  // namespace ZestraNS
