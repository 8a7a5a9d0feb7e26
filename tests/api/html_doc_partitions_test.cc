#include "zestra/api/html_doc_partitions.h"

#include <gtest/gtest.h>

#include "api/partition_stream.h"

namespace ZestraNS {
namespace {

using Holder = HtmlDocPartitions::Holder;
using StreamHolder = HtmlDocPartitions::StreamHolder;

// A node with a new stream holding `bytes`.
Holder NodeWithBytes(const char* bytes, Orvel::CHARSET charset) {
  StreamHolder stream = NewPartitionStream();
  stream->Put(bytes, static_cast<unsigned int>(std::char_traits<char>::length(bytes)));
  return Holder(new HtmlDocPartitions(stream, charset, HtmlDocPartitions::TextContent));
}

TEST(HtmlDocPartitionsTest, DefaultAndValueConstructors) {
  const HtmlDocPartitions empty;
  EXPECT_FALSE(empty.stream);
  EXPECT_EQ(empty.charset, Orvel::UnknownCharset);
  EXPECT_EQ(empty.contentType, HtmlDocPartitions::HtmlContent);
  EXPECT_EQ(empty.children.Size(), 0u);
  EXPECT_EQ(empty.children.Capacity(), 0u);

  StreamHolder stream = NewPartitionStream();
  ASSERT_TRUE(stream);
  auto* buffer = stream->Buffer();
  ASSERT_NE(buffer, nullptr);
  EXPECT_TRUE(stream->OwnsBuffer());
  EXPECT_EQ(buffer->vSize(), 0u);
  {
    const HtmlDocPartitions node(stream, Orvel::Utf8Charset, HtmlDocPartitions::TextContent);
    EXPECT_EQ(stream.Count(), 2);
    EXPECT_TRUE(node.stream.SharesWith(stream));
    EXPECT_EQ(node.charset, Orvel::Utf8Charset);
    EXPECT_EQ(node.contentType, HtmlDocPartitions::TextContent);
    EXPECT_EQ(node.children.Size(), 0u);
  }
  EXPECT_EQ(stream.Count(), 1);
}

TEST(HtmlDocPartitionsTest, CopySharesStreamAndChildrenShallowly) {
  Holder page = NodeWithBytes("<p>page</p>", Orvel::Utf8Charset);
  Holder frame = NodeWithBytes("<p>frame</p>", Orvel::Windows1252Charset);
  Holder inner = NodeWithBytes("<p>inner</p>", Orvel::Utf8Charset);
  frame->children.Add(inner);
  for (int i = 0; i < 3; ++i) page->children.Add(frame);
  ASSERT_EQ(page->children.Capacity(), 16u);

  const StreamHolder page_stream = page->stream;
  HtmlDocPartitions* copy = new HtmlDocPartitions(*page);
  EXPECT_EQ(page_stream.Count(), 3);  // page, copy, this test
  EXPECT_EQ(copy->charset, Orvel::Utf8Charset);
  EXPECT_EQ(copy->contentType, HtmlDocPartitions::TextContent);
  // A new array of exactly the source's length, holders sharing the same
  // child nodes; the children themselves are not copied.
  EXPECT_EQ(copy->children.Size(), 3u);
  EXPECT_EQ(copy->children.Capacity(), 3u);
  EXPECT_EQ(copy->children[0].Get(), frame.Get());
  EXPECT_EQ(frame.Count(), 7);  // this test, three in page, three in copy
  EXPECT_EQ(inner.Count(), 2);

  // Destroying the source leaves the copy usable; the stream goes with
  // its last holder only.
  page.Reset();
  EXPECT_EQ(page_stream.Count(), 2);
  EXPECT_EQ(frame.Count(), 4);
  char bytes[16] = {};
  EXPECT_EQ(copy->stream->Buffer()->Get(bytes, sizeof bytes), 11u);
  EXPECT_STREQ(bytes, "<p>page</p>");
  EXPECT_EQ(copy->children[2]->children[0].Get(), inner.Get());
  delete copy;
  EXPECT_EQ(page_stream.Count(), 1);
  EXPECT_EQ(frame.Count(), 1);
  EXPECT_EQ(inner.Count(), 2);  // still held by frame
}

TEST(HtmlDocPartitionsTest, AssignmentReplacesStreamAndChildren) {
  Holder source = NodeWithBytes("source", Orvel::Utf8Charset);
  Holder source_child = NodeWithBytes("child", Orvel::Utf8Charset);
  source->children.Add(source_child);
  Holder target = NodeWithBytes("target", Orvel::Windows1252Charset);
  target->contentType = HtmlDocPartitions::HtmlContent;
  Holder old_child = NodeWithBytes("old", Orvel::Utf8Charset);
  target->children.Add(old_child);
  target->children.Add(old_child);

  const StreamHolder old_stream = target->stream;
  *target = *source;
  EXPECT_EQ(old_stream.Count(), 1);  // the target's share was released
  EXPECT_TRUE(target->stream.SharesWith(source->stream));
  EXPECT_EQ(target->charset, Orvel::Utf8Charset);
  EXPECT_EQ(target->contentType, HtmlDocPartitions::TextContent);
  ASSERT_EQ(target->children.Size(), 1u);
  EXPECT_EQ(target->children[0].Get(), source_child.Get());
  EXPECT_EQ(old_child.Count(), 1);
  EXPECT_EQ(source_child.Count(), 3);

  // Assigning a node its own child: the child must survive the release of
  // the old list long enough to be copied.
  Holder parent = NodeWithBytes("parent", Orvel::Utf8Charset);
  parent->children.Add(NodeWithBytes("only", Orvel::Windows1252Charset));
  *parent = *parent->children[0];
  EXPECT_EQ(parent->charset, Orvel::Windows1252Charset);
  EXPECT_EQ(parent->children.Size(), 0u);
  char bytes[8] = {};
  EXPECT_EQ(parent->stream->Buffer()->Get(bytes, sizeof bytes), 4u);
  EXPECT_STREQ(bytes, "only");
}

TEST(HtmlDocPartitionsTest, SelfAssignmentChangesNothing) {
  Holder node = NodeWithBytes("x", Orvel::Utf8Charset);
  Holder child = NodeWithBytes("y", Orvel::Utf8Charset);
  node->children.Add(child);
  const auto* children_before = node->children.begin();
  HtmlDocPartitions& alias = *node;
  *node = alias;
  EXPECT_EQ(node->stream.Count(), 1);
  EXPECT_EQ(node->children.begin(), children_before);
  EXPECT_EQ(node->children.Capacity(), 16u);
  EXPECT_EQ(child.Count(), 2);
}

TEST(HtmlDocPartitionsTest, ChildrenGrowByTheSharedRule) {
  HtmlDocPartitions page;
  const Holder child(new HtmlDocPartitions());
  uint32_t last_capacity = 0;
  std::vector<uint32_t> capacities;
  for (int i = 0; i < 700; ++i) {
    page.children.Add(child);
    if (page.children.Capacity() != last_capacity) {
      last_capacity = page.children.Capacity();
      capacities.push_back(last_capacity);
    }
  }
  EXPECT_EQ(capacities, (std::vector<uint32_t>{16, 32, 64, 128, 256, 512, 640, 800}));
  EXPECT_EQ(child.Count(), 701);
}

}  // namespace
}  // namespace ZestraNS
