// CopyFileW.
#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/draft.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/folder_listing.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/sharing.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

namespace tvutil2 {
namespace {

// Up to here two calls through a buffer are cheaper than the kernel's own road.
constexpr std::size_t kBufferSize = std::size_t{64} << 10;

// From both file pointers to the end of the source. `ends_short`: a read that doesn't fill the
// buffer has met the end, which is so for files on a disk and saves a call for each small one.
bool copy_rest_through_buffer(int from, int to, std::size_t buffer_size, bool ends_short = false) {
    const auto buffer = std::make_unique_for_overwrite<char[]>(buffer_size);
    for (;;) {
        const auto size = read(from, buffer.get(), buffer_size);
        if (size < 0 && errno == EINTR) continue;
        if (size <= 0) return size == 0;
        if (!write_all(to, {buffer.get(), static_cast<std::size_t>(size)})) return false;
        if (ends_short && static_cast<std::size_t>(size) < buffer_size) return true;
    }
}

bool is_refusal(int error) {
    return error == ENOSYS || error == EXDEV || error == EINVAL || error == EOPNOTSUPP ||
           error == EPERM || error == EBADF;
}

// Inside the kernel, or by sharing blocks where the file system can; what that road doesn't take
// goes through a buffer. `size` units from both file pointers.
bool copy_range(int from, int to, off_t size) {
    constexpr off_t kMostAtOnce = off_t{1} << 30;
    while (size > 0) {
        const auto copied = copy_file_range(
            from, nullptr, to, nullptr, static_cast<std::size_t>(std::min(size, kMostAtOnce)), 0);
        if (copied < 0 && errno == EINTR) continue;
        if (copied < 0 && !is_refusal(errno)) return false;
        if (copied <= 0) return copy_rest_through_buffer(from, to, 4 * kBufferSize);
        size -= copied;
    }
    return true;
}

// A file with holes: only what holds data is copied, so that a huge empty one stays cheap.
bool copy_sparse(int from, int to, off_t size) {
    off_t position = 0;
    while (position < size) {
        const off_t data = lseek(from, position, SEEK_DATA);
        if (data < 0 && errno == ENXIO) break;  // a hole up to the end
        if (data < 0) return false;
        const off_t end = lseek(from, data, SEEK_HOLE);
        if (end < 0 || lseek(from, data, SEEK_SET) < 0 || lseek(to, data, SEEK_SET) < 0 ||
            !copy_range(from, to, end - data)) {
            return false;
        }
        position = end;
    }
    return ftruncate(to, size) == 0;
}

bool copy_content(int from, int to, const struct stat& info) {
    if (info.st_size <= static_cast<off_t>(kBufferSize)) {
        // Files below /proc have size 0 and content all the same: read on to the end.
        const auto size = static_cast<std::size_t>(std::max<off_t>(info.st_size, 4095)) + 1;
        return copy_rest_through_buffer(from, to, size, info.st_size > 0);
    }
    constexpr off_t kBlock = 512;
    if (info.st_blocks < info.st_size / kBlock) return copy_sparse(from, to, info.st_size);
    return copy_range(from, to, info.st_size) && copy_rest_through_buffer(from, to, kBufferSize);
}

bool copy_all(int from, int to, const struct stat& info) {
    return (copy_content(from, to, info) || fail_with_errno()) && keep_times_and_mode(to, info);
}

Descriptor open_source(const std::string& path, struct stat& info) {
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (!file || fstat(file.get(), &info) != 0) {
        fail_at(path);
        return {};
    }
    if (!S_ISREG(info.st_mode)) {
        SetLastError(S_ISDIR(info.st_mode) ? ERROR_ACCESS_DENIED : ERROR_NOT_SUPPORTED);
        return {};
    }
    if (!may_be_read(file.get())) return {};
    return file;
}

// Where the file system can, the new file has no name before it is whole. Empty when it can't.
Descriptor open_nameless(const std::string& to, const struct stat& info) {
    const std::string folder(folder_of(to));
    return Descriptor(open(folder.empty() ? "/" : folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC,
                           info.st_mode & 0777));
}

bool give_name(int file, const std::string& to) {
    const auto link = "/proc/self/fd/" + std::to_string(file);
    return linkat(AT_FDCWD, link.c_str(), AT_FDCWD, to.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

bool fill_new(int from, const struct stat& info, const std::string& to, const Descriptor& target) {
    if (claim_sharing(target.get(), FILE_WRITE_DATA, 0) && copy_all(from, target.get(), info)) {
        return true;
    }
    unlink(to.c_str());
    return false;
}

enum class Made { yes, failed, taken };

Made copy_to_new(int from, const struct stat& info, const std::string& to) {
    if (const auto nameless = open_nameless(to, info)) {
        if (!copy_all(from, nameless.get(), info)) return Made::failed;
        if (give_name(nameless.get(), to)) return Made::yes;
        if (errno == EEXIST) return Made::taken;
        if (lseek(from, 0, SEEK_SET) < 0) return fail_with_errno(), Made::failed;
    }
    const Descriptor target(
        open(to.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOCTTY, info.st_mode & 0777));
    if (target) return fill_new(from, info, to, target) ? Made::yes : Made::failed;
    if (errno == EEXIST) return Made::taken;
    return fail_at(to), Made::failed;
}

bool may_replace(const std::string& to, const struct stat& from, struct stat& info,
                 Descriptor& claim) {
    if (stat(to.c_str(), &info) != 0) return fail_at(to);
    if (info.st_dev == from.st_dev && info.st_ino == from.st_ino) {
        return fail_with(ERROR_SHARING_VIOLATION);
    }
    if (!S_ISREG(info.st_mode) || is_read_only(info)) return fail_with(ERROR_ACCESS_DENIED);
    claim = Descriptor(open(to.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    // One that can't even be read can't be marked, and is still the caller's to replace.
    return !claim || claim_sharing(claim.get(), FILE_WRITE_DATA, 0);
}

// The new content gets the old one's name only when it is whole.
bool copy_over(int from, const struct stat& info, const std::string& name) {
    const auto to = behind_links(name);
    struct stat old {};
    Descriptor claim;
    if (!may_replace(to, info, old, claim)) return false;
    const auto folder = open_folder(std::string(folder_of(to)));
    if (!folder) return fail_at(to);
    Draft draft(folder.get());
    if (!draft || lseek(from, 0, SEEK_SET) < 0) return fail_with_errno();
    // Nobody gets at the content who couldn't get at both files before.
    const auto mode = old.st_mode & info.st_mode & 0777;
    return (copy_content(from, draft.file(), info) && draft.take_rights_of(old, to, mode) &&
            keep_times(draft.file(), info) && draft.take_place_of(std::string(name_in(to)))) ||
           fail_with_errno();
}

bool copy_opened(int source, const struct stat& info, const std::string& to, CopyTarget target) {
    struct stat there {};
    const bool is_there = target != CopyTarget::is_new && lstat(to.c_str(), &there) == 0;
    const auto made = is_there ? Made::taken : copy_to_new(source, info, to);
    if (made != Made::taken) return made == Made::yes;
    if (target == CopyTarget::must_be_new) return fail_with(ERROR_FILE_EXISTS);
    return copy_over(source, info, to);
}

// Under its exact name first, which needs no look-up.
Descriptor open_source_of(const char16_t* path, struct stat& info) {
    const auto written = host_path_of(path, Lookup::none);
    if (!written) return {};
    auto source = open_source(*written, info);
    if (source && ends_in_separator(path)) return fail_with(ERROR_INVALID_NAME), Descriptor();
    if (source ||
        (GetLastError() != ERROR_FILE_NOT_FOUND && GetLastError() != ERROR_PATH_NOT_FOUND)) {
        return source;
    }
    const auto found = host_path_of(path);
    if (!found || !is_folder_if_it_says_so(path, *found)) return {};
    return open_source(*found, info);
}

bool copy_platform_link(const char16_t* from, const char16_t* to, bool fail_if_exists) {
    const auto source = host_path_of(from);
    const auto target = source ? host_path_of(to) : std::nullopt;
    return target && copy_host_link(*source, *target, fail_if_exists);
}

bool is_link(const char16_t* path) {
    const auto attributes = GetFileAttributesW(path);
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

}  // namespace

bool copy_host_file(const std::string& from, const std::string& to, CopyTarget target) {
    struct stat info {};
    const auto source = open_source(from, info);
    return source && copy_opened(source.get(), info, to, target);
}

bool copy_host_link(const std::string& from, const std::string& to, bool fail_if_exists) {
    std::array<char, PATH_MAX> text{};
    if (readlink(from.c_str(), text.data(), text.size() - 1) < 0) return fail_at(from);
    if (symlink(text.data(), to.c_str()) == 0) return true;
    if (errno != EEXIST) return fail_at(to);
    if (fail_if_exists) return fail_with(ERROR_FILE_EXISTS);
    return (unlink(to.c_str()) == 0 && symlink(text.data(), to.c_str()) == 0) || fail_with_errno();
}

}  // namespace tvutil2

BOOL CopyFileW(const char16_t* from, const char16_t* to, BOOL fail_if_exists) {
    return CopyFileExW(from, to, nullptr, nullptr, nullptr,
                       fail_if_exists != FALSE ? COPY_FILE_FAIL_IF_EXISTS : 0);
}

BOOL CopyFileExW(const char16_t* from, const char16_t* to, void* /*progress*/, void* /*data*/,
                 BOOL* /*cancel*/, DWORD flags) {
    const bool fail_if_exists = (flags & COPY_FILE_FAIL_IF_EXISTS) != 0;
    if ((flags & COPY_FILE_COPY_SYMLINK) != 0 && tvutil2::is_link(from)) {
        return tvutil2::copy_platform_link(from, to, fail_if_exists);
    }
    struct stat info {};
    const auto source = tvutil2::open_source_of(from, info);
    const auto target =
        source ? tvutil2::host_path_of(to, tvutil2::Lookup::likely_new) : std::nullopt;
    if (target && tvutil2::ends_in_separator(to)) {
        return tvutil2::fail_with(tvutil2::is_folder(*target) ? ERROR_ACCESS_DENIED
                                                              : ERROR_INVALID_NAME);
    }
    return target && tvutil2::copy_opened(source.get(), info, *target,
                                          fail_if_exists ? tvutil2::CopyTarget::must_be_new
                                                         : tvutil2::CopyTarget::any);
}
