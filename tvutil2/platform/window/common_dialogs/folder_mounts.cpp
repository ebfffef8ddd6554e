#include "tvutil2/platform/window/common_dialogs/folder_mounts.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>

namespace tvutil2 {
namespace {

// File systems that lie on another machine.
constexpr std::string_view kRemote[] = {
    "9p",   "afs",  "ceph",  "cifs",  "davfs",       "fuse.sshfs", "ncpfs",      "nfs",
    "nfs4", "smb3", "smbfs", "sshfs", "fuse.rclone", "fuse.s3fs",  "fuse.davfs2"};
constexpr std::string_view kRoomsOfMounts[] = {"/media/", "/mnt/", "/run/media/"};

bool is_remote(std::string_view type) {
    return std::ranges::find(kRemote, type) != std::end(kRemote);
}

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

struct Mount {
    std::string point;
    std::string_view type;
};

// "36 35 98:0 /root /mount/point options optional... - type source more"
std::optional<Mount> mount_in(std::string_view line) {
    std::array<std::string_view, 5> fields;
    for (auto& field : fields) field = next_field(line);
    const auto dash = line.find(" - ");
    if (dash == std::string_view::npos) return std::nullopt;
    line.remove_prefix(dash + 3);
    return Mount{unescaped(fields[4]), next_field(line)};
}

std::vector<Mount> mounts_in(std::string_view lines) {
    std::vector<Mount> mounts;
    while (!lines.empty()) {
        const auto end = std::min(lines.find('\n'), lines.size());
        if (auto mount = mount_in(lines.substr(0, end))) mounts.push_back(std::move(*mount));
        lines.remove_prefix(std::min(end + 1, lines.size()));
    }
    return mounts;
}

}  // namespace

std::vector<std::string> mounts_of_use(std::string_view lines) {
    std::vector<std::string> points;
    for (auto& [point, type] : mounts_in(lines)) {
        bool is_of_use = is_remote(type);
        for (const auto room : kRoomsOfMounts) is_of_use = is_of_use || point.starts_with(room);
        const bool is_new = std::ranges::find(points, point) == points.end();
        if (is_of_use && is_new) points.push_back(std::move(point));
    }
    return points;
}

std::set<std::string> asking_mounts(std::string_view lines, const std::string& folder) {
    std::set<std::string> names;
    for (const auto& [point, type] : mounts_in(lines)) {
        const auto end = point.rfind('/');
        const bool asks = is_remote(type) || type.starts_with("fuse");
        if (asks && end == folder.size() && point.starts_with(folder)) {
            names.insert(point.substr(end + 1));
        }
    }
    return names;
}

std::string mount_lines() {
    std::ifstream file("/proc/self/mountinfo");
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace tvutil2
