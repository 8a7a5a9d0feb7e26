// `zestra extract` over web archives: the HTML pages of WARC files
// (*.warc, *.warc.gz), of directories holding them and of a WARC on standard
// input, written as JSON Lines ({"url", "warc_record_id", "date", "title",
// "type", "charset", "layout", "text"}) or as WARC conversion records
// (--format warc), in archive order whatever the number of jobs.
//
// An archive that cannot be opened, or that ends with a truncated or
// corrupt record, gives one line on standard error (and {"path", "error"}
// in JSON Lines); the pages read before the problem are kept and the batch
// goes on with the other archives.
#ifndef ZESTRA_TOOLS_WARC_EXTRACT_H_
#define ZESTRA_TOOLS_WARC_EXTRACT_H_

#include "extract_command.h"

namespace zestra_tool {

// True when `settings` asks for a run over web archives: --format warc, an
// argument named like an archive, a directory holding archives, or standard
// input that starts like one. Standard input stays readable from its start
// whatever the answer.
bool IsWarcRun(const ExtractSettings& settings);

// Runs the command over the archives; the exit status as RunExtract's: 1
// when some archives failed, 2 when all failed or the options do not apply
// to archives (--out-dir, --format text).
int RunWarcExtract(const ExtractSettings& settings);

}  // namespace zestra_tool

#endif  // ZESTRA_TOOLS_WARC_EXTRACT_H_
