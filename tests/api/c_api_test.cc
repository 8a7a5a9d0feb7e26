#include "zestra/zestra_c.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "zestra/zestra.h"

namespace {

const char kPage[] =
    "<html><head><title>C side</title><meta charset=utf-8></head><body>"
    "<table><tr><td><a href=/a>Home</a> <a href=/b>News</a></td>"
    "<td><p>Plain words that a C program reads back through the result, with no link among them at "
    "all and enough of them to carry the page.</p></td></tr></table></body></html>";

// The bytes of a result string, checked against its size and its NUL.
std::string Bytes(const char* text, size_t size) {
  EXPECT_EQ(text[size], '\0');
  return std::string(text, size);
}

TEST(CApiTest, ResultMatchesCppInterface) {
  zestra_result* result = nullptr;
  ASSERT_EQ(zestra_extract(kPage, std::strlen(kPage), nullptr, &result), ZESTRA_OK);
  ASSERT_NE(result, nullptr);
  const zestra::Result cpp = zestra::Extract(kPage);
  EXPECT_EQ(Bytes(result->text, result->text_size), cpp.text);
  EXPECT_EQ(Bytes(result->title, result->title_size), "C side");
  EXPECT_EQ(result->type, ZESTRA_CONTENT_DOCUMENT);
  EXPECT_EQ(result->charset, 65001);
  EXPECT_STREQ(result->charset_name, "utf-8");
  EXPECT_EQ(result->text, std::strstr(result->text, "Plain words"));  // no navigation
  zestra_result_free(result);

  zestra_options options;
  zestra_options_init(&options);
  EXPECT_EQ(options.size, sizeof(zestra_options));
  EXPECT_EQ(options.charset, ZESTRA_CHARSET_SNIFF);
  EXPECT_EQ(options.whole_text, 0);
  EXPECT_EQ(options.layout, ZESTRA_LAYOUT_BLOCKS);
  options.whole_text = 1;
  options.charset = 1252;
  ASSERT_EQ(zestra_extract(kPage, std::strlen(kPage), &options, &result), ZESTRA_OK);
  EXPECT_EQ(std::strncmp(result->text, "Home News\n", 10), 0) << result->text;
  EXPECT_EQ(result->charset, 1252);
  zestra_result_free(result);
}

TEST(CApiTest, NullAndEmptyArguments) {
  zestra_result* result = reinterpret_cast<zestra_result*>(0x1);
  EXPECT_EQ(zestra_extract(kPage, 4, nullptr, nullptr), ZESTRA_INVALID_ARGUMENT);
  EXPECT_EQ(zestra_extract(nullptr, 4, nullptr, &result), ZESTRA_INVALID_ARGUMENT);
  EXPECT_EQ(result, nullptr);  // cleared on failure

  // No bytes at all is an empty page.
  ASSERT_EQ(zestra_extract(nullptr, 0, nullptr, &result), ZESTRA_OK);
  EXPECT_EQ(result->text_size, 0u);
  EXPECT_STREQ(result->text, "");
  EXPECT_STREQ(result->title, "");
  EXPECT_EQ(result->type, ZESTRA_LINK_DOCUMENT);
  zestra_result_free(result);

  zestra_result_free(nullptr);
  zestra_options_init(nullptr);
  EXPECT_EQ(zestra_charset_from_label(nullptr), ZESTRA_CHARSET_SNIFF);
}

TEST(CApiTest, OptionsSizeDecidesWhatIsRead) {
  zestra_result* result = nullptr;
  zestra_options options;
  zestra_options_init(&options);

  // Options from a header older than any published one are refused.
  options.size = offsetof(zestra_options, whole_text);
  EXPECT_EQ(zestra_extract(kPage, std::strlen(kPage), &options, &result), ZESTRA_INVALID_ARGUMENT);
  EXPECT_EQ(result, nullptr);
  options.size = 0;
  EXPECT_EQ(zestra_extract(kPage, std::strlen(kPage), &options, &result), ZESTRA_INVALID_ARGUMENT);

  // Options from a newer header, with fields this library does not know,
  // are read as far as it knows them.
  struct Newer {
    zestra_options known;
    int future_field;
  } newer;
  zestra_options_init(&newer.known);
  newer.known.size = sizeof(Newer);
  newer.known.whole_text = 1;
  newer.future_field = 7;
  ASSERT_EQ(zestra_extract(kPage, std::strlen(kPage), &newer.known, &result), ZESTRA_OK);
  EXPECT_EQ(std::strncmp(result->text, "Home", 4), 0);
  zestra_result_free(result);
}

TEST(CApiTest, LayoutOption) {
  // Laid out with blocks: the tables layout keeps the navigation.
  const char kPage[] =
      "<nav><a href=/a>Home</a> <a href=/b>News</a></nav><p>Plain words of a page laid out with blocks, "
      "which only the blocks layout tells from the navigation above them.</p><p>And a second paragraph.</p>";
  zestra::Options tables;
  tables.layout = zestra::Layout::kTables;
  const std::string tables_text = zestra::Extract(kPage, tables).text;
  const std::string blocks_text = zestra::Extract(kPage).text;
  ASSERT_EQ(tables_text.rfind("Home News", 0), 0u) << tables_text;
  ASSERT_EQ(blocks_text.rfind("Plain words", 0), 0u) << blocks_text;

  zestra_result* result = nullptr;
  zestra_options options;
  zestra_options_init(&options);
  options.layout = ZESTRA_LAYOUT_TABLES;
  ASSERT_EQ(zestra_extract(kPage, std::strlen(kPage), &options, &result), ZESTRA_OK);
  EXPECT_EQ(Bytes(result->text, result->text_size), tables_text);
  EXPECT_EQ(result->layout, ZESTRA_LAYOUT_TABLES);
  zestra_result_free(result);

  // Options of the first version end before the layout: the default.
  options.size = offsetof(zestra_options, layout);
  ASSERT_EQ(zestra_extract(kPage, std::strlen(kPage), &options, &result), ZESTRA_OK);
  EXPECT_EQ(Bytes(result->text, result->text_size), blocks_text);
  EXPECT_EQ(result->layout, ZESTRA_LAYOUT_BLOCKS);
  zestra_result_free(result);

  // A layout this library does not know is refused.
  options.size = sizeof(zestra_options);
  for (int bad : {-1, 2, 7}) {
    options.layout = bad;
    result = reinterpret_cast<zestra_result*>(0x1);
    EXPECT_EQ(zestra_extract(kPage, std::strlen(kPage), &options, &result), ZESTRA_INVALID_ARGUMENT) << bad;
    EXPECT_EQ(result, nullptr);
  }
}

// max_memory: a page over it fails with ZESTRA_MEMORY_LIMIT and no result;
// options that end before the field keep the default, no ceiling.
TEST(CApiTest, MemoryCeiling) {
  std::string page = "<p>";
  for (int i = 0; i < 5000; ++i) page += "<b>word</b> ";
  zestra_options options;
  zestra_options_init(&options);
  EXPECT_EQ(options.max_memory, 0u);
  options.max_memory = 4096;
  zestra_result* result = reinterpret_cast<zestra_result*>(0x1);
  EXPECT_EQ(zestra_extract(page.data(), page.size(), &options, &result), ZESTRA_MEMORY_LIMIT);
  EXPECT_EQ(result, nullptr);
  options.size = offsetof(zestra_options, max_memory);
  ASSERT_EQ(zestra_extract(page.data(), page.size(), &options, &result), ZESTRA_OK);
  EXPECT_GT(result->text_size, 5000u);
  zestra_result_free(result);
}

TEST(CApiTest, TransportCharsetOption) {
  // windows-1251 bytes under a meta tag that says windows-1252.
  const char kPage[] = "<meta charset=windows-1252><title>\xcf\xf0\xe8\xe2\xe5\xf2</title><p>\xcc\xe8\xf0";
  zestra_result* result = nullptr;
  zestra_options options;
  zestra_options_init(&options);
  EXPECT_EQ(options.transport_charset, ZESTRA_CHARSET_SNIFF);
  options.transport_charset = zestra_charset_from_label("windows-1251");
  ASSERT_EQ(zestra_extract(kPage, std::strlen(kPage), &options, &result), ZESTRA_OK);
  EXPECT_STREQ(result->charset_name, "windows-1251");
  EXPECT_STREQ(result->title, "\xd0\x9f\xd1\x80\xd0\xb8\xd0\xb2\xd0\xb5\xd1\x82");
  zestra_result_free(result);

  // Options that end before the field: the meta tag decides.
  options.size = offsetof(zestra_options, transport_charset);
  ASSERT_EQ(zestra_extract(kPage, std::strlen(kPage), &options, &result), ZESTRA_OK);
  EXPECT_STREQ(result->charset_name, "windows-1252");
  zestra_result_free(result);
}

TEST(CApiTest, LabelsAndVersion) {
  EXPECT_EQ(zestra_charset_from_label("latin1"), 1252);
  EXPECT_EQ(zestra_charset_from_label("65001"), 65001);
  EXPECT_EQ(zestra_charset_from_label("no-such-charset"), ZESTRA_CHARSET_SNIFF);
  EXPECT_STREQ(zestra_version(), zestra::Version());
}

}  // namespace

