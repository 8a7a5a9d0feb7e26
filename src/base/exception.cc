#include "zestra/base/exception.h"

namespace Orvel {

// Out of line so that the vtables and type information live in one place
// and exceptions thrown in the library are caught by type in its callers.
BaseException::~BaseException() = default;
Exception::~Exception() = default;

}  // namespace Orvel
