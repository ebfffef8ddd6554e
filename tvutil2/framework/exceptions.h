// What the framework's classes throw.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <exception>

/// Base of the framework's exceptions. Thrown by value and caught by reference.
class TVUTIL_API CException : public std::exception {
  public:
    [[nodiscard]] const char* what() const noexcept override;
};

/// An argument outside what the callee allows: an index beyond the end, say.
class TVUTIL_API CInvalidArgException : public CException {
  public:
    [[nodiscard]] const char* what() const noexcept override;
};

namespace tvutil2 {

/// Out of line, so that the checks of small inline functions stay small.
[[noreturn]] TVUTIL_API void throw_invalid_argument();

}  // namespace tvutil2
