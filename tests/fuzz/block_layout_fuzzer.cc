// Fuzz target: the blocks layout. The first input byte names the charset
// (fuzz_input.h); the whole input is the document. Its blocks tree must be
// consistent (link words within words, every table listed and held), and
// the ranked and the whole extraction must run to the end; the ranked text
// holds no more words than the whole text. Under a memory ceiling that the
// last byte picks (16 KiB to 1 MiB, so that every allocation the pages
// make is refused somewhere), the ranked extraction either gives the same
// text or fails with MemoryLimitExceeded: a refused allocation never
// crashes and never changes the result silently.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz_input.h"
#include "zestra/api/document_tree.h"
#include "zestra/base/ref_count_vector.h"
#include "zestra/base/smart_ptr.h"
#include "zestra/model/count_words.h"
#include "zestra/model/k_table.h"
#include "zestra/stream/memory_buffer.h"
#include "zestra/zestra.h"

namespace {

using Orvel::SmartPtr;
using ZestraNS::KTable;
using zestra_fuzz::Check;

// Words as the score of a text would see them: runs between ASCII white
// space.
std::size_t Words(std::string_view text) {
  std::size_t words = 0;
  bool in_word = false;
  for (char c : text) {
    const bool space = c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f' || c == '\v';
    if (!space && !in_word) ++words;
    in_word = !space;
  }
  return words;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const Orvel::CHARSET charset = zestra_fuzz::CharsetOf(data[0]);
  OrvelFile::MemoryBuffer in(data, static_cast<unsigned int>(size), OrvelFile::MemoryBuffer::kReadInPlace);
  SmartPtr<KTable> root = ZestraNS::GetDocumentTree(in, charset, ZestraNS::LayoutMode::kBlocks);
  Orvel::RefCountVector<KTable> tables;
  zestra_fuzz::CheckDocumentTree(root, tables);

  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  zestra::Options options;
  options.charset = charset;
  const zestra::Result ranked = zestra::Extract(bytes, options);
  options.whole_text = true;
  const zestra::Result whole = zestra::Extract(bytes, options);
  Check(ranked.layout == zestra::Layout::kBlocks && whole.layout == zestra::Layout::kBlocks);
  Check(Words(ranked.text) <= Words(whole.text));

  options.whole_text = false;
  options.max_memory = (1 + data[size - 1] % 64) * std::size_t{16} << 10;
  try {
    Check(zestra::Extract(bytes, options).text == ranked.text);
  } catch (const zestra::MemoryLimitExceeded& error) {
    Check(error.Limit() == options.max_memory);
  }
  return 0;
}
