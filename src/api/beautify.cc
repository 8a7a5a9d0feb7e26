#include "zestra/api/beautify.h"

#include "api/extract_text.h"
#include "builder/build_tree.h"
#include "builder/tree_from_partitions.h"
#include "zestra/model/k_table.h"
#include "zestra/stream/memory_buffer.h"

namespace ZestraNS {
namespace {

using StreamBuf = Orvel::BinaryStreamBufT<unsigned int>;

// Initial capacity, in bytes, of the buffer the text is extracted into
// before it is delivered.
constexpr unsigned int kWorkingBufferCapacity = 4096;

// Moves the get position of `buffer` back to its first byte.
void Rewind(StreamBuf& buffer) {
  buffer.DiscardLookAhead();
  buffer.vSeekG(0, Orvel::kSeekBegin, Orvel::kSeekAbsolute);
}

// Replaces `text` by the UTF-16 units that `buffer` holds. Returns whether
// there were any bytes.
bool CopyToText(StreamBuf& buffer, std::u16string& text) {
  const unsigned int size = buffer.vSize();
  if (size == 0) return false;
  text.reserve(size / 2);
  Rewind(buffer);
  buffer.Copy(text, StreamBuf::kAll);
  return true;
}

// Extracts the text of `root` into `out` and reports the type.
void Extract(const Orvel::SmartPtr<KTable>& root, StreamBuf& out, DocumentType* type) {
  DocumentType found = LinkDocument;
  ExtractText(root, out, &found);
  if (type != nullptr) *type = found;
}

// The run of the overloads that deliver a wide string: `build` returns
// the root of the document's layout tree; its text replaces `text`.
template <class Build>
bool ExtractToText(std::u16string& text, DocumentType* type, Build build) {
  text.clear();
  OrvelFile::MemoryBuffer working(kWorkingBufferCapacity);
  const Orvel::SmartPtr<KTable> root = build();
  Extract(root, working, type);
  return CopyToText(working, text);
}

// A root filled from the bytes of `in`.
Orvel::SmartPtr<KTable> TreeFromStream(StreamBuf& in, Orvel::CHARSET charset, std::u16string* attribute_text) {
  Orvel::SmartPtr<KTable> root = NewRootTable();
  BuildTreeFromStream(in, charset, root, attribute_text);
  return root;
}

// A root filled from a parsed tree.
Orvel::SmartPtr<KTable> TreeFromDocTree(OrvelParser::HtmlDocTree& tree, std::u16string* attribute_text) {
  Orvel::SmartPtr<KTable> root = NewRootTable();
  BuildTreeFromDocTree(tree, root, attribute_text);
  return root;
}

}  // namespace

bool Beautify(StreamBuf& in, Orvel::CHARSET charset, std::u16string& text, std::u16string* attribute_text,
              DocumentType* type) {
  return ExtractToText(text, type, [&] { return TreeFromStream(in, charset, attribute_text); });
}

bool Beautify(OrvelParser::HtmlDocTree& tree, std::u16string& text, std::u16string* attribute_text,
              DocumentType* type) {
  return ExtractToText(text, type, [&] { return TreeFromDocTree(tree, attribute_text); });
}

bool Beautify(OrvelParser::HtmlDocTree& tree, StreamBuf& out, std::u16string* attribute_text,
              DocumentType* type) {
  OrvelFile::MemoryBuffer working(kWorkingBufferCapacity);
  const Orvel::SmartPtr<KTable> root = TreeFromDocTree(tree, attribute_text);
  Extract(root, working, type);
  if (working.vSize() == 0) return false;
  Rewind(working);
  working.Copy(static_cast<Orvel::BaseBinaryStreamBuf&>(out), StreamBuf::kAll);
  return true;
}

bool Beautify(const HtmlDocPartitions& document, std::u16string& text, std::u16string* attribute_text,
              DocumentType* type) {
  return ExtractToText(text, type, [&] { return BuildTreeFromPartitions(document, attribute_text); });
}

bool Beautify(StreamBuf& in, Orvel::CHARSET charset, StreamBuf& out, std::u16string* attribute_text,
              DocumentType* type) {
  const Orvel::SmartPtr<KTable> root = TreeFromStream(in, charset, attribute_text);
  Extract(root, out, type);
  return out.vSize() > 0;
}

bool Beautify(const HtmlDocPartitions& document, StreamBuf& out, std::u16string* attribute_text,
              DocumentType* type) {
  const Orvel::SmartPtr<KTable> root = BuildTreeFromPartitions(document, attribute_text);
  Extract(root, out, type);
  return out.vSize() > 0;
}

}  // namespace ZestraNS
