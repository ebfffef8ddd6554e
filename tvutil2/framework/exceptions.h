// What the framework's classes throw.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

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

/// The system refused a resource, such as a mutex. `m_lOsError` is the last error.
class TVUTIL_API CResourceException : public CException {
  public:
    explicit CResourceException(DWORD error) : m_lOsError(error) {}
    [[nodiscard]] const char* what() const noexcept override;

    DWORD m_lOsError;
};

/// What the person has given can't be taken; it has been said.
class TVUTIL_API CUserException : public CException {
  public:
    [[nodiscard]] const char* what() const noexcept override;
};

namespace tvutil2 {

/// Out of line, so that the checks of small inline functions stay small.
[[noreturn]] TVUTIL_API void throw_invalid_argument();

}  // namespace tvutil2
