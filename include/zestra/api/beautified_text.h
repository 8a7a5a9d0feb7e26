// The two functions that the library exports for callers that speak the
// platform's component object model, under plain C names:
//
// - GetBeautifiedText takes a live HTML document object and its frames;
// - GetBeautifiedTextFromString takes the HTML source as a string, or as an
//   array of strings (the page, then its frames), in a VARIANT.
//
// Both deliver the extracted main text as a VARIANT of type VT_BSTR and
// return an HRESULT. The caller keeps ownership of every argument. An output
// VARIANT must be initialised (at least VT_EMPTY): it is cleared with
// VariantClear before a new value is stored in it, so a value it held is
// freed. A stored BSTR belongs to the caller (VariantClear or
// SysFreeString). If the result string cannot be allocated, the output
// becomes VT_ERROR holding E_OUTOFMEMORY; the returned code is unchanged.
//
// Exceptions of the layers below (the parser, the streams, allocation) are
// not caught and pass out of the call.
//
// Loading: the objects shared by all calls, the parser keyword table and
// the builder's constant strings ("rowspan", "colspan", "\n", "\r\n"), are
// namespace-scope constants of the library, built by the dynamic loader
// when the library is loaded and destroyed when it is unloaded; nothing
// else is set up. Windows hosts also expect the library to switch off its
// per-thread attach and detach notifications (DisableThreadLibraryCalls);
// the Linux loader sends no such notifications and the library keeps no
// per-thread state, so there is nothing to switch off.
//
// Thread-safety: no locks and no state; calls on different arguments may
// run at once on different threads. GetBeautifiedText calls the document
// object on the caller's thread.
#ifndef ZESTRA_API_BEAUTIFIED_TEXT_H_
#define ZESTRA_API_BEAUTIFIED_TEXT_H_

#include "zestra/export.h"
#include "zestra/platform/com/hresult.h"
#include "zestra/platform/com/html_document.h"
#include "zestra/platform/com/variant.h"

// GetBeautifiedTextFromString found no string to work on: the string is
// null, or no element of the array is a non-empty string. A success code.
inline constexpr HRESULT ZESTRA_S_NO_SOURCE_STRING = 0x00040002;
// The charset of a document object's source could not be detected.
inline constexpr HRESULT ZESTRA_E_CHARSET_NOT_DETECTED = static_cast<HRESULT>(0x80040001);
// GetBeautifiedTextFromString got a source of a type it does not take, or
// an array that is not one-dimensional, whose bounds or data cannot be
// read, or whose element size is not that of the type its tag names.
inline constexpr HRESULT ZESTRA_E_UNSUPPORTED_SOURCE = static_cast<HRESULT>(0x80040003);

extern "C" {

// Reads `document` and its frames into partitions and stores their
// extracted text in `*text`, as a VT_BSTR also when it is empty.
// Returns E_INVALIDARG when an argument is null; the reader's result when it
// is not S_OK (ZESTRA_E_CHARSET_NOT_DETECTED, or the document object's own
// failure), with `*text` untouched; S_OK otherwise. The reference this call
// adds to `document` is dropped before the extraction starts.
ZESTRA_EXPORT HRESULT GetBeautifiedText(IHTMLDocument2* document, VARIANT* text);

// Extracts the text of the HTML in `*source`:
// - VT_BSTR, or VT_BSTR | VT_BYREF: one document; its units up to the
//   first null unit are parsed as UTF-8 after conversion;
// - VT_ARRAY | VT_BSTR or VT_ARRAY | VT_VARIANT of one dimension: the first
//   non-empty string is the page, each later one a frame of it, in index
//   order; a variant element counts when it is VT_BSTR or
//   VT_BSTR | VT_BYREF and is skipped otherwise.
// When text comes out, stores it in `*text` and then the parser's attribute
// text (possibly empty) in `*attribute_text`; when none comes out neither
// output is touched. Returns E_INVALIDARG when a pointer is null,
// ZESTRA_E_UNSUPPORTED_SOURCE for another type (VT_ARRAY | VT_BYREF
// included) or an unusable array, ZESTRA_S_NO_SOURCE_STRING when there is
// no string, S_OK otherwise; only S_OK may come with output.
ZESTRA_EXPORT HRESULT GetBeautifiedTextFromString(VARIANT* source, VARIANT* text, VARIANT* attribute_text);

}  // extern "C"

#endif  // ZESTRA_API_BEAUTIFIED_TEXT_H_
