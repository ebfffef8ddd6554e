// What classes throw whose contract is an HRESULT, where there is nowhere to return it.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <exception>
#include <string>

namespace tvutil2 {

class TVUTIL_API ResultError : public std::exception {
  public:
    explicit ResultError(HRESULT code);
    [[nodiscard]] HRESULT code() const { return m_code; }
    /// "HRESULT 0x" and eight digits.
    [[nodiscard]] const char* what() const noexcept override;

  private:
    HRESULT m_code;
    std::string m_text;
};

/// Throws the code of a failure; success passes.
inline void check_result(HRESULT result) {
    if (FAILED(result)) throw ResultError(result);
}

}  // namespace tvutil2
