#include "extract_command.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <new>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "article_fields.h"
#include "ordered_runner.h"
#include "out_dir.h"
#include "page_list.h"
#include "page_reader.h"
#include "progress.h"
#include "warc_extract.h"
#include "zestra/zestra.h"

namespace zestra_tool {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

// What became of one page.
struct Outcome {
  std::string error;  // empty on success; else the message without "zestra: "
  zestra::Result result;
  uintmax_t bytes = 0;  // bytes read
};

const char* TypeName(zestra::DocumentType type) {
  return type == zestra::DocumentType::kContent ? "content" : "links";
}

// One page as a line of JSON (no line feed). Paths that are not UTF-8 get
// U+FFFD in place of their bad bytes.
std::string JsonRecord(const std::string& path, const Outcome& outcome) {
  Json record;
  record["path"] = path;
  if (!outcome.error.empty()) {
    record["error"] = outcome.error;
  } else {
    record["title"] = outcome.result.title;
    record["type"] = TypeName(outcome.result.type);
    record["charset"] = outcome.result.charset_name;
    record["layout"] = zestra::LayoutName(outcome.result.layout);
    record["text"] = outcome.result.text;
    AddArticleFields(outcome.result, record);
  }
  return record.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// Whether the pages are written as JSON records: when asked, and by default
// for a batch on standard output.
bool WritesJson(const ExtractSettings& settings, bool batch) {
  return settings.format == "json" || (settings.format.empty() && batch && settings.out_dir.empty());
}

// The extension of a page's file under --out-dir.
std::string OutputExtension(const ExtractSettings& settings, bool json) {
  if (json) return ".json";
  return settings.format == "markdown" ? ".md" : settings.format == "html" ? ".html" : ".txt";
}

class ExtractRun {
 public:
  ExtractRun(const ExtractSettings& settings, std::vector<PageEntry> pages, bool batch)
      : settings_(settings),
        pages_(std::move(pages)),
        batch_(batch),
        json_(WritesJson(settings, batch)),
        progress_(stderr, batch && !settings.quiet && (settings.progress || isatty(STDERR_FILENO)), pages_.size(),
                  TotalBytes()) {}

  int Run() {
    RunOrdered<Outcome>(
        pages_.size(), settings_.jobs, [this](std::size_t i) { return Work(i); },
        [this](std::size_t i, Outcome& outcome) { Deliver(i, outcome); }, [this] { progress_.Draw(); });
    progress_.Draw(true);  // the final count, for a log of the bar
    if (std::fflush(stdout) != 0) {
      progress_.Clear();
      std::fprintf(stderr, "zestra: cannot write standard output: %s\n",
                   std::generic_category().message(errno).c_str());
      return kExitError;
    }
    const int status = progress_.Failures() == 0              ? kExitOk
                       : progress_.Failures() < pages_.size() ? kExitSomeFailed
                                                              : kExitError;
    // When nothing could be done the error lines say everything.
    if (batch_ && !settings_.quiet && status != kExitError) progress_.Summary();
    return status;
  }

 private:
  uintmax_t TotalBytes() const {
    uintmax_t total = 0;
    for (const PageEntry& page : pages_) total += page.size;
    return total;
  }

  // What a page gives outside JSON: its text, or its Markdown or HTML.
  static const std::string& PageOutput(const zestra::Result& result) {
    return result.format == zestra::Format::kText ? result.text : result.formatted;
  }

  // Runs on a worker thread; never throws, as RunOrdered requires.
  Outcome Work(std::size_t index) {
    const PageEntry& page = pages_[index];
    Outcome outcome;
    if (!page.error.empty()) {
      outcome.error = page.error;
      return outcome;
    }
    try {
      std::string bytes;
      std::string reason;
      if (!ReadPage(page.path, bytes, reason, zestra::kMaxInputBytes)) {
        outcome.error = "cannot read '" + page.path + "': " + reason;
        return outcome;
      }
      outcome.bytes = bytes.size();
      zestra::Options options;
      options.charset = settings_.charset;
      options.whole_text = settings_.whole;
      options.layout = settings_.layout;
      options.max_memory = static_cast<std::size_t>(settings_.max_memory_mib) << 20;
      options.url = settings_.url;
      options.images = settings_.images;
      options.comments = settings_.comments;
      options.favor = settings_.favor;
      options.prune_steps = settings_.prune_steps;
      zestra::FormatFromName(json_ ? settings_.with : settings_.format, &options.format);
      outcome.result = zestra::Extract(bytes, options);
      if (!settings_.out_dir.empty()) WriteFile(page, outcome);
    } catch (const zestra::MemoryLimitExceeded&) {
      outcome.result = zestra::Result();
      outcome.error = "cannot extract '" + page.path + "': it needs more than the " +
                      std::to_string(settings_.max_memory_mib) + " MiB of --max-memory";
    } catch (const std::bad_alloc&) {
      outcome.result = zestra::Result();
      outcome.error = "cannot extract '" + page.path + "': out of memory";
    }
    return outcome;
  }

  // Writes the page's output under --out-dir; a failure becomes the page's
  // error.
  void WriteFile(const PageEntry& page, Outcome& outcome) const {
    const fs::path target = OutputPath(settings_.out_dir, page, OutputExtension(settings_, json_));
    std::error_code error;
    fs::create_directories(target.parent_path(), error);
    if (error && !fs::is_directory(target.parent_path())) {
      outcome.error = "cannot write '" + target.string() + "': " + error.message();
      return;
    }
    std::ofstream file(target, std::ios::binary | std::ios::trunc);
    if (json_) {
      file << JsonRecord(page.path, outcome) << '\n';
    } else {
      file << PageOutput(outcome.result);
    }
    file.close();
    if (!file) {
      outcome.error = "cannot write '" + target.string() + "': " + std::generic_category().message(errno);
    }
  }

  // Runs on the calling thread, in input order.
  void Deliver(std::size_t index, const Outcome& outcome) {
    const bool failed = !outcome.error.empty();
    progress_.PageDone(outcome.bytes, failed);
    if (failed) {
      progress_.Clear();
      std::fprintf(stderr, "zestra: %s\n", outcome.error.c_str());
    }
    if (settings_.out_dir.empty()) {
      if (json_ && (!failed || batch_)) {
        const std::string line = JsonRecord(pages_[index].path, outcome) + '\n';
        std::fwrite(line.data(), 1, line.size(), stdout);
      } else if (!failed) {
        const std::string& output = PageOutput(outcome.result);
        std::fwrite(output.data(), 1, output.size(), stdout);
      }
    }
    progress_.Draw(failed);
  }

  const ExtractSettings& settings_;
  const std::vector<PageEntry> pages_;
  const bool batch_;
  const bool json_;  // records instead of plain text
  Progress progress_;
};

}  // namespace

int RunExtract(const ExtractSettings& settings) {
  if (IsWarcRun(settings)) return RunWarcExtract(settings);
  std::vector<PageEntry> pages;
  bool batch = false;
  if (!ListCommandPages(settings.inputs, &pages, &batch)) return kExitError;
  if (!settings.out_dir.empty()) {
    const std::string collision = FindOutputCollision(pages, settings.out_dir, OutputExtension(settings, WritesJson(settings, batch)));
    if (!collision.empty()) {
      std::fprintf(stderr, "zestra: %s\n", collision.c_str());
      return kExitError;
    }
  }
  return ExtractRun(settings, std::move(pages), batch).Run();
}

}  // namespace zestra_tool
