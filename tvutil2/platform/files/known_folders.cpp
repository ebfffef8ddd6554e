#include "tvutil2/platform/files/known_folders.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/user_dirs.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <string>

namespace tvutil2 {
namespace {

HRESULT result_of(DWORD error) {
    constexpr DWORD kSystemError = 0x80070000;
    return static_cast<HRESULT>(kSystemError | error);
}

struct Place {
    std::string path;
    bool may_be_made = true;
};

// One that the person may have moved.
Place own_folder(const char* variable, const char* usual, bool as_moved) {
    const auto home = person_folder();
    if (as_moved) {
        if (auto moved = user_dir(variable)) {
            const bool is_at_home = *moved == home || moved->starts_with(home + "/");
            return {std::move(*moved), is_at_home};
        }
    }
    return {(home == "/" ? "" : home) + usual};
}

std::optional<Place> place_of(int folder, bool as_moved) {
    switch (folder) {
        case CSIDL_DESKTOP:
        case CSIDL_DESKTOPDIRECTORY:
            return own_folder("XDG_DESKTOP_DIR", "/Desktop", as_moved);
        case CSIDL_PERSONAL:
            return own_folder("XDG_DOCUMENTS_DIR", "/Documents", as_moved);
        case CSIDL_APPDATA:
            return Place{config_folder()};
        case CSIDL_LOCAL_APPDATA:
            return Place{data_folder()};
        case CSIDL_COMMON_APPDATA:
            return Place{common_folder()};
        case CSIDL_PROFILE:
            return Place{person_folder()};
        default:
            return std::nullopt;
    }
}

// S_OK when the folder is there, now; S_FALSE when it could be.
HRESULT presence(const Place& place, int folder, bool create) {
    struct stat info {};
    if (stat(place.path.c_str(), &info) == 0) {
        return S_ISDIR(info.st_mode) ? S_OK : result_of(ERROR_DIRECTORY);
    }
    if (errno != ENOENT) return result_of(error_from_errno(errno));
    if (!place.may_be_made) return result_of(ERROR_PATH_NOT_FOUND);
    if (!create) return S_FALSE;
    // The base directory rules: what is made for a person is private.
    const bool is_private = folder != CSIDL_COMMON_APPDATA;
    return make_host_folders(place.path, is_private) ? S_OK : result_of(error_from_errno(errno));
}

HRESULT folder_path(int folder, bool create, bool as_moved, char16_t* path) {
    const auto place = place_of(folder, as_moved);
    if (!place) return E_INVALIDARG;
    const auto text = platform_path(place->path);
    if (!text) return result_of(ERROR_INVALID_NAME);
    if (text->size() >= MAX_PATH) return result_of(ERROR_INSUFFICIENT_BUFFER);
    const auto result = presence(*place, folder, create);
    if (SUCCEEDED(result)) path[text->copy(path, MAX_PATH - 1)] = 0;
    return result;
}

// Owned by the caller and closed to all others. Whoever may write to the parent can put a link or
// a folder of their own in its place, but can't give one to the caller.
bool make_private(const std::string& folder) {
    if (mkdir(folder.c_str(), 0700) == 0) return true;
    if (errno != EEXIST) return fail_with_errno();
    struct stat info {};
    if (lstat(folder.c_str(), &info) != 0) return fail_with_errno();
    if (!S_ISDIR(info.st_mode) || info.st_uid != geteuid()) return fail_with(ERROR_ACCESS_DENIED);
    if ((info.st_mode & 077) == 0) return true;
    return chmod(folder.c_str(), 0700) == 0 || fail_with_errno();
}

std::optional<std::string> temporary_folder() {
    if (const auto root = profile_root(); !root.empty()) {
        auto folder = root + "/temp";
        return make_private(folder) ? std::optional(std::move(folder)) : std::nullopt;
    }
    const char* set = secure_getenv("TMPDIR");
    const std::string shared = set != nullptr && *set == '/' ? set : "/tmp";
    if (auto folder = shared + "/tvutil2-" + std::to_string(geteuid()); make_private(folder)) {
        return folder;
    }
    const auto own = cache_folder() + "/tvutil2";
    if (!make_host_folders(own, true)) {
        fail_with_errno();
        return std::nullopt;
    }
    auto folder = own + "/temp";
    return make_private(folder) ? std::optional(std::move(folder)) : std::nullopt;
}

}  // namespace
}  // namespace tvutil2

HRESULT SHGetFolderPathW(HWND /*owner*/, int folder, HANDLE token, DWORD type, char16_t* path) {
    if (path == nullptr) return E_INVALIDARG;
    *path = 0;
    if (token != nullptr || type > SHGFP_TYPE_DEFAULT) return E_INVALIDARG;
    return tvutil2::folder_path(folder & ~CSIDL_FLAG_CREATE, (folder & CSIDL_FLAG_CREATE) != 0,
                                type == SHGFP_TYPE_CURRENT, path);
}

DWORD GetTempPathW(DWORD size, char16_t* buffer) {
    const auto folder = tvutil2::temporary_folder();
    if (!folder) return 0;
    auto text = tvutil2::platform_path(*folder);
    if (!text) {
        SetLastError(ERROR_INVALID_NAME);
        return 0;
    }
    *text += u'\\';
    const auto length = static_cast<DWORD>(text->size());
    if (size <= length || buffer == nullptr) return length + 1;
    buffer[text->copy(buffer, length)] = 0;
    return length;
}
