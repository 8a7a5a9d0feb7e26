#include "charset/charset_table.h"

#include <cstddef>
#include <string_view>

#include "zestra/charset/charset_names.h"

namespace OrvelCharset {
namespace {

using Orvel::CHARSET;

constexpr CHARSET Cp(int32_t n) { return static_cast<CHARSET>(n); }

// Labels are those of the WHATWG Encoding Standard, which is what web pages
// are written against: "iso-8859-1", "latin1" and "us-ascii" name
// windows-1252, "iso-8859-9" names windows-1254, "gb2312" names GBK, and so
// on. Where the Standard decodes with a superset of a charset, iconv is asked
// for that superset (CP932 for Shift_JIS, CP949 for EUC-KR, GB18030 for GBK,
// BIG5-HKSCS for Big5). The rows after the Standard's are charsets that
// detectors report although no label names them; their iso-2022 members are
// decoded, where the Standard would give one replacement character for the
// whole document, because this system extracts text and runs no script.
constexpr CharsetEntry kTable[] = {
    {Cp(65001), "UTF-8", Codec::kUtf8, "UTF-8",
     "unicode-1-1-utf-8 unicode11utf8 unicode20utf8 utf-8 utf8 x-unicode20utf8", {}},
    {Cp(1201), "UTF-16LE", Codec::kUtf16LE, "UTF-16LE",
     "csunicode iso-10646-ucs-2 ucs-2 unicode unicodefeff utf-16 utf-16le", {1200}},
    {Utf16BECharset, "UTF-16BE", Codec::kUtf16BE, "UTF-16BE", "unicodefffe utf-16be", {}},
    {Cp(1252), "windows-1252", Codec::kWindows1252, "CP1252",
     "ansi_x3.4-1968 ascii cp1252 cp819 csisolatin1 ibm819 iso-8859-1 iso-ir-100 iso8859-1 "
     "iso88591 iso_8859-1 iso_8859-1:1987 l1 latin1 us-ascii windows-1252 x-cp1252",
     {28591, 20127}},
    {Cp(866), "IBM866", Codec::kIconv, "IBM866", "866 cp866 csibm866 ibm866", {}},
    {Cp(28592), "ISO-8859-2", Codec::kIconv, "ISO-8859-2",
     "csisolatin2 iso-8859-2 iso-ir-101 iso8859-2 iso88592 iso_8859-2 iso_8859-2:1987 l2 latin2", {}},
    {Cp(28593), "ISO-8859-3", Codec::kIconv, "ISO-8859-3",
     "csisolatin3 iso-8859-3 iso-ir-109 iso8859-3 iso88593 iso_8859-3 iso_8859-3:1988 l3 latin3", {}},
    {Cp(28594), "ISO-8859-4", Codec::kIconv, "ISO-8859-4",
     "csisolatin4 iso-8859-4 iso-ir-110 iso8859-4 iso88594 iso_8859-4 iso_8859-4:1988 l4 latin4", {}},
    {Cp(28595), "ISO-8859-5", Codec::kIconv, "ISO-8859-5",
     "csisolatincyrillic cyrillic iso-8859-5 iso-ir-144 iso8859-5 iso88595 iso_8859-5 "
     "iso_8859-5:1988", {}},
    {Cp(28596), "ISO-8859-6", Codec::kIconv, "ISO-8859-6",
     "arabic asmo-708 csiso88596e csiso88596i csisolatinarabic ecma-114 iso-8859-6 iso-8859-6-e "
     "iso-8859-6-i iso-ir-127 iso8859-6 iso88596 iso_8859-6 iso_8859-6:1987", {}},
    {Cp(28597), "ISO-8859-7", Codec::kIconv, "ISO-8859-7",
     "csisolatingreek ecma-118 elot_928 greek greek8 iso-8859-7 iso-ir-126 iso8859-7 iso88597 "
     "iso_8859-7 iso_8859-7:1987 sun_eu_greek", {}},
    {Cp(28598), "ISO-8859-8", Codec::kIconv, "ISO-8859-8",
     "csiso88598e csisolatinhebrew hebrew iso-8859-8 iso-8859-8-e iso-ir-138 iso8859-8 iso88598 "
     "iso_8859-8 iso_8859-8:1988 visual", {}},
    {Cp(38598), "ISO-8859-8-I", Codec::kIconv, "ISO-8859-8", "csiso88598i iso-8859-8-i logical", {}},
    {Cp(28600), "ISO-8859-10", Codec::kIconv, "ISO-8859-10",
     "csisolatin6 iso-8859-10 iso-ir-157 iso8859-10 iso885910 l6 latin6", {}},
    {Cp(28603), "ISO-8859-13", Codec::kIconv, "ISO-8859-13", "iso-8859-13 iso8859-13 iso885913", {}},
    {Cp(28604), "ISO-8859-14", Codec::kIconv, "ISO-8859-14", "iso-8859-14 iso8859-14 iso885914", {}},
    {Cp(28605), "ISO-8859-15", Codec::kIconv, "ISO-8859-15",
     "csisolatin9 iso-8859-15 iso8859-15 iso885915 iso_8859-15 l9", {}},
    {Cp(28606), "ISO-8859-16", Codec::kIconv, "ISO-8859-16", "iso-8859-16", {}},
    {Cp(20866), "KOI8-R", Codec::kIconv, "KOI8-R", "cskoi8r koi koi8 koi8-r koi8_r", {}},
    {Cp(21866), "KOI8-U", Codec::kIconv, "KOI8-U", "koi8-ru koi8-u", {}},
    {Cp(10000), "macintosh", Codec::kIconv, "MACINTOSH", "csmacintosh mac macintosh x-mac-roman", {}},
    {Cp(874), "windows-874", Codec::kIconv, "CP874",
     "dos-874 iso-8859-11 iso8859-11 iso885911 tis-620 windows-874", {}},
    {Cp(1250), "windows-1250", Codec::kIconv, "CP1250", "cp1250 windows-1250 x-cp1250", {}},
    {Cp(1251), "windows-1251", Codec::kIconv, "CP1251", "cp1251 windows-1251 x-cp1251", {}},
    {Cp(1253), "windows-1253", Codec::kIconv, "CP1253", "cp1253 windows-1253 x-cp1253", {}},
    {Cp(1254), "windows-1254", Codec::kIconv, "CP1254",
     "cp1254 csisolatin5 iso-8859-9 iso-ir-148 iso8859-9 iso88599 iso_8859-9 iso_8859-9:1989 l5 "
     "latin5 windows-1254 x-cp1254", {28599}},
    {Cp(1255), "windows-1255", Codec::kIconv, "CP1255", "cp1255 windows-1255 x-cp1255", {}},
    {Cp(1256), "windows-1256", Codec::kIconv, "CP1256", "cp1256 windows-1256 x-cp1256", {}},
    {Cp(1257), "windows-1257", Codec::kIconv, "CP1257", "cp1257 windows-1257 x-cp1257", {}},
    {Cp(1258), "windows-1258", Codec::kIconv, "CP1258", "cp1258 windows-1258 x-cp1258", {}},
    {Cp(10007), "x-mac-cyrillic", Codec::kIconv, "MAC-CYRILLIC", "x-mac-cyrillic x-mac-ukrainian", {}},
    {Cp(936), "GBK", Codec::kIconv, "GB18030",
     "chinese csgb2312 csiso58gb231280 gb2312 gb_2312 gb_2312-80 gbk iso-ir-58 x-gbk", {20936, 51936}},
    {Cp(54936), "gb18030", Codec::kIconv, "GB18030", "gb18030", {}},
    {Cp(950), "Big5", Codec::kIconv, "BIG5-HKSCS", "big5 big5-hkscs cn-big5 csbig5 x-x-big5", {}},
    {Cp(51932), "EUC-JP", Codec::kIconv, "EUC-JP", "cseucpkdfmtjapanese euc-jp x-euc-jp", {20932}},
    {Cp(50220), "ISO-2022-JP", Codec::kIconv, "ISO-2022-JP", "csiso2022jp iso-2022-jp", {50221, 50222}},
    {Cp(932), "Shift_JIS", Codec::kIconv, "CP932",
     "csshiftjis ms932 ms_kanji shift-jis shift_jis sjis windows-31j x-sjis", {}},
    {Cp(949), "EUC-KR", Codec::kIconv, "CP949",
     "cseuckr csksc56011987 euc-kr iso-ir-149 korean ks_c_5601-1987 ks_c_5601-1989 ksc5601 "
     "ksc_5601 windows-949", {51949}},
    // Reported by detectors, named by no WHATWG label.
    {Cp(50225), "ISO-2022-KR", Codec::kIconv, "ISO-2022-KR", "", {}},
    {Cp(50227), "ISO-2022-CN", Codec::kIconv, "ISO-2022-CN", "", {}},
    {Cp(51950), "EUC-TW", Codec::kIconv, "EUC-TW", "", {}},
    {Cp(852), "IBM852", Codec::kIconv, "IBM852", "", {}},
    {Cp(855), "IBM855", Codec::kIconv, "IBM855", "", {}},
    {Cp(10029), "x-mac-ce", Codec::kIconv, "MAC-CENTRALEUROPE", "", {}},
    {Cp(12000), "UTF-32LE", Codec::kIconv, "UTF-32LE", "", {}},
    {Cp(12001), "UTF-32BE", Codec::kIconv, "UTF-32BE", "", {}},
};

bool IsAsciiSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r'; }

char AsciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (AsciiLower(a[i]) != AsciiLower(b[i])) return false;
  }
  return true;
}

