// FlowWriter is what the Markdown and HTML writers share: the reading of
// the article walk's events (article_sink.h) into leaf blocks, inline spans
// and the spaces between words, with the format left to hooks.
//
//   - A leaf block (a paragraph, heading or preformatted text, or the
//     implicit paragraph that text outside one opens) starts in the output
//     only when its first content comes (StartLeaf), so an element whose
//     text is all white space leaves nothing; EndLeaf closes what started.
//   - Spaces are held back: a run of white space becomes one WriteSpace
//     before the next content of the same leaf, never at a leaf's start or
//     end, and never just inside a span's delimiters, so "*word* next" and
//     not "*word *next". A line break is held back the same way and
//     replaces the space (WriteBreak).
//   - Spans open in the output just before their first content
//     (WriteOpenSpan) and close when they end or their leaf ends
//     (WriteCloseSpan); a span that outlives its leaf opens again in the
//     next leaf with content.
//   - Containers (lists, items, quotes, tables, rows, cells) go to the
//     hooks as they come, after the leaf at hand is ended.
//
// Thread-safety: one writer per walk.
#ifndef ZESTRA_API_FLOW_WRITER_H_
#define ZESTRA_API_FLOW_WRITER_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "api/article_sink.h"

namespace zestra {

class FlowWriter : public ArticleSink {
 public:
  FlowWriter() = default;
  FlowWriter(const FlowWriter&) = delete;
  FlowWriter& operator=(const FlowWriter&) = delete;

  void BeginBlock(const Block& block) final;
  void EndBlock(BlockKind kind) final;
  void Boundary() final;
  void Text(std::string_view utf8) final;
  void BeginSpan(SpanKind kind, const std::string& href) final;
  void EndSpan() final;
  void LineBreak() final;
  void Image(std::string_view alt, const std::string& src) final;
  void Finish() final;

 protected:
  struct Span {
    SpanKind kind;
    std::string href;
  };

  // The leaf block at hand: its kind (kParagraph for an implicit one) and
  // whether it was opened by BeginBlock.
  const Block& Leaf() const { return leaf_; }
  bool ExplicitLeaf() const { return explicit_leaf_; }
  // The spans open in the output, outermost first.
  const std::vector<Span>& OpenSpans() const { return spans_; }
  std::size_t OpenSpanCount() const { return open_spans_; }

  // A leaf's first content is coming.
  virtual void StartLeaf() = 0;
  // The leaf that StartLeaf started ends; its spans are closed already.
  virtual void FinishLeaf() = 0;
  // Text of a leaf other than preformatted, without white space.
  virtual void WriteWords(std::string_view utf8) = 0;
  // The text of preformatted leaf, as written; before its StartLeaf.
  virtual void WritePreformatted(std::string_view utf8) = 0;
  virtual void WriteSpace() = 0;
  virtual void WriteBreak() = 0;
  virtual void WriteOpenSpan(const Span& span) = 0;
  virtual void WriteCloseSpan(const Span& span) = 0;
  virtual void WriteImage(std::string_view alt, const std::string& src) = 0;
  virtual void BeginContainer(const Block& block) = 0;
  virtual void EndContainer(BlockKind kind) = 0;
  virtual void FinishDocument() = 0;

 private:
  static bool IsLeaf(BlockKind kind) {
    return kind == BlockKind::kParagraph || kind == BlockKind::kHeading || kind == BlockKind::kPre;
  }
  // Starts the leaf when it has not started, writes the space or break
  // held back, and opens the spans not open yet.
  void Prepare();
  void EndLeaf();

  Block leaf_;
  bool in_leaf_ = false;
  bool explicit_leaf_ = false;
  bool leaf_started_ = false;
  bool pending_space_ = false;
  bool pending_break_ = false;
  std::vector<Span> spans_;   // every span begun and not ended, outermost first
  std::size_t open_spans_ = 0;  // how many of spans_, from the first, are open in the output
};

}  // namespace zestra

#endif  // ZESTRA_API_FLOW_WRITER_H_
