#include "zestra/api/document_tree.h"

#include <gtest/gtest.h>

#include <string>

#include "builder/layout_dump.h"
#include "zestra/model/k_cell.h"
#include "zestra/stream/memory_buffer.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;

SmartPtr<KTable> TreeOf(const std::string& bytes, Orvel::CHARSET charset = Orvel::Utf8Charset) {
  OrvelFile::MemoryBuffer buffer(static_cast<unsigned>(bytes.size() + 1));
  buffer.Put(bytes.data(), static_cast<unsigned>(bytes.size()));
  return GetDocumentTree(buffer, charset);
}

std::string DumpOf(const std::string& html, DumpOptions options = {}) {
  return DumpLayout(*TreeOf(html), options);
}

TEST(DocumentTreeTest, RootShape) {
  for (const std::string& html : {std::string(), std::string("<!-- only a comment -->"), std::string("Hello")}) {
    SmartPtr<KTable> root = TreeOf(html);
    ASSERT_TRUE(root);
    EXPECT_EQ(root->Cols(), 1u);
    EXPECT_EQ(root->Rows(), 3u);
    EXPECT_EQ(root->Level(), 0u);
    EXPECT_EQ(root->ParentTable(), nullptr);
    EXPECT_EQ(root->NbRef(), 1);
    EXPECT_FALSE(root->GetCell(0, 0));
    EXPECT_FALSE(root->GetCell(0, 2));
  }
  EXPECT_FALSE(TreeOf("")->GetCell(0, 1));

  SmartPtr<KTable> hello = TreeOf("Hello");
  const SmartPtr<KCell>& content = hello->GetCell(0, 1);
  ASSERT_TRUE(content);
  EXPECT_EQ(content->ParentTable(), hello.Get());
  EXPECT_EQ(DumpLayout(*hello, {.spans = true}),
            "table 1x3 level 0\n"
            "  cell 0,1 words 1 inlink 0 links 0 tables 0\n"
            "    text \"Hello\" @0+5\n");
}

}  // namespace
}  // namespace ZestraNS
