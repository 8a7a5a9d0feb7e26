// The zestra command-line tool: argument parsing and dispatch to the
// commands. Every problem is one line on standard error starting with
// "zestra: "; see extract_command.h for the exit statuses.
#include <cstdio>
#include <initializer_list>
#include <string>
#include <thread>
#include <vector>

#include <CLI/CLI.hpp>

#include "extract_command.h"
#include "tree_command.h"
#include "zestra/api/block_pruning.h"
#include "zestra/zestra.h"

namespace {

using zestra_tool::kExitError;

const char kExtractExamples[] = R"(
Examples:
  zestra extract page.html                 the main text of one page
  zestra extract --whole page.html         every text of the page, unranked
  zestra extract --layout tables old.html  a page laid out with HTML tables, read as the 1990s wrote them
  curl -s https://example.org/ | zestra extract -
  zestra extract --charset windows-1251 old-page.htm
  zestra extract site/ > pages.jsonl       every page below site/, one JSON object a line
  zestra extract --jobs 4 --out-dir texts/ site/   one .txt file per page, mirroring site/
  zestra extract crawl.warc.gz > pages.jsonl       the HTML pages of a web archive (also *.warc, directories)
  zestra extract --format warc crawl.warc.gz > texts.warc   their texts as WARC conversion records
  zestra extract --format markdown --url https://example.org/a.html a.html
  zestra extract --with html site/         JSON Lines with an "html" field per page

One page gives its text; several pages or a directory give JSON Lines
({"path", "title", "type": "content"|"links", "charset", "layout", "text",
"metadata": {"title", "author", "date_published", "date_modified", "site_name",
"description", "language", "canonical_url", "image", "tags", "sources"}}, and
"markdown" or "html" with --with; a page that failed gives {"path", "error"}).
Web archives give {"url", "warc_record_id", "date", "title", "type", "charset",
"layout", "text"} for each HTML page. Exit status: 0 when every page was read, 1
when some failed, 2 when none could be read or the arguments are wrong.
)";

const char kTreeExamples[] = R"(
Examples:
  zestra tree page.html | less
  zestra tree site/ > trees.txt       every page below site/, each tree after a line "==> PATH <=="

Prints the page's metadata with where each field came from, then each table
with its grid size (columns x rows), nesting level, rank
and whether it won, each cell with its counters, rank and whether its text
was kept, and each text shortened to one line.
)";

const char kLayoutHelp[] =
    "How pages are laid out: blocks (today's pages: divisions, sections, lists; the default) or tables "
    "(pages laid out with HTML tables; the reference behaviour, the text of the library's Beautify)";

const char kFavorHelp[] =
    "What the blocks layout's pruning favours: balanced (the default), precision (also drops link bars, "
    "labels and short captions; may cut some of the article) or recall (drops only comment sections)";

// The code page that `label` names; false when none.
bool ParseCharset(const std::string& label, int* charset) {
  if (label.empty()) return true;
  *charset = zestra::CharsetFromLabel(label);
  if (*charset != zestra::kSniffCharset) return true;
  std::fprintf(stderr, "zestra: unknown charset '%s'\n", label.c_str());
  return false;
}

