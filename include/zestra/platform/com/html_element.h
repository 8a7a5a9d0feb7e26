// IHTMLElement, one element of a document object. Only get_outerHTML is
// declared; the reader calls nothing else.
//
// Thread-safety: as the implementing object documents.
#ifndef ZESTRA_PLATFORM_COM_HTML_ELEMENT_H_
#define ZESTRA_PLATFORM_COM_HTML_ELEMENT_H_

#include "zestra/export.h"
#include "zestra/platform/com/bstr.h"
#include "zestra/platform/com/dispatch.h"

// {3050F1FF-98B5-11CF-BB82-00AA00BDCE0B}
inline constexpr IID IID_IHTMLElement = {0x3050F1FF, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}};

class ZESTRA_EXPORT IHTMLElement : public IDispatch {
 public:
  // Stores in `*html` a new string with the element's markup, itself
  // included; the caller frees it (SysFreeString). It may be null.
  virtual HRESULT get_outerHTML(BSTR* html) = 0;

 protected:
  ~IHTMLElement() = default;
};

#endif  // ZESTRA_PLATFORM_COM_HTML_ELEMENT_H_
