// The article's metadata: each source alone, the sources in conflict,
// malformed JSON-LD, dates in odd forms, addresses.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "api/date_normalize.h"
#include "api/url_resolver.h"
#include "zestra/zestra.h"

namespace zestra {
namespace {

using Sources = std::vector<std::pair<std::string, std::string>>;

Metadata Read(const std::string& head, const std::string& body, const std::string& url = "") {
  Options options;
  options.url = url;
  return Extract("<html lang=\"en-GB\"><head>" + head + "</head><body>" + body +
                     "<p>Enough words of an article body to make the page a page of content.</p></body></html>",
                 options)
      .metadata;
}

const char kJsonLd[] = R"(<script type="application/ld+json">
{"@context": "https://schema.org", "@graph": [
  {"@type": "WebSite", "@id": "https://news.example/#site", "name": "News Example"},
  {"@type": "Person", "@id": "https://news.example/#ann", "name": "Ann Author"},
  {"@type": ["NewsArticle"], "headline": "  The JSON-LD headline ",
   "author": [{"@id": "https://news.example/#ann"}, {"@type": "Person", "name": "Bob Writer"}, "Cy Third"],
   "datePublished": "2024-03-05T14:07:09+01:00", "dateModified": "2024-03-06T08:00:00Z",
   "publisher": {"@type": "Organization", "name": "News Example Ltd"},
   "description": "What the JSON-LD says.", "inLanguage": "fr",
   "mainEntityOfPage": {"@id": "https://news.example/2024/03/05/story"},
   "image": {"@type": "ImageObject", "url": "/img/lead.jpg"}, "keywords": "rivers, hills ,towns"}
]}
</script>)";

const char kOpenGraph[] = R"(<meta property="og:title" content="The OG title">
<meta property="og:site_name" content="OG Site"><meta property="og:description" content="What OG says.">
<meta property="og:url" content="https://og.example/story"><meta property="og:image" content="https://og.example/i.png">
<meta property="og:locale" content="de_DE">
<meta property="article:published_time" content="2023-01-02T03:04:05Z">
<meta property="article:modified_time" content="2023-01-03">
<meta property="article:author" content="https://facebook.example/someone">
<meta property="article:author" content="Olga Graph">
<meta property="article:tag" content="alpha"><meta property="article:tag" content="beta">)";

const char kMicrodata[] = R"(<div itemscope itemtype="https://schema.org/Article">
<h2 itemprop="headline">The microdata headline</h2>
<span itemprop="author" itemscope itemtype="https://schema.org/Person"><span itemprop="name">Mia Data</span></span>
<time itemprop="datePublished" datetime="2022-07-08">8 July</time>
<meta itemprop="dateModified" content="2022-07-09T10:11:12-05:00">
<meta itemprop="description" content="What microdata says."><img itemprop="image" src="/m.png" alt="">
</div>)";

const char kByline[] = R"(<div class="article-byline">By Bea Line</div><a rel="author" href="/u/rel">Rel Author</a>
<time datetime="2021-12-31T23:59">New Year's Eve</time>)";

TEST(MetadataTest, JsonLdAlone) {
  const Metadata m = Read(kJsonLd, "", "https://news.example/story?x=1");
  EXPECT_EQ(m.title, "The JSON-LD headline");
  EXPECT_EQ(m.author, (std::vector<std::string>{"Ann Author", "Bob Writer", "Cy Third"}));
  EXPECT_EQ(m.date_published, "2024-03-05T14:07:09+01:00");
  EXPECT_EQ(m.date_modified, "2024-03-06T08:00:00Z");
  EXPECT_EQ(m.site_name, "News Example Ltd");
  EXPECT_EQ(m.description, "What the JSON-LD says.");
  EXPECT_EQ(m.language, "fr");
  EXPECT_EQ(m.canonical_url, "https://news.example/2024/03/05/story");
  EXPECT_EQ(m.image, "https://news.example/img/lead.jpg");
  EXPECT_EQ(m.tags, (std::vector<std::string>{"rivers", "hills", "towns"}));
  const Sources json_ld = {{"title", "json-ld"},       {"author", "json-ld"},      {"date_published", "json-ld"},
                           {"date_modified", "json-ld"}, {"site_name", "json-ld"},   {"description", "json-ld"},
                           {"language", "json-ld"},      {"canonical_url", "json-ld"}, {"image", "json-ld"},
                           {"tags", "json-ld"}};
  EXPECT_EQ(m.sources, json_ld);
}

