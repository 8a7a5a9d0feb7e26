#include "warc_extract.h"

#include <fcntl.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>
#include <nlohmann/json.hpp>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "article_fields.h"
#include "ordered_runner.h"
#include "progress.h"
#include "warc_writer.h"
#include "zestra/warc.h"
#include "zestra/zestra.h"

namespace zestra_tool {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

// Bytes of standard input looked at to tell an archive.
constexpr std::size_t kPeekBytes = 4096;

bool IsArchiveName(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
  const auto ends_with = [&](std::string_view suffix) {
    return name.size() >= suffix.size() && name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0;
  };
  return ends_with(".warc") || ends_with(".warc.gz");
}

// The archives below `directory`, in byte order of their paths.
std::vector<std::string> ArchivesBelow(const std::string& directory, std::error_code& error) {
  std::vector<std::string> found;
  for (fs::recursive_directory_iterator it(directory, fs::directory_options::skip_permission_denied, error), end;
       !error && it != end; it.increment(error)) {
    if (it->is_regular_file(error) && IsArchiveName(it->path().filename().string())) {
      found.push_back(it->path().string());
    }
  }
  std::sort(found.begin(), found.end());
  return found;
}

// True when `bytes`, the start of an input, start a WARC record, plain or
// compressed with gzip.
bool StartsLikeArchive(const std::string& bytes) {
  if (bytes.compare(0, 5, "WARC/") == 0) return true;
  if (bytes.size() < 2 || static_cast<unsigned char>(bytes[0]) != 0x1F ||
      static_cast<unsigned char>(bytes[1]) != 0x8B) {
    return false;
  }
  z_stream stream{};
  if (inflateInit2(&stream, 15 + 16) != Z_OK) return false;
  char start[5];
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(start);
  stream.avail_out = sizeof start;
  inflate(&stream, Z_SYNC_FLUSH);
  const bool archive = stream.avail_out == 0 && std::memcmp(start, "WARC/", 5) == 0;
  inflateEnd(&stream);
  return archive;
}

// Reads the first bytes of standard input and puts them back: by seeking
// when it is a file, else by making standard input a pipe that a thread
// fills with those bytes and then with the rest of the original input.
std::string PeekStandardInput() {
  std::string bytes(kPeekBytes, '\0');
  std::size_t have = 0;
  while (have < kPeekBytes) {
    const ssize_t got = read(STDIN_FILENO, bytes.data() + have, kPeekBytes - have);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    have += static_cast<std::size_t>(got);
  }
  bytes.resize(have);
  if (have == 0 || lseek(STDIN_FILENO, -static_cast<off_t>(have), SEEK_CUR) >= 0) return bytes;
  int ends[2];
  const int original = dup(STDIN_FILENO);
  if (original < 0 || pipe(ends) != 0) return bytes;  // cannot happen short of descriptors
  dup2(ends[0], STDIN_FILENO);
  close(ends[0]);
  std::thread([prefix = bytes, original, out = ends[1]] {
    const auto write_all = [out](const char* data, std::size_t size) {
      while (size > 0) {
        const ssize_t put = write(out, data, size);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        data += put;
        size -= static_cast<std::size_t>(put);
      }
      return true;
    };
    char chunk[1 << 16];
    bool ok = write_all(prefix.data(), prefix.size());
    while (ok) {
      const ssize_t got = read(original, chunk, sizeof chunk);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) break;
      ok = write_all(chunk, static_cast<std::size_t>(got));
    }
    close(out);
    close(original);
  }).detach();
  return bytes;
}

// An archive to read, or a problem found while listing them.
struct ArchiveEntry {
  std::string path;
  std::string error;  // the message, without "zestra: "
};

std::vector<ArchiveEntry> ListArchives(const std::vector<std::string>& inputs) {
  std::vector<ArchiveEntry> archives;
  for (const std::string& input : inputs) {
    std::error_code error;
    if (input != "-" && fs::is_directory(input, error)) {
      std::vector<std::string> found = ArchivesBelow(input, error);
      if (error) {
        archives.push_back({input, "cannot read '" + input + "': " + error.message()});
      } else if (found.empty()) {
        archives.push_back({input, "no web archives (*.warc, *.warc.gz) in '" + input + "'"});
      }
      for (std::string& path : found) archives.push_back({std::move(path), ""});
    } else {
      archives.push_back({input, ""});
    }
  }
  return archives;
}

// What a task carries: a page of an archive, the problem that ended an
// archive, or only the progress of an archive's last records.
enum class TaskKind { kPage, kArchiveFailed, kProgress };

