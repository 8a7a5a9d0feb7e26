// Test doubles of the HTML engine's objects that the partition reader
// talks to: a document (IHTMLDocument2, optionally IPersistStreamInit and
// IOleContainer), its body element, the enumerator of its embedded
// objects, and a browser that hosts a frame's document.
//
// Every double counts its references. The long-lived ones (documents,
// elements, browsers, other objects) live on the test's stack with one
// reference held by the test, so a test that ends with Refs() == 1 on every
// double proves that the reader released all it obtained. Enumerators are
// made by EnumObjects and delete themselves with their last reference; the
// Ledger counts those still alive.
#ifndef ZESTRA_TESTS_API_FAKE_DOCUMENTS_H_
#define ZESTRA_TESTS_API_FAKE_DOCUMENTS_H_

#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "zestra/platform/com/bstr.h"
#include "zestra/platform/com/html_document.h"
#include "zestra/platform/com/html_element.h"
#include "zestra/platform/com/ole_container.h"
#include "zestra/platform/com/persist_stream_init.h"
#include "zestra/platform/com/web_browser.h"

namespace fake {

// Counts the enumerators alive, and the calls the reader made.
struct Ledger {
  int live_enumerators = 0;
  int saves = 0;
  int save_clear_dirty_true = 0;
};

// A new BSTR of `text`, or null for nullopt.
inline BSTR NewBstr(const std::optional<std::u16string>& text) {
  return text ? SysAllocStringLen(text->data(), static_cast<UINT>(text->size())) : nullptr;
}

// QueryInterface of a double that answers the interfaces `iids` with
// `self`.
template <class Interface>
HRESULT Answer(Interface* self, REFIID riid, std::initializer_list<IID> iids, void** object) {
  for (const IID& iid : iids) {
    if (riid == iid) {
      *object = self;
      self->AddRef();
      return S_OK;
    }
  }
  *object = nullptr;
  return E_NOINTERFACE;
}

class FakeElement : public IHTMLElement {
 public:
  HRESULT QueryInterface(REFIID riid, void** object) override {
    return Answer<IHTMLElement>(this, riid, {IID_IUnknown, IID_IDispatch, IID_IHTMLElement}, object);
  }
  ULONG AddRef() override { return ++refs_; }
  ULONG Release() override { return --refs_; }
  HRESULT get_outerHTML(BSTR* html) override {
    *html = NewBstr(outer_html);
    return outer_html_result;
  }
  ULONG Refs() const { return refs_; }

  std::optional<std::u16string> outer_html;
  HRESULT outer_html_result = S_OK;

 private:
  ULONG refs_ = 1;
};

// Enumerates a fixed list of objects, one reference added per object
// handed out.
class FakeEnum final : public IEnumUnknown {
 public:
  FakeEnum(std::vector<IUnknown*> objects, Ledger& ledger) : objects_(std::move(objects)), ledger_(ledger) {
    ++ledger_.live_enumerators;
  }
  HRESULT QueryInterface(REFIID riid, void** object) override {
    return Answer<IEnumUnknown>(this, riid, {IID_IUnknown, IID_IEnumUnknown}, object);
  }
  ULONG AddRef() override { return ++refs_; }
  ULONG Release() override {
    const ULONG refs = --refs_;
    if (refs == 0) {
      --ledger_.live_enumerators;
      delete this;
    }
    return refs;
  }
  HRESULT Next(ULONG count, IUnknown** objects, ULONG* fetched) override {
    ULONG done = 0;
    while (done < count && next_ < objects_.size()) {
      objects[done] = objects_[next_++];
      objects[done]->AddRef();
      ++done;
    }
    for (ULONG i = done; i < count; ++i) objects[i] = nullptr;
    if (fetched != nullptr) *fetched = done;
    return done == count ? S_OK : S_FALSE;
  }

