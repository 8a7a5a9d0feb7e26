// The zestra tool as a user runs it: messages and exit statuses of every
// kind of bad input, batches against single calls, output forms.
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tools/tool_runner.h"

namespace zestra_tool_test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

const fs::path kSample = fs::path(ZESTRA_SOURCE_DIR) / "samples" / "article.html";

const char kPage[] =
    "<html><head><title>Small page</title></head><body><table><tr>"
    "<td><a href=/a>Home</a> <a href=/b>Contact</a></td>"
    "<td><p>A paragraph of plain words that the ranking keeps because none of them sits inside a link.</p>"
    "</td></tr></table></body></html>";

std::vector<Json> JsonLines(const std::string& out) {
  std::vector<Json> records;
  std::istringstream lines(out);
  for (std::string line; std::getline(lines, line);) records.push_back(Json::parse(line));
  return records;
}

void WriteGzip(const fs::path& path, const std::string& bytes) {
  gzFile file = gzopen(path.c_str(), "wb");
  ASSERT_NE(file, nullptr);
  ASSERT_EQ(gzwrite(file, bytes.data(), static_cast<unsigned>(bytes.size())), static_cast<int>(bytes.size()));
  gzclose(file);
}

TEST(ZestraToolTest, BadInputGivesOneLineAndStatusTwo) {
  const fs::path folder = ScratchFolder("bad_input");
  fs::create_directories(folder / "empty" / "nested");
  WriteFile(folder / "empty" / "notes.txt", "not a page");
  const std::string gzip = ReadFile(kSample);
  WriteGzip(folder / "whole.html.gz", gzip);
  WriteFile(folder / "cut.html.gz", ReadFile(folder / "whole.html.gz").substr(0, 200));
  WriteFile(folder / "junk.html.gz", std::string("\x1f\x8b\x08\x00junk junk junk", 18));

  struct Case {
    std::vector<std::string> arguments;
    std::string message;
  };
  const std::vector<Case> cases = {
      {{"extract", "x.html"}, "zestra: cannot read 'x.html': No such file or directory\n"},
      {{"extract", "empty"}, "zestra: no pages (*.html, *.htm, *.html.gz) in 'empty'\n"},
      {{"extract", "cut.html.gz"}, "zestra: cannot read 'cut.html.gz': compressed data cut short\n"},
      {{"extract", "junk.html.gz"}, "zestra: cannot read 'junk.html.gz': invalid compressed data\n"},
      {{"extract", "--charset", "klingon", "whole.html.gz"}, "zestra: unknown charset 'klingon'\n"},
      {{"extract", "--bogus", "whole.html.gz"}, "zestra: unknown option '--bogus'; see 'zestra extract --help'\n"},
      {{"extract", "--jobs", "0", "whole.html.gz"}, "zestra: --jobs: Value 0 not in range 1 to 1024\n"},
      {{"extract", "--format", "xml", "whole.html.gz"},
       "zestra: --format: xml not in {text,json,markdown,html,warc}\n"},
      {{"extract", "--with", "text", "whole.html.gz"}, "zestra: --with: text not in {markdown,html}\n"},
      {{"extract", "--quiet", "--progress", "whole.html.gz"}, "zestra: --quiet excludes --progress\n"},
      {{"frobnicate"}, "zestra: unknown command 'frobnicate'\n"},
      {{}, "zestra: A subcommand is required\n"},
      {{"tree", "-", "-"}, "zestra: standard input ('-') can be named only once\n"},
      {{"tree", "x.html"}, "zestra: cannot read 'x.html': No such file or directory\n"},
      {{"tree", "--charset", "klingon", "whole.html.gz"}, "zestra: unknown charset 'klingon'\n"},
  };
  for (const Case& c : cases) {
    const ToolRun run = RunTool(c.arguments, "", folder);
    SCOPED_TRACE(c.message);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, c.message);
    // A batch still writes its error record; nothing else reaches standard
    // output.
    EXPECT_TRUE(run.out.empty() || run.out.find("\"error\"") != std::string::npos) << run.out;
  }
}

