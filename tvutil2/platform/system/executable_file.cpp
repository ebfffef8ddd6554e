#include "tvutil2/platform/system/executable_file.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/sharing.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace tvutil2 {

bool read_at(int file, std::uint64_t offset, std::span<std::byte> out) {
    std::size_t filled = 0;
    while (filled < out.size()) {
        const auto size = pread(file, out.data() + filled, out.size() - filled,
                                static_cast<off_t>(offset + filled));
        if (size < 0 && errno == EINTR) continue;
        if (size <= 0) return false;
        filled += static_cast<std::size_t>(size);
    }
    return true;
}

std::optional<ExecutableFile> ExecutableFile::open(const char16_t* path) {
    const auto fail = [](DWORD error) {
        SetLastError(error);
        return std::nullopt;
    };
    const auto host = host_path_of(path);
    if (!host) return std::nullopt;
    // O_NONBLOCK: a pipe with a file's name must not hold the caller.
    Descriptor file(::open(host->c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat info {};
    if (!file || fstat(file.get(), &info) != 0) {
        fail_at(*host);
        return std::nullopt;
    }
    if (S_ISDIR(info.st_mode)) return fail(ERROR_ACCESS_DENIED);
    if (!S_ISREG(info.st_mode)) return fail(ERROR_BAD_EXE_FORMAT);
    if (!may_be_read(file.get())) return std::nullopt;
    return ExecutableFile(std::move(file), static_cast<std::uint64_t>(info.st_size));
}

bool ExecutableFile::read(std::uint64_t offset, std::span<std::byte> out) const {
    return read_at(m_file.get(), offset, out);
}

bool ExecutableFile::stat(struct stat& info) const {
    return fstat(m_file.get(), &info) == 0 || fail_with_errno();
}

void ExecutableFile::will_be_read_through() const {
    posix_fadvise(m_file.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
}

}  // namespace tvutil2
