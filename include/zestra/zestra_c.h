/* The C interface of the library, for C programs and for the foreign
 * function interfaces of other languages. It is the UTF-8 interface of
 * zestra.h with plain C types: no C++ type and no exception crosses it.
 *
 *   zestra_result* page = NULL;
 *   if (zestra_extract(html, html_size, NULL, &page) == ZESTRA_OK) {
 *     fwrite(page->text, 1, page->text_size, stdout);
 *     zestra_result_free(page);
 *   }
 *
 * Ownership: the caller owns the input bytes and the options; the library
 * reads them only during the call. A result belongs to the caller, who
 * frees it with zestra_result_free; every string in it lives exactly as long
 * as the result. The string of zestra_version is static.
 *
 * Compatibility: the library only ever allocates results, so later versions
 * add result fields at the end without breaking programs built against
 * this header. Options are allocated by the caller and carry their own size
 * (set by zestra_options_init); fields added later are read only when the
 * caller's options are large enough to hold them, and take their defaults
 * otherwise.
 *
 * Thread-safety: no function keeps state between calls; any number of
 * threads may call them at once. A result may be read by several threads
 * and must be freed once.
 */
#ifndef ZESTRA_ZESTRA_C_H_
#define ZESTRA_ZESTRA_C_H_

#include <stddef.h>

#include "zestra/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The charset value that asks the library to find the charset itself (see
 * zestra::kSniffCharset in zestra.h for the steps). */
#define ZESTRA_CHARSET_SNIFF (-1)

/* What zestra_extract reports. */
typedef enum zestra_status {
  ZESTRA_OK = 0,
  /* A required pointer is null, the options' size is smaller than any
   * version of zestra_options, or an option has a value it cannot take.
   * Nothing was allocated. */
  ZESTRA_INVALID_ARGUMENT = 1,
  /* Memory ran out. Nothing was allocated. */
  ZESTRA_OUT_OF_MEMORY = 2,
  /* The library failed in a way it did not foresee. Nothing was allocated. */
  ZESTRA_INTERNAL_ERROR = 3,
  /* The page needed more memory than the options' max_memory allows; the
   * extraction stopped. Nothing was allocated. */
  ZESTRA_MEMORY_LIMIT = 4
} zestra_status;

/* What a document is made of (zestra::DocumentType in zestra.h). */
typedef enum zestra_document_type {
  /* A page of links: its whole text is returned, unranked. */
  ZESTRA_LINK_DOCUMENT = 0,
  /* Every other page: only the text of the winning tables is returned. */
  ZESTRA_CONTENT_DOCUMENT = 1
} zestra_document_type;

/* How zestra_extract reads the layout of a page (zestra::Layout in
 * zestra.h). */
typedef enum zestra_layout {
  /* Pages laid out with HTML tables; the reference behaviour. */
  ZESTRA_LAYOUT_TABLES = 0,
  /* Pages laid out with block elements, as today's are. The default. */
  ZESTRA_LAYOUT_BLOCKS = 1
} zestra_layout;

/* The form of zestra_result.formatted (zestra::Format in zestra.h). */
typedef enum zestra_format {
  /* None: the text is the only output. */
  ZESTRA_FORMAT_TEXT = 0,
  /* CommonMark with pipe tables. */
  ZESTRA_FORMAT_MARKDOWN = 1,
  /* A fragment of HTML that is safe to show inside another page. */
  ZESTRA_FORMAT_HTML = 2
} zestra_format;

/* How zestra_extract reads a document. Fill it with zestra_options_init,
 * then change fields. */
