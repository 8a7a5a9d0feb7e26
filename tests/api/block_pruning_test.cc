// End to end: small pages with what sits beside an article inside the
// winning region (a link bar, a teaser list, a gallery's captions and
// credits, a byline, a comment thread, a page of links in the site's
// furniture), extracted with zestra::Extract in the blocks layout under
// each favour, compared byte for byte; and the step that dropped a cell,
// as the tree tool reads it.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "zestra/api/block_pruning.h"
#include "zestra/zestra.h"

namespace {

const char kStory[] =
    "<p>After three dry summers the rivers of the valley are running again, and the farmers who stayed "
    "are planting the fields their parents planted, with grain they kept in jars.</p>"
    "<p>The water came back slowly. First the springs in the hills, then the creeks, and in April the old "
    "riverbed filled from bank to bank for the first time since the drought.</p>"
    "<p>Nobody in the village expects the rain to last. But for now the mills turn, the school garden is "
    "green, and the market on Saturday sells tomatoes grown a mile away.</p>";

const char kStoryText[] =
    "Rivers Return to the Valley\n\n"
    "After three dry summers the rivers of the valley are running again, and the farmers who stayed are "
    "planting the fields their parents planted, with grain they kept in jars.\n\n"
    "The water came back slowly. First the springs in the hills, then the creeks, and in April the old "
    "riverbed filled from bank to bank for the first time since the drought.\n\n"
    "Nobody in the village expects the rain to last. But for now the mills turn, the school garden is "
    "green, and the market on Saturday sells tomatoes grown a mile away.\n\n";

// A page of the site around `body`, which holds the article.
std::string Page(const std::string& body) {
  return "<!DOCTYPE html><html><head><title>Rivers Return to the Valley | Daily Valley</title></head><body>"
         "<header><a href=/>Daily Valley</a></header><main><div class=story>" +
         body +
         "</div></main><footer><p><a href=/about>About</a> <a href=/privacy>Privacy</a></p></footer>"
         "</body></html>";
}

std::string Extract(const std::string& page, zestra::Favor favor, bool comments = false) {
  zestra::Options options;
  options.favor = favor;
  options.comments = comments;
  return zestra::Extract(page, options).text;
}

TEST(BlockPruningTest, EachClassLeavesTheArticleWhole) {
  const std::string story = std::string("<h1>Rivers Return to the Valley</h1>") + kStory;
  const std::string kicker = "<p>Environment and rural life, the weekly page of the valley desk</p>";
  const std::string link_bar =
      "<p><a href=/a>About us</a> | <a href=/h>How we work</a> | <a href=/c>Contact</a></p>";
  const std::string teasers =
      "<div class=teaser><h3><a href=/1>Drought leaves farmers counting the cost</a></h3><p>Read more</p></div>"
      "<div class=teaser><h3><a href=/2>The mills that outlived the river</a></h3><p>Read more</p></div>"
      "<div class=teaser><h3><a href=/3>What the valley grows when rain comes</a></h3><p>Read more</p></div>";
  const std::string gallery =
      "<figure><img src=a.jpg><figcaption>The old mill at dawn.</figcaption><p class=credit>Photo: Ana Ruiz</p>"
      "</figure><figure><img src=b.jpg><figcaption>Children at the river.</figcaption>"
      "<p class=credit>Photo: Ana Ruiz</p></figure>";
  const std::string gallery_text =
      "The old mill at dawn.\n\nPhoto: Ana Ruiz\n\nChildren at the river.\n\nPhoto: Ana Ruiz\n\n";
  const std::string byline = "<p class=byline>By Ana Ruiz, 3 May 2024</p>";
  const std::string comments =
      "<div id=comments><div class=comment><p>Pedro: my grandfather told us the river would come back one "
      "day, and we did not believe him.</p></div><div class=comment><p>Lucia: good to read some good news "
      "for once, thank you for this story.</p></div></div>";
  const std::string article = kStoryText;
  const std::string headline = "Rivers Return to the Valley\n\n";
  const std::string body = article.substr(headline.size());
  struct Case {
    const char* name;
    std::string page;
    zestra::Favor favor;
    std::string text;
  };
  const Case cases[] = {
      {"kicker before the title", Page(kicker + story), zestra::Favor::kBalanced, article},
      {"kicker kept for recall", Page(kicker + story), zestra::Favor::kRecall,
       "Environment and rural life, the weekly page of the valley desk\n\n" + article},
      {"link bar dropped for precision", Page(story + link_bar), zestra::Favor::kPrecision, article},
      {"teaser list", Page(story + teasers), zestra::Favor::kBalanced, article},
      {"gallery kept when balanced", Page(story + gallery), zestra::Favor::kBalanced, article + gallery_text},
      {"gallery dropped for precision", Page(story + gallery), zestra::Favor::kPrecision, article},
      {"byline kept when balanced", Page("<h1>Rivers Return to the Valley</h1>" + byline + kStory),
       zestra::Favor::kBalanced, headline + "By Ana Ruiz, 3 May 2024\n\n" + body},
      {"byline dropped for precision", Page("<h1>Rivers Return to the Valley</h1>" + byline + kStory),
       zestra::Favor::kPrecision, article},
      {"comment thread", Page(story + comments), zestra::Favor::kBalanced, article},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Extract(c.page, c.favor), c.text) << c.name;
  }
}

