#include "zestra/api/beautified_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "api/fake_documents.h"
#include "api/partition_stream.h"
#include "zestra/api/beautify.h"
#include "zestra/charset/charset_conversion.h"
#include "zestra/platform/com/safe_array.h"
#include "zestra/stream/memory_buffer.h"

namespace {

using ZestraNS::Beautify;
using ZestraNS::HtmlDocPartitions;

const char16_t kPage[] = u"<title>Page title</title><p><a href=/1>page link</a></p>";
const char16_t kPageText[] = u"page link\n\n";
const char16_t kFrame[] = u"<title>Frame title</title><p><a href=/2>frame link</a></p>";
const char16_t kPageAndFrameText[] = u"page link\n\nframe link\n\n";
const char16_t kTitleOnly[] = u"<title>Only a title</title>";

// A VARIANT (`v`) that is cleared when the scope ends; empty, or holding a
// new BSTR of `text`.
struct OwnedVariant {
  OwnedVariant() : v{} { VariantInit(&v); }
  explicit OwnedVariant(const std::u16string& text) : OwnedVariant() {
    v.vt = VT_BSTR;
    v.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  }
  OwnedVariant(const OwnedVariant&) = delete;
  OwnedVariant& operator=(const OwnedVariant&) = delete;
  ~OwnedVariant() { VariantClear(&v); }

  VARIANT v;
};

// The string a VT_BSTR variant holds.
std::u16string StringOf(VARIANT& v) {
  EXPECT_EQ(v.vt, VT_BSTR);
  if (v.vt != VT_BSTR || v.bstrVal == nullptr) return u"<not a string>";
  return std::u16string(v.bstrVal, SysStringLen(v.bstrVal));
}

// Beautify over the UTF-8 form of `html` (what a single string becomes).
std::u16string BeautifyUtf8(const std::u16string& html, std::u16string* attribute_text = nullptr) {
  OrvelFile::MemoryBuffer in(8192);
  ZestraNS::PutUtf8(html, in);
  std::u16string text;
  Beautify(in, Orvel::Utf8Charset, text, attribute_text, nullptr);
  return text;
}

// Runs GetBeautifiedTextFromString with outputs that hold old strings.
struct Outcome {
  HRESULT hr;
  std::u16string text;       // "<old>" when the output was left untouched
  std::u16string attribute;  // likewise
};
Outcome FromString(VARIANT* source) {
  OwnedVariant text(u"<old>");
  OwnedVariant attribute(u"<old>");
  const HRESULT hr = GetBeautifiedTextFromString(source, &text.v, &attribute.v);
  return {hr, StringOf(text.v), StringOf(attribute.v)};
}

// A one-dimensional array of strings from `lower` on; empty entries of
// `texts` are left as null BSTRs when `nulls` is true, else empty strings.
SAFEARRAY* StringArray(std::initializer_list<std::u16string> texts, LONG lower = 0, bool nulls = false) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, lower, static_cast<ULONG>(texts.size()));
  LONG index = lower;
  for (const std::u16string& text : texts) {
    if (!(text.empty() && nulls)) {
      BSTR value = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
      EXPECT_EQ(SafeArrayPutElement(array, &index, value), S_OK);
      SysFreeString(value);
    }
    ++index;
  }
  return array;
}

TEST(GetBeautifiedTextFromStringTest, NullPointers) {
  OwnedVariant source(kPage);
  OwnedVariant text(u"<old>");
  OwnedVariant attribute(u"<old>");
  EXPECT_EQ(GetBeautifiedTextFromString(nullptr, &text.v, &attribute.v), E_INVALIDARG);
  EXPECT_EQ(GetBeautifiedTextFromString(&source.v, nullptr, &attribute.v), E_INVALIDARG);
  EXPECT_EQ(GetBeautifiedTextFromString(&source.v, &text.v, nullptr), E_INVALIDARG);
  EXPECT_EQ(StringOf(text.v), u"<old>");
  EXPECT_EQ(StringOf(attribute.v), u"<old>");
}

TEST(GetBeautifiedTextFromStringTest, OneString) {
  OwnedVariant source(kPage);
  // The old strings in the outputs are freed and replaced (the sanitizer
  // build would report them otherwise).
  const Outcome outcome = FromString(&source.v);
  EXPECT_EQ(outcome.hr, S_OK);
  EXPECT_EQ(outcome.text, kPageText);
  EXPECT_EQ(outcome.attribute, u"Page title");

  // By reference.
  BSTR page = SysAllocString(kPage);
  VARIANT by_reference;
  by_reference.vt = VT_BSTR | VT_BYREF;
  by_reference.pbstrVal = &page;
  const Outcome referenced = FromString(&by_reference);
  EXPECT_EQ(referenced.hr, S_OK);
  EXPECT_EQ(referenced.text, kPageText);
  EXPECT_EQ(referenced.attribute, u"Page title");
  SysFreeString(page);

  // Text without a title: the attribute output gets an empty string.
  OwnedVariant untitled(u"<p>Just words here.</p>");
  const Outcome no_title = FromString(&untitled.v);
  EXPECT_EQ(no_title.hr, S_OK);
  EXPECT_EQ(no_title.text, u"Just words here.\n\n");
  EXPECT_EQ(no_title.attribute, u"");
}

