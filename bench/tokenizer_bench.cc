// zestra-tokenizer-bench: throughput of the HTML tokenizer alone.
//
//   zestra-tokenizer-bench [--passes N] DIR...
//
// Loads every page (.html, .html.gz) below the folders into memory (raw
// bytes, whatever their charset), tokenizes them all once to warm up, then
// N times (default 20) on this thread (switching to script, RAWTEXT, RCDATA
// and PLAINTEXT after the start tags that do so in a tree builder), and prints MB/s of input in
// processor time of the thread, with the token counts of one pass.
//
// Exit status: 0; 2 on a usage or input error.
#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "html/tokenizer.h"
#include "page_corpus.h"

namespace {

double ThreadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

struct Counts {
  uint64_t tokens = 0;
  uint64_t tags = 0;
  uint64_t attributes = 0;
  uint64_t text_bytes = 0;
};

// The state a tree builder switches to after these start tags (outside
// foreign content), so that script and style bodies are read as such.
void SwitchAfterStartTag(OrvelParser::Tokenizer& tokenizer, OrvelParser::TagId tag) {
  using OrvelParser::TagId;
  using OrvelParser::TokenizerState;
  switch (tag) {
    case TagId::k_script:
      tokenizer.SetState(TokenizerState::kScriptData);
      break;
    case TagId::k_style:
    case TagId::k_xmp:
    case TagId::k_iframe:
    case TagId::k_noembed:
    case TagId::k_noframes:
      tokenizer.SetState(TokenizerState::kRawtext);
      break;
    case TagId::k_title:
    case TagId::k_textarea:
      tokenizer.SetState(TokenizerState::kRcdata);
      break;
    case TagId::k_plaintext:
      tokenizer.SetState(TokenizerState::kPlaintext);
      break;
    default:
      break;
  }
}

void TokenizeAll(const std::vector<zestra_bench::Page>& pages, Counts& counts) {
  OrvelParser::Token token;
  for (const auto& page : pages) {
    OrvelParser::Tokenizer tokenizer(page.bytes);
    do {
      tokenizer.Next(token);
      ++counts.tokens;
      if (token.type == OrvelParser::TokenType::kStartTag) {
        ++counts.tags;
        counts.attributes += token.attributes.size();
        SwitchAfterStartTag(tokenizer, token.tag);
      } else if (token.type == OrvelParser::TokenType::kCharacters) {
        counts.text_bytes += token.data.size();
      }
    } while (token.type != OrvelParser::TokenType::kEndOfFile);
  }
}

}  // namespace

int main(int argc, char** argv) {
  int passes = 20;
  std::vector<std::string> folders;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--passes") == 0 && i + 1 < argc) {
      passes = std::atoi(argv[++i]);
    } else if (argv[i][0] == '-') {
      std::fprintf(stderr, "usage: zestra-tokenizer-bench [--passes N] DIR...\n");
      return 2;
    } else {
      folders.push_back(argv[i]);
    }
  }
  if (folders.empty() || passes < 1) {
    std::fprintf(stderr, "usage: zestra-tokenizer-bench [--passes N] DIR...\n");
    return 2;
  }
  std::vector<zestra_bench::Page> pages;
  for (const std::string& folder : folders) {
    std::string error;
    if (!zestra_bench::LoadPages(folder, pages, error)) {
      std::fprintf(stderr, "zestra-tokenizer-bench: %s\n", error.c_str());
      return 2;
    }
  }
  const uint64_t bytes = zestra_bench::TotalBytes(pages);

  Counts counts;
  TokenizeAll(pages, counts);
  Counts measured;
  const double start = ThreadSeconds();
  for (int pass = 0; pass < passes; ++pass) TokenizeAll(pages, measured);
  const double seconds = ThreadSeconds() - start;

  std::printf("%zu pages, %.1f MB; per pass %llu tokens, %llu start tags, %llu attributes, %.1f MB of text\n",
              pages.size(), static_cast<double>(bytes) / 1e6, static_cast<unsigned long long>(counts.tokens),
              static_cast<unsigned long long>(counts.tags), static_cast<unsigned long long>(counts.attributes),
              static_cast<double>(counts.text_bytes) / 1e6);
  std::printf("tokenizer: %d passes in %.3f s: %.0f MB/s\n", passes, seconds,
              static_cast<double>(bytes) * passes / seconds / 1e6);
  return measured.tokens == counts.tokens * passes ? 0 : 2;
}