std::string_view TrimAsciiSpace(std::string_view s) {
  while (!s.empty() && IsAsciiSpace(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsAsciiSpace(s.back())) s.remove_suffix(1);
  return s;
}

// True when the space-separated `labels` hold `label` (any letter case).
bool HasLabel(std::string_view labels, std::string_view label) {
  while (!labels.empty()) {
    const size_t space = labels.find(' ');
    const std::string_view one = labels.substr(0, space);
    if (EqualsIgnoringCase(one, label)) return true;
    if (space == std::string_view::npos) break;
    labels.remove_prefix(space + 1);
  }
  return false;
}

}  // namespace

std::span<const CharsetEntry> CharsetTable() { return kTable; }

const CharsetEntry* FindCharset(CHARSET charset) {
  for (const CharsetEntry& entry : kTable) {
    if (entry.code_page == charset) return &entry;
    for (int32_t synonym : entry.synonyms) {
      if (synonym != 0 && synonym == charset) return &entry;
    }
  }
  return nullptr;
}

CHARSET CharsetFromLabel(std::string_view label) {
  label = TrimAsciiSpace(label);
  if (label.empty()) return Orvel::UnknownCharset;
  for (const CharsetEntry& entry : kTable) {
    if (HasLabel(entry.labels, label)) return entry.code_page;
  }
  return Orvel::UnknownCharset;
}

CHARSET CharsetFromName(std::string_view name) {
  const CHARSET by_label = CharsetFromLabel(name);
  if (by_label != Orvel::UnknownCharset) return by_label;
  name = TrimAsciiSpace(name);
  for (const CharsetEntry& entry : kTable) {
    if (EqualsIgnoringCase(entry.name, name) || EqualsIgnoringCase(entry.iconv_name, name)) {
      return entry.code_page;
    }
  }
  return Orvel::UnknownCharset;
}

const char* CharsetName(CHARSET charset) {
  const CharsetEntry* entry = FindCharset(charset);
  return entry == nullptr ? nullptr : entry->name;
}

CHARSET CanonicalCharset(CHARSET charset) {
  const CharsetEntry* entry = FindCharset(charset);
  return entry == nullptr ? Orvel::UnknownCharset : entry->code_page;
}

}  // namespace OrvelCharset
