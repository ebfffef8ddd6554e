#include "tvutil2/platform/base/folder_id.h"

#include "tvutil2/platform/base/host_path.h"

#include <sys/stat.h>

#include <algorithm>

namespace tvutil2 {

FolderId folder_id(const struct stat& info) {
    return {info.st_dev, info.st_ino};
}

std::optional<FolderId> folder_id(const std::string& host) {
    struct stat info {};
    if (stat(host.empty() ? "/" : host.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        return std::nullopt;
    }
    return folder_id(info);
}

std::optional<FolderId> folder_id(const char16_t* path) {
    const auto host = path != nullptr ? host_path(path) : std::nullopt;
    return host ? folder_id(*host) : std::nullopt;
}

bool is_drive_root(const std::string& host) {
    const auto id = folder_id(host);
    const auto roots = drive_roots();
    return id && std::any_of(roots.begin(), roots.end(),
                             [&id](const std::string& root) { return folder_id(root) == id; });
}

bool is_drive_root(const char16_t* path) {
    const auto host = path != nullptr ? host_path(path) : std::nullopt;
    return host && is_drive_root(*host);
}

}  // namespace tvutil2
