// What is done through a file's handle.
#include "tvutil2/platform/files/files.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/file_object.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

using tvutil2::fail_with;
using tvutil2::fail_with_errno;
using tvutil2::FileObject;
using tvutil2::object_of;

namespace {

// The file, if the handle is one with any of the rights.
std::shared_ptr<FileObject> file_with(HANDLE handle, DWORD rights) {
    auto file = object_of<FileObject>(handle);
    if (file && !file->may(rights)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return file;
}

constexpr DWORD kWriteRights = FILE_WRITE_DATA | FILE_APPEND_DATA;

void put_time(const struct statx_timestamp& time, FILETIME* out) {
    if (out != nullptr) *out = tvutil2::file_time_of(time.tv_sec, time.tv_nsec);
}

timespec host_time(const FILETIME* time) {
    if (time == nullptr) return {0, UTIME_OMIT};
    constexpr std::int64_t kTicksPerSecond = 10000000;
    constexpr std::int64_t kSecondsTo1970 = 11644473600;
    const auto ticks = static_cast<std::int64_t>(tvutil2::ticks_of(*time));
    return {ticks / kTicksPerSecond - kSecondsTo1970, ticks % kTicksPerSecond * 100};
}

}  // namespace

BOOL ReadFile(HANDLE handle, void* buffer, DWORD size, DWORD* read_size, OVERLAPPED* overlapped) {
    if (read_size != nullptr) *read_size = 0;
    const auto file = file_with(handle, FILE_READ_DATA);
    if (!file) return FALSE;
    if (overlapped != nullptr || read_size == nullptr) return fail_with(ERROR_INVALID_PARAMETER);
    ssize_t result = 0;
    do {
        result = read(file->descriptor(), buffer, size);
    } while (result < 0 && errno == EINTR);
    if (result < 0) return fail_with_errno();
    *read_size = static_cast<DWORD>(result);
    return TRUE;
}

BOOL WriteFile(HANDLE handle, const void* data, DWORD size, DWORD* written,
               OVERLAPPED* overlapped) {
    if (written != nullptr) *written = 0;
    const auto file = file_with(handle, kWriteRights);
    if (!file) return FALSE;
    if (overlapped != nullptr || written == nullptr) return fail_with(ERROR_INVALID_PARAMETER);
    const auto* bytes = static_cast<const char*>(data);
    while (*written < size) {
        const auto result = write(file->descriptor(), bytes + *written, size - *written);
        if (result < 0 && errno == EINTR) continue;
        if (result < 0) return fail_with_errno();
        *written += static_cast<DWORD>(result);
    }
    return TRUE;
}

BOOL SetFilePointerEx(HANDLE handle, LARGE_INTEGER distance, LARGE_INTEGER* position,
                      DWORD method) {
    const auto file = object_of<FileObject>(handle);
    if (!file) return FALSE;
    constexpr int kMethods[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (method > FILE_END) return fail_with(ERROR_INVALID_PARAMETER);
    const auto result = lseek(file->descriptor(), distance.QuadPart, kMethods[method]);
    if (result < 0) {
        return errno == EINVAL || errno == EOVERFLOW ? fail_with(ERROR_NEGATIVE_SEEK)
                                                     : fail_with_errno();
    }
    if (position != nullptr) position->QuadPart = result;
    return TRUE;
}

DWORD SetFilePointer(HANDLE handle, LONG low, LONG* high, DWORD method) {
    LARGE_INTEGER distance{};
    distance.QuadPart = low;
    if (high != nullptr) {
        distance.u.LowPart = static_cast<DWORD>(low);
        distance.u.HighPart = *high;
    }
    LARGE_INTEGER position{};
    if (SetFilePointerEx(handle, distance, &position, method) == FALSE) {
        return INVALID_SET_FILE_POINTER;
    }
    if (high != nullptr) *high = position.u.HighPart;
    if (position.u.LowPart == INVALID_SET_FILE_POINTER) SetLastError(ERROR_SUCCESS);
    return position.u.LowPart;
}

BOOL SetEndOfFile(HANDLE handle) {
    const auto file = file_with(handle, FILE_WRITE_DATA);
    if (!file) return FALSE;
    const auto position = lseek(file->descriptor(), 0, SEEK_CUR);
    if (position < 0 || ftruncate(file->descriptor(), position) != 0) return fail_with_errno();
    return TRUE;
}

BOOL GetFileSizeEx(HANDLE handle, LARGE_INTEGER* size) {
    const auto file = object_of<FileObject>(handle);
    if (!file) return FALSE;
    struct stat info {};
    if (fstat(file->descriptor(), &info) != 0) return fail_with_errno();
    size->QuadPart = info.st_size;
    return TRUE;
}

BOOL FlushFileBuffers(HANDLE handle) {
    const auto file = file_with(handle, kWriteRights);
    if (!file) return FALSE;
    return fsync(file->descriptor()) == 0 || fail_with_errno();
}

BOOL GetFileTime(HANDLE handle, FILETIME* created, FILETIME* accessed, FILETIME* written) {
    const auto file = object_of<FileObject>(handle);
    if (!file) return FALSE;
    struct statx info {};
    constexpr unsigned kWanted = STATX_BTIME | STATX_ATIME | STATX_MTIME;
    if (statx(file->descriptor(), "", AT_EMPTY_PATH, kWanted, &info) != 0) return fail_with_errno();
    const bool knows_creation = (info.stx_mask & STATX_BTIME) != 0;
    put_time(knows_creation ? info.stx_btime : info.stx_mtime, created);
    put_time(info.stx_atime, accessed);
    put_time(info.stx_mtime, written);
    return TRUE;
}

BOOL SetFileTime(HANDLE handle, const FILETIME* /*created*/, const FILETIME* accessed,
                 const FILETIME* written) {
    const auto file = file_with(handle, FILE_WRITE_ATTRIBUTES);
    if (!file) return FALSE;
    const timespec times[] = {host_time(accessed), host_time(written)};
    return futimens(file->descriptor(), times) == 0 || fail_with_errno();
}
