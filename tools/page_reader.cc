#include "page_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace zestra_tool {
namespace {

// Bytes read per call.
constexpr std::size_t kChunk = 1 << 16;

// The text of an errno value; std::strerror may share a buffer between
// threads.
std::string ErrnoMessage(int code) { return std::generic_category().message(code); }

bool EndsWith(const std::string& text, const char* suffix) {
  const std::size_t length = std::strlen(suffix);
  return text.size() >= length && text.compare(text.size() - length, length, suffix) == 0;
}

// Reads `fd` to its end or to `limit` bytes. `size_hint` (0 when unknown)
// sizes the first allocation.
bool ReadDescriptor(int fd, std::size_t size_hint, std::string& bytes, std::string& error, std::size_t limit) {
  bytes.clear();
  bytes.reserve(std::min(size_hint, limit));
  for (;;) {
    const std::size_t room = std::min(kChunk, limit - bytes.size());
    if (room == 0) return true;
    const std::size_t old_size = bytes.size();
    bytes.resize(old_size + room);
    const ssize_t got = read(fd, bytes.data() + old_size, room);
    if (got < 0 && errno == EINTR) {
      bytes.resize(old_size);
      continue;
    }
    if (got < 0) {
      error = ErrnoMessage(errno);
      return false;
    }
    bytes.resize(old_size + static_cast<std::size_t>(got));
    if (got == 0) return true;
  }
}

bool ReadCompressed(int fd, std::string& bytes, std::string& error, std::size_t limit) {
  gzFile file = gzdopen(fd, "rb");
  if (file == nullptr) {
    close(fd);
    error = "out of memory";
    return false;
  }
  bytes.clear();
  bool ok = true;
  for (;;) {
    const std::size_t room = std::min(kChunk, limit - bytes.size());
    if (room == 0) break;
    const std::size_t old_size = bytes.size();
    bytes.resize(old_size + room);
    const int got = gzread(file, bytes.data() + old_size, static_cast<unsigned int>(room));
    if (got < 0) {
      int code = 0;
      const char* message = gzerror(file, &code);
      error = code == Z_ERRNO ? ErrnoMessage(errno) : code == Z_DATA_ERROR ? "invalid compressed data" : message;
      ok = false;
      break;
    }
    bytes.resize(old_size + static_cast<std::size_t>(got));
    if (got == 0) break;
  }
  // A stream cut short reads without error up to the cut; only the state
  // tells.
  int code = Z_OK;
  gzerror(file, &code);
  if (ok && code == Z_BUF_ERROR) {
    error = "compressed data cut short";
    ok = false;
  }
  gzclose(file);  // closes fd
  return ok;
}

}  // namespace

bool ReadPage(const std::string& path, std::string& bytes, std::string& error, std::size_t limit) {
  if (path == "-") return ReadDescriptor(STDIN_FILENO, 0, bytes, error, limit);
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    error = ErrnoMessage(errno);
    return false;
  }
  struct stat info {};
  if (fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
    close(fd);
    error = ErrnoMessage(EISDIR);
    return false;
  }
  if (EndsWith(path, ".gz") || EndsWith(path, ".GZ")) return ReadCompressed(fd, bytes, error, limit);
  const bool ok = ReadDescriptor(fd, static_cast<std::size_t>(std::max<off_t>(info.st_size, 0)), bytes, error, limit);
  close(fd);
  return ok;
}

}  // namespace zestra_tool
