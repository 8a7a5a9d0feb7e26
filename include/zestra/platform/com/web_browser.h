// IWebBrowser2, the browser object that hosts a frame's document. Only
// get_Document is declared.
//
// Thread-safety: as the implementing object documents.
#ifndef ZESTRA_PLATFORM_COM_WEB_BROWSER_H_
#define ZESTRA_PLATFORM_COM_WEB_BROWSER_H_

#include "zestra/export.h"
#include "zestra/platform/com/dispatch.h"

// {D30C1661-CDAF-11D0-8A3E-00C04FC9E26E}
inline constexpr IID IID_IWebBrowser2 = {0xD30C1661, 0xCDAF, 0x11D0, {0x8A, 0x3E, 0x00, 0xC0, 0x4F, 0xC9, 0xE2, 0x6E}};

class ZESTRA_EXPORT IWebBrowser2 : public IDispatch {
 public:
  // Stores in `*document` the hosted document, with a reference the caller
  // releases, or null when there is none.
  virtual HRESULT get_Document(IDispatch** document) = 0;

 protected:
  ~IWebBrowser2() = default;
};

#endif  // ZESTRA_PLATFORM_COM_WEB_BROWSER_H_