struct WarcTask {
  TaskKind kind = TaskKind::kProgress;
  std::string archive;
  std::string error;  // the message, for kArchiveFailed
  zestra::WarcRecord record;
  std::uint64_t bytes = 0;  // archive bytes read since the task before
  std::uint64_t records = 0;  // records read in all, with this one
};

struct WarcOutcome {
  TaskKind kind = TaskKind::kProgress;
  std::string archive;
  std::string error;  // why the archive failed, or why the page could not be extracted
  std::string url;
  std::string record_id;
  std::string date;
  zestra::Result result;
  std::uint64_t bytes = 0;
  std::uint64_t records = 0;
};

class WarcRun {
 public:
  WarcRun(const ExtractSettings& settings, std::vector<ArchiveEntry> archives)
      : settings_(settings),
        archives_(std::move(archives)),
        warc_output_(settings.format == "warc"),
        progress_(stderr, !settings.quiet && (settings.progress || isatty(STDERR_FILENO)), 0, TotalBytes()) {}

  int Run() {
    RunOrderedStream<WarcTask, WarcOutcome>(
        settings_.jobs, [this](WarcTask& task) { return Pull(task); },
        [this](std::size_t, WarcTask& task) { return Work(task); },
        [this](std::size_t, WarcOutcome& outcome) { Deliver(outcome); }, [this] { progress_.Draw(); });
    progress_.Draw(true);
    if (std::fflush(stdout) != 0) {
      progress_.Clear();
      std::fprintf(stderr, "zestra: cannot write standard output: %s\n",
                   std::generic_category().message(errno).c_str());
      return kExitError;
    }
    const int status = failed_archives_ == 0                ? kExitOk
                       : failed_archives_ < archives_.size() ? kExitSomeFailed
                                                             : kExitError;
    if (!settings_.quiet && status != kExitError) Summary();  // else the error lines say everything
    return status;
  }

 private:
  uintmax_t TotalBytes() const {
    uintmax_t total = 0;
    for (const ArchiveEntry& archive : archives_) {
      std::error_code error;
      if (archive.path != "-" && archive.error.empty()) {
        const uintmax_t size = fs::file_size(archive.path, error);
        if (!error) total += size;
      }
    }
    return total;
  }

  // Runs on one worker at a time: the next page of the archives, or the
  // problem that ended one.
  bool Pull(WarcTask& task) {
    for (;;) {
      if (reader_ == nullptr) {
        if (next_archive_ >= archives_.size()) return false;
        const ArchiveEntry& archive = archives_[next_archive_++];
        task.archive = archive.path;
        task.kind = TaskKind::kArchiveFailed;
        task.error = archive.error;
        if (!task.error.empty()) return true;
        std::string reason;
        std::unique_ptr<zestra::WarcSource> source = zestra::OpenWarcFile(archive.path, &reason);
        if (source == nullptr) {
          task.error = "cannot read '" + archive.path + "': " + reason;
          return true;
        }
        reader_ = std::make_unique<zestra::WarcReader>(std::move(source), archive.path);
        reader_bytes_ = 0;
      }
      task.archive = archives_[next_archive_ - 1].path;
      task.error.clear();
      bool page = false;
      try {
        page = reader_->Next(&task.record);
      } catch (const std::bad_alloc&) {
        task.error = "cannot read '" + task.archive + "': out of memory";
      }
      task.kind = page ? TaskKind::kPage : TaskKind::kArchiveFailed;
      const zestra::WarcCounts& counts = reader_->Counts();
      task.bytes = counts.input_bytes - reader_bytes_;
      reader_bytes_ = counts.input_bytes;
      task.records = records_before_ + counts.records;
      if (page) return true;
      if (task.error.empty()) task.error = reader_->Error();
      AddCounts(counts);
      records_before_ += counts.records;
      reader_.reset();
      if (!task.error.empty()) return true;
      task.kind = TaskKind::kProgress;
      if (task.bytes > 0) return true;
    }
  }

  void AddCounts(const zestra::WarcCounts& counts) {
    totals_.records += counts.records;
    totals_.pages += counts.pages;
    totals_.skipped_type += counts.skipped_type;
    totals_.skipped_status += counts.skipped_status;
    totals_.skipped_not_html += counts.skipped_not_html;
    totals_.input_bytes += counts.input_bytes;
  }

