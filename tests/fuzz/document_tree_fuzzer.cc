// Fuzz target: GetDocumentTree. The first input byte names the charset
// (fuzz_input.h); the whole input is the document. The tree is then summed by
// Statistics, listed by FindAllTables and walked by a visitor with the
// accept-all strategy, and the three views must agree with each other.
#include <cstddef>
#include <cstdint>

#include "fuzz_input.h"
#include "zestra/api/document_tree.h"
#include "zestra/base/ref_count_vector.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/model/k_table.h"
#include "zestra/stream/memory_buffer.h"
#include "zestra/traversal/zestra_visitor.h"
#include "zestra/traversal/zestra_visitor_strategy.h"

namespace {

using Orvel::SmartPtr;
using ZestraNS::KCell;
using ZestraNS::KCellItem;
using ZestraNS::KTable;
using zestra_fuzz::Check;

// Counts the hooks of a walk with the accept-all strategy.
class CountingVisitor : public ZestraNS::ZestraVisitor {
 public:
  CountingVisitor()
      : ZestraVisitor(SmartPtr<ZestraNS::ZestraVisitorStrategy>(new ZestraNS::ZestraVisitorStrategy())) {}

  void Walk(const SmartPtr<KTable>& root) { ParseTree(root); }

  uint64_t tables_open = 0;
  uint64_t tables_closed = 0;
  uint64_t cells_open = 0;
  uint64_t cells_closed = 0;
  uint64_t text_units = 0;

 protected:
  void VisitTableInfix(const SmartPtr<KTable>&) override { ++tables_open; }
  void VisitTablePostfix(const SmartPtr<KTable>&) override { ++tables_closed; }
  void VisitCellInfix(const SmartPtr<KCell>&) override {
    Check(tables_open > tables_closed);
    ++cells_open;
  }
  void VisitCellText(const SmartPtr<KCellItem>& item) override {
    Check(cells_open > cells_closed);
    text_units += item->Text().size();
  }
  void VisitCellPostfix(const SmartPtr<KCell>&) override { ++cells_closed; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  OrvelFile::MemoryBuffer in(data, static_cast<unsigned int>(size), OrvelFile::MemoryBuffer::kReadInPlace);
  SmartPtr<KTable> root = ZestraNS::GetDocumentTree(in, zestra_fuzz::CharsetOf(data[0]));
  Orvel::RefCountVector<KTable> tables;
  zestra_fuzz::CheckDocumentTree(root, tables);

  SmartPtr<CountingVisitor> visitor(new CountingVisitor());
  visitor->Walk(root);
  Check(visitor->tables_open == visitor->tables_closed);
  Check(visitor->cells_open == visitor->cells_closed);
  // The walk also enters captions and summaries, which FindAllTables skips.
  Check(visitor->tables_open >= uint64_t{tables.Size()} + 1);
  return 0;
}
