#include "tvutil2/platform/files/appended_file.h"

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/sharing.h"

#include <fcntl.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace tvutil2 {
namespace {

// Makes a file that isn't there, under the rules for names that CreateFileW has.
bool make_file(const char16_t* path) {
    const HANDLE file = CreateFileW(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    return file != INVALID_HANDLE_VALUE && CloseHandle(file) != FALSE;
}

// Whether the process is root, or may become it, as it was at its start: not asked for each line.
bool may_be_root() {
    static const bool may_be =
        getauxval(AT_EUID) == 0 || getauxval(AT_UID) == 0 || getauxval(AT_SECURE) != 0;
    return may_be;
}

bool may_be_appended_to(int file) {
    // Whoever isn't root couldn't have opened a read-only file.
    struct stat info {};
    if (may_be_root()) {
        if (!stat_mode(file, info)) return fail_with_errno();
        if (is_read_only(info)) return fail_with(ERROR_ACCESS_DENIED);
    }
    return may_be_shared(file, FILE_APPEND_DATA, FILE_SHARE_READ);
}

// Takes the first bytes of a line back, unless somebody wrote behind them. Nobody begins to
// meanwhile.
void take_back(int file, off_t size) {
    const auto end = lseek(file, 0, SEEK_CUR);  // where the append ended
    struct stat info {};
    const DWORD error = GetLastError();
    if (size > 0 && claim_sharing(file, FILE_WRITE_DATA, FILE_SHARE_READ) &&
        fstat(file, &info) == 0 && info.st_size == end && ftruncate(file, end - size) == 0) {
        SetLastError(error);
    }
}

}  // namespace

AppendedFile::AppendedFile(const char16_t* path) : m_path(path) {
    if (auto host = host_path(m_path)) m_host = std::move(*host);
}

AppendedFile::Result AppendedFile::append(std::string_view bytes) const {
    const auto open_file = [this] {
        // Read access as well, for the marks of others.
        return Descriptor(
            open(m_host.c_str(), O_RDWR | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    };
    auto file = open_file();
    if (!file && errno == ENOENT && make_file(m_path.c_str())) file = open_file();
    if (!file) {
        fail_at(m_host);
        return Result::not_opened;
    }
    if (!may_be_appended_to(file.get())) return Result::not_opened;
    std::size_t written = 0;
    while (written < bytes.size()) {
        const auto size = write(file.get(), bytes.data() + written, bytes.size() - written);
        if (size < 0 && errno == EINTR) continue;
        if (size < 0) {
            fail_with_errno();
            take_back(file.get(), static_cast<off_t>(written));
            return Result::failed;
        }
        written += static_cast<std::size_t>(size);
    }
    return Result::done;
}

}  // namespace tvutil2
