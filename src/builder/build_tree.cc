#include "builder/build_tree.h"

#include <new>
#include <string>

#include "builder/block_layout_walk.h"
#include "builder/keyword_table.h"
#include "builder/layout_walk.h"
#include "zestra/charset/charset_conversion.h"
#include "zestra/html/html_doc_parser.h"

namespace ZestraNS {
namespace {

void Build(const OrvelParser::HtmlDocTree& tree, Orvel::SmartPtr<KTable>& root, std::u16string* attribute_text,
           LayoutMode mode, WalkedNodes walked) {
  if (tree.NodeCount() == 0) return;
  std::u16string title;
  tree.GetText(title, OrvelParser::HtmlKeywordTable::kTitleAtt);
  if (!title.empty() && attribute_text != nullptr) *attribute_text = title;

  const OrvelParser::HtmlTreeNode::List& top = tree.TopLevel();
  if (top.empty() || top.front()->Children().empty()) return;
  Orvel::SmartPtr<KCell> content = root->CreateCell(0, 1);
  if (!content) return;
  if (mode == LayoutMode::kBlocks) {
    // The heading that names the article is found by the document's title.
    std::string utf8_title;
    OrvelCharset::AppendUtf8(title.data(), title.size(), utf8_title);
    AddNodesToBlocks(top, content, walked, tree.NodeCount(), utf8_title);
  } else {
    AddNodesToCell(top.begin(), top.end(), content, false, false, TablesLayoutTreatment(), walked);
  }
}

}  // namespace

Orvel::SmartPtr<KTable> NewRootTable() {
  Orvel::SmartPtr<KTable> root(new KTable(nullptr, 1, 3, 0));
  if (!root || root->Rows() != 3) throw std::bad_alloc();
  return root;
}

void BuildTreeFromStream(Orvel::BinaryStreamBufT<unsigned int>& in, Orvel::CHARSET charset,
                         Orvel::SmartPtr<KTable>& root, std::u16string* attribute_text, LayoutMode mode) {
  OrvelParser::HtmlDocTree tree(charset);
  OrvelParser::HtmlDocParser parser(in, KeywordTable(), tree);
  parser.Parse();  // success shows in the node count
  Build(tree, root, attribute_text, mode, WalkedNodes::kRelease);
}

void BuildTreeFromDocTree(const OrvelParser::HtmlDocTree& tree, Orvel::SmartPtr<KTable>& root,
                          std::u16string* attribute_text, LayoutMode mode) {
  Build(tree, root, attribute_text, mode, WalkedNodes::kKeep);
}

void BuildTreeConsumingDocTree(OrvelParser::HtmlDocTree& tree, Orvel::SmartPtr<KTable>& root,
                               std::u16string* attribute_text, LayoutMode mode) {
  Build(tree, root, attribute_text, mode, WalkedNodes::kRelease);
}

}  // namespace ZestraNS
