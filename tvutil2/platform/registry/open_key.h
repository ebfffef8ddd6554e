// Owner of a handle to a key of the registry.
#pragma once

#include "tvutil2/platform/registry/registry.h"

#include <utility>

namespace tvutil2 {

/// Holds none until one was opened; what failed to open leaves it so. One of these opens once.
class OpenKey {
  public:
    OpenKey() = default;
    OpenKey(OpenKey&& other) noexcept : m_key(std::exchange(other.m_key, nullptr)) {}
    OpenKey& operator=(OpenKey&& other) noexcept {
        std::swap(m_key, other.m_key);
        return *this;
    }
    ~OpenKey() {
        if (m_key != nullptr) RegCloseKey(m_key);
    }

    [[nodiscard]] HKEY get() const { return m_key; }
    [[nodiscard]] explicit operator bool() const { return m_key != nullptr; }

    /// The platform's error code, as from RegOpenKeyExW.
    LONG open(HKEY below, const char16_t* name, DWORD access) {
        return kept(RegOpenKeyExW(below, name, 0, access, &m_key));
    }
    /// Makes it where it is missing; `disposition` may be null.
    LONG create(HKEY below, const char16_t* name, DWORD access, DWORD* disposition = nullptr) {
        return kept(
            RegCreateKeyExW(below, name, 0, nullptr, 0, access, nullptr, &m_key, disposition));
    }

  private:
    LONG kept(LONG error) {
        if (error != LONG{ERROR_SUCCESS}) m_key = nullptr;
        return error;
    }

    HKEY m_key = nullptr;
};

}  // namespace tvutil2
