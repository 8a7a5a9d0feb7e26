#include "zestra/platform/com/safe_array.h"

#include <cstring>

#include "platform/com/var_type.h"
#include "zestra/base/memory_pool.h"
#include "zestra/platform/com/bstr.h"
#include "zestra/platform/com/dispatch.h"
#include "zestra/platform/com/unknown.h"

// Memory layout: one block holds a 16-byte header, whose last 4 bytes record
// the element type, followed by the descriptor with its cDims bounds. The
// data are a second block.

namespace {

constexpr std::size_t kHeader = 16;
constexpr ULONG kMaxLocks = 65535;
constexpr uint64_t kMaxDataBytes = 0xFFFFFFFFu;

VARTYPE StoredVartype(const SAFEARRAY* array) {
  uint32_t vt;
  std::memcpy(&vt, reinterpret_cast<const unsigned char*>(array) - sizeof(vt), sizeof(vt));
  return static_cast<VARTYPE>(vt);
}

USHORT OwnershipFeature(VARTYPE vt) {
  switch (vt) {
    case VT_BSTR: return FADF_BSTR;
    case VT_VARIANT: return FADF_VARIANT;
    case VT_UNKNOWN: return FADF_UNKNOWN;
    case VT_DISPATCH: return FADF_DISPATCH;
    default: return 0;
  }
}

uint64_t ElementCount(const SAFEARRAY* array) {
  uint64_t count = 1;
  for (USHORT i = 0; i < array->cDims; ++i) count *= array->rgsabound[i].cElements;
  return count;
}

// The interface held by an element of an interface array.
IUnknown* InterfaceAt(VARTYPE vt, const void* element) {
  if (vt == VT_DISPATCH) return *static_cast<IDispatch* const*>(element);
  return *static_cast<IUnknown* const*>(element);
}

// Frees what one element owns.
void FreeElement(VARTYPE vt, void* element) {
  switch (vt) {
    case VT_BSTR:
      SysFreeString(*static_cast<BSTR*>(element));
      break;
    case VT_VARIANT:
      // A failure (a nested array still locked) leaves that value behind
      // rather than freeing memory that is in use.
      VariantClear(static_cast<VARIANT*>(element));
      break;
    case VT_UNKNOWN:
    case VT_DISPATCH:
      if (IUnknown* held = InterfaceAt(vt, element)) held->Release();
      break;
    default:
      break;
  }
}

// Copies the element at `source` into `destination`, which owns nothing.
HRESULT CopyElement(VARTYPE vt, ULONG size, void* destination, const void* source) {
  switch (vt) {
    case VT_BSTR: {
      const BSTR text = *static_cast<const BSTR*>(source);
      BSTR copy = nullptr;
      if (text != nullptr) {
        copy = SysAllocStringLen(text, SysStringLen(text));
        if (copy == nullptr) return E_OUTOFMEMORY;
      }
      *static_cast<BSTR*>(destination) = copy;
      return S_OK;
    }
    case VT_VARIANT:
      VariantInit(static_cast<VARIANT*>(destination));
      return VariantCopy(static_cast<VARIANT*>(destination), static_cast<const VARIANT*>(source));
    case VT_UNKNOWN:
    case VT_DISPATCH:
      if (IUnknown* held = InterfaceAt(vt, source)) held->AddRef();
      std::memcpy(destination, source, size);
      return S_OK;
    default:
      std::memcpy(destination, source, size);
      return S_OK;
  }
}

// A new zeroed array; `bounds` hold `dims` bounds, leftmost dimension first
// when `leftmost_first`, else in descriptor order.
SAFEARRAY* NewArray(VARTYPE vt, UINT dims, const SAFEARRAYBOUND* bounds, bool leftmost_first) {
  const ULONG element_size = OrvelCom::ElementSize(vt);
  if (element_size == 0 || dims == 0 || dims > 0xFFFF || bounds == nullptr) return nullptr;
  uint64_t bytes = element_size;
  for (UINT i = 0; i < dims; ++i) {
    bytes *= bounds[i].cElements;
    if (bytes > kMaxDataBytes) return nullptr;
  }
  const std::size_t descriptor = sizeof(SAFEARRAY) + (dims - 1) * sizeof(SAFEARRAYBOUND);
  auto* block = static_cast<unsigned char*>(OrvelMem::MemoryPool::New(kHeader + descriptor));
  if (block == nullptr) return nullptr;
  void* data = nullptr;
  if (bytes > 0) {
    data = OrvelMem::MemoryPool::New(static_cast<std::size_t>(bytes));
    if (data == nullptr) {
      OrvelMem::MemoryPool::Delete(block);
      return nullptr;
    }
    std::memset(data, 0, static_cast<std::size_t>(bytes));
  }
  std::memset(block, 0, kHeader);
  const uint32_t stored_vt = vt;
  std::memcpy(block + kHeader - sizeof(stored_vt), &stored_vt, sizeof(stored_vt));
  auto* array = reinterpret_cast<SAFEARRAY*>(block + kHeader);
  array->cDims = static_cast<USHORT>(dims);
  array->fFeatures = FADF_HAVEVARTYPE | OwnershipFeature(vt);
  array->cbElements = element_size;
  array->cLocks = 0;
  array->pvData = data;
  for (UINT i = 0; i < dims; ++i) array->rgsabound[i] = bounds[leftmost_first ? dims - 1 - i : i];
  return array;
}

// The element at `indices` (descriptor order), or DISP_E_BADINDEX.
HRESULT ElementAt(SAFEARRAY* array, const LONG* indices, void** element) {
  uint64_t offset = 0;
  uint64_t stride = 1;
  for (USHORT i = 0; i < array->cDims; ++i) {
    const SAFEARRAYBOUND& bound = array->rgsabound[i];
    const int64_t index = static_cast<int64_t>(indices[i]) - bound.lLbound;
    if (index < 0 || index >= static_cast<int64_t>(bound.cElements)) return DISP_E_BADINDEX;
    offset += static_cast<uint64_t>(index) * stride;
    stride *= bound.cElements;
  }
  *element = static_cast<unsigned char*>(array->pvData) + offset * array->cbElements;
  return S_OK;
}

// The bound of dimension `dim` (1 = leftmost), or null when out of range.
const SAFEARRAYBOUND* BoundOf(const SAFEARRAY* array, UINT dim) {
  if (dim < 1 || dim > array->cDims) return nullptr;
  return &array->rgsabound[array->cDims - dim];
}

}  // namespace

SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT dims, const SAFEARRAYBOUND* bounds) {
  return NewArray(vt, dims, bounds, true);
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lower_bound, ULONG count) {
  const SAFEARRAYBOUND bound = {count, lower_bound};
  return NewArray(vt, 1, &bound, true);
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
  if (array == nullptr) return S_OK;
  if (array->cLocks > 0) return DISP_E_ARRAYISLOCKED;
  const VARTYPE vt = StoredVartype(array);
  if (OwnershipFeature(vt) != 0 && array->pvData != nullptr) {
    const uint64_t count = ElementCount(array);
    auto* element = static_cast<unsigned char*>(array->pvData);
    for (uint64_t i = 0; i < count; ++i, element += array->cbElements) FreeElement(vt, element);
  }
  OrvelMem::MemoryPool::Delete(array->pvData);
  OrvelMem::MemoryPool::Delete(reinterpret_cast<unsigned char*>(array) - kHeader);
  return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* array) { return array == nullptr ? 0 : array->cDims; }

UINT SafeArrayGetElemsize(SAFEARRAY* array) { return array == nullptr ? 0 : array->cbElements; }

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* vt) {
  if (array == nullptr || vt == nullptr) return E_INVALIDARG;
  *vt = StoredVartype(array);
  return S_OK;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dim, LONG* bound) {
  if (array == nullptr || bound == nullptr) return E_INVALIDARG;
  const SAFEARRAYBOUND* b = BoundOf(array, dim);
  if (b == nullptr) return DISP_E_BADINDEX;
  *bound = b->lLbound;
  return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dim, LONG* bound) {
  if (array == nullptr || bound == nullptr) return E_INVALIDARG;
  const SAFEARRAYBOUND* b = BoundOf(array, dim);
  if (b == nullptr) return DISP_E_BADINDEX;
  *bound = static_cast<LONG>(static_cast<uint32_t>(b->lLbound) + b->cElements - 1u);
  return S_OK;
}

