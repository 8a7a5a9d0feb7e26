// Nothing of a batch is lost or mixed up without a word: a page is whole or
// fails loudly (running out of memory included), output files never depend
// on which page finished first, compressed pages are known by their bytes,
// and `zestra tree` reads what `zestra extract` reads.
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "development_set.h"
#include "tools/tool_runner.h"

namespace zestra_tool_test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

const fs::path kSample = fs::path(ZESTRA_SOURCE_DIR) / "samples" / "article.html";

std::string Gzip(const std::string& bytes) {
  std::string out(compressBound(static_cast<uLong>(bytes.size())) + 32, '\0');
  z_stream stream{};
  deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  deflate(&stream, Z_FINISH);
  out.resize(stream.total_out);
  deflateEnd(&stream);
  return out;
}

// Every file below `root`, by its path below it, with its bytes.
std::map<std::string, std::string> FileTree(const fs::path& root) {
  std::map<std::string, std::string> files;
  if (!fs::is_directory(root)) return files;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (entry.is_regular_file()) files[entry.path().lexically_relative(root).string()] = ReadFile(entry.path());
  }
  return files;
}

// A page of `count` one-word paragraphs, each in bold: markup this dense
// needs some 20 to 28 times its size in the parsed and the layout trees,
// so two million of them (22 MB) need more than 450 MB.
std::string DenseParagraphs(int count) {
  std::string page;
  page.reserve(static_cast<size_t>(count) * 11);
  for (int i = 0; i < count; ++i) page += "<p><b>x</b>";
  return page;
}

TEST(BatchSafetyTest, RunningOutOfMemoryFailsThePageLoudly) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizers reserve more address space than any limit leaves";
#endif
  const fs::path folder = ScratchFolder("out_of_memory");
  // The page needs more than 450 MB; each limit runs out at another stage.
  WriteFile(folder / "wide.html", DenseParagraphs(2000000));
  WriteFile(folder / "small.html", ReadFile(kSample));
  for (const uint64_t limit : {150u << 20, 200u << 20, 300u << 20}) {
    SCOPED_TRACE(limit);
    for (const char* layout : {"blocks", "tables"}) {
      const ToolRun run = RunTool({"extract", "--jobs", "1", "--layout", layout, "wide.html"}, "", folder, limit);
      EXPECT_EQ(run.status, 2) << layout;
      EXPECT_EQ(run.err, "zestra: cannot extract 'wide.html': out of memory\n") << layout;
      EXPECT_EQ(run.out, "") << layout;
    }
    // In a batch the page is an error record, the other page is whole.
    const ToolRun batch = RunTool({"extract", "-q", "--jobs", "1", "wide.html", "small.html"}, "", folder, limit);
    EXPECT_EQ(batch.status, 1);
    std::istringstream lines(batch.out);
    std::string line;
    ASSERT_TRUE(std::getline(lines, line));
    EXPECT_EQ(Json::parse(line), Json::parse(R"({"path": "wide.html",
        "error": "cannot extract 'wide.html': out of memory"})"));
    ASSERT_TRUE(std::getline(lines, line));
    EXPECT_EQ(Json::parse(line)["text"], RunTool({"extract", "small.html"}, "", folder).out);
    // The tree of the page fails the same way.
    const ToolRun tree = RunTool({"tree", "wide.html"}, "", folder, limit);
    EXPECT_EQ(tree.status, 2);
    EXPECT_NE(tree.err.find("out of memory"), std::string::npos) << tree.err;
  }
}

