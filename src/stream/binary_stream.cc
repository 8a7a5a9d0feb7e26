#include "zestra/stream/binary_stream.h"

namespace Orvel {

BaseBinaryStream::~BaseBinaryStream() = default;

template <class T>
BinaryStreamT<T>::~BinaryStreamT() {
  if (owns_) delete buffer_;
}

template class BinaryStreamT<unsigned int>;

}  // namespace Orvel
