// Reading the bytes of one page: a file or standard input ("-"), either of
// them plain or compressed with gzip. Compression is recognised by the
// gzip magic bytes (1f 8b) at the start, whatever the name; a file whose
// name ends in ".gz" but whose bytes are not gzip is an error, as it is
// most likely damaged. At most zestra::kMaxInputBytes bytes are read, after
// decompression, so neither a huge file nor a small compressed one that
// expands without end can exhaust memory beyond that; the rest is left
// unread.
//
// Thread-safety: each call uses only its own file; calls may run at once
// on different files (standard input must be read by one call only).
#ifndef ZESTRA_TOOLS_PAGE_READER_H_
#define ZESTRA_TOOLS_PAGE_READER_H_

#include <cstddef>
#include <string>

namespace zestra_tool {

// Sets `bytes` to the content of `path`, at most `limit` bytes. Returns
// true on success; otherwise sets `error` to the reason ("No such file or
// directory", "Is a directory", "invalid compressed data", "compressed data
// cut short", "named .gz but not gzip-compressed") and returns false.
bool ReadPage(const std::string& path, std::string& bytes, std::string& error, std::size_t limit);

}  // namespace zestra_tool

#endif  // ZESTRA_TOOLS_PAGE_READER_H_
