#include "api/date_normalize.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <vector>

namespace zestra {
namespace {

struct Token {
  enum Type { kNumber, kWord, kPunct } type;
  std::string_view text;  // a word in its case as written
  int64_t value = 0;      // numbers
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

std::vector<Token> Tokenize(std::string_view text) {
  std::vector<Token> tokens;
  std::size_t i = 0;
  while (i < text.size() && tokens.size() < 64) {
    const char c = text[i];
    std::size_t end = i + 1;
    if (IsDigit(c)) {
      int64_t value = c - '0';
      while (end < text.size() && IsDigit(text[end])) {
        if (value < 100000000000000) value = value * 10 + (text[end] - '0');
        ++end;
      }
      tokens.push_back({Token::kNumber, text.substr(i, end - i), value});
    } else if (IsAlpha(c)) {
      while (end < text.size() && IsAlpha(text[end])) ++end;
      tokens.push_back({Token::kWord, text.substr(i, end - i)});
    } else if (c != ' ' && c != '\t' && c != '\n' && c != '\r' && c != ',') {
      tokens.push_back({Token::kPunct, text.substr(i, 1)});
    }
    i = end;
  }
  return tokens;
}

bool EqualsLower(std::string_view word, std::string_view lower) {
  if (word.size() != lower.size()) return false;
  for (std::size_t i = 0; i < word.size(); ++i) {
    char c = word[i];
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c != lower[i]) return false;
  }
  return true;
}

// 1 to 12 for an English month name or its first three letters (or
// "sept"); 0 otherwise.
int MonthOf(std::string_view word) {
  static const char* const kMonths[] = {"january", "february", "march",     "april",   "may",      "june",
                                        "july",    "august",   "september", "october", "november", "december"};
  if (EqualsLower(word, "sept")) return 9;
  for (int m = 0; m < 12; ++m) {
    const std::string_view name = kMonths[m];
    if (EqualsLower(word, name) || EqualsLower(word, name.substr(0, 3))) return m + 1;
  }
  return 0;
}

// The offset in minutes of a zone abbreviation; nullopt when unknown.
std::optional<int> ZoneOffset(std::string_view word) {
  static const struct {
    const char* name;
    int minutes;
  } kZones[] = {{"z", 0},      {"ut", 0},    {"utc", 0},    {"gmt", 0},    {"est", -300}, {"edt", -240},
                {"cst", -360}, {"cdt", -300}, {"mst", -420}, {"mdt", -360}, {"pst", -480}, {"pdt", -420},
                {"cet", 60},   {"cest", 120}, {"eet", 120},  {"eest", 180}, {"bst", 60},   {"jst", 540},
                {"kst", 540},  {"aest", 600}, {"aedt", 660}};
  for (const auto& zone : kZones) {
    if (EqualsLower(word, zone.name)) return zone.minutes;
  }
  return std::nullopt;
}

bool IsLeap(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int DaysInMonth(int year, int month) {
  static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeap(year) ? 29 : kDays[month - 1];
}

struct DateTime {
  int year = -1;
  int month = -1;
  int day = -1;
  int hour = -1;  // -1: no time
  int minute = 0;
  int second = 0;
  std::optional<int> offset;  // minutes east of UTC
};

std::string Format(const DateTime& t) {
  if (t.year < 1900 || t.year > 2199 || t.month < 1 || t.month > 12 || t.day < 1 ||
      t.day > DaysInMonth(t.year, t.month)) {
    return {};
  }
  char buffer[40];
  if (t.hour < 0) {
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", t.year, t.month, t.day);
    return buffer;
  }
  if (t.hour > 23 || t.minute > 59 || t.second > 60) return {};
  std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02dT%02d:%02d:%02d", t.year, t.month, t.day, t.hour, t.minute,
                t.second == 60 ? 59 : t.second);
  std::string out = buffer;
  if (t.offset) {
    const int offset = *t.offset;
    if (offset == 0) {
      out += 'Z';
    } else {
      const int magnitude = offset < 0 ? -offset : offset;
      std::snprintf(buffer, sizeof buffer, "%c%02d:%02d", offset < 0 ? '-' : '+', magnitude / 60, magnitude % 60);
      out += buffer;
    }
  }
  return out;
}

// Days since 1970-01-01 to a civil date (proleptic Gregorian).
void CivilFromDays(int64_t days, DateTime& t) {
  days += 719468;
  const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const int64_t doe = days - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  t.day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  t.month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  t.year = static_cast<int>(yoe + era * 400 + (t.month <= 2 ? 1 : 0));
}

bool IsPunct(const std::vector<Token>& tokens, std::size_t i, char c) {
  return i < tokens.size() && tokens[i].type == Token::kPunct && tokens[i].text[0] == c;
}
bool IsNumber(const std::vector<Token>& tokens, std::size_t i) {
  return i < tokens.size() && tokens[i].type == Token::kNumber;
}

// Reads a time at tokens[i] ("14:07", "14:07:09.5", "2:07 pm") and the zone
// after it. False when tokens[i] does not start a time.
bool ReadTime(const std::vector<Token>& tokens, std::size_t i, DateTime& t) {
  if (!IsNumber(tokens, i) || tokens[i].text.size() > 2 || !IsPunct(tokens, i + 1, ':') || !IsNumber(tokens, i + 2)) {
    return false;
  }
  t.hour = static_cast<int>(tokens[i].value);
  t.minute = static_cast<int>(tokens[i + 2].value);
  i += 3;
  if (IsPunct(tokens, i, ':') && IsNumber(tokens, i + 1)) {
    t.second = static_cast<int>(tokens[i + 1].value);
    i += 2;
    if (IsPunct(tokens, i, '.') && IsNumber(tokens, i + 1)) i += 2;
  }
  if (i < tokens.size() && tokens[i].type == Token::kWord) {
    const bool am = EqualsLower(tokens[i].text, "am");
    const bool pm = EqualsLower(tokens[i].text, "pm");
    if (am || pm) {
      if (t.hour < 1 || t.hour > 12) return false;
      t.hour = t.hour % 12 + (pm ? 12 : 0);
      ++i;
    }
  }
  for (; i < tokens.size(); ++i) {
    const Token& token = tokens[i];
    if (token.type == Token::kWord) {
      if (const std::optional<int> zone = ZoneOffset(token.text)) t.offset = zone;
    } else if ((IsPunct(tokens, i, '+') || IsPunct(tokens, i, '-')) && IsNumber(tokens, i + 1)) {
      const int sign = token.text[0] == '-' ? -1 : 1;
      const Token& number = tokens[i + 1];
      int hours = 0;
      int minutes = 0;
      if (number.text.size() == 4) {
        hours = static_cast<int>(number.value / 100);
        minutes = static_cast<int>(number.value % 100);
      } else if (number.text.size() <= 2) {
        hours = static_cast<int>(number.value);
        if (IsPunct(tokens, i + 2, ':') && IsNumber(tokens, i + 3)) minutes = static_cast<int>(tokens[i + 3].value);
      } else {
        return false;
      }
      if (hours > 14 || minutes > 59) return false;
      t.offset = sign * (hours * 60 + minutes);
      return true;
    }
  }
  return true;
}

}  // namespace

std::string NormalizeDate(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t' || text.front() == '\n')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\n')) text.remove_suffix(1);
  if (text.empty() || text.size() > 100) return {};
  DateTime t;
  bool all_digits = true;
  for (char c : text) all_digits = all_digits && IsDigit(c);
  if (all_digits) {
    int64_t value = 0;
    for (char c : text) value = value * 10 + (c - '0');
    if (text.size() == 8) {
      t.year = static_cast<int>(value / 10000);
      t.month = static_cast<int>(value / 100 % 100);
      t.day = static_cast<int>(value % 100);
      return Format(t);
    }
    if (text.size() != 10 && text.size() != 13) return {};
    int64_t seconds = text.size() == 13 ? value / 1000 : value;
    CivilFromDays(seconds / 86400, t);
    seconds %= 86400;
    t.hour = static_cast<int>(seconds / 3600);
    t.minute = static_cast<int>(seconds / 60 % 60);
    t.second = static_cast<int>(seconds % 60);
    t.offset = 0;
    return Format(t);
  }
  const std::vector<Token> tokens = Tokenize(text);
  std::size_t i = 0;
  if (IsNumber(tokens, 0) && tokens[0].text.size() == 4 && tokens.size() >= 5 && tokens[1].type == Token::kPunct &&
      (tokens[1].text[0] == '-' || tokens[1].text[0] == '/' || tokens[1].text[0] == '.') && IsNumber(tokens, 2) &&
      IsPunct(tokens, 3, tokens[1].text[0]) && IsNumber(tokens, 4)) {
    t.year = static_cast<int>(tokens[0].value);
    t.month = static_cast<int>(tokens[2].value);
    t.day = static_cast<int>(tokens[4].value);
    i = 5;
    if (i < tokens.size() && tokens[i].type == Token::kWord && EqualsLower(tokens[i].text, "t")) ++i;
    if (i < tokens.size() && !ReadTime(tokens, i, t)) {
      t.hour = -1;  // what follows the date is no time: the date alone
      t.offset.reset();
    }
    return Format(t);
  }
  // Words and numbers in any order: a month name, a day and a year, then
  // perhaps a time.
  for (; i < tokens.size(); ++i) {
    const Token& token = tokens[i];
    if (token.type == Token::kWord) {
      if (t.month < 0) {
        const int month = MonthOf(token.text);
        if (month > 0) t.month = month;
      }
    } else if (token.type == Token::kNumber) {
      if (IsPunct(tokens, i + 1, ':')) {
        if (!ReadTime(tokens, i, t)) return {};
        break;
      }
      if (token.text.size() == 4 && t.year < 0) {
        t.year = static_cast<int>(token.value);
      } else if (token.text.size() <= 2 && t.day < 0) {
        t.day = static_cast<int>(token.value);
      } else {
        return {};
      }
    }
  }
  return Format(t);
}