TEST(BlockPruningTest, LinkDocumentLosesTheSiteFurniture) {
  const std::string page =
      "<!DOCTYPE html><html><head><title>Site map</title></head><body><header><nav><a href=/>Home</a> "
      "<a href=/login>Log in</a> <a href=/subscribe>Subscribe</a></nav></header><main><h1><a href=/map>Site "
      "map</a></h1><ul><li><a href=/news>News</a></li><li><a href=/news/valley>Rivers return to the "
      "valley</a></li><li><a href=/sport>Sport</a></li><li><a href=/sport/cup>The valley cup final</a></li>"
      "</ul></main><footer><a href=/about>About</a> <a href=/privacy>Privacy</a> <a href=/contact>Contact</a>"
      "</footer></body></html>";
  const std::string list = "Site map\n\nNews\n\nRivers return to the valley\n\nSport\n\nThe valley cup final\n\n";
  EXPECT_EQ(Extract(page, zestra::Favor::kBalanced), list);
  zestra::Options none;
  none.prune_steps = "none";
  EXPECT_EQ(zestra::Extract(page, none).text, "Home Log in Subscribe\n\n" + list + "About Privacy Contact\n\n");
}

TEST(BlockPruningTest, StepsAreChosenByName) {
  ZestraNS::PruningTuning tuning;
  EXPECT_TRUE(ZestraNS::ChooseSteps("teaser-run,byline,form,", tuning));
  EXPECT_TRUE(tuning.teaser_runs);
  EXPECT_TRUE(tuning.bylines);
  EXPECT_TRUE(tuning.forms);
  EXPECT_FALSE(tuning.comments);
  EXPECT_FALSE(tuning.before_title);
  // An unknown name changes nothing, and Extract refuses it.
  EXPECT_FALSE(ZestraNS::ChooseSteps("comments,teaser run", tuning));
  EXPECT_TRUE(tuning.teaser_runs);
  EXPECT_FALSE(tuning.comments);
  zestra::Options options;
  options.prune_steps = "comments,nonsense";
  EXPECT_THROW(zestra::Extract("<p>text</p>", options), std::invalid_argument);
  EXPECT_TRUE(ZestraNS::ChooseSteps("", tuning));
  EXPECT_FALSE(tuning.teaser_runs);
  EXPECT_STREQ(ZestraNS::PruneStepName(ZestraNS::PruneStep::kBeforeTitle), "before title");
  EXPECT_STREQ(ZestraNS::PruneStepName(ZestraNS::PruneStep::kNone), "");
}

}  // namespace