TEST(MetadataTest, OpenGraphAlone) {
  const Metadata m = Read(kOpenGraph, "");
  EXPECT_EQ(m.title, "The OG title");
  EXPECT_EQ(m.author, std::vector<std::string>{"Olga Graph"});  // an address is no name
  EXPECT_EQ(m.date_published, "2023-01-02T03:04:05Z");
  EXPECT_EQ(m.date_modified, "2023-01-03");
  EXPECT_EQ(m.site_name, "OG Site");
  EXPECT_EQ(m.description, "What OG says.");
  EXPECT_EQ(m.language, "en-GB");  // <html lang> before og:locale
  EXPECT_EQ(m.canonical_url, "https://og.example/story");
  EXPECT_EQ(m.image, "https://og.example/i.png");
  EXPECT_EQ(m.tags, (std::vector<std::string>{"alpha", "beta"}));
}

TEST(MetadataTest, MicrodataAlone) {
  const Metadata m = Read("", kMicrodata, "http://micro.example/a/b.html");
  EXPECT_EQ(m.title, "The microdata headline");
  EXPECT_EQ(m.author, std::vector<std::string>{"Mia Data"});
  EXPECT_EQ(m.date_published, "2022-07-08");
  EXPECT_EQ(m.date_modified, "2022-07-09T10:11:12-05:00");
  EXPECT_EQ(m.description, "What microdata says.");
  EXPECT_EQ(m.image, "http://micro.example/m.png");
  EXPECT_EQ(m.canonical_url, "http://micro.example/a/b.html");  // the page's own address
  EXPECT_EQ(m.sources[0], (std::pair<std::string, std::string>{"title", "microdata"}));
}

TEST(MetadataTest, BylinesTimeTitleAndAddressAlone) {
  const Metadata m =
      Read("<title>A Plain Story | Some Site</title>", kByline, "https://plain.example/2020/02/29/plain-story");
  EXPECT_EQ(m.title, "A Plain Story");
  EXPECT_EQ(m.author, std::vector<std::string>{"Bea Line"});  // the first byline in the page
  EXPECT_EQ(m.date_published, "2021-12-31T23:59:00");  // <time> before the address
  EXPECT_EQ(m.language, "en-GB");
  const Sources expected = {{"title", "title"}, {"author", "byline"}, {"date_published", "time"},
                            {"language", "html"}, {"canonical_url", "url"}};
  EXPECT_EQ(m.sources, expected);
  const Metadata address = Read("<title>Site name - Another story told at length</title>", "",
                                "https://plain.example/news/2020-02-29/story");
  EXPECT_EQ(address.date_published, "2020-02-29");
  EXPECT_EQ(address.title, "Another story told at length");
  EXPECT_EQ(Read("", "<p>By <a rel=author href=/a>Rel One</a> and <a rel=author href=/b>Rel Two</a></p>").author,
            (std::vector<std::string>{"Rel One", "Rel Two"}));
}

TEST(MetadataTest, SourcesInConflictBestFirst) {
  const Metadata all = Read(std::string(kJsonLd) + kOpenGraph, std::string(kMicrodata) + kByline);
  EXPECT_EQ(all.title, "The JSON-LD headline");
  EXPECT_EQ(all.author.front(), "Ann Author");
  EXPECT_EQ(all.date_published, "2024-03-05T14:07:09+01:00");
  EXPECT_EQ(all.language, "fr");
  const Metadata no_json_ld = Read(kOpenGraph, std::string(kMicrodata) + kByline);
  EXPECT_EQ(no_json_ld.title, "The OG title");
  EXPECT_EQ(no_json_ld.author, std::vector<std::string>{"Olga Graph"});
  EXPECT_EQ(no_json_ld.date_published, "2023-01-02T03:04:05Z");
  EXPECT_EQ(no_json_ld.date_modified, "2023-01-03");
  const Metadata microdata_and_byline = Read("", std::string(kByline) + kMicrodata);
  EXPECT_EQ(microdata_and_byline.author, std::vector<std::string>{"Mia Data"});
  EXPECT_EQ(microdata_and_byline.date_published, "2022-07-08");  // microdata before <time>
  // A title that ends with the site's name loses it.
  EXPECT_EQ(Read("<meta property=og:title content='Big News | OG Site'><meta property=og:site_name content='OG Site'>",
                 "")
                .title,
            "Big News");
}

TEST(MetadataTest, MalformedJsonLdIsSkipped) {
  const std::string nested(100000, '[');
  const char* const kBroken[] = {
      R"({"@type": "NewsArticle", "headline": "cut off)",
      R"({"@type": "NewsArticle", "headline": "trailing comma",})",
      "not json at all",
      "",
      R"({"@type": "NewsArticle", "headline": "bad \x01 control"})",
      R"([{"@type": 7, "headline": ["not", "a", "string"], "author": {"name": 5}}])",
  };
  for (const char* broken : kBroken) {
    SCOPED_TRACE(broken);
    const Metadata m = Read(std::string("<script type='application/ld+json'>") + broken + "</script>" + kOpenGraph, "");
    EXPECT_EQ(m.title, "The OG title");
    EXPECT_EQ(m.sources.front().second, "opengraph");
  }
  // Nesting of any depth, closed or not, neither crashes nor counts.
  EXPECT_EQ(Read("<script type='application/ld+json'>" + nested + "</script>", "").title, "");
  EXPECT_EQ(Read("<script type='application/ld+json'>" + nested + std::string(nested.size(), ']') + "</script>", "")
                .title,
            "");
  // A comment marker around good JSON is cut off.
  EXPECT_EQ(Read(std::string("<script type='application/ld+json'><!--{\"@type\":\"BlogPosting\",\"headline\":\"H\"}-->"
                             "</script>"),
                 "")
                .title,
            "H");
}

