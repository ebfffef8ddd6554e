#include "tvutil2/platform/window/common_dialogs/folder_places.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/known_folders.h"
#include "tvutil2/platform/files/user_dirs.h"
#include "tvutil2/platform/window/common_dialogs/folder_mounts.h"

#include <algorithm>
#include <string>
#include <utility>

namespace tvutil2 {
namespace {

void add(std::vector<FolderPlace>& places, FolderPlace::Kind kind, std::u16string path) {
    const auto is_it = [&](const FolderPlace& each) { return each.path == path; };
    if (std::ranges::none_of(places, is_it)) places.push_back({kind, std::move(path)});
}

void add_known(std::vector<FolderPlace>& places, FolderPlace::Kind kind, int folder) {
    char16_t path[MAX_PATH];
    if (SHGetFolderPathW(nullptr, folder, nullptr, SHGFP_TYPE_CURRENT, path) == S_OK) {
        add(places, kind, path);
    }
}

void add_host(std::vector<FolderPlace>& places, FolderPlace::Kind kind, const std::string& host) {
    if (auto path = platform_path(host)) add(places, kind, std::move(*path));
}

void add_downloads(std::vector<FolderPlace>& places) {
    const auto folder = user_dir("XDG_DOWNLOAD_DIR").value_or(person_folder() + "/Downloads");
    if (is_folder(folder)) add_host(places, FolderPlace::Kind::downloads, folder);
}

}  // namespace

std::vector<FolderPlace> places_of_person() {
    using Kind = FolderPlace::Kind;
    std::vector<FolderPlace> places;
    add_known(places, Kind::home, CSIDL_PROFILE);
    add_known(places, Kind::desktop, CSIDL_DESKTOPDIRECTORY);
    add_known(places, Kind::documents, CSIDL_PERSONAL);
    add_downloads(places);
    for (const auto& root : drive_roots()) add_host(places, Kind::drive, root.empty() ? "/" : root);
    for (const auto& point : mounts_of_use(mount_lines())) add_host(places, Kind::mount, point);
    return places;
}

}  // namespace tvutil2
