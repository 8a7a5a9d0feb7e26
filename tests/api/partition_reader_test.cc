#include "api/partition_reader.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "api/fake_documents.h"
#include "platform/com_test_objects.h"
#include "zestra/api/beautified_text.h"

namespace ZestraNS {
namespace {

using fake::FakeBrowser;
using fake::FakeDocument;
using fake::FakeElement;

// The bytes a partition's stream holds, read from its start.
std::string StreamBytes(const HtmlDocPartitions& partition) {
  auto* buffer = partition.stream->Buffer();
  buffer->DiscardLookAhead();
  buffer->vSeekG(0, Orvel::kSeekBegin, Orvel::kSeekAbsolute);
  std::string bytes;
  buffer->Copy(bytes, Orvel::BinaryStreamBufT<unsigned int>::kAll);
  return bytes;
}

// A failure code of the document object's own.
constexpr HRESULT kAccessDenied = static_cast<HRESULT>(0x80070005);

// A plain ASCII page; detection reports it as Windows-1252.
const char kAsciiPage[] = "<html><body><p>Plain page</p></body></html>";

class PartitionReaderTest : public ::testing::Test {
 protected:
  // Every enumerator the reader obtained has been released.
  void TearDown() override { EXPECT_EQ(ledger_.live_enumerators, 0); }