TEST(ZestraToolTest, BatchGoesOnPastFailuresWithStatusOne) {
  const fs::path folder = ScratchFolder("partial_batch");
  WriteFile(folder / "a.html", kPage);
  WriteFile(folder / "c.html", kPage);
  const ToolRun run = RunTool({"extract", "a.html", "missing.html", "c.html"}, "", folder);
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(std::regex_match(run.err, std::regex("zestra: cannot read 'missing.html': No such file or directory\n"
                                                   "zestra: 3 pages, 1 failed, 0\\.00 MB, [0-9]+\\.[0-9]{2} s\n")))
      << run.err;
  const std::vector<Json> records = JsonLines(run.out);
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[0]["path"], "a.html");
  EXPECT_EQ(records[1], Json::parse(R"({"path": "missing.html",
      "error": "cannot read 'missing.html': No such file or directory"})"));
  EXPECT_EQ(records[2]["path"], "c.html");
  EXPECT_EQ(records[2]["title"], "Small page");
  EXPECT_EQ(records[2]["type"], "content");
  EXPECT_EQ(records[2]["charset"], "windows-1252");
  EXPECT_EQ(records[2]["text"],
            "A paragraph of plain words that the ranking keeps because none of them sits inside a link.\n\n\n");

  // Every page failed: nothing was done.
  const ToolRun none = RunTool({"extract", "--quiet", "x.html", "y.html"}, "", folder);
  EXPECT_EQ(none.status, 2);
  EXPECT_EQ(none.err,
            "zestra: cannot read 'x.html': No such file or directory\n"
            "zestra: cannot read 'y.html': No such file or directory\n");
}

TEST(ZestraToolTest, GarbageEmptyAndLargePagesAreOrdinaryPages) {
  const fs::path folder = ScratchFolder("odd_pages");
  std::string garbage(1 << 16, '\0');
  uint32_t state = 12345;
  for (char& byte : garbage) {
    state = state * 1103515245u + 12345u;
    byte = static_cast<char>(state >> 24);
  }
  WriteFile(folder / "garbage.html", garbage);
  WriteFile(folder / "empty.html", "");
  std::string large = "<html><body><table><tr><td>";
  while (large.size() < (8u << 20)) large += "<p>words words words <a href=/x>link</a></p>\n";
  WriteFile(folder / "large.html", large);

  for (const char* page : {"garbage.html", "empty.html", "large.html"}) {
    const ToolRun run = RunTool({"extract", page}, "", folder);
    EXPECT_EQ(run.status, 0) << page;
    EXPECT_EQ(run.err, "") << page;
  }
  EXPECT_EQ(RunTool({"extract", "empty.html"}, "", folder).out, "");
  EXPECT_EQ(RunTool({"tree", "empty.html"}, "", folder).status, 0);
  EXPECT_EQ(RunTool({"tree", "garbage.html"}, "", folder).status, 0);
}

