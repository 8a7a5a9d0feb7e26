// What the html5lib tests do not check: byte offsets, which runs view the
// input, tag ids, and linear cost on hostile inputs.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "html/text_scan.h"
#include "html/tokenizer.h"

namespace OrvelParser {
namespace {

struct Seen {
  TokenType type;
  std::string data;
  bool in_input;
  uint32_t begin, end;
  TagId tag;
};

std::vector<Seen> All(std::string_view input) {
  Tokenizer tokenizer(input);
  std::vector<Seen> out;
  Token token;
  do {
    tokenizer.Next(token);
    const bool in_input =
        token.data.empty() || (token.data.data() >= input.data() && token.data.data() < input.data() + input.size());
    EXPECT_EQ(token.data_in_input && !token.data.empty(), token.data_in_input && in_input) << token.data;
    out.push_back({token.type, std::string(token.data), token.data_in_input, token.begin, token.end, token.tag});
  } while (token.type != TokenType::kEndOfFile);
  return out;
}

TEST(TokenizerTest, OffsetsAndInputViews) {
  const std::string input = "ab<P class=x>c&amp;d\r\ne<!--x-->f</p>";
  const std::vector<Seen> tokens = All(input);
  const std::vector<Seen> expected = {
      {TokenType::kCharacters, "ab", true, 0, 2, TagId::kTagUnknown},
      {TokenType::kStartTag, "p", false, 2, 13, TagId::k_p},  // "P" lowered
      {TokenType::kCharacters, "c&d\ne", false, 13, 23, TagId::kTagUnknown},
      {TokenType::kComment, "x", true, 23, 31, TagId::kTagUnknown},
      {TokenType::kCharacters, "f", true, 31, 32, TagId::kTagUnknown},
      {TokenType::kEndTag, "p", true, 32, 36, TagId::k_p},
      {TokenType::kEndOfFile, "", false, 36, 36, TagId::kTagUnknown},
  };
  ASSERT_EQ(tokens.size(), expected.size());
  for (size_t i = 0; i < tokens.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(tokens[i].type, expected[i].type);
    EXPECT_EQ(tokens[i].data, expected[i].data);
    EXPECT_EQ(tokens[i].in_input, expected[i].in_input);
    EXPECT_EQ(tokens[i].begin, expected[i].begin);
    EXPECT_EQ(tokens[i].end, expected[i].end);
    EXPECT_EQ(tokens[i].tag, expected[i].tag);
  }
}

TEST(TokenizerTest, TagIdsOfEveryKnownName) {
  for (int id = 1; id < static_cast<int>(TagId::kTagCount); ++id) {
    const auto tag = static_cast<TagId>(id);
    std::string upper(TagName(tag));
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    EXPECT_EQ(LookupTag(TagName(tag)), tag);
    const std::vector<Seen> tokens = All("<" + upper + "></" + upper + ">");
    EXPECT_EQ(tokens[0].tag, tag) << upper;
    EXPECT_EQ(tokens[1].tag, tag) << upper;
  }
  EXPECT_EQ(LookupTag("Div"), TagId::kTagUnknown);
  EXPECT_EQ(LookupTag("divx"), TagId::kTagUnknown);
  EXPECT_EQ(LookupTag(""), TagId::kTagUnknown);
}

TEST(TokenizerTest, AttributeIdsOfEveryKnownName) {
  for (int id = 1; id < static_cast<int>(AttributeId::kAttributeCount); ++id) {
    const auto attribute = static_cast<AttributeId>(id);
    std::string upper(AttributeName(attribute));
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    EXPECT_EQ(LookupAttribute(AttributeName(attribute)), attribute);
    const std::string input = "<p x=1 " + upper + "=v " + upper + "=w>";
    Tokenizer tokenizer(input);
    Token token;
    tokenizer.Next(token);
    ASSERT_EQ(token.attributes.size(), 2u) << upper;
    EXPECT_EQ(token.attributes[0].id, AttributeId::kAttributeUnknown);
    EXPECT_EQ(token.attributes[1].id, attribute) << upper;
    EXPECT_EQ(token.attributes[1].value, "v");
  }
  {
    const std::string input = "<a HREF='x&amp;' class=y>";
    Tokenizer tokenizer(input);
    Token token;
    tokenizer.Next(token);
    ASSERT_EQ(token.attributes.size(), 2u);
    EXPECT_FALSE(token.attributes[0].name_in_input);
    EXPECT_FALSE(token.attributes[0].value_in_input);
    EXPECT_TRUE(token.attributes[1].name_in_input);
    EXPECT_TRUE(token.attributes[1].value_in_input);
    EXPECT_EQ(token.attributes[1].value.data(), input.data() + 23);
  }
  EXPECT_EQ(LookupAttribute("Class"), AttributeId::kAttributeUnknown);
  EXPECT_EQ(LookupAttribute("aria"), AttributeId::kAttributeUnknown);
}

// The block scan finds what the byte scan finds, at every offset of a
// block and in the tail.
TEST(TokenizerTest, BlockScanMatchesByteScan) {
  std::string text(80, 'a');
  for (uint32_t stop_at = 0; stop_at <= text.size(); ++stop_at) {
    std::string probe = text;
    if (stop_at < probe.size()) probe[stop_at] = (stop_at % 3 == 0) ? '<' : (stop_at % 3 == 1 ? '&' : '\0');
    probe[0] = '\xff';  // a byte with the high bit set is no stop
    for (uint32_t from = 0; from < 20; ++from) {
      EXPECT_EQ((ScanUntil<'<', '&', '\0'>(probe.data(), from, static_cast<uint32_t>(probe.size()))),
                (ScanUntilBytewise<'<', '&', '\0'>(probe.data(), from, static_cast<uint32_t>(probe.size()))));
    }
  }
}

bool Within(std::string_view view, std::string_view input) {
  return view.data() >= input.data() && view.data() + view.size() <= input.data() + input.size();
}

// Random inputs made of the bytes that steer the states, in every initial
// state: tokens come in source order within the input, what claims to
// view the input does, and the end of file is reached.
TEST(TokenizerTest, RandomInputsKeepTokenInvariants) {
  static constexpr std::string_view kAlphabet = "<>/!-?=&#;x'\"\r\n\t\0 aAS[]CDTscript";
  std::mt19937 random(12);
  for (int round = 0; round < 20000; ++round) {
    std::string input(random() % 48, ' ');
    for (char& c : input) c = kAlphabet[random() % kAlphabet.size()];
    Tokenizer tokenizer(input);
    tokenizer.SetState(static_cast<TokenizerState>(round % 6));
    tokenizer.SetCdataAllowed(round % 4 == 0);
    tokenizer.SetLastStartTag("script");
    uint32_t previous_end = 0;
    Token token;
    int count = 0;
    do {
      tokenizer.Next(token);
      ASSERT_LE(++count, 200) << input;
      EXPECT_LE(previous_end, token.begin) << input;
      EXPECT_LE(token.begin, token.end) << input;
      EXPECT_LE(token.end, input.size()) << input;
      previous_end = token.end;
      EXPECT_TRUE(!token.data_in_input || Within(token.data, input)) << input;
      for (const TokenAttribute& attribute : token.attributes) {
        EXPECT_FALSE(attribute.name.empty()) << input;
        EXPECT_TRUE(!attribute.name_in_input || Within(attribute.name, input)) << input;
        EXPECT_TRUE(!attribute.value_in_input || Within(attribute.value, input)) << input;
      }
    } while (token.type != TokenType::kEndOfFile);
    EXPECT_EQ(token.begin, input.size());
  }
}

// A million attributes on one tag, all distinct or all the same name: both
// finish (linear), and only the first of each name is kept.
TEST(TokenizerTest, MillionAttributesOnOneTag) {
  constexpr int kCount = 1000000;
  for (const bool distinct : {true, false}) {
    std::string input = "<div";
    for (int i = 0; i < kCount; ++i) input += " a" + std::to_string(distinct ? i : 0) + "=" + std::to_string(i);
    input += "><p a1=1 a1=2 A1=3>";
    Tokenizer tokenizer(input);
    Token token;
    tokenizer.Next(token);
    ASSERT_EQ(token.type, TokenType::kStartTag);
    ASSERT_EQ(token.attributes.size(), distinct ? kCount : 1u);
    EXPECT_EQ(token.attributes.back().value, distinct ? std::to_string(kCount - 1) : "0");
    tokenizer.Next(token);  // a small tag after a huge one
    ASSERT_EQ(token.attributes.size(), 1u);
    EXPECT_EQ(token.attributes[0].value, "1");
  }
}

// Unclosed constructs of 20 MB run to the end of the input in one token.
TEST(TokenizerTest, HugeUnclosedConstructs) {
  const std::string body(20 << 20, 'x');
  for (const char* open : {"<!--", "<script>", "<textarea>", "<!DOCTYPE x PUBLIC \"", "<a b=\""}) {
    SCOPED_TRACE(open);
    const std::string input = open + body;
    Tokenizer tokenizer(input);
    Token token;
    tokenizer.Next(token);
    if (input[1] == 's' || input[1] == 't') {
      ASSERT_EQ(token.type, TokenType::kStartTag);
      tokenizer.SetState(input[1] == 's' ? TokenizerState::kScriptData : TokenizerState::kRcdata);
      tokenizer.Next(token);
      EXPECT_EQ(token.data.size(), body.size());
      EXPECT_TRUE(token.data_in_input);
    } else if (input[1] == '!') {
      EXPECT_GE(token.data.size() + token.public_id.size(), body.size());
    }
    tokenizer.Next(token);
    EXPECT_EQ(token.type, TokenType::kEndOfFile);
  }
}

}  // namespace
}  // namespace OrvelParser