  fake::Ledger ledger_;
};

TEST_F(PartitionReaderTest, PageWithTwoFramesTheFirstWithAnInnerFrame) {
  FakeDocument page(ledger_), first(ledger_), second(ledger_), inner(ledger_);
  page.source = "<p>page</p>";
  first.source = "<p>first</p>";
  second.source = "<p>second</p>";
  inner.source = "<p>inner</p>";
  FakeBrowser first_browser(&first), second_browser(&second), inner_browser(&inner);
  com_test::CountedObject plugin;
  page.embedded = {first_browser.AsUnknown(), &plugin, second_browser.AsUnknown()};
  first.embedded = {inner_browser.AsUnknown()};

  HtmlDocPartitions partition;
  EXPECT_EQ(ReadPartitionTree(page.AsDocument(), partition), S_OK);

  EXPECT_EQ(StreamBytes(partition), "<p>page</p>");
  EXPECT_EQ(partition.charset, Orvel::Windows1252Charset);
  ASSERT_EQ(partition.children.Size(), 2u);
  const HtmlDocPartitions& first_part = *partition.children[0];
  const HtmlDocPartitions& second_part = *partition.children[1];
  EXPECT_EQ(StreamBytes(first_part), "<p>first</p>");
  EXPECT_EQ(StreamBytes(second_part), "<p>second</p>");
  ASSERT_EQ(first_part.children.Size(), 1u);
  EXPECT_EQ(StreamBytes(*first_part.children[0]), "<p>inner</p>");
  EXPECT_EQ(first_part.children[0]->children.Size(), 0u);
  EXPECT_EQ(second_part.children.Size(), 0u);
  EXPECT_EQ(ledger_.saves, 4);
  EXPECT_EQ(ledger_.save_clear_dirty_true, 0);

  for (ULONG refs : {page.Refs(), first.Refs(), second.Refs(), inner.Refs(), first_browser.Refs(),
                     second_browser.Refs(), inner_browser.Refs(), plugin.refs}) {
    EXPECT_EQ(refs, 1u);
  }
}

TEST_F(PartitionReaderTest, FrameThatCannotBeReadStaysListedEmpty) {
  FakeDocument page(ledger_), broken(ledger_), good(ledger_), below_broken(ledger_);
  page.source = kAsciiPage;
  broken.save_result = E_FAIL;
  good.source = kAsciiPage;
  FakeBrowser broken_browser(&broken), good_browser(&good), below_browser(&below_broken);
  broken.embedded = {below_browser.AsUnknown()};
  page.embedded = {broken_browser.AsUnknown(), good_browser.AsUnknown()};

  HtmlDocPartitions partition;
  EXPECT_EQ(ReadPartitionTree(page.AsDocument(), partition), S_OK);
  ASSERT_EQ(partition.children.Size(), 2u);
  const HtmlDocPartitions& empty = *partition.children[0];
  EXPECT_FALSE(empty.stream);
  EXPECT_EQ(empty.charset, Orvel::UnknownCharset);
  // Its frames are not read: the failure stops the walk below it.
  EXPECT_EQ(empty.children.Size(), 0u);
  EXPECT_EQ(StreamBytes(*partition.children[1]), kAsciiPage);
  EXPECT_EQ(broken.Refs(), 1u);
  EXPECT_EQ(below_broken.Refs(), 1u);
  EXPECT_EQ(broken_browser.Refs(), 1u);
}

TEST_F(PartitionReaderTest, ObjectsThatHostNoDocumentAreSkipped) {
  FakeDocument page(ledger_), not_html(ledger_);
  page.source = kAsciiPage;
  FakeBrowser empty_browser(nullptr);
  FakeBrowser failing_browser(&not_html);
  failing_browser.document_result = E_FAIL;  // fails, yet hands out a document
  page.embedded = {empty_browser.AsUnknown(), failing_browser.AsUnknown()};

  HtmlDocPartitions partition;
  EXPECT_EQ(ReadPartitionTree(page.AsDocument(), partition), S_OK);
  EXPECT_EQ(partition.children.Size(), 0u);
  EXPECT_EQ(not_html.Refs(), 1u);
  EXPECT_EQ(empty_browser.Refs(), 1u);
  EXPECT_EQ(failing_browser.Refs(), 1u);
}

TEST_F(PartitionReaderTest, MissingContainerOrEnumeratorGivesNoFrames) {
  FakeDocument frame(ledger_);
  FakeBrowser browser(&frame);
  for (int variant = 0; variant < 2; ++variant) {
    FakeDocument page(ledger_);
    page.source = kAsciiPage;
    page.embedded = {browser.AsUnknown()};
    if (variant == 0) page.has_container = false;
    if (variant == 1) page.enum_result = E_NOTIMPL;
    HtmlDocPartitions partition;
    EXPECT_EQ(ReadPartitionTree(page.AsDocument(), partition), S_OK) << variant;
    EXPECT_EQ(partition.children.Size(), 0u);
    EXPECT_EQ(StreamBytes(partition), kAsciiPage);
    EXPECT_EQ(page.Refs(), 1u);
  }
  EXPECT_EQ(browser.Refs(), 1u);
}

TEST_F(PartitionReaderTest, TopDocumentFailureIsReturnedAndNoFrameIsRead) {
  FakeDocument frame(ledger_);
  frame.source = kAsciiPage;
  FakeBrowser browser(&frame);
  FakeDocument page(ledger_);
  page.save_result = kAccessDenied;
  page.embedded = {browser.AsUnknown()};
  HtmlDocPartitions partition;
  EXPECT_EQ(ReadPartitionTree(page.AsDocument(), partition), kAccessDenied);
  EXPECT_EQ(partition.children.Size(), 0u);
  EXPECT_EQ(ledger_.saves, 1);
  EXPECT_EQ(page.Refs(), 1u);
}

TEST_F(PartitionReaderTest, PositiveSuccessOfTheTopDocumentStopsTheWalk) {
  FakeDocument frame(ledger_);
  FakeBrowser browser(&frame);
  FakeElement body;
  body.outer_html = u"<body>x</body>";
  body.outer_html_result = S_FALSE;
  FakeDocument page(ledger_);
  page.has_persist = false;
  page.body = &body;
  page.embedded = {browser.AsUnknown()};
  HtmlDocPartitions partition;
  EXPECT_EQ(ReadPartitionTree(page.AsDocument(), partition), S_FALSE);
  EXPECT_EQ(StreamBytes(partition), "<body>x</body>");
  EXPECT_EQ(partition.children.Size(), 0u);
  EXPECT_EQ(body.Refs(), 1u);
  EXPECT_EQ(browser.Refs(), 1u);
}

TEST_F(PartitionReaderTest, TextDocumentMimeTypeRule) {
  struct Case {
    std::optional<std::u16string> mime_type;
    HRESULT result;
    HtmlDocPartitions::ContentType expected;
  };
  const Case cases[] = {
      {u"Text Document", S_OK, HtmlDocPartitions::TextContent},
      {u"text document", S_OK, HtmlDocPartitions::HtmlContent},
      {u"Text document", S_OK, HtmlDocPartitions::HtmlContent},
      {u"Text Documents", S_OK, HtmlDocPartitions::HtmlContent},
      {u"Text Documen", S_OK, HtmlDocPartitions::HtmlContent},
      {u"", S_OK, HtmlDocPartitions::HtmlContent},
      {std::nullopt, S_OK, HtmlDocPartitions::HtmlContent},
      // A failing call counts for nothing, whatever string it handed out
      // (which must still be freed).
      {u"Text Document", E_FAIL, HtmlDocPartitions::HtmlContent},
  };
  for (const Case& c : cases) {
    FakeDocument document(ledger_);
    document.source = kAsciiPage;
    document.mime_type = c.mime_type;
    document.mime_type_result = c.result;
    HtmlDocPartitions partition;
    partition.contentType = HtmlDocPartitions::TextContent;
    if (c.expected == HtmlDocPartitions::TextContent) partition.contentType = HtmlDocPartitions::HtmlContent;
    EXPECT_EQ(ReadPartitionContent(document.AsDocument(), partition), S_OK);
    EXPECT_EQ(partition.contentType, c.expected) << (c.mime_type ? c.mime_type->size() : 99);
    EXPECT_EQ(document.Refs(), 1u);
  }
}

TEST_F(PartitionReaderTest, CharsetOutcomesOfDetection) {
  const std::string cp1251_page = "<meta charset=\"windows-1251\"><p>\xCF\xF0\xE8\xE2\xE5\xF2\x01\x81</p>";
  struct Case {
    std::string source;
    Orvel::CHARSET charset;
    std::string stored;
  };
  const Case cases[] = {
      // 16-bit text (a byte-order mark tells): stored as UTF-8.
      {std::string("\xFF\xFE<\0p\0>\0\xE9\0\xAC\x20", 12), Orvel::Utf8Charset,
       "\xEF\xBB\xBF<p>\xC3\xA9\xE2\x82\xAC"},
      // Nothing tells: cleaned of junk and taken as Windows-1252.
      {"\x01\x02<p>\x81\x8D abc\x7F</p>", Orvel::Windows1252Charset, "<p> abc</p>"},
      // A declared code page: copied byte for byte.
      {cp1251_page, static_cast<Orvel::CHARSET>(1251), cp1251_page},
  };
  for (const Case& c : cases) {
    FakeDocument document(ledger_);
    document.source = c.source;
    HtmlDocPartitions partition;
    EXPECT_EQ(ReadPartitionContent(document.AsDocument(), partition), S_OK);
    EXPECT_EQ(partition.charset, c.charset);
    EXPECT_EQ(StreamBytes(partition), c.stored);
  }
}

TEST_F(PartitionReaderTest, SavedSourceFailures) {
  // Save fails: its code, no stream, charset unchanged.
  {
    FakeDocument document(ledger_);
    document.source = kAsciiPage;
    document.save_result = STG_E_MEDIUMFULL;
    HtmlDocPartitions partition;
    EXPECT_EQ(ReadPartitionContent(document.AsDocument(), partition), STG_E_MEDIUMFULL);
    EXPECT_FALSE(partition.stream);
    EXPECT_EQ(partition.charset, Orvel::UnknownCharset);
  }
  // Nothing saved: the memory block has no bytes to lock, so the partition
  // gets an empty stream, keeps its charset, and Stat's S_OK is returned.
  {
    FakeDocument document(ledger_);
    HtmlDocPartitions partition;
    EXPECT_EQ(ReadPartitionContent(document.AsDocument(), partition), S_OK);
    ASSERT_TRUE(partition.stream);
    EXPECT_EQ(partition.stream->Buffer()->vSize(), 0u);
    EXPECT_EQ(partition.charset, Orvel::UnknownCharset);
  }
}

TEST_F(PartitionReaderTest, BodyOuterHtmlWithoutPersistStreamInit) {
  FakeElement body;
  body.outer_html = u"<body>caf\u00E9 \u20AC \U0001F600</body>";
  FakeDocument document(ledger_);
  document.has_persist = false;
  document.body = &body;
  HtmlDocPartitions partition;
  EXPECT_EQ(ReadPartitionContent(document.AsDocument(), partition), S_OK);
  EXPECT_EQ(partition.charset, Orvel::Utf8Charset);
  EXPECT_EQ(StreamBytes(partition), "<body>caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80</body>");
  EXPECT_EQ(ledger_.saves, 0);
  EXPECT_EQ(body.Refs(), 1u);
  EXPECT_EQ(document.Refs(), 1u);

  // An absent string counts as empty.
  body.outer_html = std::nullopt;
  HtmlDocPartitions empty;
  EXPECT_EQ(ReadPartitionContent(document.AsDocument(), empty), S_OK);
  ASSERT_TRUE(empty.stream);
  EXPECT_EQ(empty.stream->Buffer()->vSize(), 0u);
  EXPECT_EQ(empty.charset, Orvel::Utf8Charset);
}

TEST_F(PartitionReaderTest, BodyPathFailures) {
  FakeElement body;
  body.outer_html = u"<body>x</body>";
  struct Case {
    HRESULT body_result;
    bool has_body;
    HRESULT outer_html_result;
    HRESULT expected;
  };
  const Case cases[] = {
      {E_FAIL, true, S_OK, E_FAIL},           // get_body fails (the element it gave is released)
      {S_FALSE, false, S_OK, S_FALSE},        // no body element: get_body's success code
      {S_OK, false, S_OK, S_OK},              // no body element
      {S_OK, true, E_OUTOFMEMORY, E_OUTOFMEMORY},  // get_outerHTML fails
  };
  for (const Case& c : cases) {
    FakeDocument document(ledger_);
    document.has_persist = false;
    document.body = c.has_body ? &body : nullptr;
    document.body_result = c.body_result;
    body.outer_html_result = c.outer_html_result;
    HtmlDocPartitions partition;
    EXPECT_EQ(ReadPartitionContent(document.AsDocument(), partition), c.expected);
    EXPECT_FALSE(partition.stream);
    EXPECT_EQ(partition.charset, Orvel::UnknownCharset);
    EXPECT_EQ(body.Refs(), 1u);
    EXPECT_EQ(document.Refs(), 1u);
  }
}

}  // namespace
}  // namespace ZestraNS