TEST(MetadataTest, DatesInOddFormsAndZones) {
  const std::pair<const char*, const char*> kDates[] = {
      {"2024-03-05", "2024-03-05"},
      {" 2024/3/5 ", "2024-03-05"},
      {"2024.03.05", "2024-03-05"},
      {"20240305", "2024-03-05"},
      {"2024-03-05T14:07", "2024-03-05T14:07:00"},
      {"2024-03-05 14:07:09.123Z", "2024-03-05T14:07:09Z"},
      {"2024-03-05T14:07:09+0530", "2024-03-05T14:07:09+05:30"},
      {"2024-03-05T14:07:09-03", "2024-03-05T14:07:09-03:00"},
      {"2024-03-05T14:07:09 UTC", "2024-03-05T14:07:09Z"},
      {"Tue, 05 Mar 2024 14:07:09 GMT", "2024-03-05T14:07:09Z"},
      {"Tue, 05 Mar 2024 14:07:09 +0100", "2024-03-05T14:07:09+01:00"},
      {"March 5, 2024", "2024-03-05"},
      {"Mar. 5 2024 2:07 pm EST", "2024-03-05T14:07:00-05:00"},
      {"5th March, 2024 12:30 am PDT", "2024-03-05T00:30:00-07:00"},
      {"Updated 5 Sept 2024, 09:15 CEST", "2024-09-05T09:15:00+02:00"},
      {"1709647629", "2024-03-05T14:07:09Z"},
      {"1709647629000", "2024-03-05T14:07:09Z"},
      {"2024-02-29", "2024-02-29"},
      {"2023-02-29", ""},
      {"2024-13-01", ""},
      {"2024-03-05T25:00", ""},
      {"3 days ago", ""},
      {"yesterday", ""},
      {"1899-12-31", ""},
      {"", ""},
  };
  for (const auto& [written, iso] : kDates) EXPECT_EQ(NormalizeDate(written), iso) << written;
  EXPECT_EQ(DateInUrl("https://a.example/2019/11/24/title.html"), "2019-11-24");
  EXPECT_EQ(DateInUrl("https://a.example/news/20191124_title"), "2019-11-24");
  EXPECT_EQ(DateInUrl("https://a.example/posts/2019-11-24-title"), "2019-11-24");
  EXPECT_EQ(DateInUrl("https://2019.example/1234/56/78/x"), "");
  EXPECT_EQ(DateInUrl("https://a.example/x?date=2019/11/24"), "");
}

TEST(MetadataTest, AddressesResolveAndOnlySafeOnesPass) {
  const char base[] = "https://h.example/a/b/c.html?q=1#f";
  const std::pair<const char*, const char*> kResolved[] = {
      {"d.html", "https://h.example/a/b/d.html"},
      {"../d.html", "https://h.example/a/d.html"},
      {"../../../d.html", "https://h.example/d.html"},
      {"/d.html", "https://h.example/d.html"},
      {"//o.example/x", "https://o.example/x"},
      {"?r=2", "https://h.example/a/b/c.html?r=2"},
      {"#g", "https://h.example/a/b/c.html?q=1#g"},
      {"./d e.html", "https://h.example/a/b/d%20e.html"},
      {"\\d\\e.html", "https://h.example/d/e.html"},
      {"  HTTP://X.example/Y  ", "http://X.example/Y"},
      {"java\nscript:alert(1)", "javascript:alert(1)"},
      {"x\"onclick='y'", "https://h.example/a/b/x%22onclick=%27y%27"},
  };
  for (const auto& [reference, resolved] : kResolved) EXPECT_EQ(ResolveUrl(base, reference), resolved) << reference;
  EXPECT_EQ(ResolveUrl("", "d.html"), "d.html");
  EXPECT_TRUE(IsSafeUrl("https://x"));
  EXPECT_TRUE(IsSafeUrl("mailto:a@b"));
  EXPECT_TRUE(IsSafeUrl("a/b:c"));
  EXPECT_FALSE(IsSafeUrl(ResolveUrl(base, " javascript:x")));
  EXPECT_FALSE(IsSafeUrl("data:text/html,x"));
  EXPECT_FALSE(IsSafeUrl("vbscript:x"));
  EXPECT_FALSE(IsSafeUrl(""));
}

}  // namespace
}  // namespace zestra