TEST(GetBeautifiedTextFromStringTest, StringsWithoutText) {
  // Null BSTR, directly or by reference, and a null reference.
  OwnedVariant null_string;
  null_string.v.vt = VT_BSTR;
  const Outcome null_outcome = FromString(&null_string.v);
  EXPECT_EQ(null_outcome.hr, ZESTRA_S_NO_SOURCE_STRING);
  EXPECT_EQ(null_outcome.text, u"<old>");
  EXPECT_EQ(null_outcome.attribute, u"<old>");
  BSTR absent = nullptr;
  VARIANT by_reference;
  by_reference.vt = VT_BSTR | VT_BYREF;
  by_reference.pbstrVal = &absent;
  EXPECT_EQ(FromString(&by_reference).hr, ZESTRA_S_NO_SOURCE_STRING);
  by_reference.pbstrVal = nullptr;
  EXPECT_EQ(FromString(&by_reference).hr, ZESTRA_S_NO_SOURCE_STRING);

  // An empty string is a string: S_OK, both outputs untouched.
  OwnedVariant empty(u"");
  const Outcome empty_outcome = FromString(&empty.v);
  EXPECT_EQ(empty_outcome.hr, S_OK);
  EXPECT_EQ(empty_outcome.text, u"<old>");
  EXPECT_EQ(empty_outcome.attribute, u"<old>");

  // A page that gives no text but a title: both outputs untouched.
  OwnedVariant title_only(kTitleOnly);
  const Outcome title_outcome = FromString(&title_only.v);
  EXPECT_EQ(title_outcome.hr, S_OK);
  EXPECT_EQ(title_outcome.text, u"<old>");
  EXPECT_EQ(title_outcome.attribute, u"<old>");
}

TEST(GetBeautifiedTextFromStringTest, StringEndsAtItsFirstNullUnit) {
  const std::u16string with_null = std::u16string(u"<p>before</p>") + u'\0' + u"<p>after</p>";
  OwnedVariant source(with_null);
  ASSERT_EQ(SysStringLen(source.v.bstrVal), with_null.size());
  const Outcome outcome = FromString(&source.v);
  EXPECT_EQ(outcome.hr, S_OK);
  EXPECT_EQ(outcome.text, u"before\n\n");
}

TEST(GetBeautifiedTextFromStringTest, ArrayOfStrings) {
  // The first element is empty: the second is the page, the third its
  // only frame.
  OwnedVariant source;
  source.v.vt = VT_ARRAY | VT_BSTR;
  source.v.parray = StringArray({u"", kPage, kFrame});
  const Outcome outcome = FromString(&source.v);
  EXPECT_EQ(outcome.hr, S_OK);
  EXPECT_EQ(outcome.text, kPageAndFrameText);
  EXPECT_EQ(outcome.attribute, u"Page title");  // the frame's title never counts
  EXPECT_EQ(source.v.parray->cLocks, 0u);

  // Lower bound 1, null elements skipped.
  OwnedVariant from_one;
  from_one.v.vt = VT_ARRAY | VT_BSTR;
  from_one.v.parray = StringArray({u"", kFrame, u"", kPage}, 1, true);
  const Outcome one = FromString(&from_one.v);
  EXPECT_EQ(one.hr, S_OK);
  EXPECT_EQ(one.text, u"frame link\n\npage link\n\n");
  EXPECT_EQ(one.attribute, u"Frame title");

  // The same text as Beautify over the partitions built by hand.
  HtmlDocPartitions page(ZestraNS::NewUtf8PartitionStream(kPage), Orvel::Utf8Charset,
                         HtmlDocPartitions::HtmlContent);
  page.children.Add(HtmlDocPartitions::Holder(new HtmlDocPartitions(
      ZestraNS::NewUtf8PartitionStream(kFrame), Orvel::Utf8Charset, HtmlDocPartitions::HtmlContent)));
  std::u16string by_hand;
  Beautify(page, by_hand, nullptr, nullptr);
  EXPECT_EQ(by_hand, kPageAndFrameText);
}

