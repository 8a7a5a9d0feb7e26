// Runs the html5lib tokenizer tests (tokenizer/*.test in the html5lib-tests
// checkout beside the repository) through Tokenizer and compares every
// token, with adjacent character tokens merged as the test format asks.
//
// Left out, with the reason:
//  - xmlViolation.test ("xmlViolationTests", 4 cases): they expect the
//    tweaks for coercing a DOM into an XML infoset (U+FFFF and form feeds
//    rewritten, "--" in comments split), which an HTML parser does not do.
// Lone surrogates ("\uD800" in doubleEscaped tests) are fed and compared in
// the three-byte generalized UTF-8 form, which the tokenizer passes through.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "html/char_ref.h"
#include "html/tokenizer.h"

namespace OrvelParser {
namespace {

using nlohmann::json;

// The checkout sits beside the repository (../shared); a git worktree one
// level further down finds it one level further up.
std::filesystem::path TestDir() {
  for (const char* candidate : {ZESTRA_SOURCE_DIR "/../shared/html5lib-tests/tokenizer",
                                ZESTRA_SOURCE_DIR "/../../shared/html5lib-tests/tokenizer"})
    if (std::filesystem::is_directory(candidate)) return candidate;
  return {};
}

// The second round of "\uXXXX" unescaping of doubleEscaped tests; surrogate
// pairs join, lone surrogates keep their generalized UTF-8 form.
std::string Unescape(const std::string& text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 5 < text.size() && text[i + 1] == 'u') {
      uint32_t cp = std::stoul(text.substr(i + 2, 4), nullptr, 16);
      i += 5;
      if (cp >= 0xD800 && cp <= 0xDBFF && i + 6 < text.size() && text[i + 1] == '\\' && text[i + 2] == 'u') {
        const uint32_t low = std::stoul(text.substr(i + 3, 4), nullptr, 16);
        if (low >= 0xDC00 && low <= 0xDFFF) {
          cp = 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00);
          i += 6;
        }
      }
      char utf8[4];
      out.append(utf8, EncodeUtf8(cp, utf8));
    } else {
      out.push_back(text[i]);
    }
  }
  return out;
}

json UnescapeAll(const json& value) {
  if (value.is_string()) return Unescape(value.get<std::string>());
  if (value.is_array()) {
    json out = json::array();
    for (const json& item : value) out.push_back(UnescapeAll(item));
    return out;
  }
  if (value.is_object()) {
    json out = json::object();
    for (const auto& [key, item] : value.items()) out[Unescape(key)] = UnescapeAll(item);
    return out;
  }
  return value;
}

// The tokens of `input` in the test format.
json Tokenize(const std::string& input, TokenizerState state, const std::string& last_start_tag) {
  Tokenizer tokenizer(input);
  tokenizer.SetState(state);
  if (!last_start_tag.empty()) tokenizer.SetLastStartTag(last_start_tag);
  json out = json::array();
  for (;;) {
    Token token;
    tokenizer.Next(token);
    const std::string data(token.data);
    switch (token.type) {
      case TokenType::kEndOfFile:
        return out;
      case TokenType::kCharacters:
        if (!out.empty() && out.back()[0] == "Character") {
          out.back()[1] = out.back()[1].get<std::string>() + data;
        } else {
          out.push_back({"Character", data});
        }
        break;
      case TokenType::kComment:
        out.push_back({"Comment", data});
        break;
      case TokenType::kStartTag: {
        json attributes = json::object();
        for (const TokenAttribute& attribute : token.attributes)
          attributes[std::string(attribute.name)] = std::string(attribute.value);
        json tag = {"StartTag", data, attributes};
        if (token.self_closing) tag.push_back(true);
        out.push_back(tag);
        break;
      }
      case TokenType::kEndTag:
        out.push_back({"EndTag", data});
        break;
      case TokenType::kDoctype:
        out.push_back({"DOCTYPE", token.has_name ? json(data) : json(nullptr),
                       token.has_public_id ? json(std::string(token.public_id)) : json(nullptr),
                       token.has_system_id ? json(std::string(token.system_id)) : json(nullptr),
                       !token.force_quirks});
        break;
    }
  }
}

bool StateNamed(const std::string& name, TokenizerState& state) {
  static const std::map<std::string, TokenizerState> kStates = {
      {"Data state", TokenizerState::kData},          {"PLAINTEXT state", TokenizerState::kPlaintext},
      {"RCDATA state", TokenizerState::kRcdata},      {"RAWTEXT state", TokenizerState::kRawtext},
      {"Script data state", TokenizerState::kScriptData}, {"CDATA section state", TokenizerState::kCdataSection},
  };
  const auto found = kStates.find(name);
  if (found == kStates.end()) return false;
  state = found->second;
  return true;
}

std::string Dump(const json& value) { return value.dump(-1, ' ', false, json::error_handler_t::replace); }

TEST(TokenizerConformanceTest, Html5libTokenizerTests) {
  const std::filesystem::path dir = TestDir();
  if (dir.empty()) GTEST_SKIP() << "no html5lib-tests beside " << ZESTRA_SOURCE_DIR;
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(dir))
    if (entry.path().extension() == ".test") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  ASSERT_FALSE(files.empty());

  int all_passed = 0, all_total = 0;
  for (const auto& file : files) {
    std::ifstream stream(file);
    const json suite = json::parse(stream);
    if (!suite.contains("tests")) continue;  // xmlViolation.test: see the top of this file
    int passed = 0, total = 0;
    for (const json& test : suite["tests"]) {
      const bool escaped = test.value("doubleEscaped", false);
      const std::string input = escaped ? Unescape(test["input"]) : test["input"].get<std::string>();
      const json expected = escaped ? UnescapeAll(test["output"]) : test["output"];
      const std::string last_start_tag = test.value("lastStartTag", "");
      const json states = test.value("initialStates", json::array({"Data state"}));
      for (const json& state_name : states) {
        ++total;
        TokenizerState state = TokenizerState::kData;
        ASSERT_TRUE(StateNamed(state_name, state)) << state_name;
        const json actual = Tokenize(input, state, last_start_tag);
        if (actual == expected) {
          ++passed;
        } else {
          ADD_FAILURE() << file.filename() << ": " << test["description"] << " in " << state_name
                        << "\n  input:    " << Dump(input) << "\n  expected: " << Dump(expected)
                        << "\n  actual:   " << Dump(actual);
        }
      }
    }
    std::printf("tokenizer conformance: %s %d/%d\n", file.filename().c_str(), passed, total);
    all_passed += passed;
    all_total += total;
  }
  std::printf("tokenizer conformance: all %d/%d\n", all_passed, all_total);
  EXPECT_EQ(all_passed, all_total);
}

}  // namespace
}  // namespace OrvelParser
