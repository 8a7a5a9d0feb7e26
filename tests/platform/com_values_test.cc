// Layouts, identifiers, strings and variants of the component-object layer.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/com_test_objects.h"
#include "zestra/platform/com/bstr.h"
#include "zestra/platform/com/enum_unknown.h"
#include "zestra/platform/com/html_document.h"
#include "zestra/platform/com/html_element.h"
#include "zestra/platform/com/ole_container.h"
#include "zestra/platform/com/persist_stream_init.h"
#include "zestra/platform/com/safe_array.h"
#include "zestra/platform/com/stream.h"
#include "zestra/platform/com/variant.h"
#include "zestra/platform/com/web_browser.h"

namespace {

std::string TextForm(const GUID& g) {
  char text[39];
  std::snprintf(text, sizeof(text), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", g.Data1, g.Data2, g.Data3,
                g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3], g.Data4[4], g.Data4[5], g.Data4[6], g.Data4[7]);
  return text;
}

uint32_t Prefix(BSTR text) {
  uint32_t bytes;
  std::memcpy(&bytes, reinterpret_cast<const char*>(text) - 4, 4);
  return bytes;
}

TEST(ComLayoutTest, PlatformSizesAndOffsets) {
  EXPECT_EQ(sizeof(VARIANT), 16u);
  EXPECT_EQ(offsetof(VARIANT, vt), 0u);
  EXPECT_EQ(offsetof(VARIANT, wReserved3), 6u);
  EXPECT_EQ(offsetof(VARIANT, bstrVal), 8u);
  EXPECT_EQ(offsetof(VARIANT, llVal), 8u);
  EXPECT_EQ(sizeof(GUID), 16u);
  EXPECT_EQ(offsetof(SAFEARRAY, cbElements), 4u);
  EXPECT_EQ(offsetof(SAFEARRAY, cLocks), 8u);
  EXPECT_EQ(offsetof(SAFEARRAY, pvData), sizeof(void*) == 8 ? 16u : 12u);
  EXPECT_EQ(offsetof(STATSTG, cbSize) % 8, 0u);
  EXPECT_EQ(sizeof(LARGE_INTEGER), 8u);
  EXPECT_TRUE(SUCCEEDED(S_OK) && SUCCEEDED(S_FALSE) && FAILED(E_FAIL));
  EXPECT_EQ(static_cast<uint32_t>(E_INVALIDARG), 0x80070057u);
  EXPECT_EQ(static_cast<uint32_t>(E_OUTOFMEMORY), 0x8007000Eu);
}

TEST(ComLayoutTest, InterfaceIdentifiersHaveThePublishedValues) {
  EXPECT_EQ(TextForm(IID_IUnknown), "{00000000-0000-0000-C000-000000000046}");
  EXPECT_EQ(TextForm(IID_IDispatch), "{00020400-0000-0000-C000-000000000046}");
  EXPECT_EQ(TextForm(IID_IStream), "{0000000C-0000-0000-C000-000000000046}");
  EXPECT_EQ(TextForm(IID_ISequentialStream), "{0C733A30-2A1C-11CE-ADE5-00AA0044773D}");
  EXPECT_EQ(TextForm(IID_IPersistStreamInit), "{7FD52380-4E07-101B-AE2D-08002B2EC713}");
  EXPECT_EQ(TextForm(IID_IHTMLDocument2), "{332C4425-26CB-11D0-B483-00C04FD90119}");
  EXPECT_EQ(TextForm(IID_IHTMLElement), "{3050F1FF-98B5-11CF-BB82-00AA00BDCE0B}");
  EXPECT_EQ(TextForm(IID_IWebBrowser2), "{D30C1661-CDAF-11D0-8A3E-00C04FC9E26E}");
  EXPECT_EQ(TextForm(IID_IOleContainer), "{0000011B-0000-0000-C000-000000000046}");
  EXPECT_EQ(TextForm(IID_IEnumUnknown), "{00000100-0000-0000-C000-000000000046}");
  EXPECT_TRUE(IsEqualGUID(IID_IStream, IID_IStream));
  EXPECT_FALSE(IID_IStream == IID_IUnknown);
  GUID last_byte = IID_IUnknown;
  last_byte.Data4[7] ^= 1;
  EXPECT_FALSE(last_byte == IID_IUnknown);
}

