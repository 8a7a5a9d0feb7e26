#include "zestra/base/memory_ceiling.h"

namespace OrvelMem {
namespace {

// The innermost ceiling installed on this thread; null when none is.
thread_local MemoryCeiling* current = nullptr;

}  // namespace

MemoryCeiling::MemoryCeiling(std::size_t limit_bytes) noexcept : limit_(limit_bytes), outer_(current) {
  if (limit_ > 0) current = this;
}

MemoryCeiling::~MemoryCeiling() {
  if (current == this) current = outer_;
}

bool MemoryCeiling::Installed() noexcept { return current != nullptr; }

bool MemoryCeiling::Take(std::size_t bytes) noexcept {
  for (MemoryCeiling* c = current; c != nullptr; c = c->outer_) {
    if (bytes > c->limit_ - c->used_) {
      c->reached_ = true;
      return false;
    }
  }
  for (MemoryCeiling* c = current; c != nullptr; c = c->outer_) {
    c->used_ += bytes;
    if (c->used_ > c->peak_) c->peak_ = c->used_;
  }
  return true;
}

void MemoryCeiling::Give(std::size_t bytes) noexcept {
  for (MemoryCeiling* c = current; c != nullptr; c = c->outer_) c->used_ -= bytes < c->used_ ? bytes : c->used_;
}

}  // namespace OrvelMem
