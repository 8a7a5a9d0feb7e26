#include "builder/block_analysis.h"

#include <array>

#include "builder/block_word_count.h"
#include "zestra/html/html_keyword_table.h"

namespace ZestraNS {
namespace {

using OrvelParser::HtmlTreeNode;
using K = OrvelParser::KeywordId;

constexpr std::array<BlockRole, 256> MakeRoles() {
  std::array<BlockRole, 256> roles{};
  roles.fill(BlockRole::kInline);
  for (uint32_t id : {K::kIdScript, K::kIdStyle, K::kIdHead, K::kIdTemplate, K::kIdOptionList, K::kIdEmbedded,
                      K::kIdGraphics, K::kIdFormControl}) {
    roles[id] = BlockRole::kSkip;
  }
  for (uint32_t id : {K::kIdParagraph, K::kIdDivision, K::kIdHeading, K::kIdList, K::kIdBlockQuote, K::kIdSection,
                      K::kIdListItem, K::kIdTerm, K::kIdDefinition, K::kIdCaption, K::kIdSummary, K::kIdDocument,
                      K::kIdTr, K::kIdTd, K::kIdTh, K::kIdThead, K::kIdTbody, K::kIdTfoot}) {
    roles[id] = BlockRole::kBlock;
  }
  roles[K::kIdText] = BlockRole::kText;
  roles[K::kIdBr] = BlockRole::kLineBreak;
  roles[K::kIdPre] = BlockRole::kPre;
  roles[K::kIdTable] = BlockRole::kTable;
  return roles;
}

constexpr std::array<BlockRole, 256> kRoles = MakeRoles();

enum class CharClass { kSpace, kControl, kIdeograph, kOther };

CharClass Classify(uint32_t c) {
  if (c == ' ' || (c >= 0x09 && c <= 0x0D) || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) ||
      c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F || c == 0x3000) {
    return CharClass::kSpace;
  }
  if (c < 0x20 || (c >= 0x7F && c <= 0x9F)) return CharClass::kControl;
  if (IsIdeograph(c)) return CharClass::kIdeograph;
  return CharClass::kOther;
}

}  // namespace

BlockRole RoleOfId(uint32_t keyword_id) { return kRoles[keyword_id & 0xFF]; }

BlockRole RoleOf(const HtmlTreeNode& node) {
  const BlockRole role = RoleOfId(node.Id());
  if (node.Id() == K::kIdGraphics && (node.Name() == "math" || node.Name() == "svg")) return BlockRole::kInline;
  return role;
}

bool IsSvgRoot(const HtmlTreeNode& node) { return node.Id() == K::kIdGraphics && node.Name() == "svg"; }

bool IsSvgIntegrationPoint(const HtmlTreeNode& node) {
  return node.Id() == K::kIdOther && node.Name() == "foreignobject";
}

uint32_t RoughWords(std::string_view utf8, bool& has_text) {
  uint32_t words = 0;
  bool in_word = false;
  has_text = false;
  std::size_t at = 0;
  while (at < utf8.size()) {
    const unsigned char lead = static_cast<unsigned char>(utf8[at]);
    if (lead < 0x80) {  // most text: ASCII, classified without decoding
      ++at;
      if (lead > 0x20 && lead != 0x7F) {
        has_text = true;
        if (!in_word) ++words;
        in_word = true;
      } else {
        in_word = false;
      }
      continue;
    }
    uint32_t c = lead;
    std::size_t length = 1;
    if (lead >= 0xF0) {
      length = 4;
      c = lead & 0x07;
    } else if (lead >= 0xE0) {
      length = 3;
      c = lead & 0x0F;
    } else if (lead >= 0xC0) {
      length = 2;
      c = lead & 0x1F;
    }
    for (std::size_t i = 1; i < length && at + i < utf8.size(); ++i) {
      c = (c << 6) | (static_cast<unsigned char>(utf8[at + i]) & 0x3F);
    }
    at += length;
    switch (Classify(c)) {
      case CharClass::kSpace:
      case CharClass::kControl:
        in_word = false;
        break;
      case CharClass::kIdeograph:
        has_text = true;
        in_word = false;
        ++words;
        break;
      case CharClass::kOther:
        has_text = true;
        if (!in_word) ++words;
        in_word = true;
        break;
    }
  }
  return words;
}

