// Token is what the HTML tokenizer hands the tree builder: a doctype, a start
// or end tag, a comment, a run of characters, or the end of the input.
//
// A Token is reused: the tokenizer overwrites it on every call, and every
// view it holds (names, values, text) stays valid only until the next call
// to Tokenizer::Next, unless the view lies in the input (see
// Token::data_in_input), which outlives the tokenizer. The tree builder
// copies what it keeps. No token is ever allocated on the heap.
//
// Thread-safety: a token belongs to one tokenizer and one thread.
#ifndef ZESTRA_HTML_TOKEN_H_
#define ZESTRA_HTML_TOKEN_H_

#include <cstdint>
#include <span>
#include <string_view>

#include "html/attribute_id.h"
#include "html/tag_id.h"

namespace OrvelParser {

enum class TokenType : uint8_t {
  kDoctype,
  kStartTag,
  kEndTag,
  kComment,
  // A run of characters. Runs may be split anywhere (a run never holds the
  // characters of two different tokens of the WHATWG algorithm in a way the
  // tree builder could tell apart): the builder must not rely on a run being
  // maximal. A run may hold U+0000 where the WHATWG tokenizer emits it.
  kCharacters,
  kEndOfFile,
};

// One attribute of a start tag, in source order. Duplicates (a name seen
// before on the same tag) are already dropped, as the standard requires.
struct TokenAttribute {
  std::string_view name;   // lower-case as the tokenizer lowered it; never empty
  std::string_view value;  // character references decoded, NUL as U+FFFD
  AttributeId id = AttributeId::kAttributeUnknown;  // the id of `name`
  // True when `name` (`value`) views the tokenizer's input, and so stays
  // valid as long as the input does (see Token::data_in_input).
  bool name_in_input = false;
  bool value_in_input = false;
};

struct Token {
  TokenType type = TokenType::kEndOfFile;

  // kStartTag, kEndTag: the id of `data` (kTagUnknown for other names).
  TagId tag = TagId::kTagUnknown;

  // kStartTag, kEndTag: the lower-case tag name. kComment: the comment's
  // text. kCharacters: the characters, UTF-8. kDoctype: the name (lower
  // case), empty when missing (see has_name).
  std::string_view data;

  // True when `data` views the tokenizer's input rather than a buffer of the
  // tokenizer's own (no character reference, NUL or CR was rewritten in
  // it), so that it stays valid as long as the input does.
  bool data_in_input = false;

  // kStartTag: the attributes, duplicates dropped. Empty for other tokens
  // (an end tag's attributes are parsed and dropped).
  std::span<const TokenAttribute> attributes;

  // kStartTag, kEndTag: the tag ended with "/>".
  bool self_closing = false;

  // kDoctype only.
  bool has_name = false;
  bool has_public_id = false;
  bool has_system_id = false;
  bool force_quirks = false;
  std::string_view public_id;
  std::string_view system_id;

  // Byte offsets in the input: the token's first byte and one past its
  // last (for kCharacters, of the source text the run came from; for
  // kEndOfFile both are the input's size).
  uint32_t begin = 0;
  uint32_t end = 0;
};

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_TOKEN_H_
