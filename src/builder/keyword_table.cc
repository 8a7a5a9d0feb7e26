#include "builder/keyword_table.h"

namespace ZestraNS {
namespace {

const OrvelParser::HtmlKeywordTable kKeywordTable(OrvelParser::HtmlKeywordTable::kHtmlPrtType);

}  // namespace

const OrvelParser::HtmlKeywordTable& KeywordTable() { return kKeywordTable; }

}  // namespace ZestraNS
