#include "zestra/api/beautified_text.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "api/com_holders.h"
#include "api/partition_reader.h"
#include "api/partition_stream.h"
#include "zestra/api/beautify.h"
#include "zestra/api/html_doc_partitions.h"
#include "zestra/platform/com/safe_array.h"
#include "zestra/stream/memory_buffer.h"

namespace ZestraNS {
namespace {

using StreamBuf = Orvel::BinaryStreamBufT<unsigned int>;

// Initial capacity, in bytes, of the buffer that holds a single source
// string for the parser.
constexpr unsigned int kSourceBufferCapacity = 8192;

// Stores `value` into the caller's `out` as a VT_BSTR, or as VT_ERROR
// E_OUTOFMEMORY when the string cannot be allocated. `out` is cleared
// first; when clearing fails it is left as it was. The value is built in a
// temporary first, so `out` never holds a half-made value.
void StoreString(const std::u16string& value, VARIANT* out) {
  VARIANT temporary;
  VariantInit(&temporary);
  temporary.vt = VT_BSTR;
  temporary.bstrVal = SysAllocString(value.c_str());
  if (temporary.bstrVal == nullptr) {
    temporary.vt = VT_ERROR;
    temporary.scode = E_OUTOFMEMORY;
  }
  if (SUCCEEDED(VariantClear(out))) {
    std::memcpy(out, &temporary, sizeof(VARIANT));
    temporary.vt = VT_EMPTY;
  }
  VariantClear(&temporary);
}

// Extracts the text of the one document in `source` (null: no document).
HRESULT BeautifySourceString(BSTR source, std::u16string& text, std::u16string& attribute_text) {
  if (source == nullptr) return ZESTRA_S_NO_SOURCE_STRING;
  OrvelFile::MemoryBuffer input(kSourceBufferCapacity);
  PutUtf8(UnitsToFirstNull(source), input);
  Beautify(input, Orvel::Utf8Charset, text, &attribute_text, nullptr);
  return S_OK;
}

// The string of an element of an array of variants; null when it holds
// none.
BSTR StringOfVariant(const VARIANT& element) {
  if (element.vt == VT_BSTR) return element.bstrVal;
  if (element.vt == (VT_BSTR | VT_BYREF)) return element.pbstrVal != nullptr ? *element.pbstrVal : nullptr;
  return nullptr;
}

// Adds the document `units` to `page`: the first one fills the page itself,
// every later one becomes a frame of it.
void AddDocument(std::u16string_view units, HtmlDocPartitions& page) {
  HtmlDocPartitions::StreamHolder stream = NewUtf8PartitionStream(units);
  if (!page.stream) {
    page.stream = stream;
    page.charset = Orvel::Utf8Charset;
    page.contentType = HtmlDocPartitions::HtmlContent;
    return;
  }
  HtmlDocPartitions::Holder frame(new HtmlDocPartitions(stream, Orvel::Utf8Charset, HtmlDocPartitions::HtmlContent));
  if (!frame) throw std::bad_alloc();
  page.children.Add(frame);
}

// Holds SafeArrayAccessData's lock until the scope ends.
class ArrayDataAccess {
 public:
  explicit ArrayDataAccess(SAFEARRAY* array) noexcept : array_(array) {
    if (FAILED(SafeArrayAccessData(array_, &data_))) array_ = nullptr;
  }
  ArrayDataAccess(const ArrayDataAccess&) = delete;
  ArrayDataAccess& operator=(const ArrayDataAccess&) = delete;
  ~ArrayDataAccess() {
    if (array_ != nullptr) SafeArrayUnaccessData(array_);
  }
  bool Ok() const noexcept { return array_ != nullptr; }
  void* Data() const noexcept { return data_; }

 private:
  SAFEARRAY* array_;
  void* data_ = nullptr;
};

// Extracts the text of the page whose documents are the strings of the
// one-dimensional `array` (of BSTRs, or of VARIANTs when `of_variants`).
HRESULT BeautifySourceArray(SAFEARRAY* array, bool of_variants, std::u16string& text,
                            std::u16string& attribute_text) {
  LONG lower = 0;
  LONG upper = 0;
  if (SafeArrayGetDim(array) != 1 || FAILED(SafeArrayGetLBound(array, 1, &lower)) ||
      FAILED(SafeArrayGetUBound(array, 1, &upper))) {
    return ZESTRA_E_UNSUPPORTED_SOURCE;
  }
  // Elements of another size than the tag says cannot be read safely.
  const UINT element_size = of_variants ? sizeof(VARIANT) : sizeof(BSTR);
  if (SafeArrayGetElemsize(array) != element_size) return ZESTRA_E_UNSUPPORTED_SOURCE;
  HtmlDocPartitions page;
  {
    const ArrayDataAccess access(array);
    if (!access.Ok()) return ZESTRA_E_UNSUPPORTED_SOURCE;
    // 64-bit indices: the bounds may span the whole 32-bit range.
    for (int64_t index = lower; index <= upper; ++index) {
      const auto offset = static_cast<size_t>(index - lower);
      const BSTR source = of_variants ? StringOfVariant(static_cast<const VARIANT*>(access.Data())[offset])
                                      : static_cast<const BSTR*>(access.Data())[offset];
      const std::u16string_view units = UnitsToFirstNull(source);
      if (!units.empty()) AddDocument(units, page);
    }
  }
  if (!page.stream) return ZESTRA_S_NO_SOURCE_STRING;
  Beautify(page, text, &attribute_text, nullptr);
  return S_OK;
}

}  // namespace
}  // namespace ZestraNS

using ZestraNS::HtmlDocPartitions;

extern "C" HRESULT GetBeautifiedText(IHTMLDocument2* document, VARIANT* text) {
  if (document == nullptr || text == nullptr) return E_INVALIDARG;
  HtmlDocPartitions page;
  document->AddRef();
  const HRESULT hr = ZestraNS::ReadPartitionTree(document, page);
  document->Release();
  if (hr != S_OK) return hr;
  std::u16string result;
  ZestraNS::Beautify(page, result, nullptr, nullptr);
  ZestraNS::StoreString(result, text);
  return S_OK;
}

extern "C" HRESULT GetBeautifiedTextFromString(VARIANT* source, VARIANT* text, VARIANT* attribute_text) {
  if (source == nullptr || text == nullptr || attribute_text == nullptr) return E_INVALIDARG;
  std::u16string result;
  std::u16string attributes;
  HRESULT hr;
  switch (source->vt) {
    case VT_BSTR:
      hr = ZestraNS::BeautifySourceString(source->bstrVal, result, attributes);
      break;
    case VT_BSTR | VT_BYREF:
      hr = ZestraNS::BeautifySourceString(source->pbstrVal != nullptr ? *source->pbstrVal : nullptr, result,
                                          attributes);
      break;
    case VT_ARRAY | VT_BSTR:
    case VT_ARRAY | VT_VARIANT:
      hr = ZestraNS::BeautifySourceArray(source->parray, source->vt == (VT_ARRAY | VT_VARIANT), result, attributes);
      break;
    default:
      return ZESTRA_E_UNSUPPORTED_SOURCE;
  }
  if (!result.empty()) {
    ZestraNS::StoreString(result, text);
    ZestraNS::StoreString(attributes, attribute_text);
  }
  return hr;
}