TEST(ZestraToolTest, OutputForms) {
  const fs::path folder = ScratchFolder("output_forms");
  WriteFile(folder / "site" / "page.html", kPage);
  WriteFile(folder / "site" / "deep" / "other.HTM", kPage);
  WriteGzip(folder / "site" / "deep" / "packed.html.gz", kPage);
  WriteFile(folder / "site" / "style.css", "body {}");

  const ToolRun single = RunTool({"extract", "site/page.html"}, "", folder);
  ASSERT_EQ(single.status, 0);
  const std::string text = single.out;
  EXPECT_EQ(text, "A paragraph of plain words that the ranking keeps because none of them sits inside a link.\n\n\n");

  // Standard input, and one page as JSON.
  EXPECT_EQ(RunTool({"extract"}, kPage, folder).out, text);
  EXPECT_EQ(RunTool({"extract", "-"}, kPage, folder).out, text);
  const ToolRun json = RunTool({"extract", "--format", "json", "-"}, kPage, folder);
  EXPECT_EQ(Json::parse(json.out),
            Json({{"path", "-"},
                  {"title", "Small page"},
                  {"type", "content"},
                  {"charset", "windows-1252"},
                  {"layout", "blocks"},
                  {"text", text},
                  {"metadata",
                   {{"title", "Small page"},
                    {"author", Json::array()},
                    {"date_published", ""},
                    {"date_modified", ""},
                    {"site_name", ""},
                    {"description", ""},
                    {"language", ""},
                    {"canonical_url", ""},
                    {"image", ""},
                    {"tags", Json::array()},
                    {"sources", {{"title", "title"}}}}}}));
  EXPECT_EQ(json.err, "");  // one page: no summary

  // A directory: its pages in path order, compressed ones read through.
  const ToolRun batch = RunTool({"extract", "--quiet", "site"}, "", folder);
  EXPECT_EQ(batch.err, "");
  const std::vector<Json> records = JsonLines(batch.out);
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[0]["path"], "site/deep/other.HTM");
  EXPECT_EQ(records[1]["path"], "site/deep/packed.html.gz");
  EXPECT_EQ(records[2]["path"], "site/page.html");
  for (const Json& record : records) EXPECT_EQ(record["text"], text);

  // Text format of a batch: the texts one after another.
  EXPECT_EQ(RunTool({"extract", "-q", "--format", "text", "site"}, "", folder).out, text + text + text);

  // --out-dir mirrors the tree.
  const ToolRun files = RunTool({"extract", "-q", "--out-dir", "out", "site", "site/page.html"}, "", folder);
  EXPECT_EQ(files.status, 0);
  EXPECT_EQ(files.out, "");
  EXPECT_EQ(ReadFile(folder / "out" / "deep" / "other.HTM.txt"), text);
  EXPECT_EQ(ReadFile(folder / "out" / "deep" / "packed.html.gz.txt"), text);
  EXPECT_EQ(ReadFile(folder / "out" / "page.html.txt"), text);
  EXPECT_EQ(ReadFile(folder / "out" / "site" / "page.html.txt"), text);
  RunTool({"extract", "-q", "--format", "json", "-o", "out", "site/page.html"}, "", folder);
  EXPECT_EQ(Json::parse(ReadFile(folder / "out" / "site" / "page.html.json"))["text"], text);

  // The whole text keeps the links; a forced charset is reported.
  const ToolRun whole = RunTool({"extract", "--whole", "--charset", "utf-8", "--format", "json", "site/page.html"},
                                "", folder);
  const Json everything = Json::parse(whole.out);
  EXPECT_EQ(everything["text"].get<std::string>().rfind("Home Contact\n", 0), 0u) << whole.out;
  EXPECT_EQ(everything["charset"], "utf-8");
  EXPECT_EQ(everything["type"], "content");

  // The progress bar, forced, draws pages per second; the summary follows.
  const ToolRun progress = RunTool({"extract", "--progress", "site"}, "", folder);
  EXPECT_NE(progress.err.find("3/3 pages"), std::string::npos) << progress.err;
  EXPECT_NE(progress.err.find("pages/s"), std::string::npos);
  EXPECT_NE(progress.err.find("\r\033[Kzestra: 3 pages, 0 failed"), std::string::npos);
}