TEST(BstrTest, LengthPrefixTerminatorAndEmbeddedNulls) {
  BSTR text = SysAllocString(u"abc");
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(Prefix(text), 6u);
  EXPECT_EQ(SysStringLen(text), 3u);
  EXPECT_EQ(SysStringByteLen(text), 6u);
  EXPECT_EQ(std::u16string(text), u"abc");
  EXPECT_EQ(text[3], 0);
  SysFreeString(text);

  const char16_t with_null[] = {u'a', 0, u'b'};
  BSTR embedded = SysAllocStringLen(with_null, 3);
  EXPECT_EQ(SysStringLen(embedded), 3u);
  EXPECT_EQ(std::u16string(embedded, 3), std::u16string(with_null, 3));
  EXPECT_EQ(embedded[3], 0);
  SysFreeString(embedded);

  BSTR zeros = SysAllocStringLen(nullptr, 4);
  EXPECT_EQ(SysStringLen(zeros), 4u);
  for (int i = 0; i <= 4; ++i) EXPECT_EQ(zeros[i], 0);
  SysFreeString(zeros);

  BSTR empty = SysAllocString(u"");
  ASSERT_NE(empty, nullptr);  // empty is not absent
  EXPECT_EQ(SysStringLen(empty), 0u);
  EXPECT_EQ(empty[0], 0);
  SysFreeString(empty);

  EXPECT_EQ(SysAllocString(nullptr), nullptr);
  EXPECT_EQ(SysStringLen(nullptr), 0u);
  EXPECT_EQ(SysStringByteLen(nullptr), 0u);
  SysFreeString(nullptr);
  // A byte count that does not fit the 32-bit prefix is refused up front.
  EXPECT_EQ(SysAllocStringLen(nullptr, kMaxBstrLength + 1), nullptr);
  EXPECT_EQ(SysAllocStringLen(nullptr, 0xFFFFFFFFu), nullptr);
}

TEST(VariantTest, ClearFreesWhatTheVariantOwns) {
  VARIANT v;
  VariantInit(&v);
  EXPECT_EQ(v.vt, VT_EMPTY);
  EXPECT_EQ(VariantClear(&v), S_OK);

  v.vt = VT_I4;
  v.lVal = 7;
  EXPECT_EQ(VariantClear(&v), S_OK);
  EXPECT_EQ(v.vt, VT_EMPTY);

  v.vt = VT_ERROR;
  v.scode = E_OUTOFMEMORY;
  EXPECT_EQ(VariantClear(&v), S_OK);

  v.vt = VT_BSTR;  // the leak checker sees a string that is not freed
  v.bstrVal = SysAllocString(u"owned");
  EXPECT_EQ(VariantClear(&v), S_OK);
  EXPECT_EQ(v.vt, VT_EMPTY);
  v.vt = VT_BSTR;
  v.bstrVal = nullptr;
  EXPECT_EQ(VariantClear(&v), S_OK);

  com_test::CountedObject object;
  v.vt = VT_UNKNOWN;
  v.punkVal = &object;
  object.AddRef();
  EXPECT_EQ(VariantClear(&v), S_OK);
  EXPECT_EQ(object.refs, 1u);
  v.vt = VT_DISPATCH;
  v.pdispVal = &object;
  object.AddRef();
  EXPECT_EQ(VariantClear(&v), S_OK);
  EXPECT_EQ(object.refs, 1u);

  v.vt = VT_ARRAY | VT_BSTR;
  v.parray = SafeArrayCreateVector(VT_BSTR, 0, 2);
  static_cast<BSTR*>(v.parray->pvData)[0] = SysAllocString(u"one");
  static_cast<BSTR*>(v.parray->pvData)[1] = SysAllocString(u"two");
  EXPECT_EQ(VariantClear(&v), S_OK);
}