HRESULT SafeArrayLock(SAFEARRAY* array) {
  if (array == nullptr) return E_INVALIDARG;
  if (array->cLocks >= kMaxLocks) return E_UNEXPECTED;
  ++array->cLocks;
  return S_OK;
}

HRESULT SafeArrayUnlock(SAFEARRAY* array) {
  if (array == nullptr) return E_INVALIDARG;
  if (array->cLocks == 0) return E_UNEXPECTED;
  --array->cLocks;
  return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
  if (array == nullptr || data == nullptr) return E_INVALIDARG;
  const HRESULT hr = SafeArrayLock(array);
  if (FAILED(hr)) return hr;
  *data = array->pvData;
  return S_OK;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) { return SafeArrayUnlock(array); }

HRESULT SafeArrayPutElement(SAFEARRAY* array, const LONG* indices, const void* value) {
  if (array == nullptr || indices == nullptr) return E_INVALIDARG;
  const VARTYPE vt = StoredVartype(array);
  // Strings and interfaces are passed as the value itself; every other type
  // through a pointer to it.
  const bool by_value = vt == VT_BSTR || vt == VT_UNKNOWN || vt == VT_DISPATCH;
  if (value == nullptr && !by_value) return E_INVALIDARG;
  void* element;
  const HRESULT found = ElementAt(array, indices, &element);
  if (FAILED(found)) return found;
  if (vt == VT_VARIANT) return VariantCopy(static_cast<VARIANT*>(element), static_cast<const VARIANT*>(value));
  alignas(VARIANT) unsigned char copy[sizeof(VARIANT)];
  const HRESULT copied = CopyElement(vt, array->cbElements, copy, by_value ? &value : value);
  if (FAILED(copied)) return copied;
  FreeElement(vt, element);
  std::memcpy(element, copy, array->cbElements);
  return S_OK;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, const LONG* indices, void* value) {
  if (array == nullptr || indices == nullptr || value == nullptr) return E_INVALIDARG;
  void* element;
  const HRESULT found = ElementAt(array, indices, &element);
  if (FAILED(found)) return found;
  return CopyElement(StoredVartype(array), array->cbElements, value, element);
}

HRESULT SafeArrayCopy(SAFEARRAY* array, SAFEARRAY** copy) {
  if (copy == nullptr) return E_INVALIDARG;
  *copy = nullptr;
  if (array == nullptr) return S_OK;
  const VARTYPE vt = StoredVartype(array);
  SAFEARRAY* result = NewArray(vt, array->cDims, array->rgsabound, false);
  if (result == nullptr) return E_OUTOFMEMORY;
  const uint64_t count = ElementCount(array);
  const auto* from = static_cast<const unsigned char*>(array->pvData);
  auto* to = static_cast<unsigned char*>(result->pvData);
  if (OwnershipFeature(vt) == 0) {
    if (count > 0) std::memcpy(to, from, static_cast<std::size_t>(count * array->cbElements));
    *copy = result;
    return S_OK;
  }
  for (uint64_t i = 0; i < count; ++i, from += array->cbElements, to += array->cbElements) {
    if (FAILED(CopyElement(vt, array->cbElements, to, from))) {
      SafeArrayDestroy(result);
      return E_OUTOFMEMORY;
    }
  }
  *copy = result;
  return S_OK;
}