TEST(BatchSafetyTest, OutDirKeepsExtensionsAndRefusesCollisions) {
  const fs::path folder = ScratchFolder("out_dir_names");
  const std::string page = ReadFile(kSample);
  WriteFile(folder / "site" / "x.html", page);
  WriteFile(folder / "site" / "x.htm", "<p>the htm page</p>");
  WriteFile(folder / "site" / "x.html.gz", Gzip("<p>the compressed page</p>"));
  WriteFile(folder / "stdin", "<p>a file named stdin</p>");
  const std::string text = RunTool({"extract", "site/x.html"}, "", folder).out;

  const ToolRun run = RunTool({"extract", "-q", "-o", "out", "site"}, "", folder);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(FileTree(folder / "out"), (std::map<std::string, std::string>{
                                          {"x.htm.txt", "the htm page\n\n"},
                                          {"x.html.gz.txt", "the compressed page\n\n"},
                                          {"x.html.txt", text},
                                      }));

  struct Case {
    std::vector<std::string> inputs;
    std::string message;
  };
  const std::vector<Case> cases = {
      {{"site/x.html", "site/../site/x.html"},
       "zestra: 'site/x.html' and 'site/../site/x.html' would both be written to 'refused/site/x.html.txt'\n"},
      {{"site", "site/x.htm", "x.htm"}, ""},  // x.htm.txt, site/x.htm.txt: no collision (x.htm is missing)
      {{"-", "stdin"}, "zestra: '-' and 'stdin' would both be written to 'refused/stdin.txt'\n"},
      {{"site/x.html", "site/x.html"},
       "zestra: 'site/x.html' and 'site/x.html' would both be written to 'refused/site/x.html.txt'\n"},
  };
  for (const Case& c : cases) {
    std::vector<std::string> arguments = {"extract", "-q", "-o", "refused"};
    arguments.insert(arguments.end(), c.inputs.begin(), c.inputs.end());
    const ToolRun refused = RunTool(arguments, "", folder);
    if (c.message.empty()) {
      EXPECT_EQ(refused.status, 1) << refused.err;  // only the missing page fails
      fs::remove_all(folder / "refused");
      continue;
    }
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.err, c.message);
    EXPECT_FALSE(fs::exists(folder / "refused")) << "written before the collision was found";
  }
}

TEST(BatchSafetyTest, StandardInputCanBeNamedOnce) {
  for (const char* command : {"extract", "tree"}) {
    const ToolRun run = RunTool({command, "--jobs", "2", "-", "-"}, "<p>one page</p>");
    EXPECT_EQ(run.status, 2) << command;
    EXPECT_EQ(run.out, "");
  }
  const ToolRun run = RunTool({"extract", "--jobs", "2", "-", "-"}, "<p>one page</p>");
  EXPECT_EQ(run.err, "zestra: standard input ('-') can be named only once\n");
}

TEST(BatchSafetyTest, GzipIsKnownByItsBytes) {
  const fs::path folder = ScratchFolder("gzip_bytes");
  const std::string page = ReadFile(kSample);
  const std::string text = RunTool({"extract", kSample.string()}).out;
  ASSERT_FALSE(text.empty());
  const std::string packed = Gzip(page);
  WriteFile(folder / "packed.html", packed);
  WriteFile(folder / "packed.html.gz", packed);
  // Two members one after the other read as one stream, as gzip reads them.
  WriteFile(folder / "members.html.gz", Gzip(page.substr(0, 1000)) + Gzip(page.substr(1000)));
  WriteFile(folder / "plain.html.gz", page);
  WriteFile(folder / "PLAIN.HTML.GZ", page);

  EXPECT_EQ(RunTool({"extract"}, packed, folder).out, text);
  EXPECT_EQ(RunTool({"extract", "-"}, packed, folder).out, text);
  for (const char* name : {"packed.html", "packed.html.gz", "members.html.gz"}) {
    const ToolRun run = RunTool({"extract", name}, "", folder);
    EXPECT_EQ(run.status, 0) << name << ": " << run.err;
    EXPECT_EQ(run.out, text) << name;
  }
  for (const char* name : {"plain.html.gz", "PLAIN.HTML.GZ"}) {
    const ToolRun run = RunTool({"extract", name}, "", folder);
    EXPECT_EQ(run.status, 2) << name;
    EXPECT_EQ(run.err, "zestra: cannot read '" + std::string(name) + "': named .gz but not gzip-compressed\n");
    EXPECT_EQ(run.out, "");
  }
  // A compressed page cut short is an error on standard input too.
  const ToolRun cut = RunTool({"extract", "-"}, packed.substr(0, packed.size() / 2), folder);
  EXPECT_EQ(cut.status, 2);
  EXPECT_EQ(cut.err, "zestra: cannot read '-': compressed data cut short\n");
}

