// What is done to files and folders by name.
#include "tvutil2/platform/base/folder_id.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/sharing.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace tvutil2 {

bool claim_for_deletion(const std::string& path, Descriptor& claim) {
    claim =
        Descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW));
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return !claim || claim_sharing(claim.get(), DELETE, kShareAll);
}

bool delete_host_file(const std::string& path) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0) return fail_at(path);
    if (S_ISLNK(info.st_mode)) {
        if (is_folder(path)) return fail_with(ERROR_ACCESS_DENIED);
    } else if (S_ISDIR(info.st_mode) || is_read_only(info)) {
        return fail_with(ERROR_ACCESS_DENIED);
    }
    Descriptor claim;
    if (S_ISREG(info.st_mode) && !claim_for_deletion(path, claim)) return false;
    return unlink(path.c_str()) == 0 || fail_at(path);
}

namespace {

bool rename_without_replacing(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    // Not every file system has that call; then a file made in between would be replaced.
    struct stat info {};
    if (lstat(to.c_str(), &info) == 0) {
        errno = EEXIST;
        return false;
    }
    return rename(from.c_str(), to.c_str()) == 0;
}

bool move_between_file_systems(const std::string& from, const std::string& to, DWORD flags) {
    if ((flags & MOVEFILE_COPY_ALLOWED) == 0) return fail_with(ERROR_NOT_SAME_DEVICE);
    struct stat info {};
    if (lstat(from.c_str(), &info) != 0) return fail_at(from);
    if (S_ISDIR(info.st_mode)) return fail_with(ERROR_ACCESS_DENIED);
    return copy_host_file(from, to,
                          (flags & MOVEFILE_REPLACE_EXISTING) != 0 ? CopyTarget::any
                                                                   : CopyTarget::must_be_new) &&
           (unlink(from.c_str()) == 0 || fail_at(from));
}

// Whether the target's name may be taken by the source; claims what is replaced.
bool may_take_name(const struct stat& from, const std::string& to, DWORD flags, Descriptor& claim) {
    struct stat info {};
    if (lstat(to.c_str(), &info) != 0) return true;
    if ((flags & MOVEFILE_REPLACE_EXISTING) == 0) return fail_with(ERROR_ALREADY_EXISTS);
    if (S_ISDIR(info.st_mode) || S_ISDIR(from.st_mode) ||
        (S_ISREG(info.st_mode) && is_read_only(info))) {
        return fail_with(ERROR_ACCESS_DENIED);
    }
    return !S_ISREG(info.st_mode) || claim_for_deletion(to, claim);
}

}  // namespace

bool move_host_file(const std::string& from, const std::string& to, DWORD flags) {
    struct stat info {};
    if (lstat(from.c_str(), &info) != 0) return fail_at(from);
    Descriptor source_claim;
    Descriptor target_claim;
    if (S_ISREG(info.st_mode) && !claim_for_deletion(from, source_claim)) return false;
    if (S_ISDIR(info.st_mode) && is_drive_root(from)) return fail_with(ERROR_ACCESS_DENIED);
    if (!may_take_name(info, to, flags, target_claim)) return false;
    const bool moved = (flags & MOVEFILE_REPLACE_EXISTING) != 0
                           ? rename(from.c_str(), to.c_str()) == 0
                           : rename_without_replacing(from, to);
    if (moved) return true;
    if (errno == EXDEV) return move_between_file_systems(from, to, flags);
    if (errno == EINVAL) return fail_with(ERROR_ACCESS_DENIED);  // a folder into itself
    return fail_at(errno == ENOENT ? to : from);
}

}  // namespace tvutil2

using tvutil2::fail_at;
using tvutil2::fail_with;
using tvutil2::fail_with_errno;
using tvutil2::host_path_of;
using tvutil2::is_folder_if_it_says_so;

DWORD GetFileAttributesW(const char16_t* path) {
    const auto host = host_path_of(path);
    if (!host || !is_folder_if_it_says_so(path, *host, ERROR_PATH_NOT_FOUND)) {
        return INVALID_FILE_ATTRIBUTES;
    }
    struct stat info {};
    if (lstat(host->c_str(), &info) != 0) {
        fail_at(*host);
        return INVALID_FILE_ATTRIBUTES;
    }
    const auto name = tvutil2::name_in(*host);
    if (!S_ISLNK(info.st_mode) || stat(host->c_str(), &info) != 0) {
        return tvutil2::attributes_of(info, name);
    }
    return (tvutil2::attributes_of(info, name) & ~FILE_ATTRIBUTE_NORMAL) |
           FILE_ATTRIBUTE_REPARSE_POINT;
}

