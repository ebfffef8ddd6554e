#include "tvutil2/platform/files/host_files.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace tvutil2 {

bool stat_mode(int file, struct stat& info) {
    struct statx answer {};
    if (statx(file, "", AT_EMPTY_PATH, STATX_TYPE | STATX_MODE, &answer) != 0) return false;
    info.st_mode = answer.stx_mode;
    return true;
}

bool is_read_only(const struct stat& info) {
    return (info.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

DWORD attributes_of(const struct stat& info, std::string_view name) {
    DWORD attributes = 0;
    if (S_ISDIR(info.st_mode)) attributes |= FILE_ATTRIBUTE_DIRECTORY;
    if (S_ISLNK(info.st_mode)) {
        attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    } else if (is_read_only(info)) {
        attributes |= FILE_ATTRIBUTE_READONLY;
    }
    if (name.starts_with('.') && name != "." && name != "..") attributes |= FILE_ATTRIBUTE_HIDDEN;
    return attributes != 0 ? attributes : FILE_ATTRIBUTE_NORMAL;
}

std::string_view name_in(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

std::string_view folder_of(std::string_view path) {
    const auto slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

bool is_folder(const std::string& path) {
    struct stat info {};
    return stat(path.empty() ? "/" : path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool fail_at(const std::string& path) {
    if (errno != ENOENT) return fail_with_errno();
    const std::string folder(folder_of(path));
    return fail_with(is_folder(folder) ? ERROR_FILE_NOT_FOUND : missing_folder_error(folder));
}

DWORD missing_folder_error(std::string_view folder) {
    const bool is_pattern = folder.find_first_of("*?") != std::string_view::npos;
    return is_pattern ? ERROR_INVALID_NAME : ERROR_PATH_NOT_FOUND;
}

bool is_folder_if_it_says_so(const char16_t* path, const std::string& host, DWORD error) {
    struct stat info {};
    return !ends_in_separator(path) || stat(host.c_str(), &info) != 0 || S_ISDIR(info.st_mode) ||
           fail_with(error);
}

std::optional<std::string> host_path_of(const char16_t* path, Lookup lookup) {
    return host_path(path != nullptr ? std::u16string_view(path) : std::u16string_view(), lookup);
}

bool keep_times(int target, const struct stat& source) {
    const timespec times[] = {source.st_atim, source.st_mtim};
    return futimens(target, times) == 0;
}

bool keep_times_and_mode(int target, const struct stat& source) {
    constexpr mode_t kPermissions = 0777;
    struct stat info {};
    if (fstat(target, &info) != 0) return fail_with_errno();
    // The umask took bits away when the target was made.
    if (((info.st_mode ^ source.st_mode) & kPermissions) != 0 &&
        fchmod(target, source.st_mode & kPermissions) != 0) {
        return fail_with_errno();
    }
    return keep_times(target, source) || fail_with_errno();
}

}  // namespace tvutil2
