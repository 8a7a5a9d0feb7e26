// What the tool shows of an article beyond its text: the metadata and the
// Markdown or HTML, as JSON fields for `zestra extract` and as lines for
// `zestra tree`.
#ifndef ZESTRA_TOOLS_ARTICLE_FIELDS_H_
#define ZESTRA_TOOLS_ARTICLE_FIELDS_H_

#include <cstdio>

#include <nlohmann/json.hpp>

#include "zestra/zestra.h"

namespace zestra_tool {

// Adds "metadata" (every field of zestra::Metadata, empty ones included,
// and "sources": field name -> source) to `record`, and "markdown" or
// "html" with result.formatted when result.format asks for one.
void AddArticleFields(const zestra::Result& result, nlohmann::ordered_json& record);

// Prints one line per metadata field found, with its value and where it
// came from; "metadata  none found" when there is none.
void PrintMetadata(const zestra::Metadata& metadata, std::FILE* out);

}  // namespace zestra_tool

#endif  // ZESTRA_TOOLS_ARTICLE_FIELDS_H_