namespace {

// Strings of a C array, checked for their NUL.
std::vector<std::string> Strings(const char* const* strings, size_t count) {
  return std::vector<std::string>(strings, strings + count);
}

}  // namespace

TEST(CApiTest, FormatsAndMetadata) {
  const char kArticle[] =
      "<html lang=en><head><title>Story | Site</title>"
      "<meta name=author content='Ann Author'><meta name=keywords content='one, two'>"
      "<meta property=og:image content='/lead.png'></head><body>"
      "<p>Plain <b>words</b> that a C program reads back through the result, with no link among them at "
      "all, so that the ranking keeps them.</p></body></html>";
  zestra_options options;
  zestra_options_init(&options);
  EXPECT_EQ(options.format, ZESTRA_FORMAT_TEXT);
  EXPECT_EQ(options.images, 0);
  EXPECT_EQ(options.url, nullptr);
  options.format = ZESTRA_FORMAT_MARKDOWN;
  options.url = "https://c.example/story.html";
  zestra_result* result = nullptr;
  ASSERT_EQ(zestra_extract(kArticle, std::strlen(kArticle), &options, &result), ZESTRA_OK);
  const std::string markdown =
      "Plain **words** that a C program reads back through the result, with no link among them at all, so that "
      "the ranking keeps them.\n";
  EXPECT_EQ(Bytes(result->formatted, result->formatted_size), markdown);
  EXPECT_EQ(result->format, ZESTRA_FORMAT_MARKDOWN);
  const zestra_metadata& m = result->metadata;
  EXPECT_STREQ(m.title, "Story");
  EXPECT_EQ(Strings(m.author, m.author_count), std::vector<std::string>{"Ann Author"});
  EXPECT_EQ(Strings(m.tags, m.tag_count), (std::vector<std::string>{"one", "two"}));
  EXPECT_STREQ(m.language, "en");
  EXPECT_STREQ(m.image, "https://c.example/lead.png");
  EXPECT_STREQ(m.canonical_url, "https://c.example/story.html");
  EXPECT_STREQ(m.date_published, "");
  const zestra::Result cpp = zestra::Extract(kArticle, [] {
    zestra::Options o;
    o.format = zestra::Format::kMarkdown;
    o.url = "https://c.example/story.html";
    return o;
  }());
  EXPECT_EQ(cpp.formatted, markdown);
  zestra_result_free(result);

  // Options from a header without the format fields: text only, and the
  // fields past their size are not read.
  options.size = offsetof(zestra_options, format);
  options.format = 99;
  ASSERT_EQ(zestra_extract(kArticle, std::strlen(kArticle), &options, &result), ZESTRA_OK);
  EXPECT_EQ(result->format, ZESTRA_FORMAT_TEXT);
  EXPECT_STREQ(result->formatted, "");
  EXPECT_STREQ(result->metadata.title, "Story");
  EXPECT_EQ(result->metadata.tag_count, 2u);
  zestra_result_free(result);
  // An unknown format is refused.
  options.size = sizeof(zestra_options);
  EXPECT_EQ(zestra_extract(kArticle, std::strlen(kArticle), &options, &result), ZESTRA_INVALID_ARGUMENT);
  options.format = ZESTRA_FORMAT_HTML;
  ASSERT_EQ(zestra_extract(kArticle, std::strlen(kArticle), &options, &result), ZESTRA_OK);
  EXPECT_EQ(std::string(result->formatted).rfind("<p>Plain <strong>words</strong>", 0), 0u) << result->formatted;
  zestra_result_free(result);
}
