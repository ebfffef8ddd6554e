// An executable's file, opened to read a few parts of it or all of it.
#pragma once

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/system/file_bytes.h"

#include <optional>
#include <utility>

struct stat;

namespace tvutil2 {

/// Fills all of `out` from a descriptor; false when the file ends before that or can't be read.
[[nodiscard]] bool read_at(int file, std::uint64_t offset, std::span<std::byte> out);

class ExecutableFile : public FileBytes {
  public:
    /// Nothing, with the last error: ERROR_ACCESS_DENIED for a folder, ERROR_BAD_EXE_FORMAT for a
    /// pipe or a device, ERROR_SHARING_VIOLATION while a handle forbids reading.
    [[nodiscard]] static std::optional<ExecutableFile> open(const char16_t* path);

    ExecutableFile(ExecutableFile&& other) noexcept
        : m_file(std::move(other.m_file)), m_size(other.m_size) {}

    [[nodiscard]] bool read(std::uint64_t offset, std::span<std::byte> out) const override;
    /// Bytes that it had when it was opened.
    [[nodiscard]] std::uint64_t size() const { return m_size; }
    /// What the host tells of it now; false with the last error.
    [[nodiscard]] bool stat(struct stat& info) const;
    /// It will be read from its beginning to its end.
    void will_be_read_through() const;

  private:
    ExecutableFile(Descriptor file, std::uint64_t size) : m_file(std::move(file)), m_size(size) {}

    Descriptor m_file;
    std::uint64_t m_size;
};

}  // namespace tvutil2
