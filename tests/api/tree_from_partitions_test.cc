#include "builder/tree_from_partitions.h"

#include <gtest/gtest.h>

#include <string>

#include "api/partition_stream.h"
#include "zestra/model/k_cell.h"
#include "zestra/model/k_cell_item.h"

namespace ZestraNS {
namespace {

using Orvel::SmartPtr;
using Holder = HtmlDocPartitions::Holder;

// A partition holding the UTF-8 page `html` under `charset`.
Holder Page(const std::u16string& html, Orvel::CHARSET charset = Orvel::Utf8Charset) {
  return Holder(new HtmlDocPartitions(NewUtf8PartitionStream(html), charset, HtmlDocPartitions::HtmlContent));
}

// Checks the shape every partition root has, and returns its frames cell.
SmartPtr<KCell> FramesCellOf(const SmartPtr<KTable>& root) {
  EXPECT_EQ(root->Cols(), 1u);
  EXPECT_EQ(root->Rows(), 3u);
  EXPECT_EQ(root->Level(), 0u);
  EXPECT_EQ(root->ParentTable(), nullptr);
  EXPECT_EQ(root->GetCell(0, 0), nullptr);
  SmartPtr<KCell> frames = root->GetCell(0, 2);
  EXPECT_NE(frames, nullptr);
  if (frames) {
    EXPECT_EQ(frames->Words(), 0u);
    EXPECT_EQ(frames->Links(), 0u);
    EXPECT_EQ(frames->Tables(), static_cast<uint32_t>(frames->End() - frames->Begin()));
  }
  return frames;
}

// The table of item `index` of `cell`.
SmartPtr<KTable> FrameRoot(const SmartPtr<KCell>& cell, int index) {
  const SmartPtr<KCellItem>& item = cell->Begin()[index];
  EXPECT_TRUE(item->IsTable());
  EXPECT_FALSE(item->IsText());
  return item->Table();
}

TEST(TreeFromPartitionsTest, PartitionWithoutStreamOrChildren) {
  const HtmlDocPartitions empty;
  std::u16string attribute_text = u"kept";
  SmartPtr<KTable> root = BuildTreeFromPartitions(empty, &attribute_text);
  EXPECT_EQ(root->GetCell(0, 1), nullptr);
  SmartPtr<KCell> frames = FramesCellOf(root);
  ASSERT_NE(frames, nullptr);
  EXPECT_TRUE(frames->IsEmpty());
  EXPECT_EQ(frames->Tables(), 0u);
  EXPECT_EQ(attribute_text, u"kept");
}

TEST(TreeFromPartitionsTest, PageWithFramesOfFrames) {
  Holder page = Page(u"<title>Page</title><p>page text</p>");
  Holder first = Page(u"<title>First</title><p>first frame</p>");
  Holder unknown = Page(u"<p>never parsed</p>", Orvel::UnknownCharset);
  Holder inner = Page(u"<p>inner frame</p>");
  unknown->children.Add(inner);
  page->children.Add(first);
  page->children.Add(unknown);
  page->children.Add(Holder());  // an empty holder counts as an empty partition

  std::u16string attribute_text;
  SmartPtr<KTable> root = BuildTreeFromPartitions(*page, &attribute_text);
  EXPECT_EQ(attribute_text, u"Page");
  ASSERT_NE(root->GetCell(0, 1), nullptr);
  EXPECT_EQ(root->GetCell(0, 1)->Words(), 2u);
  SmartPtr<KCell> frames = FramesCellOf(root);
  ASSERT_NE(frames, nullptr);
  ASSERT_EQ(frames->Tables(), 3u);

  SmartPtr<KTable> first_root = FrameRoot(frames, 0);
  ASSERT_NE(first_root->GetCell(0, 1), nullptr);
  EXPECT_EQ(first_root->GetCell(0, 1)->Words(), 2u);
  EXPECT_EQ(FramesCellOf(first_root)->Tables(), 0u);

  // Unknown charset: no content, but its own frame is built.
  SmartPtr<KTable> unknown_root = FrameRoot(frames, 1);
  EXPECT_EQ(unknown_root->GetCell(0, 1), nullptr);
  SmartPtr<KCell> unknown_frames = FramesCellOf(unknown_root);
  ASSERT_EQ(unknown_frames->Tables(), 1u);
  SmartPtr<KTable> inner_root = FrameRoot(unknown_frames, 0);
  ASSERT_NE(inner_root->GetCell(0, 1), nullptr);
  EXPECT_EQ(inner_root->GetCell(0, 1)->Words(), 2u);

  SmartPtr<KTable> empty_root = FrameRoot(frames, 2);
  EXPECT_EQ(empty_root->GetCell(0, 1), nullptr);
  EXPECT_TRUE(FramesCellOf(empty_root)->IsEmpty());

  // The whole tree is counted: the frames cell holds three tables.
  KStatistics statistics;
  root->Statistics(statistics, 0xFFFFFFFFu);
  EXPECT_EQ(statistics.Words(), 6u);
  EXPECT_EQ(statistics.Tables(), 4u);
}

TEST(TreeFromPartitionsTest, FrameTitlesNeverReachTheAttributeText) {
  Holder page = Page(u"<p>page without title</p>");
  page->children.Add(Page(u"<title>Frame title</title><p>frame</p>"));
  std::u16string attribute_text = u"before";
  BuildTreeFromPartitions(*page, &attribute_text);
  EXPECT_EQ(attribute_text, u"before");
}

TEST(TreeFromPartitionsTest, ContentTypesAndMissingStreams) {
  Holder text = Page(u"<p>plain text</p>");
  text->contentType = HtmlDocPartitions::TextContent;
  EXPECT_NE(BuildTreeFromPartitions(*text, nullptr)->GetCell(0, 1), nullptr);

  Holder other = Page(u"<p>other type</p>");
  other->contentType = static_cast<HtmlDocPartitions::ContentType>(2);
  EXPECT_EQ(BuildTreeFromPartitions(*other, nullptr)->GetCell(0, 1), nullptr);

  HtmlDocPartitions no_stream;
  no_stream.charset = Orvel::Utf8Charset;
  EXPECT_EQ(BuildTreeFromPartitions(no_stream, nullptr)->GetCell(0, 1), nullptr);
}

TEST(TreeFromPartitionsTest, StreamsAreReadFromWhereTheyStand) {
  // The partition's bytes are parsed from the stream's get position and not
  // rewound: a second build over the same partition finds them consumed.
  Holder page = Page(u"<p>read once</p>");
  EXPECT_NE(BuildTreeFromPartitions(*page, nullptr)->GetCell(0, 1), nullptr);
  EXPECT_EQ(BuildTreeFromPartitions(*page, nullptr)->GetCell(0, 1), nullptr);
}

}  // namespace
}  // namespace ZestraNS
