// BlockAnalysis is what the blocks layout needs to know about every node of
// a parsed document before it builds anything: whether a reader sees the
// node (its markup may hide it, block_signals.h), whether it holds text,
// whether it lays out as a block, how many units its children form and how
// many words it holds. One pass over the tree, bottom-up, with an explicit
// stack.
//
// Records are kept in document order (pre-order) for the nodes the pass
// reaches: every node except those inside a node a reader does not see. A
// node's record is followed by the records of its subtree, Size() of them in
// all, so the record of a node's next sibling lies Size() records further.
// A walk that visits the same tree in the same order finds each record by
// that arithmetic (BlockCursor).
//
// Units. The children of a block are read as a sequence of units, each of
// which becomes one cell when the block becomes a table:
//   - a visible child block that holds text is a unit of its own;
//   - a run of inline children (text, links, phrasing elements, line
//     breaks) between blocks is one unit when it holds text;
//   - a visible block without text ends a run and is no unit;
//   - children a reader does not see are ignored: they neither end a run
//     nor form a unit.
// What a reader does not see: elements whose role is kSkip (RoleOf) and
// elements hidden by their markup (IsHiddenElement), with all they hold;
// inside an SVG drawing, its texts and anything else but its own elements,
// except what an HTML integration point (IsSvgIntegrationPoint) holds,
// which is read as any HTML is. MathML formulas are read whole, their
// integration points (mi, mo, mn, ms, mtext, annotation-xml) included.
// An element lays out as a block when its element is a block (paragraphs,
// headings, divisions, sections, lists and list items, quotes, tables and
// their parts, the document) or when it is an inline element with a child
// that is a block holding text (a link or a span wrapping divisions, a custom
// element wrapping paragraphs).
//
// Words are counted roughly, for comparing parts of one page: runs of
// characters between white space, and every CJK ideograph or kana apart.
//
// Thread-safety: a finished analysis is read-only; the tree must not change
// while the analysis is used, except that a walk may release the children
// of a node once it has walked them (records are never looked up again for
// nodes already walked).
#ifndef ZESTRA_BUILDER_BLOCK_ANALYSIS_H_
#define ZESTRA_BUILDER_BLOCK_ANALYSIS_H_

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "builder/block_signals.h"
#include "builder/html_nodes.h"

namespace ZestraNS {

// What the blocks layout does with an element, by keyword id.
enum class BlockRole : uint8_t {
  kSkip,       // never seen: scripts, styles, the head, media, form controls
  kText,       // a text node
  kLineBreak,  // BR
  kInline,     // links, phrasing elements, unknown elements
  kBlock,      // a block that may become a table of its units
  kPre,        // a preformatted block: always one unit
  kTable,      // an HTML table: the table path of the tables layout
};

BlockRole RoleOfId(uint32_t keyword_id);

// The role of a node: that of its keyword id, except for MathML formulas
// and SVG drawings (<math> and <svg>, skipped with the other graphics by the
// tables layout), which are inline here: a formula's tokens are words a
// reader sees, and so is the HTML of a drawing's foreignObject (see
// BlockAnalysis for what else of a drawing is seen).
BlockRole RoleOf(const OrvelParser::HtmlTreeNode& node);

// An <svg> element, the root of a drawing.
bool IsSvgRoot(const OrvelParser::HtmlTreeNode& node);

// An element of a drawing whose content is HTML that a reader sees: a
// <foreignObject>. The other HTML integration points of SVG, <desc> and
// <title>, hold descriptions and tooltips, which are not shown.
bool IsSvgIntegrationPoint(const OrvelParser::HtmlTreeNode& node);

class BlockNodeInfo {
 public:
  uint32_t Size() const noexcept { return size_; }
  bool Visible() const noexcept { return (flags_ & kVisible) != 0; }
  bool HasText() const noexcept { return (flags_ & kHasText) != 0; }
  // Lays out as a block (see above).
  bool IsBlock() const noexcept { return (flags_ & kBlock) != 0; }
  // Units among the children; 0 for text nodes and invisible nodes.
  uint32_t Units() const noexcept { return units_; }
  // Visible words of the subtree, roughly.
  uint32_t Words() const noexcept { return words_; }

 private:
  friend class BlockAnalysis;
  enum Flag : uint8_t { kVisible = 1, kHasText = 2, kBlock = 4 };

  uint32_t size_ = 1;
  uint32_t words_ = 0;
  uint32_t units_ = 0;
  uint8_t flags_ = 0;
};

// A position in a list of sibling nodes together with the record of the
// node there.
struct BlockCursor {
  NodeIterator node;
  uint32_t record;
};

class BlockAnalysis {
 public:
  // Analyses the nodes of `top` and everything below them. The tree must
  // outlive the analysis.
  // `node_count`, when not 0, is the number of nodes below `top`: the
  // records are then allocated once, without the slack of growing.
  explicit BlockAnalysis(const OrvelParser::HtmlTreeNode::List& top, uint32_t node_count = 0);
  BlockAnalysis(const BlockAnalysis&) = delete;
  BlockAnalysis& operator=(const BlockAnalysis&) = delete;

  const BlockNodeInfo& Info(uint32_t record) const { return records_[record]; }
  const BlockNodeInfo& Info(const BlockCursor& at) const { return records_[at.record]; }

  // The cursor of the first child of the node at `at`.
  // REQUIRES: the node at `at` is visible.
  BlockCursor FirstChild(const BlockCursor& at) const { return {ChildrenBegin(*at.node), at.record + 1}; }
  // Moves `at` to the next sibling.
  void Next(BlockCursor& at) const {
    at.record += records_[at.record].size_;
    ++at.node;
  }

  // The next unit among the siblings [at, end): sets `first`/`last` to its
  // range and moves `at` past it. Returns false, with `at` at `end`, when no
  // unit remains.
  bool NextUnit(BlockCursor& at, NodeIterator end, BlockCursor& first, NodeIterator& last) const;

  // Finds the record of a table cell node (TD, TH), which the table path
  // hands out in grid order, not in document order. Returns false for a
  // cell the pass did not reach or found hidden: its content is not seen.
  bool FindTableCell(const OrvelParser::HtmlTreeNode* node, uint32_t& record) const;

  // Visible words of the whole document, roughly.
  uint32_t PageWords() const noexcept { return page_words_; }

 private:
  void Finish(uint32_t record, const OrvelParser::HtmlTreeNode& node);

  std::vector<BlockNodeInfo> records_;
  std::unordered_map<const OrvelParser::HtmlTreeNode*, uint32_t> table_cells_;
  uint32_t page_words_ = 0;
};

// Rough word count of UTF-8 text (see above), and whether it holds any
// character that is neither white space nor a control.
uint32_t RoughWords(std::string_view utf8, bool& has_text);

}  // namespace ZestraNS

#endif  // ZESTRA_BUILDER_BLOCK_ANALYSIS_H_
