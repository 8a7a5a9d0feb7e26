#include "zestra/zestra_c.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

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
// The size of options that hold the format, images and url fields, added
// in the fifth version.
constexpr size_t kFormatOptionsSize = offsetof(zestra_options, url) + sizeof(const char*);

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
  if (options->size >= kFormatOptionsSize) {
    if (options->format < ZESTRA_FORMAT_TEXT || options->format > ZESTRA_FORMAT_HTML) return false;
    cpp->format = static_cast<zestra::Format>(options->format);
    cpp->images = options->images != 0;
    if (options->url != nullptr) cpp->url = options->url;
  }
  return true;
}

// Lays out a result in one malloc block: the struct, the pointer arrays of
// the metadata, then every string with its NUL. The first pass (`base`
// null) only measures; the second writes.
class ResultBlock {
 public:
  explicit ResultBlock(char* base) : base_(base) {}

  // Room for `count` string pointers; where they go.
  const char** Pointers(size_t count) {
    const char** at = base_ == nullptr ? nullptr : reinterpret_cast<const char**>(base_ + used_);
    used_ += count * sizeof(const char*);
    return at;
  }
  // A copy of `text` with a NUL after it; where it starts.
  const char* Place(const std::string& text) {
    char* at = base_ == nullptr ? nullptr : base_ + used_;
    if (at != nullptr) {
      std::memcpy(at, text.data(), text.size());
      at[text.size()] = '\0';
    }
    used_ += text.size() + 1;
    return at;
  }
  // Copies of `texts`, their addresses stored in `pointers` (from
  // Pointers(texts.size()), null when measuring).
  void PlaceAll(const std::vector<std::string>& texts, const char** pointers) {
    for (size_t i = 0; i < texts.size(); ++i) {
      const char* copy = Place(texts[i]);
      if (pointers != nullptr) pointers[i] = copy;
    }
  }
  size_t Used() const { return used_; }

 private:
  char* const base_;
  size_t used_ = sizeof(zestra_result);
};

void Fill(const zestra::Result& cpp, zestra_result* result, ResultBlock& block) {
  const zestra::Metadata& m = cpp.metadata;
  // The pointer arrays first, right after the struct, whose alignment
  // holds for them; the strings after them.
  zestra_metadata metadata;
  const char** authors = block.Pointers(m.author.size());
  const char** tags = block.Pointers(m.tags.size());
  block.PlaceAll(m.author, authors);
  block.PlaceAll(m.tags, tags);
  metadata.author = authors;
  metadata.author_count = m.author.size();
  metadata.tags = tags;
  metadata.tag_count = m.tags.size();
  metadata.title = block.Place(m.title);
  metadata.date_published = block.Place(m.date_published);
  metadata.date_modified = block.Place(m.date_modified);
  metadata.site_name = block.Place(m.site_name);
  metadata.description = block.Place(m.description);
  metadata.language = block.Place(m.language);
  metadata.canonical_url = block.Place(m.canonical_url);
  metadata.image = block.Place(m.image);
  const char* text = block.Place(cpp.text);
  const char* title = block.Place(cpp.title);
  const char* charset_name = block.Place(cpp.charset_name);
  const char* formatted = block.Place(cpp.formatted);
  if (result == nullptr) return;
  result->text = text;
  result->text_size = cpp.text.size();
  result->title = title;
  result->title_size = cpp.title.size();
  result->type = cpp.type == zestra::DocumentType::kContent ? ZESTRA_CONTENT_DOCUMENT : ZESTRA_LINK_DOCUMENT;
  result->charset = cpp.charset;
  result->charset_name = charset_name;
  result->layout = cpp.layout == zestra::Layout::kTables ? ZESTRA_LAYOUT_TABLES : ZESTRA_LAYOUT_BLOCKS;
  result->formatted = formatted;
  result->formatted_size = cpp.formatted.size();
  result->format = static_cast<zestra_format>(cpp.format);
  result->metadata = metadata;
}

// A zestra_result in one malloc block. Null when memory runs out.
zestra_result* NewResult(const zestra::Result& cpp) {
  ResultBlock measure(nullptr);
  Fill(cpp, nullptr, measure);
  void* memory = std::malloc(measure.Used());
  if (memory == nullptr) return nullptr;
  auto* result = static_cast<zestra_result*>(memory);
  ResultBlock block(static_cast<char*>(memory));
  Fill(cpp, result, block);
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
  options->format = static_cast<int>(defaults.format);
  options->images = defaults.images ? 1 : 0;
  options->url = nullptr;
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
