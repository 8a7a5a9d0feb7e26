#include "builder/constant_strings.h"

namespace ZestraNS {
namespace {

const std::string kRowspan("rowspan");
const std::string kColspan("colspan");
const std::u16string kLineFeed(u"\n");
const std::u16string kRunSeparator(u" ");
const std::u16string kCrLf(u"\r\n");

}  // namespace

const std::string& RowspanAttribute() { return kRowspan; }
const std::string& ColspanAttribute() { return kColspan; }
const std::u16string& LineFeedText() { return kLineFeed; }
const std::u16string& RunSeparatorText() { return kRunSeparator; }
const std::u16string& CrLfText() { return kCrLf; }

}  // namespace ZestraNS