TEST(BatchSafetyTest, TreeTakesTheInputsOfExtract) {
  const fs::path folder = ScratchFolder("tree_inputs");
  WriteFile(folder / "site" / "a.html", "<p>first page words</p>");
  WriteFile(folder / "site" / "b" / "c.htm", "<p>second page words</p>");
  const std::string one = RunTool({"tree", "site/a.html"}, "", folder).out;
  ASSERT_EQ(one.rfind("document  words 3  link words 0", 0), 0u) << one;
  EXPECT_EQ(RunTool({"tree"}, "<p>first page words</p>", folder).out, one);
  EXPECT_EQ(RunTool({"tree", "-"}, "<p>first page words</p>", folder).out, one);

  const ToolRun batch = RunTool({"tree", "site", "missing.html"}, "", folder);
  EXPECT_EQ(batch.status, 1);
  EXPECT_EQ(batch.err, "zestra: cannot read 'missing.html': No such file or directory\n");
  const std::string second = RunTool({"tree", "site/b/c.htm"}, "", folder).out;
  EXPECT_EQ(batch.out, "==> site/a.html <==\n" + one + "\n==> site/b/c.htm <==\n" + second + "\n");
  EXPECT_EQ(RunTool({"tree", "site/b"}, "", folder).out, "==> site/b/c.htm <==\n" + second + "\n");
}

TEST(BatchSafetyTest, UnknownOptionsAreNamedWithTheHelp) {
  struct Case {
    std::vector<std::string> arguments;
    std::string message;
  };
  for (const Case& c : std::vector<Case>{
           {{"extract", "--bogus", "x.html"}, "zestra: unknown option '--bogus'; see 'zestra extract --help'\n"},
           {{"tree", "-z"}, "zestra: unknown option '-z'; see 'zestra tree --help'\n"},
       }) {
    const ToolRun run = RunTool(c.arguments);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, c.message);
  }
}

// The pages in `folder`, extracted with --jobs 1, 2 and 8, as JSON Lines and
// as files under --out-dir: each form is the same byte for byte.
void ExpectSameForEveryJobCount(const fs::path& folder, const std::string& input) {
  std::string lines;
  std::map<std::string, std::string> files;
  for (const char* jobs : {"1", "2", "8"}) {
    SCOPED_TRACE(std::string("--jobs ") + jobs);
    const ToolRun batch = RunTool({"extract", "-q", "--jobs", jobs, input}, "", folder);
    EXPECT_EQ(batch.status, 0) << batch.err;
    const std::string out_dir = std::string("out-") + jobs;
    const ToolRun written = RunTool({"extract", "-q", "--jobs", jobs, "-o", out_dir, input}, "", folder);
    EXPECT_EQ(written.status, 0) << written.err;
    const std::map<std::string, std::string> tree = FileTree(folder / out_dir);
    if (lines.empty()) {
      lines = batch.out;
      files = tree;
      EXPECT_FALSE(files.empty());
      continue;
    }
    EXPECT_TRUE(batch.out == lines) << "JSON Lines differ";
    EXPECT_TRUE(tree == files) << "files differ";
  }
}

TEST(BatchSafetyTest, JobCountsGiveTheSameOutput) {
  // Pages whose names would meet without their extensions, at two depths.
  const fs::path folder = ScratchFolder("job_counts");
  std::vector<fs::path> sources;
  const fs::path root = zestra_testing::DevelopmentSetRoot();
  if (fs::is_directory(root)) {
    for (const char* name : {"001", "bbc-1", "wikipedia", "nytimes-1"}) {
      if (fs::exists(root / name / "source.html")) sources.push_back(root / name / "source.html");
    }
  }
  if (sources.empty()) sources.push_back(kSample);
  std::size_t next = 0;
  const auto source = [&] { return ReadFile(sources[next++ % sources.size()]); };
  for (const char* place : {"pages", "pages/deep"}) {
    WriteFile(folder / place / "x.html", source());
    WriteFile(folder / place / "x.htm", source());
    WriteFile(folder / place / "x.html.gz", Gzip(source()));
    WriteFile(folder / place / "X.HTML", source());
  }
  ExpectSameForEveryJobCount(folder, "pages");
  EXPECT_EQ(FileTree(folder / "out-1").size(), 8u);

  if (!fs::is_directory(root)) GTEST_SKIP() << "no development set at " << root;
  const fs::path whole = ScratchFolder("job_counts_development_set");
  ExpectSameForEveryJobCount(whole, root.string());
}

}  // namespace
}  // namespace zestra_tool_test
