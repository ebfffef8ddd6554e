// Bytes at any place of a file, for readers of formats that look at a few parts of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <type_traits>

namespace tvutil2 {

class FileBytes {
  public:
    FileBytes() = default;
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;
    virtual ~FileBytes() = default;

    /// Fills all of `out` with what stands from `offset` on; false when the file ends before that.
    [[nodiscard]] virtual bool read(std::uint64_t offset, std::span<std::byte> out) const = 0;

    /// A number or a structure of them, little endian as the host is.
    template <class T>
    [[nodiscard]] std::optional<T> at(std::uint64_t offset) const {
        static_assert(std::is_trivially_copyable_v<T>);
        T value{};
        if (!read(offset, std::as_writable_bytes(std::span(&value, 1)))) return std::nullopt;
        return value;
    }

    /// Whether that many bytes stand from `offset` on. A size that a file claims is asked for
    /// here before memory of that size is taken.
    [[nodiscard]] bool holds(std::uint64_t offset, std::uint64_t size) const {
        if (size == 0) return true;
        return offset <= UINT64_MAX - size && at<std::byte>(offset + size - 1).has_value();
    }
};

/// Bytes in memory, which must outlive it.
class MemoryBytes : public FileBytes {
  public:
    explicit MemoryBytes(std::span<const std::byte> bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> out) const override {
        if (offset > m_bytes.size() || out.size() > m_bytes.size() - offset) return false;
        if (!out.empty()) std::memcpy(out.data(), m_bytes.data() + offset, out.size());
        return true;
    }

  private:
    std::span<const std::byte> m_bytes;
};

}  // namespace tvutil2
