#include "zestra/stream/stream_exceptions.h"

namespace Orvel {

// Out of line so that the type information lives in the library and callers
// catch these exceptions by type.
BinaryStreamException::~BinaryStreamException() = default;
BinaryStreamGetEOFException::~BinaryStreamGetEOFException() = default;
BinaryStreamPutEOFException::~BinaryStreamPutEOFException() = default;

}  // namespace Orvel
