// Owner of a file descriptor of the host.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

namespace tvutil2 {

/// A descriptor that isn't one of the standard files', and the same open file. In a program that
/// has closed one of those, the host gives its number to the next file that is opened, and all that
/// the program prints would go there.
[[nodiscard]] inline int beyond_standard_files(int descriptor) {
    if (descriptor < 0 || descriptor > STDERR_FILENO) return descriptor;
    const bool is_inherited = (::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0;
    const int moved =
        ::fcntl(descriptor, is_inherited ? F_DUPFD : F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (moved < 0) return descriptor;
    ::close(descriptor);
    return moved;
}

/// Closes what it holds; the last error and errno are the caller's to look at before. What it is
/// given may get another number, see beyond_standard_files.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int value) : m_value(beyond_standard_files(value)) {}
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
