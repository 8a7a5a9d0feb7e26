// The errors of the byte streams. Only the exact operations (PutExact,
// GetExact) throw them, when a write or a read moves fewer bytes than the
// caller required; reading at the end of the data is otherwise not an error.
// They carry an empty message and are thrown by value.
//
// Thread-safety: exception objects are values; distinct objects may be used
// on distinct threads.
#ifndef ZESTRA_STREAM_STREAM_EXCEPTIONS_H_
#define ZESTRA_STREAM_STREAM_EXCEPTIONS_H_

#include "zestra/base/exception.h"
#include "zestra/export.h"

namespace Orvel {

// Root of the stream errors; catch this to handle both directions.
class ZESTRA_EXPORT BinaryStreamException : public Exception {
 public:
  using Exception::Exception;
  ~BinaryStreamException() override;
  BaseException* Clone() const override { return new BinaryStreamException(*this); }
  [[noreturn]] void Raise() const override { throw *this; }
};

// A read delivered fewer bytes than required.
class ZESTRA_EXPORT BinaryStreamGetEOFException : public BinaryStreamException {
 public:
  BinaryStreamGetEOFException() = default;
  ~BinaryStreamGetEOFException() override;
  BaseException* Clone() const override { return new BinaryStreamGetEOFException(*this); }
  [[noreturn]] void Raise() const override { throw *this; }
};

// A write accepted fewer bytes than required.
class ZESTRA_EXPORT BinaryStreamPutEOFException : public BinaryStreamException {
 public:
  BinaryStreamPutEOFException() = default;
  ~BinaryStreamPutEOFException() override;
  BaseException* Clone() const override { return new BinaryStreamPutEOFException(*this); }
  [[noreturn]] void Raise() const override { throw *this; }
};

}  // namespace Orvel

#endif  // ZESTRA_STREAM_STREAM_EXCEPTIONS_H_
