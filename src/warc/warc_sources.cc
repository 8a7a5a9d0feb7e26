// The byte sources of archives: files (and standard input) and memory.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "zestra/warc.h"

namespace zestra {
namespace {

// The text of an errno value; std::strerror may share a buffer between
// threads.
std::string ErrnoMessage(int code) { return std::generic_category().message(code); }

class FileSource final : public WarcSource {
 public:
  // Reads `fd`, and closes it at the end when `owned`.
  FileSource(int fd, bool owned) : fd_(fd), owned_(owned) {}
  ~FileSource() override {
    if (owned_) close(fd_);
  }

  std::size_t Read(char* buffer, std::size_t size, std::string* error) override {
    for (;;) {
      const ssize_t got = read(fd_, buffer, size);
      if (got >= 0) return static_cast<std::size_t>(got);
      if (errno == EINTR) continue;
      *error = ErrnoMessage(errno);
      return 0;
    }
  }

 private:
  const int fd_;
  const bool owned_;
};

class MemorySource final : public WarcSource {
 public:
  explicit MemorySource(std::string_view data) : rest_(data) {}

  std::size_t Read(char* buffer, std::size_t size, std::string*) override {
    const std::size_t take = std::min(size, rest_.size());
    if (take == 0) return 0;  // rest_.data() may be null
    std::memcpy(buffer, rest_.data(), take);
    rest_.remove_prefix(take);
    return take;
  }

 private:
  std::string_view rest_;
};

}  // namespace

std::unique_ptr<WarcSource> OpenWarcFile(const std::string& path, std::string* error, std::uint64_t offset) {
  if (path == "-") return std::make_unique<FileSource>(STDIN_FILENO, false);
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    *error = ErrnoMessage(errno);
    return nullptr;
  }
  struct stat info {};
  if (fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
    close(fd);
    *error = ErrnoMessage(EISDIR);
    return nullptr;
  }
  if (offset > 0 && lseek(fd, static_cast<off_t>(offset), SEEK_SET) < 0) {
    *error = ErrnoMessage(errno);
    close(fd);
    return nullptr;
  }
  return std::make_unique<FileSource>(fd, true);
}

std::unique_ptr<WarcSource> WarcMemorySource(std::string_view data) { return std::make_unique<MemorySource>(data); }

}  // namespace zestra
