// Dates as pages write them, read into ISO 8601.
//
// Read forms (white space around them ignored, ASCII case ignored):
//   2024-03-05, 2024/03/05, 2024.03.05, 20240305
//   any of these with a time: T or a space, then 14:07, 14:07:09 or
//     14:07:09.123 (fractions dropped), then optionally a zone: Z, +01:00,
//     +0100, +01, or a space and UTC, GMT or a zone abbreviation
//   Tue, 05 Mar 2024 14:07:09 GMT (and +0100, EST, ...), as mail and HTTP
//     write it
//   March 5, 2024; Mar. 5 2024; 5 March 2024; 5th March, 2024; each
//     optionally with a time (2:07 pm, 14:07) and a zone
//   seconds since 1970 (ten digits) or milliseconds (thirteen), read as UTC
// Known zone abbreviations: UT, UTC, GMT, Z, EST, EDT, CST, CDT, MST, MDT,
// PST, PDT, CET, CEST, EET, EEST, BST, JST, KST, AEST, AEDT. Years 1900 to
// 2199 only; days are checked against their month.
//
// Output: "2024-03-05" for a date alone; "2024-03-05T14:07:09" for a time
// without a zone; "2024-03-05T14:07:09Z" for UTC; "2024-03-05T14:07:09+01:00"
// otherwise. The time is never moved to another zone.
//
// Thread-safety: pure function.
#ifndef ZESTRA_API_DATE_NORMALIZE_H_
#define ZESTRA_API_DATE_NORMALIZE_H_

#include <string>
#include <string_view>

namespace zestra {

// The ISO 8601 form of `text`, or empty when it is not a date read above.
std::string NormalizeDate(std::string_view text);

// The first date in the path of the address `url` written as /2024/03/05/,
// /2024-03-05 or /20240305 between separators, as "2024-03-05"; empty when
// there is none.
std::string DateInUrl(std::string_view url);

}  // namespace zestra

#endif  // ZESTRA_API_DATE_NORMALIZE_H_