BOOL SetFileAttributesW(const char16_t* path, DWORD attributes) {
    const auto host = host_path_of(path);
    if (!host || !is_folder_if_it_says_so(path, *host, ERROR_PATH_NOT_FOUND)) return FALSE;
    struct stat info {};
    if (stat(host->c_str(), &info) != 0) return fail_at(*host);
    // For a folder the attribute means nothing to the platform; taken as the host's mode it would
    // close the folder to new names.
    if (S_ISDIR(info.st_mode)) return TRUE;
    const bool read_only = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (read_only == tvutil2::is_read_only(info)) return TRUE;
    constexpr mode_t kWriters = S_IWUSR | S_IWGRP | S_IWOTH;
    const mode_t mode = (read_only ? info.st_mode & ~kWriters : info.st_mode | S_IWUSR) & 07777;
    return chmod(host->c_str(), mode) == 0 || fail_at(*host);
}

int _waccess(const char16_t* path, int mode) {
    const auto host = host_path_of(path);
    if (!host || !is_folder_if_it_says_so(path, *host, ERROR_PATH_NOT_FOUND)) {
        errno = ENOENT;
        return -1;
    }
    int error = access(host->c_str(), mode & (R_OK | W_OK)) == 0 ? 0 : errno;
    struct stat info {};
    if (error == 0 && (mode & W_OK) != 0 && stat(host->c_str(), &info) == 0 &&
        !S_ISDIR(info.st_mode) && tvutil2::is_read_only(info)) {
        error = EACCES;
    }
    if (error == 0) return 0;
    errno = error;
    fail_at(*host);
    errno = error;
    return -1;
}

BOOL CreateDirectoryW(const char16_t* path, SECURITY_ATTRIBUTES* /*security*/) {
    const auto host = host_path_of(path);
    if (!host) return FALSE;
    if (mkdir(host->c_str(), 0777) == 0) return TRUE;
    return errno == ENOENT ? fail_with(tvutil2::missing_folder_error(tvutil2::folder_of(*host)))
                           : fail_with_errno();
}

BOOL tvutil2::make_private_folders(const char16_t* path) {
    const auto host = host_path_of(path);
    return host && (make_host_folders(*host, true) || fail_with_errno());
}

BOOL RemoveDirectoryW(const char16_t* path) {
    const auto host = host_path_of(path);
    if (!host) return FALSE;
    struct stat info {};
    if (lstat(host->c_str(), &info) != 0) return fail_at(*host);
    const bool is_link = S_ISLNK(info.st_mode) && tvutil2::is_folder(*host);
    if (!is_link && !S_ISDIR(info.st_mode)) return fail_with(ERROR_DIRECTORY);
    if (!is_link && tvutil2::is_drive_root(*host)) return fail_with(ERROR_ACCESS_DENIED);
    if ((is_link ? unlink(host->c_str()) : rmdir(host->c_str())) == 0) return TRUE;
    return errno == EEXIST ? fail_with(ERROR_DIR_NOT_EMPTY) : fail_at(*host);
}

BOOL DeleteFileW(const char16_t* path) {
    const auto host = host_path_of(path);
    return host && is_folder_if_it_says_so(path, *host) && tvutil2::delete_host_file(*host);
}

BOOL MoveFileExW(const char16_t* from, const char16_t* to, DWORD flags) {
    const auto source = host_path_of(from);
    auto target = source ? host_path_of(to) : std::nullopt;
    if (!target || !is_folder_if_it_says_so(from, *source)) return FALSE;
    // Only a folder may be told to become one.
    if (tvutil2::ends_in_separator(to) && !tvutil2::is_folder(*source)) {
        struct stat info {};
        return lstat(source->c_str(), &info) == 0 ? fail_with(ERROR_INVALID_NAME)
                                                  : fail_at(*source);
    }
    // Found as itself: then what is wanted is another writing of its name.
    if (*source == *target) {
        target = tvutil2::host_path(to, tvutil2::Lookup::last_as_written);
        if (!target) return FALSE;
        struct stat info {};
        if (*source == *target) return lstat(source->c_str(), &info) == 0 || fail_at(*source);
    }
    return tvutil2::move_host_file(*source, *target, flags);
}

BOOL MoveFileW(const char16_t* from, const char16_t* to) {
    return MoveFileExW(from, to, MOVEFILE_COPY_ALLOWED);
}
