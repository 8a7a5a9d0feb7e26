// ArticleSink receives the shape of an extracted article from the article
// walk (article_walk.h) and writes it in one format: Markdown
// (markdown_writer.h) or HTML (html_writer.h).
//
// The walk reports only what holds kept text, in output order:
//   - Blocks nest: BeginBlock and EndBlock come in pairs, and a block's
//     content lies between them. Paragraphs, headings and preformatted text
//     are leaf blocks: they hold text and inline spans, no other block.
//     Lists, list items, quotes and tables are containers. A table holds
//     rows, a row holds cells, a cell holds anything.
//   - Boundary() ends the paragraph at hand without a block of its own: the
//     walk reports it where an element the writers do not render (a
//     division, a section) begins or ends, so the text around it is not run
//     together.
//   - Text outside a leaf block opens a paragraph of its own, which the next
//     block, boundary or end of container closes.
//   - Inline spans (emphasis, strong, code, links) nest inside whatever
//     block holds them and may span block boundaries; a writer closes and
//     reopens them as its format needs.
// Text is UTF-8. Outside preformatted text its white space runs are single
// spaces, which the writers join and trim; inside it the text is as
// written.
//
// Thread-safety: a sink is used by one walk.
#ifndef ZESTRA_API_ARTICLE_SINK_H_
#define ZESTRA_API_ARTICLE_SINK_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace zestra {

enum class BlockKind : uint8_t {
  kParagraph,  // leaf
  kHeading,    // leaf; Block::level 1 to 6
  kPre,        // leaf; text as written; Block::language may name the code's language
  kList,       // container of kListItem; Block::ordered, Block::start
  kListItem,   // container
  kQuote,      // container
  kTable,      // container of kRow
  kRow,        // container of kCell
  kCell,       // container; Block::header, Block::colspan
};

struct Block {
  BlockKind kind = BlockKind::kParagraph;
  int level = 0;         // kHeading
  bool ordered = false;  // kList
  int start = 1;         // kList, ordered: the first item's number
  bool header = false;   // kCell: a header cell (th)
  int colspan = 1;       // kCell: columns the cell spans, 1 to 1000
  std::string language;  // kPre: [A-Za-z0-9_+-] only; may be empty
};

enum class SpanKind : uint8_t {
  kEmphasis,
  kStrong,
  kCode,
  kLink,  // with an address
  kSubscript,
  kSuperscript,
};

class ArticleSink {
 public:
  virtual ~ArticleSink() = default;

  virtual void BeginBlock(const Block& block) = 0;
  virtual void EndBlock(BlockKind kind) = 0;
  virtual void Boundary() = 0;
  virtual void Text(std::string_view utf8) = 0;
  // `href` is a resolved, safe address (url_resolver.h) for kLink; empty
  // for the others.
  virtual void BeginSpan(SpanKind kind, const std::string& href) = 0;
  virtual void EndSpan() = 0;
  virtual void LineBreak() = 0;
  // `src` is a resolved address with an http or https scheme.
  virtual void Image(std::string_view alt, const std::string& src) = 0;
  // Called once after the last event; the output is complete afterwards.
  virtual void Finish() = 0;
};

}  // namespace zestra

#endif  // ZESTRA_API_ARTICLE_SINK_H_
