#include "zestra/api/document_tree.h"

#include "builder/build_tree.h"

namespace ZestraNS {

Orvel::SmartPtr<KTable> GetDocumentTree(Orvel::BinaryStreamBufT<unsigned int>& in, Orvel::CHARSET charset) {
  return GetDocumentTree(in, charset, LayoutMode::kTables);
}

Orvel::SmartPtr<KTable> GetDocumentTree(Orvel::BinaryStreamBufT<unsigned int>& in, Orvel::CHARSET charset,
                                        LayoutMode mode) {
  Orvel::SmartPtr<KTable> root = NewRootTable();
  BuildTreeFromStream(in, charset, root, nullptr, mode);
  return root;
}

}  // namespace ZestraNS
