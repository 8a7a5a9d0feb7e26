#include "zestra/warc.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "warc/warc_builder.h"
#include "zestra/zestra.h"

namespace zestra {
namespace {

using zestra_testing::Archive;
using zestra_testing::Chunked;
using zestra_testing::Compression;
using zestra_testing::Gzip;
using zestra_testing::WarcRecordBytes;

std::string Sample(const char* name) {
  std::ifstream file(std::string(ZESTRA_SOURCE_DIR) + "/samples/" + name, std::ios::binary);
  std::stringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

std::string Response(const std::string& version, int id, const std::string& url, const std::string& http) {
  return WarcRecordBytes(version, "response",
                         {"WARC-Target-URI: " + url, "WARC-Date: 2024-05-01T12:00:00Z",
                          "WARC-Record-ID: <urn:uuid:" + std::to_string(id) + ">"},
                         http);
}

std::string Http(const std::string& head, const std::string& body) { return head + "\r\n\r\n" + body; }

struct Read {
  std::vector<WarcRecord> pages;
  WarcCounts counts;
  std::string error;
};

Read ReadAll(const std::string& archive, WarcReader::Limits limits = {}) {
  WarcReader reader(WarcMemorySource(archive), "test.warc", limits);
  Read read;
  WarcRecord record;
  while (reader.Next(&record)) read.pages.push_back(record);
  EXPECT_FALSE(reader.Next(&record));  // and stays at its end
  read.counts = reader.Counts();
  read.error = reader.Error();
  return read;
}

// Every kind of record, in every compression and both versions: the pages
// come back in order with their payloads decoded, the others are counted.
TEST(WarcReaderTest, ReadsPagesAndCountsTheSkippedRecords) {
  const std::string article = Sample("article.html");
  const std::string sitemap = Sample("sitemap.html");
  for (const std::string version : {"1.0", "1.1"}) {
    const std::vector<std::string> records = {
        WarcRecordBytes(version, "warcinfo", {"Content-Type: application/warc-fields"}, "software: test\r\n"),
        WarcRecordBytes(version, "request", {"WARC-Target-URI: http://a/"}, "GET / HTTP/1.1\r\n\r\n"),
        Response(version, 1, "http://a/plain", Http("HTTP/1.1 200 OK\r\nContent-Type: text/html", article)),
        Response(version, 2, "http://a/chunked",
                 Http("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nTransfer-Encoding: chunked",
                      Chunked(sitemap, 700))),
        Response(version, 3, "http://a/gzip",
                 Http("HTTP/1.1 200 OK\r\ncontent-type: text/html; charset=utf-8\r\nContent-Encoding: gzip",
                      Gzip(article))),
        Response(version, 4, "http://a/both",
                 Http("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Encoding: gzip\r\n"
                      "Transfer-Encoding: chunked",
                      Chunked(Gzip(sitemap), 300))),
        Response(version, 5, "http://a/missing", Http("HTTP/1.1 404 Not Found\r\nContent-Type: text/html", "<p>no")),
        Response(version, 6, "http://a/logo.png", Http("HTTP/1.1 200 OK\r\nContent-Type: image/png", "\x89PNG")),
        Response(version, 7, "http://a/doc.pdf", Http("HTTP/1.1 200 OK", "%PDF-1.4")),
        Response(version, 8, "http://a/sniffed", Http("HTTP/1.1 200 OK", "<!DOCTYPE html><p>sniffed")),
        Response(version, 9, "http://a/br", Http("HTTP/1.1 200 OK\r\nContent-Type: text/html\r\n"
                                                 "Content-Encoding: br", "\x0b\x02\x80")),
        WarcRecordBytes(version, "resource",
                        {"WARC-Target-URI: <http://a/resource>", "WARC-Record-ID: <urn:uuid:10>",
                         "Content-Type: text/html"},
                        sitemap),
        Response(version, 11, "http://a/no-http", "not an HTTP response"),
    };
    for (Compression compression : {Compression::kNone, Compression::kPerRecord, Compression::kWhole}) {
      SCOPED_TRACE("WARC/" + version + ", compression " + std::to_string(static_cast<int>(compression)));
      std::vector<std::size_t> offsets;
      const Read read = ReadAll(Archive(records, compression, &offsets));
      EXPECT_EQ(read.error, "");
      ASSERT_EQ(read.pages.size(), 6u);
      const std::vector<std::pair<std::string, const std::string*>> expected = {
          {"http://a/plain", &article},    {"http://a/chunked", &sitemap},  {"http://a/gzip", &article},
          {"http://a/both", &sitemap},     {"http://a/sniffed", nullptr},   {"http://a/resource", &sitemap}};
      const std::vector<std::size_t> record_of_page = {2, 3, 4, 5, 9, 11};
      for (std::size_t i = 0; i < expected.size(); ++i) {
        const WarcRecord& page = read.pages[i];
        EXPECT_EQ(page.version, version);
        EXPECT_EQ(page.url, expected[i].first);
        if (expected[i].second != nullptr) {
          EXPECT_EQ(page.payload, *expected[i].second) << page.url;
        }
        EXPECT_EQ(page.offset, compression == Compression::kWhole ? 0 : offsets[record_of_page[i]]) << page.url;
      }
      EXPECT_EQ(read.pages[0].record_id, "<urn:uuid:1>");
      EXPECT_EQ(read.pages[0].date, "2024-05-01T12:00:00Z");
      EXPECT_EQ(read.pages[0].http_status, 200);
      EXPECT_EQ(read.pages[0].http_status_line, "HTTP/1.1 200 OK");
      EXPECT_EQ(read.pages[2].charset_label, "utf-8");
      EXPECT_EQ(read.pages[4].payload, "<!DOCTYPE html><p>sniffed");
      EXPECT_EQ(read.pages[4].content_type, "");
      EXPECT_EQ(read.pages[5].type, "resource");
      EXPECT_EQ(read.pages[5].http_status, 0);
      EXPECT_EQ(read.counts.records, records.size());
      EXPECT_EQ(read.counts.pages, 6u);
      EXPECT_EQ(read.counts.skipped_type, 2u);      // warcinfo, request
      EXPECT_EQ(read.counts.skipped_status, 2u);    // 404, no HTTP head
      EXPECT_EQ(read.counts.skipped_not_html, 3u);  // PNG, sniffed PDF, brotli
    }
  }
}

// The HTTP charset is believed ahead of the page's meta tag, but not ahead
// of bytes that are valid UTF-8.
TEST(WarcReaderTest, HttpCharsetGoesBeforeTheMetaTag) {
  const std::string cyrillic =
      "<html><head><meta charset=\"windows-1252\"><title>\xcf\xf0\xe8\xe2\xe5\xf2</title></head>"
      "<body><p>\xcf\xf0\xe8\xe2\xe5\xf2, \xec\xe8\xf0! \xdd\xf2\xee \xf1\xf2\xf0\xe0\xed\xe8\xf6\xe0.</p></body></html>";
  const Read read = ReadAll(Response(
      "1.1", 1, "http://a/", Http("HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=windows-1251", cyrillic)));
  ASSERT_EQ(read.pages.size(), 1u);
  Options transport;
  transport.transport_charset = CharsetFromLabel(read.pages[0].charset_label);
  const Result from_archive = Extract(read.pages[0].payload, transport);
  Options given;
  given.charset = CharsetFromLabel("windows-1251");
  const Result from_file = Extract(cyrillic, given);
  EXPECT_EQ(from_archive.charset_name, "windows-1251");
  EXPECT_EQ(from_archive.title, "\xd0\x9f\xd1\x80\xd0\xb8\xd0\xb2\xd0\xb5\xd1\x82");  // Привет
  EXPECT_EQ(from_archive.text, from_file.text);
  EXPECT_EQ(Extract(cyrillic).charset_name, "windows-1252");  // the meta tag, without the header

  const std::string utf8 = "<meta charset=windows-1252><p>\xd0\x9f\xd1\x80\xd0\xb8\xd0\xb2\xd0\xb5\xd1\x82</p>";
  EXPECT_EQ(Extract(utf8, transport).charset_name, "utf-8");
  transport.transport_charset = CharsetFromLabel("klingon");
  EXPECT_EQ(Extract(cyrillic, transport).charset_name, "windows-1252");
}

// A bad record ends the archive with a message that names it and where it
// starts; the pages before it are kept.
TEST(WarcReaderTest, BadRecordsEndTheArchiveWithTheirOffset) {
  const std::string good = Response("1.0", 1, "http://a/", Http("HTTP/1.1 200 OK\r\nContent-Type: text/html", "<p>one"));
  const std::string next = Response("1.0", 2, "http://b/",
                                    Http("HTTP/1.1 200 OK\r\nContent-Type: text/html", "<p>" + std::string(200, 'x')));
  // Content-Length says fewer bytes than the block holds, or more.
  const std::size_t length_at = next.find("Content-Length: ") + 16;
  const std::size_t length = std::stoul(next.substr(length_at));
  std::string lying = next;
  lying.replace(length_at, std::to_string(length).size(), std::to_string(length - 50));
  std::string lying_head = next;
  lying_head.replace(length_at, std::to_string(length).size(), "30");
  const std::string plain_prefix = good;
  const std::string gzip_prefix = Gzip(good);
  struct Case {
    std::string archive;
    std::string error;
  };
  const std::string offset = std::to_string(good.size());
  const std::string gzip_offset = std::to_string(gzip_prefix.size());
  const std::string gzipped_next = Gzip(next);
  const Case cases[] = {
      {good + next.substr(0, next.size() - 20), "test.warc: record at byte " + offset + ": truncated"},
      {good + next.substr(0, 60), "test.warc: record at byte " + offset + ": truncated header"},
      {good + "WARC/1", "test.warc: record at byte " + offset + ": truncated header"},
      {good + lying, "test.warc: record at byte " + offset + ": the record does not end where its Content-Length says"},
      {good + lying + good, "test.warc: record at byte " + offset +
                                ": the record does not end where its Content-Length says"},
      {good + lying_head, "test.warc: record at byte " + offset + ": HTTP header runs past the record's Content-Length"},
      {good + "GARBAGE\r\n", "test.warc: record at byte " + offset + ": not a WARC record"},
      {good + "WARC/1.0\r\nWARC-Type: response\r\n\r\n", "test.warc: record at byte " + offset +
                                                              ": missing or invalid Content-Length"},
      {good + "WARC/1.0\r\nno colon here\r\n\r\n", "test.warc: record at byte " + offset +
                                                     ": header line without a colon"},
      {gzip_prefix + gzipped_next.substr(0, gzipped_next.size() - 30),
       "test.warc: record at byte " + gzip_offset + " (byte " + offset + " uncompressed): compressed data cut short"},
      {gzip_prefix + "\x1f\x8b garbage", "test.warc: record at byte " + gzip_offset + " (byte " + offset +
                                             " uncompressed): invalid compressed data"},
  };
  for (const Case& c : cases) {
    const Read read = ReadAll(c.archive);
    EXPECT_EQ(read.error, c.error);
    ASSERT_EQ(read.pages.size(), 1u) << c.error;
    EXPECT_EQ(read.pages[0].payload, "<p>one");
  }
  // A last record without its closing line ends is whole.
  const Read unclosed = ReadAll(good + next.substr(0, next.size() - 4));
  EXPECT_EQ(unclosed.error, "");
  EXPECT_EQ(unclosed.pages.size(), 2u);
  EXPECT_EQ(ReadAll("").pages.size(), 0u);
  EXPECT_EQ(ReadAll("").error, "");
}

TEST(WarcReaderTest, LimitsBoundPayloadsAndHeaders) {
  const std::string body = "<p>" + std::string(5000, 'x');
  const std::string archive = Response("1.0", 1, "http://a/", Http("HTTP/1.1 200 OK\r\nContent-Type: text/html", body)) +
                              Response("1.0", 2, "http://b/", Http("HTTP/1.1 200 OK", "<p>next"));
  WarcReader::Limits limits;
  limits.max_payload_bytes = 1000;
  Read read = ReadAll(archive, limits);
  ASSERT_EQ(read.pages.size(), 2u);
  EXPECT_EQ(read.pages[0].payload, body.substr(0, 1000));
  EXPECT_EQ(read.pages[1].payload, "<p>next");
  limits.max_header_bytes = 100;
  read = ReadAll(archive, limits);
  EXPECT_EQ(read.error, "test.warc: record at byte 0: header longer than 100 bytes");
  EXPECT_TRUE(read.pages.empty());
}

TEST(WarcReaderTest, OpensFilesAndSaysWhyNot) {
  std::string error;
  EXPECT_EQ(OpenWarcFile("/nonexistent/x.warc", &error), nullptr);
  EXPECT_EQ(error, "No such file or directory");
  EXPECT_EQ(OpenWarcFile(ZESTRA_SOURCE_DIR, &error), nullptr);
  EXPECT_EQ(error, "Is a directory");
  std::unique_ptr<WarcSource> source = OpenWarcFile(std::string(ZESTRA_SOURCE_DIR) + "/samples/article.html", &error);
  ASSERT_NE(source, nullptr);
  WarcReader reader(std::move(source), "article.html");
  WarcRecord record;
  EXPECT_FALSE(reader.Next(&record));
  EXPECT_EQ(reader.Error(), "article.html: record at byte 0: not a WARC record");
  WarcReader without_source(nullptr, "gone.warc");
  EXPECT_FALSE(without_source.Next(&record));
  EXPECT_EQ(without_source.Error(), "gone.warc: no input to read");
}

}  // namespace
}  // namespace zestra