TEST(ZestraToolTest, HelpVersionAndTree) {
  const ToolRun version = RunTool({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.out, "zestra " ZESTRA_PROJECT_VERSION "\n");

  const ToolRun help = RunTool({"extract", "--help"});
  EXPECT_EQ(help.status, 0);
  for (const char* option : {"--charset", "--whole", "--layout", "--format", "--jobs", "--out-dir", "--quiet",
                             "--progress", "Examples:", "zestra extract page.html"}) {
    EXPECT_NE(help.out.find(option), std::string::npos) << option;
  }
  EXPECT_NE(RunTool({"--help"}).out.find("tree"), std::string::npos);

  const ToolRun tree = RunTool({"tree", "--layout", "tables", kSample.string()});
  EXPECT_EQ(tree.status, 0);
  EXPECT_EQ(tree.out.rfind("document  words 274  link words 25  links 18  tables 5  content document  "
                           "charset utf-8  layout tables\n",
                           0),
            0u)
      << tree.out;
  EXPECT_NE(tree.out.find("\n        table 1x1  level 2  rank 0.9775  won\n"
                          "          cell (0,0)  words 235  link words 0  links 0  tables 0  rank 1.0000  kept\n"
                          "            text \"The Lighthouse Keepers of Skerry Point\"\n"),
            std::string::npos)
      << tree.out;
  EXPECT_NE(tree.out.find("cell (1,0)  words 12  link words 7  links 6  tables 0  rank 0.4167  dropped (table "
                          "lost)\n"),
            std::string::npos);
}

TEST(ZestraToolTest, MarkdownHtmlAndMetadata) {
  const fs::path folder = ScratchFolder("formats");
  WriteFile(folder / "site" / "a.html",
            "<title>Story - Site</title><meta property='article:published_time' content='2024-03-05'>"
            "<nav><a href=/a>Home</a> <a href=/b>News</a></nav><article><h1>Story</h1><p>Plain <em>words</em> of "
            "a page with a <a href='next.html'>link</a> inside, read by the blocks layout as its article.</p>"
            "</article>");
  const std::string markdown =
      "# Story\n\nPlain *words* of a page with a [link](https://x.example/dir/next.html) inside, read by the "
      "blocks layout as its article.\n";
  const std::string html =
      "<h1>Story</h1>\n<p>Plain <em>words</em> of a page with a <a href=\"https://x.example/dir/next.html\">link</a> "
      "inside, read by the blocks layout as its article.</p>\n";
  const std::vector<std::string> url = {"--url", "https://x.example/dir/a.html"};
  auto run = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin() + 1, url.begin(), url.end());
    return RunTool(arguments, "", folder);
  };
  EXPECT_EQ(run({"extract", "--format", "markdown", "site/a.html"}).out, markdown);
  EXPECT_EQ(run({"extract", "--format", "html", "site/a.html"}).out, html);
  // Without an address the link stays relative.
  EXPECT_NE(RunTool({"extract", "--format", "markdown", "site/a.html"}, "", folder).out.find("[link](next.html)"),
            std::string::npos);
  const Json record = Json::parse(run({"extract", "--format", "json", "--with", "markdown", "site/a.html"}).out);
  EXPECT_EQ(record["markdown"], markdown);
  EXPECT_EQ(record["metadata"]["title"], "Story");
  EXPECT_EQ(record["metadata"]["date_published"], "2024-03-05");
  EXPECT_EQ(record["metadata"]["canonical_url"], "https://x.example/dir/a.html");
  EXPECT_EQ(record["metadata"]["sources"]["date_published"], "opengraph");
  EXPECT_FALSE(record.contains("html"));
  // A batch with --with html: JSON Lines with the HTML; files with .md.
  const std::vector<Json> records = JsonLines(run({"extract", "-q", "--with", "html", "site"}).out);
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0]["html"], html);
  run({"extract", "-q", "--format", "markdown", "-o", "out", "site"});
  EXPECT_EQ(ReadFile(folder / "out" / "a.html.md"), markdown);
  // The tree shows where each field came from.
  const ToolRun tree = run({"tree", "site/a.html"});
  EXPECT_NE(tree.out.find("metadata\n  title           \"Story\"  from title\n"
                          "  date_published  \"2024-03-05\"  from opengraph\n"
                          "  canonical_url   \"https://x.example/dir/a.html\"  from url\n"),
            std::string::npos)
      << tree.out;
}

