// The pages of the hostile corpus, built in code: each aims at a limit of
// the parser adapter, the builder or the walks. The reliability tests
// (hostile_test.cc) check what an extraction of each gives; the memory
// tests (memory_limit_test.cc) run them with too little memory.
#ifndef ZESTRA_TESTS_HOSTILE_HOSTILE_PAGES_H_
#define ZESTRA_TESTS_HOSTILE_HOSTILE_PAGES_H_

#include <cstddef>
#include <string>

namespace zestra_hostile {

// Words of 8 bytes ("abcdefg ") in the 50 MiB text node.
inline constexpr std::size_t kTextNodeWords = 50u << 20 >> 3;
// Elements of 8 bytes (<b>x</b>) in the 5 MiB of dense markup.
inline constexpr std::size_t kDenseElements = 5u << 20 >> 3;

// Each fills `in` with its page.
void BuildNestedElements(std::string& in);   // 20,000 divisions around "deepest words"
void BuildNestedLists(std::string& in);      // lists 20,000 deep around "deepest item"
void BuildNestedTables(std::string& in);     // 10,000 nested tables around "innermost cell"
void BuildHugeSpans(std::string& in);        // colspan 2147483647, rowspan 99999999
void BuildTextNode(std::string& in);         // one text node of 50 MiB
void BuildMillionLinks(std::string& in);     // "Item 0" to "Item 999999", each a link
void BuildDenseMarkup(std::string& in);      // 5 MiB of <b>x</b>
void BuildEveryByteValue(std::string& in);   // the 256 byte values 4096 times
void BuildNulBytes(std::string& in);         // NULs in tags, attributes and text
void BuildTruncatedUtf8(std::string& in);    // sequences cut inside and at the end
void BuildLyingCharset(std::string& in);     // declares shift_jis, is UTF-8
void BuildUnclosedComment(std::string& in);  // a comment of 10 MiB without its end
void BuildWideTables(std::string& in);       // 12 tables of 1000 x 1024 slots, 8 MB of grid each

}  // namespace zestra_hostile

#endif  // ZESTRA_TESTS_HOSTILE_HOSTILE_PAGES_H_
