// Fuzz target: Beautify over bytes. The first input byte names the charset
// (fuzz_input.h); the whole input is the document. The same document goes through
// overload 1 (text into a wide string), overload 5 (text into a stream) and
// overload 2 (a tree parsed by the caller), and the three must agree.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz_input.h"
#include "zestra/api/beautify.h"
#include "builder/keyword_table.h"
#include "zestra/html/html_doc_parser.h"
#include "zestra/html/html_doc_tree.h"
#include "zestra/stream/memory_buffer.h"

namespace {

using OrvelFile::MemoryBuffer;
using zestra_fuzz::Check;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const Orvel::CHARSET charset = zestra_fuzz::CharsetOf(data[0]);
  const uint8_t* document = data;
  const unsigned int length = static_cast<unsigned int>(size);

  MemoryBuffer in1(document, length, MemoryBuffer::kReadInPlace);
  std::u16string text = u"old";
  std::u16string title;
  ZestraNS::DocumentType type1;
  const bool some1 = ZestraNS::Beautify(in1, charset, text, &title, &type1);
  Check(some1 == !text.empty());

  MemoryBuffer in5(document, length, MemoryBuffer::kReadInPlace);
  MemoryBuffer out(64);
  ZestraNS::DocumentType type5;
  const bool some5 = ZestraNS::Beautify(in5, charset, out, nullptr, &type5);
  Check(some5 == some1 && type5 == type1);
  Check(out.vSize() == text.size() * 2);
  std::u16string streamed;
  out.DiscardLookAhead();
  out.vSeekG(0, Orvel::kSeekBegin, Orvel::kSeekAbsolute);
  out.Copy(streamed, 0xFFFFFFFFu);
  Check(streamed == text);

  MemoryBuffer in2(document, length, MemoryBuffer::kReadInPlace);
  OrvelParser::HtmlDocTree tree(charset);
  OrvelParser::HtmlDocParser parser(in2, ZestraNS::KeywordTable(), tree);
  parser.Parse();
  std::u16string parsed_text;
  ZestraNS::DocumentType type2;
  ZestraNS::Beautify(tree, parsed_text, nullptr, &type2);
  Check(parsed_text == text && type2 == type1);
  return 0;
}
