#include <gtest/gtest.h>

#include <string>

#include "platform/com_test_objects.h"
#include "zestra/platform/com/bstr.h"
#include "zestra/platform/com/safe_array.h"
#include "zestra/platform/com/variant.h"

namespace {

LONG LBound(SAFEARRAY* array, UINT dim) {
  LONG bound = -999;
  EXPECT_EQ(SafeArrayGetLBound(array, dim, &bound), S_OK);
  return bound;
}

LONG UBound(SAFEARRAY* array, UINT dim) {
  LONG bound = -999;
  EXPECT_EQ(SafeArrayGetUBound(array, dim, &bound), S_OK);
  return bound;
}

TEST(SafeArrayTest, VectorBoundsDimensionsAndFeatures) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 1, 3);
  ASSERT_NE(array, nullptr);
  EXPECT_EQ(SafeArrayGetDim(array), 1u);
  EXPECT_EQ(LBound(array, 1), 1);
  EXPECT_EQ(UBound(array, 1), 3);
  EXPECT_EQ(SafeArrayGetElemsize(array), sizeof(BSTR));
  EXPECT_EQ(array->fFeatures, FADF_BSTR | FADF_HAVEVARTYPE);
  VARTYPE vt = 0;
  EXPECT_EQ(SafeArrayGetVartype(array, &vt), S_OK);
  EXPECT_EQ(vt, VT_BSTR);
  LONG untouched = 42;
  EXPECT_EQ(SafeArrayGetLBound(array, 0, &untouched), DISP_E_BADINDEX);
  EXPECT_EQ(SafeArrayGetUBound(array, 2, &untouched), DISP_E_BADINDEX);
  EXPECT_EQ(untouched, 42);
  EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &untouched), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetUBound(array, 1, nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetDim(nullptr), 0u);
  // Elements start null, so destroying frees only what was stored.
  static_cast<BSTR*>(array->pvData)[1] = SysAllocString(u"x");
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
  EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);

  SAFEARRAY* empty = SafeArrayCreateVector(VT_VARIANT, 5, 0);
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(empty->pvData, nullptr);
  EXPECT_EQ(UBound(empty, 1), 4);  // lower - 1: no element
  EXPECT_EQ(SafeArrayDestroy(empty), S_OK);
}

TEST(SafeArrayTest, LocksCountAndBlockDestruction) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 4);
  void* data = nullptr;
  ASSERT_EQ(SafeArrayAccessData(array, &data), S_OK);
  EXPECT_EQ(data, array->pvData);
  EXPECT_EQ(array->cLocks, 1u);
  ASSERT_EQ(SafeArrayLock(array), S_OK);
  EXPECT_EQ(array->cLocks, 2u);
  EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(SafeArrayUnlock(array), S_OK);
  EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
  EXPECT_EQ(array->cLocks, 0u);
  EXPECT_EQ(SafeArrayUnaccessData(array), E_UNEXPECTED);
  EXPECT_EQ(SafeArrayAccessData(array, nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);

  for (int i = 0; i < 65535; ++i) ASSERT_EQ(SafeArrayLock(array), S_OK);
  EXPECT_EQ(SafeArrayLock(array), E_UNEXPECTED);
  EXPECT_EQ(array->cLocks, 65535u);
  array->cLocks = 0;
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArrayTest, MultipleDimensionsStoreTheLastBoundFirst) {
  const SAFEARRAYBOUND bounds[2] = {{2, 0}, {3, 10}};  // [0..1][10..12]
  SAFEARRAY* array = SafeArrayCreate(VT_I4, 2, bounds);
  ASSERT_NE(array, nullptr);
  EXPECT_EQ(SafeArrayGetDim(array), 2u);
  EXPECT_EQ(LBound(array, 1), 0);
  EXPECT_EQ(UBound(array, 1), 1);
  EXPECT_EQ(LBound(array, 2), 10);
  EXPECT_EQ(UBound(array, 2), 12);
  EXPECT_EQ(array->rgsabound[0].lLbound, 10);
  EXPECT_EQ(array->rgsabound[0].cElements, 3u);

  // indices[0] is the rightmost dimension and varies fastest.
  const LONG at[2] = {11, 1};
  const LONG value = 77;
  ASSERT_EQ(SafeArrayPutElement(array, at, &value), S_OK);
  EXPECT_EQ(static_cast<LONG*>(array->pvData)[1 * 3 + (11 - 10)], 77);
  LONG read = 0;
  ASSERT_EQ(SafeArrayGetElement(array, at, &read), S_OK);
  EXPECT_EQ(read, 77);
  const LONG out_of_range[3][2] = {{13, 0}, {9, 0}, {10, 2}};
  for (const LONG* bad : out_of_range) {
    EXPECT_EQ(SafeArrayPutElement(array, bad, &value), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetElement(array, bad, &read), DISP_E_BADINDEX);
  }
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArrayTest, CreationLimits) {
  const SAFEARRAYBOUND one = {1, 0};
  EXPECT_EQ(SafeArrayCreate(VT_I4, 0, &one), nullptr);
  EXPECT_EQ(SafeArrayCreate(VT_I4, 1, nullptr), nullptr);
  EXPECT_EQ(SafeArrayCreateVector(VT_EMPTY, 0, 1), nullptr);
  EXPECT_EQ(SafeArrayCreateVector(VT_NULL, 0, 1), nullptr);
  EXPECT_EQ(SafeArrayCreateVector(VT_BSTR | VT_BYREF, 0, 1), nullptr);
  // 16-byte variants times 2^28 is 4 GiB, one byte past the limit.
  EXPECT_EQ(SafeArrayCreateVector(VT_VARIANT, 0, 0x10000000u), nullptr);
  const SAFEARRAYBOUND huge[2] = {{0x10000, 0}, {0x10000, 0}};
  EXPECT_EQ(SafeArrayCreate(VT_UI1, 2, huge), nullptr);
}

