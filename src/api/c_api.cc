#include "zestra/zestra_c.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "zestra/zestra.h"

namespace {

// The size of the options as the first published header laid them out;
// smaller options are refused.
constexpr size_t kMinOptionsSize = offsetof(zestra_options, whole_text) + sizeof(int);

// The size of options that hold the layout field, added in the second
// version.
constexpr size_t kLayoutOptionsSize = offsetof(zestra_options, layout) + sizeof(int);

// The size of options that hold max_memory, added in the third version.
constexpr size_t kMaxMemoryOptionsSize = offsetof(zestra_options, max_memory) + sizeof(size_t);
// The size of options that hold the transport charset, added in the fourth.
constexpr size_t kTransportOptionsSize = offsetof(zestra_options, transport_charset) + sizeof(int);

// A field added to zestra_options later is read only when options->size
// reaches past it, and keeps its default otherwise. False when a field has
// a value it cannot take.
bool CppOptions(const zestra_options* options, zestra::Options* cpp) {
  if (options == nullptr) return true;
  cpp->charset = options->charset;
  cpp->whole_text = options->whole_text != 0;
  if (options->size >= kLayoutOptionsSize) {
    if (options->layout != ZESTRA_LAYOUT_TABLES && options->layout != ZESTRA_LAYOUT_BLOCKS) return false;
    cpp->layout = options->layout == ZESTRA_LAYOUT_TABLES ? zestra::Layout::kTables : zestra::Layout::kBlocks;
  }
  if (options->size >= kMaxMemoryOptionsSize) cpp->max_memory = options->max_memory;
  if (options->size >= kTransportOptionsSize) cpp->transport_charset = options->transport_charset;
  return true;
}

// Copies `text` with a NUL after it to `*cursor` and moves the cursor past
// the copy. Returns where the copy starts.
const char* Place(const std::string& text, char** cursor) {
  char* start = *cursor;
  std::memcpy(start, text.data(), text.size());
  start[text.size()] = '\0';
  *cursor += text.size() + 1;
  return start;
}

// A zestra_result in one malloc block: the struct, then the text, the title
// and the charset name, each with its NUL. Null when memory runs out.
zestra_result* NewResult(const zestra::Result& cpp) {
  const size_t bytes = sizeof(zestra_result) + cpp.text.size() + cpp.title.size() + cpp.charset_name.size() + 3;
  void* block = std::malloc(bytes);
  if (block == nullptr) return nullptr;
  auto* result = static_cast<zestra_result*>(block);
  char* cursor = static_cast<char*>(block) + sizeof(zestra_result);
  result->text = Place(cpp.text, &cursor);
  result->text_size = cpp.text.size();
  result->title = Place(cpp.title, &cursor);
  result->title_size = cpp.title.size();
  result->type = cpp.type == zestra::DocumentType::kContent ? ZESTRA_CONTENT_DOCUMENT : ZESTRA_LINK_DOCUMENT;
  result->charset = cpp.charset;
  result->charset_name = Place(cpp.charset_name, &cursor);
  result->layout = cpp.layout == zestra::Layout::kTables ? ZESTRA_LAYOUT_TABLES : ZESTRA_LAYOUT_BLOCKS;
  return result;
}

}  // namespace

extern "C" {

void zestra_options_init(zestra_options* options) {
  if (options == nullptr) return;
  const zestra::Options defaults;
  options->size = sizeof(zestra_options);
  options->charset = defaults.charset;
  options->whole_text = defaults.whole_text ? 1 : 0;
  options->layout = defaults.layout == zestra::Layout::kTables ? ZESTRA_LAYOUT_TABLES : ZESTRA_LAYOUT_BLOCKS;
  options->max_memory = defaults.max_memory;
  options->transport_charset = defaults.transport_charset;
}

zestra_status zestra_extract(const void* bytes, size_t size, const zestra_options* options,
                             zestra_result** result) {
  if (result == nullptr) return ZESTRA_INVALID_ARGUMENT;
  *result = nullptr;
  if ((bytes == nullptr && size > 0) || (options != nullptr && options->size < kMinOptionsSize)) {
    return ZESTRA_INVALID_ARGUMENT;
  }
  zestra::Options cpp_options;
  if (!CppOptions(options, &cpp_options)) return ZESTRA_INVALID_ARGUMENT;
  // No exception may leave a C function.
  try {
    const std::string_view input(static_cast<const char*>(bytes), bytes == nullptr ? 0 : size);
    *result = NewResult(zestra::Extract(input, cpp_options));
    return *result != nullptr ? ZESTRA_OK : ZESTRA_OUT_OF_MEMORY;
  } catch (const zestra::MemoryLimitExceeded&) {
    return ZESTRA_MEMORY_LIMIT;
  } catch (const std::bad_alloc&) {
    return ZESTRA_OUT_OF_MEMORY;
  } catch (...) {
    return ZESTRA_INTERNAL_ERROR;
  }
}

void zestra_result_free(zestra_result* result) { std::free(result); }

int zestra_charset_from_label(const char* label) {
  if (label == nullptr) return ZESTRA_CHARSET_SNIFF;
  return zestra::CharsetFromLabel(label);
}

const char* zestra_version(void) { return zestra::Version(); }

}  // extern "C"
