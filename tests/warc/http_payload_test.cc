#include "warc/http_payload.h"

#include <gtest/gtest.h>

#include "warc/warc_builder.h"

namespace zestra::warc {
namespace {

TEST(HttpPayloadTest, StatusLinesAndContentTypes) {
  EXPECT_EQ(HttpStatus("HTTP/1.1 200 OK"), 200);
  EXPECT_EQ(HttpStatus("HTTP/1.0 404"), 404);
  EXPECT_EQ(HttpStatus("http/2 301 Moved"), 301);
  EXPECT_EQ(HttpStatus("HTTP/1.1 20 OK"), 0);
  EXPECT_EQ(HttpStatus("ICY 200 OK"), 0);
  EXPECT_EQ(HttpStatus("HTTP/1.1"), 0);

  struct Case {
    const char* value;
    const char* type;
    const char* charset;
  };
  for (const Case& c : {Case{"text/html", "text/html", ""},
                        Case{"Text/HTML; Charset=\"ISO-8859-1\"", "text/html", "ISO-8859-1"},
                        Case{"text/html;foo=bar; charset = 'utf-8' ", "text/html", "utf-8"},
                        Case{"application/xhtml+xml;charset=Shift_JIS;x=y", "application/xhtml+xml", "Shift_JIS"},
                        Case{"", "", ""}}) {
    std::string type, charset;
    ParseContentType(c.value, &type, &charset);
    EXPECT_EQ(type, c.type) << c.value;
    EXPECT_EQ(charset, c.charset) << c.value;
  }
  EXPECT_TRUE(IsHtmlMediaType("application/xhtml+xml"));
  EXPECT_FALSE(IsHtmlMediaType("text/plain"));
}

TEST(HttpPayloadTest, SniffsHtmlByItsFirstTag) {
  for (const char* html : {"<!DOCTYPE html><p>", "\xEF\xBB\xBF  <html>", "\n<P>x", "<!-- c -->", "<title>t"}) {
    EXPECT_TRUE(LooksLikeHtml(html)) << html;
  }
  for (const char* other : {"%PDF-1.4", "{\"a\": 1}", "<?xml version=\"1.0\"?><rss>", "<pre>", "<p", ""}) {
    EXPECT_FALSE(LooksLikeHtml(other)) << other;
  }
}

TEST(HttpPayloadTest, UndoesChunkingAndCompression) {
  const std::string body = "<html><body>" + std::string(10000, 'x') + "</body></html>";
  std::string out;
  DecodeChunked(zestra_testing::Chunked(body, 1000), 1 << 20, &out);
  EXPECT_EQ(out, body);
  DecodeChunked("5;ext=1\r\nhello\r\n6\r\n world\r\n0\r\nTrailer: x\r\n\r\n", 1 << 20, &out);
  EXPECT_EQ(out, "hello world");
  DecodeChunked("5\r\nhel", 1 << 20, &out);  // cut short: what came
  EXPECT_EQ(out, "hel");
  DecodeChunked("<html>not chunked</html>", 1 << 20, &out);  // decoded by the archiver already
  EXPECT_EQ(out, "<html>not chunked</html>");
  DecodeChunked(zestra_testing::Chunked(body, 1000), 100, &out);
  EXPECT_EQ(out, body.substr(0, 100));

  ASSERT_TRUE(DecodeContent("gzip", zestra_testing::Gzip(body), 1 << 20, &out));
  EXPECT_EQ(out, body);
  ASSERT_TRUE(DecodeContent(" X-GZIP ", zestra_testing::Gzip(body), 50, &out));
  EXPECT_EQ(out, body.substr(0, 50));
  // Data cut short gives what it holds: a text that deflate cannot shrink
  // to nothing, so that its first half holds whole blocks.
  std::string varied;
  for (unsigned value = 1; varied.size() < 300000; value = value * 1103515245u + 12345u) {
    varied += static_cast<char>('a' + (value >> 16) % 26);
  }
  const std::string gzipped = zestra_testing::Gzip(varied);
  ASSERT_TRUE(DecodeContent("gzip", gzipped.substr(0, gzipped.size() / 2), 1 << 20, &out));
  EXPECT_GT(out.size(), 100000u);
  EXPECT_EQ(out, varied.substr(0, out.size()));
  // deflate: zlib format, and the raw deflate some servers send.
  std::string zlib_body = zestra_testing::Gzip(body);
  ASSERT_TRUE(DecodeContent("deflate", zlib_body.substr(10, zlib_body.size() - 18), 1 << 20, &out));
  EXPECT_EQ(out, body);
  EXPECT_TRUE(DecodeContent("identity", body, 1 << 20, &out));
  EXPECT_EQ(out, body);
  EXPECT_FALSE(DecodeContent("br", body, 1 << 20, &out));
  EXPECT_FALSE(DecodeContent("gzip", "not gzip at all", 1 << 20, &out));
}

}  // namespace
}  // namespace zestra::warc
