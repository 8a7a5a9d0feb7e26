#include "api/flow_writer.h"

namespace zestra {

void FlowWriter::BeginBlock(const Block& block) {
  EndLeaf();
  if (IsLeaf(block.kind)) {
    leaf_ = block;
    in_leaf_ = true;
    explicit_leaf_ = true;
  } else {
    BeginContainer(block);
  }
}

void FlowWriter::EndBlock(BlockKind kind) {
  EndLeaf();
  if (!IsLeaf(kind)) EndContainer(kind);
}

void FlowWriter::Boundary() { EndLeaf(); }

void FlowWriter::Text(std::string_view utf8) {
  if (in_leaf_ && leaf_.kind == BlockKind::kPre) {
    if (!leaf_started_) {
      StartLeaf();
      leaf_started_ = true;
    }
    WritePreformatted(utf8);
    return;
  }
  std::size_t at = 0;
  while (at < utf8.size()) {
    std::size_t end = at;
    while (end < utf8.size() && utf8[end] != ' ') ++end;
    if (end > at) {
      Prepare();
      WriteWords(utf8.substr(at, end - at));
    }
    if (end < utf8.size()) pending_space_ = leaf_started_;
    at = end + 1;
  }
}

void FlowWriter::BeginSpan(SpanKind kind, const std::string& href) { spans_.push_back({kind, href}); }

void FlowWriter::EndSpan() {
  if (spans_.empty()) return;
  if (open_spans_ == spans_.size()) {
    WriteCloseSpan(spans_.back());
    --open_spans_;
  }
  spans_.pop_back();
}

void FlowWriter::LineBreak() {
  if (leaf_started_) pending_break_ = true;
}

void FlowWriter::Image(std::string_view alt, const std::string& src) {
  if (in_leaf_ && leaf_.kind == BlockKind::kPre) return;
  Prepare();
  WriteImage(alt, src);
}

void FlowWriter::Finish() {
  EndLeaf();
  FinishDocument();
}

void FlowWriter::Prepare() {
  if (!in_leaf_) {
    leaf_ = Block();
    in_leaf_ = true;
    explicit_leaf_ = false;
  }
  if (!leaf_started_) {
    StartLeaf();
    leaf_started_ = true;
  } else if (pending_break_) {
    WriteBreak();
  } else if (pending_space_) {
    WriteSpace();
  }
  pending_space_ = pending_break_ = false;
  for (; open_spans_ < spans_.size(); ++open_spans_) WriteOpenSpan(spans_[open_spans_]);
}

void FlowWriter::EndLeaf() {
  if (leaf_started_) {
    while (open_spans_ > 0) WriteCloseSpan(spans_[--open_spans_]);
    FinishLeaf();
  }
  in_leaf_ = explicit_leaf_ = leaf_started_ = false;
  pending_space_ = pending_break_ = false;
}

}  // namespace zestra
