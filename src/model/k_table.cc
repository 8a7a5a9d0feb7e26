#include "zestra/model/k_table.h"

#include <cstdint>
#include <memory>

#include "model/tree_teardown.h"
#include "zestra/base/memory_pool.h"

namespace ZestraNS {

KTable::KTable(KTable* parent, uint32_t cols, uint32_t rows, uint32_t level) noexcept
    : parent_(parent), cols_(cols), rows_(rows), grid_(nullptr), level_(level) {
  const std::size_t slots = SlotCount();
  if (slots == 0) return;
  void* memory = nullptr;
  if (slots <= SIZE_MAX / sizeof(Orvel::SmartPtr<KCell>)) {
    memory = OrvelMem::MemoryPool::New(slots * sizeof(Orvel::SmartPtr<KCell>));
  }
  if (memory == nullptr) {
    cols_ = rows_ = 0;
    return;
  }
  grid_ = static_cast<Orvel::SmartPtr<KCell>*>(memory);
  std::uninitialized_default_construct_n(grid_, slots);
}

KTable::~KTable() {
  parent_ = nullptr;
  TreeTeardown::ReleaseChildren(*this);
  std::destroy_n(grid_, SlotCount());
  OrvelMem::MemoryPool::Delete(grid_);
}

Orvel::SmartPtr<KCell> KTable::CreateCell(uint32_t col, uint32_t row) {
  Orvel::SmartPtr<KCell>& slot = Slot(col, row);
  slot = Orvel::SmartPtr<KCell>(new KCell(this, col, row));
  return slot;
}

void KTable::SetCell(uint32_t col, uint32_t row, const Orvel::SmartPtr<KCell>& cell) { Slot(col, row) = cell; }

const Orvel::SmartPtr<KCell>& KTable::CreateCaption() {
  caption_ = Orvel::SmartPtr<KCell>(new KCell(this, 0, 0));
  return caption_;
}

const Orvel::SmartPtr<KCell>& KTable::CreateSummary() {
  summary_ = Orvel::SmartPtr<KCell>(new KCell(this, 0, 0));
  return summary_;
}

}  // namespace ZestraNS