 private:
  ~FakeEnum() = default;
  std::vector<IUnknown*> objects_;
  size_t next_ = 0;
  Ledger& ledger_;
  ULONG refs_ = 1;
};

class FakeDocument : public IHTMLDocument2, public IPersistStreamInit, public IOleContainer {
 public:
  explicit FakeDocument(Ledger& ledger) : ledger_(ledger) {}

  HRESULT QueryInterface(REFIID riid, void** object) override {
    if (riid == IID_IUnknown || riid == IID_IDispatch || riid == IID_IHTMLDocument2) {
      *object = static_cast<IHTMLDocument2*>(this);
    } else if (riid == IID_IPersistStreamInit && has_persist) {
      *object = static_cast<IPersistStreamInit*>(this);
    } else if (riid == IID_IOleContainer && has_container) {
      *object = static_cast<IOleContainer*>(this);
    } else {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }
  ULONG AddRef() override { return ++refs_; }
  ULONG Release() override { return --refs_; }

  HRESULT get_mimeType(BSTR* description) override {
    *description = NewBstr(mime_type);
    return mime_type_result;
  }
  HRESULT get_body(IHTMLElement** element) override {
    *element = body;
    if (body != nullptr) body->AddRef();
    return body_result;
  }
  HRESULT Save(IStream* stream, BOOL clear_dirty) override {
    ++ledger_.saves;
    if (clear_dirty) ++ledger_.save_clear_dirty_true;
    if (!source.empty()) stream->Write(source.data(), static_cast<ULONG>(source.size()), nullptr);
    return save_result;
  }
  HRESULT EnumObjects(DWORD flags, IEnumUnknown** objects) override {
    if (enum_result != S_OK || flags != OLECONTF_EMBEDDINGS) {
      *objects = nullptr;
      return enum_result != S_OK ? enum_result : E_INVALIDARG;
    }
    *objects = new FakeEnum(embedded, ledger_);
    return S_OK;
  }

  ULONG Refs() const { return refs_; }
  IHTMLDocument2* AsDocument() { return this; }

  // What get_mimeType returns: the string (nullopt: a null BSTR) and code.
  std::optional<std::u16string> mime_type = u"HTML Document";
  HRESULT mime_type_result = S_OK;
  // IPersistStreamInit: whether the document has it, what Save writes and
  // what it returns.
  bool has_persist = true;
  std::string source;
  HRESULT save_result = S_OK;
  // get_body's element (not owned) and code.
  FakeElement* body = nullptr;
  HRESULT body_result = S_OK;
  // IOleContainer: whether the document has it, EnumObjects' code and the
  // objects it enumerates (not owned).
  bool has_container = true;
  HRESULT enum_result = S_OK;
  std::vector<IUnknown*> embedded;

 private:
  Ledger& ledger_;
  ULONG refs_ = 1;
};

// A browser hosting `document` (may be null), as a frame's object.
class FakeBrowser : public IWebBrowser2 {
 public:
  explicit FakeBrowser(FakeDocument* document) : document_(document) {}
  HRESULT QueryInterface(REFIID riid, void** object) override {
    return Answer<IWebBrowser2>(this, riid, {IID_IUnknown, IID_IDispatch, IID_IWebBrowser2}, object);
  }
  ULONG AddRef() override { return ++refs_; }
  ULONG Release() override { return --refs_; }
  HRESULT get_Document(IDispatch** document) override {
    *document = document_ != nullptr ? static_cast<IHTMLDocument2*>(document_) : nullptr;
    if (document_ != nullptr) document_->AddRef();
    return document_result;
  }
  ULONG Refs() const { return refs_; }
  IUnknown* AsUnknown() { return static_cast<IWebBrowser2*>(this); }

  HRESULT document_result = S_OK;

 private:
  FakeDocument* document_;
  ULONG refs_ = 1;
};

}  // namespace fake

#endif  // ZESTRA_TESTS_API_FAKE_DOCUMENTS_H_