TEST(GetBeautifiedTextFromStringTest, ArraysWithoutStrings) {
  OwnedVariant empties;
  empties.v.vt = VT_ARRAY | VT_BSTR;
  empties.v.parray = StringArray({u"", u""}, 0, true);
  const Outcome outcome = FromString(&empties.v);
  EXPECT_EQ(outcome.hr, ZESTRA_S_NO_SOURCE_STRING);
  EXPECT_EQ(outcome.text, u"<old>");

  OwnedVariant no_elements;
  no_elements.v.vt = VT_ARRAY | VT_BSTR;
  no_elements.v.parray = SafeArrayCreateVector(VT_BSTR, 5, 0);
  EXPECT_EQ(FromString(&no_elements.v).hr, ZESTRA_S_NO_SOURCE_STRING);

  // Strings that give no text: S_OK, outputs untouched.
  OwnedVariant title_only;
  title_only.v.vt = VT_ARRAY | VT_BSTR;
  title_only.v.parray = StringArray({kTitleOnly});
  const Outcome untouched = FromString(&title_only.v);
  EXPECT_EQ(untouched.hr, S_OK);
  EXPECT_EQ(untouched.text, u"<old>");
  EXPECT_EQ(untouched.attribute, u"<old>");
}

TEST(GetBeautifiedTextFromStringTest, ArrayOfVariants) {
  // A string, a number, a string by reference, an empty string: the number
  // and the empty string are skipped.
  OwnedVariant source;
  source.v.vt = VT_ARRAY | VT_VARIANT;
  source.v.parray = SafeArrayCreateVector(VT_VARIANT, 1, 4);
  BSTR frame = SysAllocString(kFrame);
  {
    OwnedVariant page(kPage);
    VARIANT number;
    number.vt = VT_I4;
    number.lVal = 42;
    VARIANT reference;
    reference.vt = VT_BSTR | VT_BYREF;
    reference.pbstrVal = &frame;
    OwnedVariant empty(u"");
    LONG index = 1;
    for (VARIANT* element : {&page.v, &number, &reference, &empty.v}) {
      ASSERT_EQ(SafeArrayPutElement(source.v.parray, &index, element), S_OK);
      ++index;
    }
  }
  const Outcome outcome = FromString(&source.v);
  EXPECT_EQ(outcome.hr, S_OK);
  EXPECT_EQ(outcome.text, kPageAndFrameText);
  EXPECT_EQ(outcome.attribute, u"Page title");
  SysFreeString(frame);
}

TEST(GetBeautifiedTextFromStringTest, RejectedSources) {
  OwnedVariant number;
  number.v.vt = VT_I4;
  number.v.lVal = 7;
  EXPECT_EQ(FromString(&number.v).hr, ZESTRA_E_UNSUPPORTED_SOURCE);

  OwnedVariant numbers;
  numbers.v.vt = VT_ARRAY | VT_I4;
  numbers.v.parray = SafeArrayCreateVector(VT_I4, 0, 2);
  EXPECT_EQ(FromString(&numbers.v).hr, ZESTRA_E_UNSUPPORTED_SOURCE);

  const SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
  OwnedVariant matrix;
  matrix.v.vt = VT_ARRAY | VT_BSTR;
  matrix.v.parray = SafeArrayCreate(VT_BSTR, 2, bounds);
  BSTR page = SysAllocString(kPage);
  const LONG at[2] = {0, 0};
  SafeArrayPutElement(matrix.v.parray, at, page);
  const Outcome two_d = FromString(&matrix.v);
  EXPECT_EQ(two_d.hr, ZESTRA_E_UNSUPPORTED_SOURCE);
  EXPECT_EQ(two_d.text, u"<old>");
  EXPECT_EQ(two_d.attribute, u"<old>");

  // An array by reference is not one of the accepted forms.
  SAFEARRAY* strings = StringArray({kPage});
  VARIANT by_reference;
  by_reference.vt = VT_ARRAY | VT_BSTR | VT_BYREF;
  by_reference.byref = &strings;
  EXPECT_EQ(FromString(&by_reference).hr, ZESTRA_E_UNSUPPORTED_SOURCE);
  SafeArrayDestroy(strings);

  // No array at all behind the tag.
  VARIANT missing;
  missing.vt = VT_ARRAY | VT_VARIANT;
  missing.parray = nullptr;
  EXPECT_EQ(FromString(&missing).hr, ZESTRA_E_UNSUPPORTED_SOURCE);

  // An array whose elements are not what the tag says.
  OwnedVariant mislabelled;
  mislabelled.v.vt = VT_ARRAY | VT_VARIANT;
  mislabelled.v.parray = StringArray({kPage});
  EXPECT_EQ(FromString(&mislabelled.v).hr, ZESTRA_E_UNSUPPORTED_SOURCE);
  SysFreeString(page);
}