// Names the arguments the command line had no place for: unknown options
// (or values of options that take none), with the help of the command they
// were given to.
void ReportExtras(const CLI::App& app, std::initializer_list<const CLI::App*> commands) {
  const CLI::App* command = &app;
  for (const CLI::App* candidate : commands) {
    if (candidate->parsed()) command = candidate;
  }
  std::vector<std::string> extras = command->remaining();
  if (extras.empty()) extras = app.remaining();
  const std::string help =
      command == &app ? std::string("zestra --help") : "zestra " + command->get_name() + " --help";
  for (const std::string& extra : extras) {
    if (!extra.empty() && extra[0] == '-') {
      std::fprintf(stderr, "zestra: unknown option '%s'; see '%s'\n", extra.c_str(), help.c_str());
    } else {
      std::fprintf(stderr, "zestra: unexpected argument '%s'; see '%s'\n", extra.c_str(), help.c_str());
    }
    return;  // the first says enough
  }
  std::fprintf(stderr, "zestra: unexpected arguments; see '%s'\n", help.c_str());
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Extracts the main text of HTML pages: the article, without navigation, link lists and "
               "footers.",
               "zestra");
  app.set_version_flag("--version", std::string("zestra ") + zestra::Version(), "Print the version and exit");
  app.require_subcommand(1);
  app.footer("Run 'zestra COMMAND --help' for the options of a command.\n\nExample:\n  zestra extract page.html\n");

  zestra_tool::ExtractSettings extract;
  std::string extract_charset;
  const unsigned cores = std::thread::hardware_concurrency();
  extract.jobs = cores > 0 ? cores : 1;
  CLI::App* extract_command = app.add_subcommand("extract", "Write the main text of pages as UTF-8");
  extract_command->add_option("inputs", extract.inputs,
                              "Pages: files, directories (searched for *.html, *.htm, *.html.gz), web "
                              "archives (*.warc, *.warc.gz) or - for standard input (the default)");
  extract_command->add_option("--charset", extract_charset,
                              "Read the pages in this charset: a WHATWG label (utf-8, windows-1252, "
                              "shift_jis, ...) or a code page number (1252); default: sniff as browsers do")
      ->type_name("NAME");
  extract_command->add_flag("--whole", extract.whole, "The whole text of each page, unranked");
  std::string extract_layout = "blocks";
  extract_command->add_option("--layout", extract_layout, kLayoutHelp)
      ->check(CLI::IsMember({"blocks", "tables"}))
      ->type_name("blocks|tables");
  extract_command->add_option("--max-memory", extract.max_memory_mib,
                              "Fail a page whose parse and trees need more than this many MiB (default 0: no "
                              "ceiling); the other pages go on")
      ->type_name("MIB");
  extract_command->add_option("--format", extract.format,
                              "text, json, markdown or html; default: text for one page, JSON Lines for "
                              "several; warc: WARC conversion records, for web archives")
      ->check(CLI::IsMember({"text", "json", "markdown", "html", "warc"}))
      ->type_name("text|json|markdown|html|warc");
  extract_command->add_option("--with", extract.with, "JSON records also carry the page as markdown or html")
      ->check(CLI::IsMember({"markdown", "html"}))
      ->type_name("markdown|html");
  extract_command->add_option("--url", extract.url,
                              "The page's address: relative links and images resolve against it, and it "
                              "is the canonical address when the page names none")
      ->type_name("URL");
  extract_command->add_flag("--images", extract.images, "Images in the Markdown or HTML");
  extract_command->add_flag("--comments", extract.comments, "Keep comment sections (blocks layout)");
  std::string extract_favor = "balanced";
  extract_command->add_option("--favor", extract_favor, kFavorHelp)
      ->check(CLI::IsMember({"balanced", "precision", "recall"}))
      ->type_name("precision|recall|balanced");
  extract_command->add_option("--prune-steps", extract.prune_steps,
                              "The pruning steps to run instead of the favour's, separated by commas: "
                              "comments, link-furniture, before-title, teaser-run, credit, caption, byline, "
                              "link-heavy, form, short-label, or none")
      ->check([](const std::string& names) {
        ZestraNS::PruningTuning tuning;
        return ZestraNS::ChooseSteps(names, tuning) ? std::string() : "unknown pruning step in \"" + names + "\"";
      })
      ->type_name("LIST");
  extract_command->add_option("-j,--jobs", extract.jobs, "Pages extracted in parallel; output keeps input order")
      ->check(CLI::Range(1u, 1024u))
      ->type_name("N")
      ->capture_default_str();
  extract_command->add_option("-o,--out-dir", extract.out_dir,
                              "Write one file per page (.txt, or .json with --format json) under this "
                              "directory, mirroring the input tree")
      ->type_name("DIR");
  CLI::Option* quiet = extract_command->add_flag("-q,--quiet", extract.quiet, "No progress bar, no summary line");
  extract_command->add_flag("--progress", extract.progress, "Show the progress bar even when standard error is "
                                                            "not a terminal")
      ->excludes(quiet);
  extract_command->footer(kExtractExamples);

  zestra_tool::TreeSettings tree;
  std::string tree_charset;
  CLI::App* tree_command = app.add_subcommand("tree", "Print the layout tree of pages and what the ranking "
                                                      "kept of them");
  tree_command->add_option("inputs", tree.inputs,
                           "Pages, as for extract: files, directories or - for standard input (the default)");
  tree_command->add_option("--charset", tree_charset, "As for extract")->type_name("NAME");
  tree_command->add_option("--url", tree.url, "As for extract")->type_name("URL");
  std::string tree_layout = "blocks";
  tree_command->add_option("--layout", tree_layout, "As for extract")
      ->check(CLI::IsMember({"blocks", "tables"}))
      ->type_name("blocks|tables");
  tree_command->add_flag("--comments", tree.comments, "As for extract");
  std::string tree_favor = "balanced";
  tree_command->add_option("--favor", tree_favor, "As for extract")
      ->check(CLI::IsMember({"balanced", "precision", "recall"}))
      ->type_name("precision|recall|balanced");
  tree_command->footer(kTreeExamples);

  // CLI11 would only say that a command is required.
  if (argc > 1 && argv[1][0] != '-' && std::string(argv[1]) != extract_command->get_name() &&
      std::string(argv[1]) != tree_command->get_name()) {
    std::fprintf(stderr, "zestra: unknown command '%s'\n", argv[1]);
    return kExitError;
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) return app.exit(error);
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
      ReportExtras(app, {extract_command, tree_command});
    } else {
      std::fprintf(stderr, "zestra: %s\n", error.what());
    }
    return kExitError;
  }

  if (extract_command->parsed()) {
    if (!ParseCharset(extract_charset, &extract.charset)) return kExitError;
    zestra::LayoutFromName(extract_layout, &extract.layout);  // checked by the parser
    zestra::FavorFromName(extract_favor, &extract.favor);
    return zestra_tool::RunExtract(extract);
  }
  if (!ParseCharset(tree_charset, &tree.charset)) return kExitError;
  zestra::LayoutFromName(tree_layout, &tree.layout);
  zestra::FavorFromName(tree_favor, &tree.favor);
  return zestra_tool::RunTree(tree);
}