BlockAnalysis::BlockAnalysis(const HtmlTreeNode::List& top, uint32_t node_count) {
  records_.reserve(node_count);
  // One frame per open element: its children and the element's record.
  struct Frame {
    NodeIterator next;
    NodeIterator end;
    uint32_t record;  // the element's; kTop for the top-level list
    bool drawing;     // the children lie in an SVG drawing, outside a foreignObject
  };
  constexpr uint32_t kTop = 0xFFFFFFFFu;
  std::vector<Frame> stack;
  stack.push_back({top.begin(), top.end(), kTop, false});
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next == frame.end) {
      const uint32_t record = frame.record;
      stack.pop_back();
      if (record != kTop) Finish(record, **(stack.back().next - 1));
      continue;
    }
    const NodeIterator at = frame.next++;
    const HtmlTreeNode& node = **at;
    const uint32_t record = static_cast<uint32_t>(records_.size());
    records_.emplace_back();
    BlockNodeInfo& info = records_.back();
    const BlockRole role = RoleOf(node);
    // In a drawing only its elements are walked, to reach the HTML that a
    // foreignObject holds: the drawing's own texts are labels of a
    // picture, and HTML elsewhere in it (in a <desc>) is never shown.
    const bool drawing = frame.drawing;
    if (drawing && node.Id() != K::kIdOther && !IsSvgRoot(node)) continue;
    if (role == BlockRole::kText) {
      bool has_text = false;
      info.words_ = RoughWords(node.Utf8Text(), has_text);
      info.flags_ = BlockNodeInfo::kVisible | (has_text ? BlockNodeInfo::kHasText : 0);
      continue;
    }
    if (role == BlockRole::kSkip || IsHiddenElement(node)) continue;
    info.flags_ = BlockNodeInfo::kVisible;
    if (node.Id() == K::kIdTd || node.Id() == K::kIdTh) table_cells_.emplace(&node, record);
    if (node.Children().empty()) {
      Finish(record, node);
    } else {
      const bool children_drawing = IsSvgRoot(node) || (drawing && !IsSvgIntegrationPoint(node));
      stack.push_back({node.Children().begin(), node.Children().end(), record, children_drawing});
    }
  }
  BlockCursor at{top.begin(), 0};
  for (; at.node != top.end(); Next(at)) page_words_ += Info(at).Words();
}

void BlockAnalysis::Finish(uint32_t record, const HtmlTreeNode& node) {
  BlockNodeInfo& info = records_[record];
  info.size_ = static_cast<uint32_t>(records_.size() - record);
  const BlockRole role = RoleOf(node);
  bool block = role == BlockRole::kBlock || role == BlockRole::kPre || role == BlockRole::kTable;
  uint32_t words = 0;
  bool has_text = false;
  BlockCursor child{node.Children().begin(), record + 1};
  for (; child.node != node.Children().end(); Next(child)) {
    const BlockNodeInfo& c = records_[child.record];
    if (!c.Visible()) continue;
    words += c.words_;
    has_text = has_text || c.HasText();
    block = block || (c.IsBlock() && c.HasText());
  }
  info.words_ = words;
  if (has_text) info.flags_ |= BlockNodeInfo::kHasText;
  if (block) info.flags_ |= BlockNodeInfo::kBlock;
  BlockCursor at{node.Children().begin(), record + 1};
  BlockCursor first;
  NodeIterator last;
  while (NextUnit(at, node.Children().end(), first, last)) ++info.units_;
}

bool BlockAnalysis::FindTableCell(const HtmlTreeNode* node, uint32_t& record) const {
  const auto found = table_cells_.find(node);
  if (found == table_cells_.end()) return false;
  record = found->second;
  return true;
}

bool BlockAnalysis::NextUnit(BlockCursor& at, NodeIterator end, BlockCursor& first, NodeIterator& last) const {
  while (at.node != end) {
    const BlockNodeInfo& info = Info(at);
    if (!info.Visible()) {
      Next(at);
      continue;
    }
    if (info.IsBlock()) {
      first = at;
      Next(at);
      if (!info.HasText()) continue;
      last = at.node;
      return true;
    }
    first = at;
    bool has_text = false;
    while (at.node != end && !(Info(at).Visible() && Info(at).IsBlock())) {
      has_text = has_text || (Info(at).Visible() && Info(at).HasText());
      Next(at);
    }
    if (has_text) {
      last = at.node;
      return true;
    }
  }
  return false;
}

}  // namespace ZestraNS