  // Runs on a worker thread; never throws.
  WarcOutcome Work(WarcTask& task) {
    WarcOutcome outcome;
    outcome.kind = task.kind;
    outcome.archive = std::move(task.archive);
    outcome.error = std::move(task.error);
    outcome.bytes = task.bytes;
    outcome.records = task.records;
    if (task.kind != TaskKind::kPage) return outcome;
    outcome.url = std::move(task.record.url);
    outcome.record_id = std::move(task.record.record_id);
    outcome.date = std::move(task.record.date);
    try {
      zestra::Options options;
      options.charset = settings_.charset;
      options.transport_charset = zestra::CharsetFromLabel(task.record.charset_label);
      options.whole_text = settings_.whole;
      options.layout = settings_.layout;
      options.max_memory = static_cast<std::size_t>(settings_.max_memory_mib) << 20;
      // Relative links and the canonical address resolve against the
      // record's own address.
      options.url = outcome.url;
      outcome.result = zestra::Extract(task.record.payload, options);
    } catch (const std::bad_alloc&) {
      outcome.error = "cannot extract '" + outcome.url + "' in '" + outcome.archive + "': out of memory";
    }
    return outcome;
  }

  // Runs on the calling thread, in archive order.
  void Deliver(const WarcOutcome& outcome) {
    progress_.RecordsRead(outcome.records);
    const bool page = outcome.kind == TaskKind::kPage && outcome.error.empty();
    if (!outcome.error.empty()) {
      if (outcome.kind == TaskKind::kArchiveFailed) ++failed_archives_;
      progress_.Clear();
      std::fprintf(stderr, "zestra: %s\n", outcome.error.c_str());
    }
    progress_.AddBytes(outcome.bytes);
    if (page || !outcome.error.empty()) progress_.PageDone(0, !outcome.error.empty());
    std::string out;
    if (warc_output_) {
      if (page) out = ConversionRecord(outcome.url, outcome.date, outcome.record_id, outcome.result.text);
    } else if (page || !outcome.error.empty()) {
      Json record;
      if (!page) {
        record["path"] = outcome.archive;
        record["error"] = outcome.error;
      } else {
        record["url"] = outcome.url;
        record["warc_record_id"] = outcome.record_id;
        record["date"] = outcome.date;
        record["title"] = outcome.result.title;
        record["type"] = outcome.result.type == zestra::DocumentType::kContent ? "content" : "links";
        record["charset"] = outcome.result.charset_name;
        record["layout"] = zestra::LayoutName(outcome.result.layout);
        record["text"] = outcome.result.text;
        AddArticleFields(outcome.result, record);
      }
      out = record.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
    }
    std::fwrite(out.data(), 1, out.size(), stdout);
    progress_.Draw(!outcome.error.empty());
  }

  void Summary() {
    progress_.Clear();
    std::fprintf(stderr,
                 "zestra: %zu %s, %zu failed, %ju records, %ju pages, skipped %ju (not response or "
                 "resource), %ju (status not 200), %ju (not HTML), %.2f MB, %.2f s\n",
                 archives_.size(), archives_.size() == 1 ? "archive" : "archives", failed_archives_, totals_.records, totals_.pages, totals_.skipped_type,
                 totals_.skipped_status, totals_.skipped_not_html, static_cast<double>(totals_.input_bytes) / 1e6,
                 std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count());
  }

  const ExtractSettings& settings_;
  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  const std::vector<ArchiveEntry> archives_;
  const bool warc_output_;
  Progress progress_;
  // The reading side, used by Pull only (one worker at a time).
  std::unique_ptr<zestra::WarcReader> reader_;
  std::size_t next_archive_ = 0;
  std::uint64_t reader_bytes_ = 0;
  std::uint64_t records_before_ = 0;
  zestra::WarcCounts totals_;
  // The delivering side.
  std::size_t failed_archives_ = 0;
};

}  // namespace

bool IsWarcRun(const ExtractSettings& settings) {
  if (settings.format == "warc") return true;
  bool standard_input = settings.inputs.empty();
  for (const std::string& input : settings.inputs) {
    std::error_code error;
    if (input == "-") {
      standard_input = true;
    } else if (IsArchiveName(input)) {
      return true;
    } else if (fs::is_directory(input, error) && !ArchivesBelow(input, error).empty()) {
      return true;
    }
  }
  return standard_input && StartsLikeArchive(PeekStandardInput());
}

int RunWarcExtract(const ExtractSettings& settings) {
  if (!settings.out_dir.empty() || settings.format == "text") {
    std::fprintf(stderr, "zestra: web archives are written as JSON Lines or WARC (--format json|warc), "
                         "on standard output\n");
    return kExitError;
  }
  std::vector<std::string> inputs = settings.inputs;
  if (inputs.empty()) inputs.push_back("-");
  return WarcRun(settings, ListArchives(inputs)).Run();
}

}  // namespace zestra_tool
