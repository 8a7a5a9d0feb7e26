// Writing extracted texts as WARC conversion records, the form in which
// public crawls publish the plain text of their pages: one record per page
// that refers to the response it was made from.
//
// Thread-safety: pure functions.
#ifndef ZESTRA_TOOLS_WARC_WRITER_H_
#define ZESTRA_TOOLS_WARC_WRITER_H_

#include <string>
#include <string_view>

namespace zestra_tool {

// The record ID of the conversion of the record `source_id`: a URN of a
// UUID made from a hash of `source_id`, so that the same archive always
// gives the same IDs ("<urn:uuid:...>").
std::string ConversionRecordId(std::string_view source_id);

// A WARC/1.1 conversion record holding `text` (UTF-8) as text/plain, with
// the address `url` and date `date` of the page and WARC-Refers-To
// `source_id`, its two closing line ends included.
std::string ConversionRecord(std::string_view url, std::string_view date, std::string_view source_id,
                             std::string_view text);

}  // namespace zestra_tool

#endif  // ZESTRA_TOOLS_WARC_WRITER_H_
