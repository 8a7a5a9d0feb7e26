// Fuzz target: GetBeautifiedTextFromString. The first input byte chooses
// how the input, that byte included, becomes the source VARIANT:
//   bits 0-1: 0 one BSTR, one unit per byte (markup stays readable);
//             1 one BSTR, two bytes per unit, low byte first (lone
//               surrogates and every other unit);
//             2 an array of BSTRs, one per part between 0xFF bytes (a
//               page and its frames), one unit per byte;
//             3 an array of VARIANTs made the same way, with every third
//               element a number, which must be skipped.
//   bit 2: a source of type VT_BSTR | VT_BYREF instead of VT_BSTR (modes 0
//          and 1).
// The outputs start out holding strings, which the call must free or keep.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_input.h"
#include "zestra/api/beautified_text.h"
#include "zestra/platform/com/bstr.h"
#include "zestra/platform/com/safe_array.h"
#include "zestra/platform/com/variant.h"

namespace {

using zestra_fuzz::Check;

BSTR MakeBstr(const std::u16string& units) {
  BSTR text = SysAllocStringLen(units.data(), static_cast<UINT>(units.size()));
  Check(text != nullptr);
  return text;
}

// The parts of [data, data + size) between 0xFF bytes, one unit per byte.
std::vector<std::u16string> Parts(const uint8_t* data, size_t size) {
  std::vector<std::u16string> parts(1);
  for (size_t i = 0; i < size; ++i) {
    if (data[i] == 0xFF) {
      parts.emplace_back();
    } else {
      parts.back().push_back(data[i]);
    }
  }
  return parts;
}

SAFEARRAY* MakeArray(const std::vector<std::u16string>& parts, bool variants) {
  SAFEARRAY* array = SafeArrayCreateVector(variants ? VT_VARIANT : VT_BSTR, 0, static_cast<ULONG>(parts.size()));
  Check(array != nullptr);
  for (LONG i = 0; i < static_cast<LONG>(parts.size()); ++i) {
    BSTR text = MakeBstr(parts[i]);
    if (variants) {
      VARIANT element;
      VariantInit(&element);
      if (i % 3 == 2) {
        element.vt = VT_I4;
        element.lVal = i;
        SysFreeString(text);
      } else {
        element.vt = VT_BSTR;
        element.bstrVal = text;
      }
      Check(SafeArrayPutElement(array, &i, &element) == S_OK);  // copies the element
      VariantClear(&element);
    } else {
      Check(SafeArrayPutElement(array, &i, text) == S_OK);  // copies the string
      SysFreeString(text);
    }
  }
  return array;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const uint8_t mode = data[0] & 3;
  const bool by_reference = (data[0] & 4) != 0;

  VARIANT source;
  VariantInit(&source);
  BSTR referenced = nullptr;
  if (mode <= 1) {
    std::u16string units;
    if (mode == 0) {
      units.assign(data, data + size);
    } else {
      for (size_t i = 0; i + 1 < size; i += 2) units.push_back(static_cast<char16_t>(data[i] | data[i + 1] << 8));
    }
    if (by_reference) {
      referenced = MakeBstr(units);
      source.vt = VT_BSTR | VT_BYREF;
      source.pbstrVal = &referenced;
    } else {
      source.vt = VT_BSTR;
      source.bstrVal = MakeBstr(units);
    }
  } else {
    source.vt = VT_ARRAY | (mode == 3 ? VT_VARIANT : VT_BSTR);
    source.parray = MakeArray(Parts(data, size), mode == 3);
  }

  VARIANT text;
  VARIANT attribute;
  VariantInit(&text);
  VariantInit(&attribute);
  text.vt = attribute.vt = VT_BSTR;
  text.bstrVal = MakeBstr(u"old text");
  attribute.bstrVal = MakeBstr(u"old title");

  const HRESULT result = GetBeautifiedTextFromString(&source, &text, &attribute);
  Check(result == S_OK || result == ZESTRA_S_NO_SOURCE_STRING);
  Check(text.vt == VT_BSTR && attribute.vt == VT_BSTR);
  if (result != S_OK) Check(std::u16string(text.bstrVal) == u"old text");

  VariantClear(&text);
  VariantClear(&attribute);
  VariantClear(&source);
  SysFreeString(referenced);
  return 0;
}
