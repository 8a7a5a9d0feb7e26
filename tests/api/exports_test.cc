// Loads the shared library as a host application would, finds the two
// component functions by their plain names, runs one, and unloads the
// library: the load-time objects (keyword table, constant strings) must be
// built on load and torn down on unload without trouble.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>

#include "zestra/platform/com/bstr.h"
#include "zestra/platform/com/html_document.h"
#include "zestra/platform/com/variant.h"

namespace {

using FromStringFunction = HRESULT (*)(VARIANT*, VARIANT*, VARIANT*);
using FromDocumentFunction = HRESULT (*)(IHTMLDocument2*, VARIANT*);

TEST(ExportsTest, ComponentFunctionsHavePlainNames) {
  for (int round = 0; round < 2; ++round) {
    void* library = dlopen(ZESTRA_SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    auto from_string = reinterpret_cast<FromStringFunction>(dlsym(library, "GetBeautifiedTextFromString"));
    auto from_document = reinterpret_cast<FromDocumentFunction>(dlsym(library, "GetBeautifiedText"));
    ASSERT_NE(from_string, nullptr);
    ASSERT_NE(from_document, nullptr);
    EXPECT_EQ(from_document(nullptr, nullptr), static_cast<HRESULT>(0x80070057));

    // The strings are made and freed by this program's copy of the string
    // functions; both copies allocate from the same heap in the same layout.
    VARIANT source{};
    source.vt = VT_BSTR;
    source.bstrVal = SysAllocString(u"<table><tr><td><a href=/x>all links</a></td></tr></table>");
    VARIANT text{};
    VARIANT attribute{};
    EXPECT_EQ(from_string(&source, &text, &attribute), S_OK);
    ASSERT_EQ(text.vt, VT_BSTR);
    EXPECT_EQ(std::u16string(text.bstrVal), u"all links\n\n");
    VariantClear(&source);
    VariantClear(&text);
    VariantClear(&attribute);
    EXPECT_EQ(dlclose(library), 0);
  }
}

}  // namespace
