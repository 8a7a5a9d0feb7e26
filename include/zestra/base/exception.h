// The root exception classes of the library's base layer. An exception
// carries a wide message and a MessageInfo record naming where it was
// raised; it is thrown by value. Subclasses override Clone and Raise so that
// a caught exception can be copied and re-thrown with its dynamic type.
//
// Thread-safety: exception objects are values; distinct objects may be used
// on distinct threads.
#ifndef ZESTRA_BASE_EXCEPTION_H_
#define ZESTRA_BASE_EXCEPTION_H_

#include <string>

#include "zestra/export.h"

namespace Orvel {

// Where an exception was raised; empty fields when unknown.
struct MessageInfo {
  const char* file = "";  // static string, never owned
  int line = 0;
};

class ZESTRA_EXPORT BaseException {
 public:
  BaseException() = default;
  explicit BaseException(std::u16string message, MessageInfo info = {})
      : message_(std::move(message)), info_(info) {}
  virtual ~BaseException();

  // The message; empty for exceptions that carry none.
  virtual const std::u16string& What() const noexcept { return message_; }
  const MessageInfo& Info() const noexcept { return info_; }

  // Returns a new copy of this exception with its dynamic type; the caller
  // owns it (delete).
  virtual BaseException* Clone() const { return new BaseException(*this); }
  // Throws a copy of this exception with its dynamic type.
  [[noreturn]] virtual void Raise() const { throw *this; }

 private:
  std::u16string message_;
  MessageInfo info_;
};

class ZESTRA_EXPORT Exception : public BaseException {
 public:
  using BaseException::BaseException;
  ~Exception() override;
  BaseException* Clone() const override { return new Exception(*this); }
  [[noreturn]] void Raise() const override { throw *this; }
};

}  // namespace Orvel

#endif  // ZESTRA_BASE_EXCEPTION_H_