TEST(ZestraToolTest, LayoutOption) {
  const fs::path folder = ScratchFolder("layout");
  WriteFile(folder / "blocks.html",
            "<title>Blocks</title><nav><a href=/a>Home</a> <a href=/b>News</a></nav><article><p>Plain words of "
            "a page laid out with blocks, which the blocks layout tells from the navigation.</p>"
            "<p>A second paragraph.</p></article><footer><p>A footer line</p></footer>");
  const std::string article =
      "Plain words of a page laid out with blocks, which the blocks layout tells from the navigation.\n\n"
      "A second paragraph.\n\n";
  EXPECT_EQ(RunTool({"extract", "blocks.html"}, "", folder).out, article);
  EXPECT_EQ(RunTool({"extract", "--layout", "blocks", "blocks.html"}, "", folder).out, article);
  const std::string everything = RunTool({"extract", "--layout", "tables", "blocks.html"}, "", folder).out;
  EXPECT_EQ(everything.rfind("Home News", 0), 0u) << everything;

  const Json tables = Json::parse(RunTool({"extract", "--layout", "tables", "--format", "json", "blocks.html"}, "",
                                          folder).out);
  EXPECT_EQ(tables["layout"], "tables");
  EXPECT_EQ(tables["text"], everything);

  const ToolRun bad = RunTool({"extract", "--layout", "grid", "blocks.html"}, "", folder);
  EXPECT_EQ(bad.status, 2);
  EXPECT_EQ(bad.err, "zestra: --layout: grid not in {blocks,tables}\n");
  EXPECT_EQ(RunTool({"tree", "--layout", "grid", "blocks.html"}, "", folder).status, 2);

  // The tree of the blocks layout: the article is a table of two rows that
  // wins, the navigation's words are link words.
  const ToolRun tree = RunTool({"tree", "blocks.html"}, "", folder);
  EXPECT_EQ(tree.status, 0);
  EXPECT_NE(tree.out.find("layout blocks\n"), std::string::npos) << tree.out;
  EXPECT_NE(tree.out.find("table 1x2  level 2  rank "), std::string::npos) << tree.out;
  EXPECT_NE(tree.out.find("won\n"), std::string::npos) << tree.out;
  EXPECT_NE(tree.out.find("words 2  link words 2  links 2"), std::string::npos) << tree.out;
}

// One batch over the development set gives, page by page and in path
// order, what one call per page gives, with one thread and with two.
TEST(ZestraToolTest, BatchEqualsOneCallPerPage) {
  const fs::path root = fs::path(ZESTRA_SOURCE_DIR) / ".." / "shared" / "devset" / "readability";
  if (!fs::is_directory(root)) GTEST_SKIP() << "no development set at " << root;
  std::vector<std::string> sources;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (entry.is_regular_file() && entry.path().extension() == ".html") sources.push_back(entry.path().string());
  }
  std::sort(sources.begin(), sources.end());
  ASSERT_GT(sources.size(), 100u);

  std::vector<std::string> single;
  for (const std::string& source : sources) {
    const ToolRun run = RunTool({"extract", source});
    ASSERT_EQ(run.status, 0) << source << ": " << run.err;
    single.push_back(run.out);
  }
  for (const char* jobs : {"1", "2"}) {
    const ToolRun batch = RunTool({"extract", "--quiet", "--jobs", jobs, root.string()});
    ASSERT_EQ(batch.status, 0) << batch.err;
    const std::vector<Json> records = JsonLines(batch.out);
    ASSERT_EQ(records.size(), sources.size());
    for (std::size_t i = 0; i < sources.size(); ++i) {
      EXPECT_EQ(records[i]["path"], sources[i]);
      EXPECT_EQ(records[i]["text"], single[i]) << sources[i] << " with --jobs " << jobs;
    }
  }
}

}  // namespace
}  // namespace zestra_tool_test
