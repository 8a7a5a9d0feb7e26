#include "zestra/api/html_doc_partitions.h"

namespace ZestraNS {

HtmlDocPartitions::HtmlDocPartitions() noexcept : charset(Orvel::UnknownCharset), contentType(HtmlContent) {}

HtmlDocPartitions::HtmlDocPartitions(const StreamHolder& stream, Orvel::CHARSET charset,
                                     ContentType content_type) noexcept
    : stream(stream), charset(charset), contentType(content_type) {}

HtmlDocPartitions::HtmlDocPartitions(const HtmlDocPartitions& other)
    : stream(other.stream), charset(other.charset), contentType(other.contentType), children(other.children) {}

HtmlDocPartitions& HtmlDocPartitions::operator=(const HtmlDocPartitions& other) {
  if (this == &other) return *this;
  // The new child list is made before the old one goes: `other` may be one
  // of this node's own descendants and must outlive the copy.
  Children shared_children(other.children);
  stream = other.stream;
  charset = other.charset;
  contentType = other.contentType;
  children.Swap(shared_children);
  return *this;
}

// Members go in reverse order of declaration: the children first, then the
// stream.
HtmlDocPartitions::~HtmlDocPartitions() = default;

}  // namespace ZestraNS