TEST(VariantTest, ByReferenceValuesAreNotFreed) {
  BSTR text = SysAllocString(u"kept");
  VARIANT v;
  v.vt = VT_BSTR | VT_BYREF;
  v.pbstrVal = &text;
  EXPECT_EQ(VariantClear(&v), S_OK);
  EXPECT_EQ(v.vt, VT_EMPTY);
  EXPECT_EQ(std::u16string(text), u"kept");

  VARIANT inner;
  inner.vt = VT_BSTR;
  inner.bstrVal = text;
  v.vt = VT_VARIANT | VT_BYREF;
  v.pvarVal = &inner;
  EXPECT_EQ(VariantClear(&v), S_OK);
  EXPECT_EQ(inner.vt, VT_BSTR);

  SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 1);
  v.vt = VT_ARRAY | VT_I4 | VT_BYREF;
  v.byref = &array;
  EXPECT_EQ(VariantClear(&v), S_OK);
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
  EXPECT_EQ(VariantClear(&inner), S_OK);  // frees text
}

TEST(VariantTest, RefusalsLeaveTheVariantAsItWas) {
  EXPECT_EQ(VariantClear(nullptr), E_INVALIDARG);
  VARIANT v;
  for (VARTYPE bad : {VARTYPE{VT_VARIANT}, VARTYPE{0x7FF}, VARTYPE{VT_ARRAY | VT_EMPTY}, VARTYPE{0x8000 | VT_I4}}) {
    v.vt = bad;
    v.lVal = 5;
    EXPECT_EQ(VariantClear(&v), DISP_E_BADVARTYPE) << bad;
    EXPECT_EQ(v.vt, bad);
  }

  v.vt = VT_ARRAY | VT_I4;
  v.parray = SafeArrayCreateVector(VT_I4, 0, 3);
  void* data;
  ASSERT_EQ(SafeArrayAccessData(v.parray, &data), S_OK);
  EXPECT_EQ(VariantClear(&v), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(v.vt, VT_ARRAY | VT_I4);
  SafeArrayUnaccessData(v.parray);
  EXPECT_EQ(VariantClear(&v), S_OK);
}

TEST(VariantTest, CopyIsDeep) {
  VARIANT source;
  source.vt = VT_BSTR;
  source.bstrVal = SysAllocString(u"text");
  VARIANT copy;
  VariantInit(&copy);
  ASSERT_EQ(VariantCopy(&copy, &source), S_OK);
  EXPECT_EQ(copy.vt, VT_BSTR);
  EXPECT_NE(copy.bstrVal, source.bstrVal);
  EXPECT_EQ(std::u16string(copy.bstrVal), u"text");
  EXPECT_EQ(VariantCopy(&copy, &copy), S_OK);  // onto itself: nothing happens
  EXPECT_EQ(std::u16string(copy.bstrVal), u"text");

  // Copying over a variant that holds a string frees that string first.
  VARIANT array;
  array.vt = VT_ARRAY | VT_VARIANT;
  array.parray = SafeArrayCreateVector(VT_VARIANT, 0, 1);
  ASSERT_EQ(VariantCopy(&static_cast<VARIANT*>(array.parray->pvData)[0], &source), S_OK);
  ASSERT_EQ(VariantCopy(&copy, &array), S_OK);
  EXPECT_NE(copy.parray, array.parray);
  const VARIANT& element = static_cast<VARIANT*>(copy.parray->pvData)[0];
  EXPECT_EQ(element.vt, VT_BSTR);
  EXPECT_EQ(std::u16string(element.bstrVal), u"text");

  com_test::CountedObject object;
  VARIANT held;
  held.vt = VT_UNKNOWN;
  held.punkVal = &object;
  ASSERT_EQ(VariantCopy(&copy, &held), S_OK);
  EXPECT_EQ(object.refs, 2u);
  EXPECT_EQ(VariantClear(&copy), S_OK);
  EXPECT_EQ(object.refs, 1u);

  EXPECT_EQ(VariantCopy(nullptr, &source), E_INVALIDARG);
  EXPECT_EQ(VariantClear(&array), S_OK);
  EXPECT_EQ(VariantClear(&source), S_OK);
}

}  // namespace