typedef struct zestra_options {
  /* sizeof(zestra_options) as the caller's compiler saw it; set by
   * zestra_options_init. */
  size_t size;
  /* The code page of the bytes (65001 UTF-8, 1252 windows-1252, ...;
   * zestra_charset_from_label maps a name to it), or ZESTRA_CHARSET_SNIFF
   * (the default). A byte-order mark overrides it; a code page the library
   * cannot convert is sniffed. */
  int charset;
  /* Non-zero: return every text of the document, unranked. Default 0. */
  int whole_text;
  /* A zestra_layout value. Default ZESTRA_LAYOUT_BLOCKS, also for callers
   * whose options end before this field. Any other value makes
   * zestra_extract fail with ZESTRA_INVALID_ARGUMENT. */
  int layout;
  /* The most memory, in bytes, the extraction may take for the parse and
   * the trees it builds (zestra::Options::max_memory); 0, the default, sets
   * no ceiling. A page that needs more fails with ZESTRA_MEMORY_LIMIT. Read
   * only when `size` reaches past it, so callers built with an earlier
   * header keep the default. */
  size_t max_memory;
  /* The charset the page came with from outside its bytes, such as the
   * charset parameter of an HTTP Content-Type header (a code page), or
   * ZESTRA_CHARSET_SNIFF (the default, also for callers whose options end
   * before this field). Used only when `charset` is ZESTRA_CHARSET_SNIFF:
   * believed ahead of the page's <meta> declaration, after a byte-order
   * mark, unmarked 16-bit text and bytes that are valid UTF-8 beyond
   * ASCII. */
  int transport_charset;
  /* A zestra_format value: the text also as Markdown or HTML. Default
   * ZESTRA_FORMAT_TEXT, also for callers whose options end before this
   * field. Any other value makes zestra_extract fail with
   * ZESTRA_INVALID_ARGUMENT. */
  int format;
  /* Non-zero: images in the Markdown or HTML. Default 0. */
  int images;
  /* The page's address, NUL-terminated UTF-8, or NULL (the default):
   * relative links resolve against it, and it is the canonical address
   * when the page names none. Read during the call only. */
  const char* url;
} zestra_options;

/* Facts about the article (zestra::Metadata in zestra.h). Every string is
 * UTF-8, NUL-terminated, "" when not found. */
typedef struct zestra_metadata {
  /* The article's own title, without the site name of <title>. */
  const char* title;
  /* author_count names. */
  const char* const* author;
  size_t author_count;
  /* ISO 8601 dates ("2024-03-05", "2024-03-05T14:07:09+01:00"). */
  const char* date_published;
  const char* date_modified;
  const char* site_name;
  const char* description;
  /* A language tag ("en", "en-US"). */
  const char* language;
  /* Absolute http or https addresses. */
  const char* canonical_url;
  const char* image;
  /* tag_count tags. */
  const char* const* tags;
  size_t tag_count;
} zestra_metadata;

/* The result of zestra_extract. Every string is UTF-8 and ends with a NUL
 * byte; a size is the string's length in bytes without that NUL. */
typedef struct zestra_result {
  /* The main text; "" when the document has none. */
  const char* text;
  size_t text_size;
  /* The document's title; "" when it has none. */
  const char* title;
  size_t title_size;
  /* See zestra_document_type. */
  zestra_document_type type;
  /* The code page the bytes were read in, and its lower-case WHATWG name
   * ("utf-8", "windows-1252"). */
  int charset;
  const char* charset_name;
  /* The layout the page was read with. */
  zestra_layout layout;
  /* The text as Markdown or HTML (zestra_options.format); "" for
   * ZESTRA_FORMAT_TEXT. */
  const char* formatted;
  size_t formatted_size;
  zestra_format format;
  /* The article's facts. */
  zestra_metadata metadata;
} zestra_result;

/* Sets `options` to the defaults of this header's version, its size field
 * included. Does nothing when `options` is null. */
ZESTRA_EXPORT void zestra_options_init(zestra_options* options);

/* Extracts the main text of the HTML document in the `size` bytes at
 * `bytes` (at most 4 GiB - 1 of them are read). `options` may be null for
 * the defaults; `bytes` may be null when `size` is 0. On ZESTRA_OK `*result`
 * is a new result that the caller frees with zestra_result_free; on any
 * other status `*result` is set to null (when `result` itself is not null). */
ZESTRA_EXPORT zestra_status zestra_extract(const void* bytes, size_t size, const zestra_options* options,
                                           zestra_result** result);

/* Frees a result of zestra_extract and every string in it. Does nothing
 * when `result` is null. */
ZESTRA_EXPORT void zestra_result_free(zestra_result* result);

/* The code page that a WHATWG label ("utf-8", "latin1", "Shift_JIS") or a
 * decimal code page number ("1252") names; ZESTRA_CHARSET_SNIFF when the
 * library knows no such charset or `label` is null. */
ZESTRA_EXPORT int zestra_charset_from_label(const char* label);

/* The version of the library, "MAJOR.MINOR.PATCH", static. */
ZESTRA_EXPORT const char* zestra_version(void);

#ifdef __cplusplus
}  /* extern "C" */
#endif

#endif /* ZESTRA_ZESTRA_C_H_ */
