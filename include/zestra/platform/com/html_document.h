// IHTMLDocument2, the document object of the platform's HTML engine, with
// the two properties the reader uses.
//
// Thread-safety: as the implementing object documents.
#ifndef ZESTRA_PLATFORM_COM_HTML_DOCUMENT_H_
#define ZESTRA_PLATFORM_COM_HTML_DOCUMENT_H_

#include "zestra/export.h"
#include "zestra/platform/com/bstr.h"
#include "zestra/platform/com/dispatch.h"
#include "zestra/platform/com/html_element.h"

// {332C4425-26CB-11D0-B483-00C04FD90119}
inline constexpr IID IID_IHTMLDocument2 = {
    0x332C4425, 0x26CB, 0x11D0, {0xB4, 0x83, 0x00, 0xC0, 0x4F, 0xD9, 0x01, 0x19}};

class ZESTRA_EXPORT IHTMLDocument2 : public IDispatch {
 public:
  // Stores in `*description` a new string describing the document's MIME
  // type ("Text Document" for plain text); the caller frees it. It may be
  // null.
  virtual HRESULT get_mimeType(BSTR* description) = 0;
  // Stores in `*body` the body element with a reference the caller releases,
  // or null when the document has none.
  virtual HRESULT get_body(IHTMLElement** body) = 0;

 protected:
  ~IHTMLDocument2() = default;
};

#endif  // ZESTRA_PLATFORM_COM_HTML_DOCUMENT_H_
