// Tokenizer is the WHATWG HTML tokenizer: it turns UTF-8 text into the
// tokens of the HTML standard (doctype, tags, comments, character runs, end
// of file), with every state of the standard's tokenizer, character
// references (the full table of named references, numeric references with
// the standard's replacements), CR/LF normalisation and NUL handling.
//
// The tree builder drives it: it asks for one token at a time and switches
// the tokenizer's state where the standard's tree-construction rules do
// (after <title>, <textarea>, <style>, <script>, <plaintext>, ...), and says
// whether CDATA sections are allowed (in foreign content).
//
// Cost: amortised constant time per input byte; the hot loop allocates
// nothing once the token buffers have grown to the largest token seen.
//
// Thread-safety: one tokenizer is used by one thread; any number of
// tokenizers may run at once.
#ifndef ZESTRA_HTML_TOKENIZER_H_
#define ZESTRA_HTML_TOKENIZER_H_

#include <cstdint>
#include <memory>
#include <string_view>

#include "html/token.h"

namespace OrvelParser {

// The states the tree builder (and a conformance test's "initialStates")
// may switch the tokenizer into.
enum class TokenizerState : uint8_t {
  kData,
  kRcdata,
  kRawtext,
  kScriptData,
  kPlaintext,
  kCdataSection,
};

class Tokenizer {
 public:
  // A tokenizer over `input`, in the data state.
  // REQUIRES: `input` outlives the tokenizer and every token it fills, and
  // is at most UINT32_MAX bytes. Invalid UTF-8 is passed through as bytes.
  explicit Tokenizer(std::string_view input);
  Tokenizer(const Tokenizer&) = delete;
  Tokenizer& operator=(const Tokenizer&) = delete;
  ~Tokenizer();

  // Fills `token` with the next token. After a kEndOfFile token every call
  // gives kEndOfFile again.
  void Next(Token& token);

  // Switches to `state` for the next call of Next.
  void SetState(TokenizerState state);

  // Sets the name of the last start tag (lower case), which decides which
  // end tags close RCDATA, RAWTEXT and script data. Next sets it itself for
  // every start tag it emits; tests and fragment parsing set it first.
  void SetLastStartTag(std::string_view name);

  // Whether "<![CDATA[" opens a CDATA section (the adjusted current node is
  // in a foreign namespace) or a bogus comment (otherwise, the default).
  // Next hands out the character run before a "<" of the data state before
  // it reads what follows the "<", so a setting made after the tokens
  // before the "<" holds for it.
  void SetCdataAllowed(bool allowed);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_TOKENIZER_H_
