#include "builder/tree_from_partitions.h"

#include <new>

#include "builder/build_tree.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"

namespace ZestraNS {
namespace {

// True when the partition's own document is to be parsed.
bool HasParsableBytes(const HtmlDocPartitions& partition) {
  const bool known_type = partition.contentType == HtmlDocPartitions::HtmlContent ||
                          partition.contentType == HtmlDocPartitions::TextContent;
  return known_type && partition.stream && partition.stream->Buffer() != nullptr &&
         partition.charset != Orvel::UnknownCharset;
}

}  // namespace

Orvel::SmartPtr<KTable> BuildTreeFromPartitions(const HtmlDocPartitions& partition, std::u16string* attribute_text) {
  Orvel::SmartPtr<KTable> root = NewRootTable();
  if (HasParsableBytes(partition)) {
    BuildTreeFromStream(*partition.stream->Buffer(), partition.charset, root, attribute_text);
  }
  const Orvel::SmartPtr<KCell> frames = root->CreateCell(0, 2);
  if (!frames) throw std::bad_alloc();
  for (const HtmlDocPartitions::Holder& child : partition.children) {
    const Orvel::SmartPtr<KTable> frame_root =
        child ? BuildTreeFromPartitions(*child, nullptr) : BuildTreeFromPartitions(HtmlDocPartitions(), nullptr);
    const Orvel::SmartPtr<KCellItem> item = frames->AddCellItem();
    if (!item) continue;  // out of memory: the frame is dropped
    item->Table(frame_root);
    frames->AddTables(1);
  }
  return root;
}

}  // namespace ZestraNS
