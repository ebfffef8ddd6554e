#include "tvutil2/platform/base/host_path.h"

#include "tvutil2/platform/base/folder_names.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <span>
#include <vector>

namespace tvutil2 {
namespace {

struct Drive {
    char16_t letter;
    std::string root;  // without a trailing slash; empty for "/"
};

std::vector<Drive> mapped_drives() {
    std::vector<Drive> drives;
    const char* value = secure_getenv("TVUTIL_DRIVES");
    std::string_view rest = value != nullptr ? value : "";
    while (!rest.empty()) {
        const auto end = std::min(rest.find(';'), rest.size());
        auto entry = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (entry.size() < 3 || entry[1] != '=' || entry[2] != '/') continue;
        auto root = std::string(entry.substr(2));
        while (!root.empty() && root.back() == '/') root.pop_back();
        drives.push_back({to_upper(static_cast<char16_t>(entry[0])), std::move(root)});
    }
    return drives;
}

bool is_separator(char16_t c) {
    return c == u'\\' || c == u'/';
}

struct Root {
    std::string folder;       // without a trailing slash; empty for "/"
    bool takes_part = false;  // whether ".." can leave it: the current folder, not a drive's
};

std::optional<Root> no_path(DWORD error) {
    SetLastError(error);
    return std::nullopt;
}

std::optional<Root> current_folder() {
    std::array<char, PATH_MAX> buffer{};
    // The kernel marks a folder that can't be reached by a text without a slash in front.
    if (getcwd(buffer.data(), buffer.size()) == nullptr || buffer[0] != '/') {
        return no_path(ERROR_PATH_NOT_FOUND);
    }
    return Root{buffer.data(), true};
}

// Where a path starts from; what is left of the path follows in `rest`.
std::optional<Root> take_root(std::u16string_view& rest) {
    if (rest.starts_with(u"\\\\?\\") && rest.size() > 5 && rest[5] == u':') rest.remove_prefix(4);
    if (rest.size() >= 2 && is_separator(rest[0]) && is_separator(rest[1])) {
        return no_path(ERROR_BAD_NETPATH);
    }
    if (rest.size() < 2 || rest[1] != u':') {
        return is_separator(rest[0]) ? Root{} : current_folder();
    }
    const auto letter = to_upper(rest[0]);
    rest.remove_prefix(2);
    for (auto& drive : mapped_drives()) {
        if (drive.letter == letter) return Root{std::move(drive.root)};
    }
    if (letter != u'C') return no_path(ERROR_PATH_NOT_FOUND);
    return rest.empty() || is_separator(rest[0]) ? Root{} : current_folder();
}

// The parts of a path with "." and ".." resolved in the text; ".." at the root stays there.
void append_parts(std::string_view path, const char* separators,
                  std::vector<std::string_view>& parts) {
    while (!path.empty()) {
        const auto end = std::min(path.find_first_of(separators), path.size());
        const auto part = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (part.empty() || part == ".") continue;
        if (part != "..") {
            parts.push_back(part);
        } else if (!parts.empty()) {
            parts.pop_back();
        }
    }
}

std::string joined(std::string path, std::span<const std::string_view> parts) {
    for (const auto part : parts) {
        path += '/';
        path += part;
    }
    return path;
}

bool exists(const std::string& path) {
    struct stat info {};
    return lstat(path.c_str(), &info) == 0;
}

// Each part exactly first and without regard to case second; from the first one that isn't there
// on, all as written. The whole as written is missing, or at least expected to be.
std::string found_part_by_part(std::string folder, std::span<const std::string_view> parts,
                               Lookup lookup) {
    // Most of what is missing is a new name in a folder that is there.
    auto parent = joined(folder, parts.first(parts.size() - 1));
    bool has_parent = false;
    if (lookup == Lookup::last_as_written) {
        has_parent = exists(parent);
    } else if (const auto other = find_without_case(parent, parts.back(), &has_parent)) {
        return parent + "/" + *other;
    }
    if (has_parent) return joined(std::move(parent), parts.last(1));
    while (!parts.empty() && (parts.size() > 1 || lookup != Lookup::last_as_written)) {
        auto next = joined(folder, parts.first(1));
        if (!exists(next)) {
            const auto other = find_without_case(folder, parts.front());
            if (!other) break;
            next = folder + "/" + *other;
        }
        folder = std::move(next);
        parts = parts.subspan(1);
    }
    return joined(std::move(folder), parts);
}

}  // namespace

std::optional<std::string> host_path(std::u16string_view path, Lookup lookup) {
    if (path.empty()) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return std::nullopt;
    }
    auto root = take_root(path);
    if (!root) return std::nullopt;
    const auto text = to_utf8(path);
    if (!text || text->find('\0') != std::string::npos) {
        SetLastError(ERROR_INVALID_NAME);
        return std::nullopt;
    }
    std::string start;
    std::vector<std::string_view> parts;
    if (root->takes_part) {
        append_parts(root->folder, "/", parts);
    } else {
        start = root->folder;
    }
    append_parts(*text, "\\/", parts);

    auto whole = joined(start, parts);
    if (whole.empty()) return "/";
    if (parts.empty() || lookup == Lookup::none) return whole;
    if (lookup != Lookup::likely_new && exists(whole)) return whole;
    return found_part_by_part(std::move(start), parts, lookup);
}

std::vector<std::string> drive_roots() {
    std::vector<std::string> roots{""};
    for (auto& drive : mapped_drives()) roots.push_back(std::move(drive.root));
    return roots;
}

bool ends_in_separator(std::u16string_view path) {
    return !path.empty() && is_separator(path.back());
}

std::optional<std::u16string> platform_path(std::string_view host) {
    Drive best{u'C', ""};
    for (auto& drive : mapped_drives()) {
        const bool covers = host.starts_with(drive.root) &&
                            (host.size() == drive.root.size() || host[drive.root.size()] == '/');
        if (covers && (drive.root.size() > best.root.size() || drive.letter == u'C')) {
            best = std::move(drive);
        }
    }
    auto text = to_utf16(host.substr(best.root.size()));
    if (!text || text->find(u'\\') != std::u16string::npos) return std::nullopt;
    std::replace(text->begin(), text->end(), u'/', u'\\');
    auto path = std::u16string{best.letter, u':'} + *text;
    if (path.size() == 2) path.push_back(u'\\');
    return path;
}

std::optional<std::u16string> platform_name(std::string_view host_name) {
    if (host_name.find('\\') != std::string_view::npos) return std::nullopt;
    return to_utf16(host_name);
}

}  // namespace tvutil2