std::string DateInUrl(std::string_view url) {
  std::size_t path = url.find("://");
  path = path == std::string_view::npos ? 0 : url.find('/', path + 3);
  if (path == std::string_view::npos) return {};
  std::size_t end = url.find_first_of("?#", path);
  const std::string_view tail = url.substr(path, end == std::string_view::npos ? std::string_view::npos : end - path);
  // Digit runs with what stands between them.
  for (std::size_t i = 0; i < tail.size(); ++i) {
    if (!IsDigit(tail[i]) || (i > 0 && IsDigit(tail[i - 1]))) continue;
    if (i == 0 || (tail[i - 1] != '/' && tail[i - 1] != '-' && tail[i - 1] != '_')) continue;
    std::size_t j = i;
    while (j < tail.size() && IsDigit(tail[j])) ++j;
    const std::string_view run = tail.substr(i, j - i);
    DateTime t;
    if (run.size() == 8 && (j == tail.size() || !IsAlpha(tail[j]))) {
      t.year = std::stoi(std::string(run.substr(0, 4)));
      t.month = std::stoi(std::string(run.substr(4, 2)));
      t.day = std::stoi(std::string(run.substr(6, 2)));
    } else if (run.size() == 4 && j + 5 < tail.size() && (tail[j] == '/' || tail[j] == '-')) {
      const char separator = tail[j];
      std::size_t k = j + 1;
      std::size_t month_end = k;
      while (month_end < tail.size() && IsDigit(tail[month_end])) ++month_end;
      if (month_end - k != 2 || month_end >= tail.size() || tail[month_end] != separator) continue;
      std::size_t day_end = month_end + 1;
      while (day_end < tail.size() && IsDigit(tail[day_end])) ++day_end;
      if (day_end - month_end - 1 != 2) continue;
      t.year = std::stoi(std::string(run));
      t.month = std::stoi(std::string(tail.substr(k, 2)));
      t.day = std::stoi(std::string(tail.substr(month_end + 1, 2)));
    } else {
      continue;
    }
    const std::string date = Format(t);
    if (!date.empty()) return date;
  }
  return {};
}

}  // namespace zestra
