// Small component objects for the component-layer tests: a counted object
// that answers IUnknown and IDispatch, and a stream of another kind.
#ifndef ZESTRA_TESTS_PLATFORM_COM_TEST_OBJECTS_H_
#define ZESTRA_TESTS_PLATFORM_COM_TEST_OBJECTS_H_

#include "zestra/platform/com/dispatch.h"
#include "zestra/platform/com/stream.h"

namespace com_test {

// Lives on the test's stack; the count only records AddRef and Release.
class CountedObject : public IDispatch {
 public:
  HRESULT QueryInterface(REFIID riid, void** object) override {
    if (riid == IID_IUnknown || riid == IID_IDispatch) {
      *object = static_cast<IDispatch*>(this);
      AddRef();
      return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG AddRef() override { return ++refs; }
  ULONG Release() override { return --refs; }

  ULONG refs = 1;
};

// An IStream that is not a memory stream.
class OtherStream : public IStream {
 public:
  HRESULT QueryInterface(REFIID, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG AddRef() override { return 1; }
  ULONG Release() override { return 1; }
  HRESULT Read(void*, ULONG, ULONG*) override { return E_NOTIMPL; }
  HRESULT Write(const void*, ULONG, ULONG*) override { return E_NOTIMPL; }
  HRESULT Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return E_NOTIMPL; }
  HRESULT Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
};

}  // namespace com_test

#endif  // ZESTRA_TESTS_PLATFORM_COM_TEST_OBJECTS_H_
