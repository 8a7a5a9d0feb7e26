// HtmlDocPartitions is a page made of several documents (the page itself and
// one document per frame or inline frame) as a tree of nodes, one node per
// document. A node holds its document's bytes in a shared byte stream, the
// character set of those bytes and a content type; its children are the
// frames of that document, in the order in which they were found.
//
// Sharing: copies share the stream and the child nodes (a copy is shallow
// below the top node), so the bytes of a document exist once however many
// copies there are. The stream is destroyed with its last holder, a child
// with its last holder. A node is filled once, right after it is made, and
// read-only afterwards.
//
// The Beautify overloads that take partitions parse a node's bytes only when
// its stream is present and its charset is not UnknownCharset; both content
// types are parsed as HTML.
//
// Thread-safety: a tree that is no longer changed may be read, copied and
// destroyed from several threads at once (the counters are atomic); a node
// must not be changed while another thread uses it.
#ifndef ZESTRA_API_HTML_DOC_PARTITIONS_H_
#define ZESTRA_API_HTML_DOC_PARTITIONS_H_

#include <cstdint>

#include "zestra/base/charset.h"
#include "zestra/base/memory_pool.h"
#include "zestra/base/ref_count.h"
#include "zestra/base/ref_count_vector.h"
#include "zestra/export.h"
#include "zestra/stream/binary_stream.h"

namespace ZestraNS {

struct ZESTRA_EXPORT HtmlDocPartitions : public OrvelMem::PoolObject {
  // What kind of document the bytes are.
  enum ContentType : int32_t {
    HtmlContent = 0,  // the default: every document not reported as plain text
    TextContent = 1,  // the document object described its MIME type as "Text Document"
  };

  // Shared holder of a document's byte stream.
  using StreamHolder = Orvel::RefCount<Orvel::BinaryStreamT<unsigned int>>;
  // Shared holder of a child node.
  using Holder = Orvel::RefCount<HtmlDocPartitions>;
  // The child list; it grows by the library's shared rule (growth.h).
  using Children = Orvel::RefCountVector<HtmlDocPartitions, Holder>;

  // No stream, UnknownCharset, HtmlContent, no children.
  HtmlDocPartitions() noexcept;

  // Shares `stream` (one more holder), stores `charset` and `content_type`;
  // no children.
  HtmlDocPartitions(const StreamHolder& stream, Orvel::CHARSET charset, ContentType content_type) noexcept;

  // Shares the source's stream, copies its charset and content type, and
  // makes a child list of exactly the source's length whose holders share
  // the source's children. Throws std::bad_alloc when that list cannot be
  // allocated.
  HtmlDocPartitions(const HtmlDocPartitions& other);

  // Assigning a node to itself changes nothing. Otherwise: releases this
  // node's stream (destroying it when this was its last holder) and shares
  // the source's, copies the charset and content type, and replaces the
  // child list by holders sharing the source's children (the old holders
  // are released). Throws std::bad_alloc when the new list cannot be
  // allocated; the child list is then unchanged.
  HtmlDocPartitions& operator=(const HtmlDocPartitions& other);

  // Releases every child holder, frees the child list, then releases the
  // stream.
  ~HtmlDocPartitions();

  // The document's bytes; empty when the document could not be read. When
  // present it is a handle that owns an OrvelFile::MemoryBuffer.
  StreamHolder stream;
  // Character set of the bytes in `stream`; UnknownCharset when not known.
  Orvel::CHARSET charset;
  // See ContentType.
  ContentType contentType;
  // One node per frame document, in discovery order.
  Children children;
};

}  // namespace ZestraNS

#endif  // ZESTRA_API_HTML_DOC_PARTITIONS_H_