TEST(GetBeautifiedTextFromStringTest, OutputThatCannotBeClearedIsLeftAsItWas) {
  OwnedVariant source(kPage);
  VARIANT text;
  text.vt = 0x0FFF;  // a tag VariantClear does not know
  text.lVal = 1234;
  OwnedVariant attribute;
  EXPECT_EQ(GetBeautifiedTextFromString(&source.v, &text, &attribute.v), S_OK);
  EXPECT_EQ(text.vt, 0x0FFF);
  EXPECT_EQ(text.lVal, 1234);
  EXPECT_EQ(StringOf(attribute.v), u"Page title");
}

TEST(GetBeautifiedTextFromStringTest, DevPageGivesTheSameTextAsBeautify) {
  std::ifstream file(ZESTRA_SOURCE_DIR "/../shared/devset/readability/001/source.html", std::ios::binary);
  if (!file) GTEST_SKIP() << "the development set is not beside the source tree";
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  std::u16string units;
  OrvelCharset::AppendUtf16(bytes.data(), bytes.size(), units);
  ASSERT_EQ(units.find(u'\0'), std::u16string::npos);

  OrvelFile::MemoryBuffer in(8192);
  in.Put(bytes.data(), static_cast<unsigned int>(bytes.size()));
  std::u16string expected;
  std::u16string expected_title;
  ASSERT_TRUE(Beautify(in, Orvel::Utf8Charset, expected, &expected_title, nullptr));
  ASSERT_GT(expected.size(), 1000u);

  OwnedVariant source(units);
  const Outcome outcome = FromString(&source.v);
  EXPECT_EQ(outcome.hr, S_OK);
  EXPECT_EQ(outcome.text, expected);
  EXPECT_EQ(outcome.attribute, expected_title);
  EXPECT_EQ(BeautifyUtf8(units), expected);
}

class GetBeautifiedTextTest : public ::testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(ledger_.live_enumerators, 0); }
  fake::Ledger ledger_;
};

TEST_F(GetBeautifiedTextTest, NullArguments) {
  fake::FakeDocument document(ledger_);
  OwnedVariant text(u"<old>");
  EXPECT_EQ(GetBeautifiedText(nullptr, &text.v), E_INVALIDARG);
  EXPECT_EQ(GetBeautifiedText(document.AsDocument(), nullptr), E_INVALIDARG);
  EXPECT_EQ(StringOf(text.v), u"<old>");
  EXPECT_EQ(document.Refs(), 1u);
  EXPECT_EQ(ledger_.saves, 0);
}

TEST_F(GetBeautifiedTextTest, PageWithAFrame) {
  fake::FakeDocument page(ledger_), frame(ledger_);
  page.source = "<title>T</title><p><a href=/1>page link</a></p>";
  frame.source = "<p><a href=/2>frame link</a></p>";
  fake::FakeBrowser browser(&frame);
  page.embedded = {browser.AsUnknown()};
  OwnedVariant text(u"<old>");
  EXPECT_EQ(GetBeautifiedText(page.AsDocument(), &text.v), S_OK);
  EXPECT_EQ(StringOf(text.v), kPageAndFrameText);
  EXPECT_EQ(page.Refs(), 1u);
  EXPECT_EQ(frame.Refs(), 1u);
  EXPECT_EQ(browser.Refs(), 1u);
}

TEST_F(GetBeautifiedTextTest, ReaderResultsOtherThanSuccess) {
  fake::FakeDocument failing(ledger_);
  failing.save_result = E_FAIL;
  OwnedVariant text(u"<old>");
  EXPECT_EQ(GetBeautifiedText(failing.AsDocument(), &text.v), E_FAIL);
  EXPECT_EQ(StringOf(text.v), u"<old>");

  // A positive success code counts as failure too.
  fake::FakeElement body;
  body.outer_html = u"<p>text</p>";
  body.outer_html_result = S_FALSE;
  fake::FakeDocument no_persist(ledger_);
  no_persist.has_persist = false;
  no_persist.body = &body;
  EXPECT_EQ(GetBeautifiedText(no_persist.AsDocument(), &text.v), S_FALSE);
  EXPECT_EQ(StringOf(text.v), u"<old>");
  EXPECT_EQ(failing.Refs(), 1u);
  EXPECT_EQ(no_persist.Refs(), 1u);
  EXPECT_EQ(body.Refs(), 1u);
}

TEST_F(GetBeautifiedTextTest, EmptyExtractionStoresAnEmptyString) {
  fake::FakeDocument document(ledger_);
  document.source = "<title>Nothing else</title>";
  OwnedVariant text(u"<old>");
  EXPECT_EQ(GetBeautifiedText(document.AsDocument(), &text.v), S_OK);
  EXPECT_EQ(text.v.vt, VT_BSTR);
  ASSERT_NE(text.v.bstrVal, nullptr);
  EXPECT_EQ(StringOf(text.v), u"");
}

}  // namespace
