#include "tvutil2/platform/base/result_error.h"

#include <cstdio>

namespace tvutil2 {

ResultError::ResultError(HRESULT code) : m_code(code) {
    char text[24];
    std::snprintf(text, sizeof text, "HRESULT 0x%08X", static_cast<unsigned int>(code));
    m_text = text;
}

const char* ResultError::what() const noexcept {
    return m_text.c_str();
}

}  // namespace tvutil2
