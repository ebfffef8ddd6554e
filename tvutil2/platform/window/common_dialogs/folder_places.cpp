#include "tvutil2/platform/window/common_dialogs/folder_places.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/known_folders.h"
#include "tvutil2/platform/files/user_dirs.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace tvutil2 {
namespace {

// File systems that lie on another machine.
constexpr std::string_view kRemote[] = {
    "9p",   "afs",  "ceph",  "cifs",  "davfs",       "fuse.sshfs", "ncpfs",      "nfs",
    "nfs4", "smb3", "smbfs", "sshfs", "fuse.rclone", "fuse.s3fs",  "fuse.davfs2"};
constexpr std::string_view kRoomsOfMounts[] = {"/media/", "/mnt/", "/run/media/"};

// The fields of a line, up to the next space.
std::string_view next_field(std::string_view& line) {
    const auto end = std::min(line.find(' '), line.size());
    const auto field = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    return field;
}

// A space, a tab, a line's end and a backslash stand there as three octal digits.
std::string unescaped(std::string_view field) {
    std::string text;
    const auto is_digit = [](char c) { return c >= '0' && c <= '7'; };
    for (std::size_t i = 0; i < field.size(); ++i) {
        const bool is_escape = field[i] == '\\' && i + 3 < field.size() && is_digit(field[i + 1]) &&
                               is_digit(field[i + 2]) && is_digit(field[i + 3]);
        if (is_escape) {
            text += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 +
                                      (field[i + 3] - '0'));
            i += 3;
        } else {
            text += field[i];
        }
    }
    return text;
}

// "36 35 98:0 /root /mount/point options optional... - type source more": the mount point; empty
// for one that isn't a person's.
std::string mount_of_use(std::string_view line) {
    std::array<std::string_view, 5> fields;
    for (auto& field : fields) field = next_field(line);
    const auto dash = line.find(" - ");
    if (dash == std::string_view::npos) return {};
    line.remove_prefix(dash + 3);
    const auto type = next_field(line);
    auto point = unescaped(fields[4]);
    const bool is_roomed = std::ranges::any_of(
        kRoomsOfMounts, [&](std::string_view room) { return point.starts_with(room); });
    const bool is_remote = std::ranges::find(kRemote, type) != std::end(kRemote);
    return is_roomed || is_remote ? point : std::string{};
}

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

std::vector<std::string> mounts_of_use(std::string_view lines) {
    std::vector<std::string> points;
    while (!lines.empty()) {
        const auto end = std::min(lines.find('\n'), lines.size());
        auto point = mount_of_use(lines.substr(0, end));
        lines.remove_prefix(std::min(end + 1, lines.size()));
        if (!point.empty() && std::ranges::find(points, point) == points.end()) {
            points.push_back(std::move(point));
        }
    }
    return points;
}

std::vector<FolderPlace> places_of_person() {
    using Kind = FolderPlace::Kind;
    std::vector<FolderPlace> places;
    add_known(places, Kind::home, CSIDL_PROFILE);
    add_known(places, Kind::desktop, CSIDL_DESKTOPDIRECTORY);
    add_known(places, Kind::documents, CSIDL_PERSONAL);
    add_downloads(places);
    for (const auto& root : drive_roots()) add_host(places, Kind::drive, root.empty() ? "/" : root);
    std::ifstream file("/proc/self/mountinfo");
    const std::string lines{std::istreambuf_iterator<char>(file), {}};
    for (const auto& point : mounts_of_use(lines)) add_host(places, Kind::mount, point);
    return places;
}

}  // namespace tvutil2
