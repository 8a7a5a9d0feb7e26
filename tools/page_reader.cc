#include "page_reader.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <system_error>

namespace zestra_tool {
namespace {

// Bytes read or inflated per call.
constexpr std::size_t kChunk = 1 << 16;

// The text of an errno value; std::strerror may share a buffer between
// threads.
std::string ErrnoMessage(int code) { return std::generic_category().message(code); }

bool EndsWithNoCase(const std::string& text, const char* suffix) {
  const std::size_t length = std::strlen(suffix);
  return text.size() >= length && strncasecmp(text.c_str() + text.size() - length, suffix, length) == 0;
}

// True when `bytes` from `offset` on start with the gzip magic bytes.
bool IsGzip(const std::string& bytes, std::size_t offset = 0) {
  return bytes.size() >= offset + 2 && static_cast<unsigned char>(bytes[offset]) == 0x1f &&
         static_cast<unsigned char>(bytes[offset + 1]) == 0x8b;
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

// Inflates the gzip data `packed` into `bytes`, at most `limit` bytes.
// Members written one after another are read as one stream, as gzip reads
// them; bytes after the last member that do not start another are ignored.
bool Inflate(const std::string& packed, std::string& bytes, std::string& error, std::size_t limit) {
  z_stream stream{};
  if (inflateInit2(&stream, 15 + 16) != Z_OK) {  // 16: gzip wrapper only
    error = "out of memory";
    return false;
  }
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
  bytes.clear();
  std::size_t consumed = 0;  // input bytes handed to zlib so far
  bool ok = true;
  for (;;) {
    if (stream.avail_in == 0 && consumed < packed.size()) {
      const std::size_t give = std::min<std::size_t>(packed.size() - consumed, 1u << 30);
      stream.avail_in = static_cast<uInt>(give);
      consumed += give;
    }
    const std::size_t room = std::min(kChunk, limit - bytes.size());
    if (room == 0) break;
    const std::size_t old_size = bytes.size();
    bytes.resize(old_size + room);
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data() + old_size);
    stream.avail_out = static_cast<uInt>(room);
    const int status = inflate(&stream, Z_NO_FLUSH);
    bytes.resize(old_size + room - stream.avail_out);
    if (status == Z_STREAM_END) {
      const std::size_t next = consumed - stream.avail_in;
      if (!IsGzip(packed, next)) break;
      inflateReset(&stream);
      continue;
    }
    if (status == Z_OK) continue;
    if (status == Z_BUF_ERROR && stream.avail_in == 0 && consumed == packed.size()) {
      error = "compressed data cut short";
    } else if (status == Z_MEM_ERROR) {
      error = "out of memory";
    } else {
      error = "invalid compressed data";
    }
    ok = false;
    break;
  }
  inflateEnd(&stream);
  return ok;
}

// Reads what `fd` holds and inflates it when it is gzip data. `gz_name`:
// the name ends in ".gz", so the bytes must be gzip.
bool ReadContent(int fd, std::size_t size_hint, bool gz_name, std::string& bytes, std::string& error,
                 std::size_t limit) {
  std::string raw;
  if (!ReadDescriptor(fd, size_hint, raw, error, limit)) return false;
  if (!IsGzip(raw)) {
    if (gz_name) {
      error = "named .gz but not gzip-compressed";
      return false;
    }
    bytes = std::move(raw);
    return true;
  }
  return Inflate(raw, bytes, error, limit);
}

// ReadContent that reports running out of memory as its error.
bool ReadContentOrFail(int fd, std::size_t size_hint, bool gz_name, std::string& bytes, std::string& error,
                       std::size_t limit) {
  try {
    return ReadContent(fd, size_hint, gz_name, bytes, error, limit);
  } catch (const std::bad_alloc&) {
    error = "out of memory";
    return false;
  }
}

}  // namespace

bool ReadPage(const std::string& path, std::string& bytes, std::string& error, std::size_t limit) {
  if (path == "-") return ReadContentOrFail(STDIN_FILENO, 0, false, bytes, error, limit);
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
  const std::size_t size = static_cast<std::size_t>(std::max<off_t>(info.st_size, 0));
  const bool ok = ReadContentOrFail(fd, size, EndsWithNoCase(path, ".gz"), bytes, error, limit);
  close(fd);
  return ok;
}

}  // namespace zestra_tool
