// Owner of a file descriptor of the host.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

namespace tvutil2 {

/// Closes what it holds; the last error and errno are the caller's to look at before.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int value) : m_value(value) {}
    Descriptor(Descriptor&& other) noexcept : m_value(std::exchange(other.m_value, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_value, other.m_value);
        return *this;
    }
    ~Descriptor() {
        if (m_value >= 0) ::close(m_value);
    }

    [[nodiscard]] int get() const { return m_value; }
    [[nodiscard]] explicit operator bool() const { return m_value >= 0; }
    /// Gives the descriptor up.
    [[nodiscard]] int release() { return std::exchange(m_value, -1); }

  private:
    int m_value = -1;
};

/// Writes all of it, through interruptions. False with errno.
[[nodiscard]] inline bool write_all(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

}  // namespace tvutil2