TEST(SafeArrayTest, StringAndVariantElementsAreCopiedAndOwned) {
  SAFEARRAY* strings = SafeArrayCreateVector(VT_BSTR, 0, 2);
  BSTR mine = SysAllocString(u"mine");
  const LONG first[1] = {0};
  ASSERT_EQ(SafeArrayPutElement(strings, first, mine), S_OK);
  BSTR stored = static_cast<BSTR*>(strings->pvData)[0];
  EXPECT_NE(stored, mine);
  EXPECT_EQ(std::u16string(stored), u"mine");
  ASSERT_EQ(SafeArrayPutElement(strings, first, nullptr), S_OK);  // frees the old copy
  EXPECT_EQ(static_cast<BSTR*>(strings->pvData)[0], nullptr);
  ASSERT_EQ(SafeArrayPutElement(strings, first, mine), S_OK);
  BSTR out = nullptr;
  ASSERT_EQ(SafeArrayGetElement(strings, first, &out), S_OK);
  EXPECT_EQ(std::u16string(out), u"mine");
  SysFreeString(out);
  SysFreeString(mine);

  SAFEARRAY* variants = SafeArrayCreateVector(VT_VARIANT, 1, 3);
  VARIANT value;
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocString(u"in a variant");
  const LONG second[1] = {2};
  ASSERT_EQ(SafeArrayPutElement(variants, second, &value), S_OK);
  EXPECT_EQ(VariantClear(&value), S_OK);
  VARIANT element;
  ASSERT_EQ(SafeArrayGetElement(variants, second, &element), S_OK);
  EXPECT_EQ(element.vt, VT_BSTR);
  EXPECT_EQ(std::u16string(element.bstrVal), u"in a variant");
  EXPECT_EQ(VariantClear(&element), S_OK);

  SAFEARRAY* copy = nullptr;
  ASSERT_EQ(SafeArrayCopy(variants, &copy), S_OK);
  EXPECT_EQ(SafeArrayDestroy(variants), S_OK);
  EXPECT_EQ(LBound(copy, 1), 1);
  const VARIANT& copied = static_cast<VARIANT*>(copy->pvData)[1];
  EXPECT_EQ(std::u16string(copied.bstrVal), u"in a variant");
  EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
  EXPECT_EQ(SafeArrayDestroy(strings), S_OK);
}

TEST(SafeArrayTest, InterfaceElementsHoldReferences) {
  com_test::CountedObject object;
  SAFEARRAY* array = SafeArrayCreateVector(VT_UNKNOWN, 0, 1);
  const LONG at[1] = {0};
  ASSERT_EQ(SafeArrayPutElement(array, at, static_cast<IUnknown*>(&object)), S_OK);
  EXPECT_EQ(object.refs, 2u);
  IUnknown* out = nullptr;
  ASSERT_EQ(SafeArrayGetElement(array, at, &out), S_OK);
  EXPECT_EQ(out, static_cast<IUnknown*>(&object));
  EXPECT_EQ(object.refs, 3u);
  out->Release();
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
  EXPECT_EQ(object.refs, 1u);
}

}  // namespace
