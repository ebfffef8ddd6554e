#include "tvutil2/platform/base/host_path.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <memory>
#include <vector>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tvutil2 {
namespace {

struct Drive {
    char16_t letter;
    std::string root;  // without a trailing slash; empty for "/"
};

std::vector<Drive> mapped_drives() {
    std::vector<Drive> drives;
    const char* value = std::getenv("TVUTIL_DRIVES");
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

std::string current_folder() {
    std::vector<char> buffer(PATH_MAX);
    if (getcwd(buffer.data(), buffer.size()) == nullptr) return "";
    return buffer.data();
}

// The host folder that a path starts from; what is left of the path follows in `rest`.
std::optional<std::string> take_root(std::u16string_view& rest) {
    if (rest.starts_with(u"\\\\?\\") && rest.size() > 5 && rest[5] == u':') rest.remove_prefix(4);
    if (rest.size() >= 2 && is_separator(rest[0]) && is_separator(rest[1])) {
        SetLastError(ERROR_BAD_NETPATH);
        return std::nullopt;
    }
    if (rest.size() < 2 || rest[1] != u':') {
        return !rest.empty() && is_separator(rest[0]) ? std::string() : current_folder();
    }
    const auto letter = to_upper(rest[0]);
    const bool rooted = rest.size() > 2 && is_separator(rest[2]);
    rest.remove_prefix(2);
    for (auto& drive : mapped_drives()) {
        if (drive.letter == letter) return std::move(drive.root);
    }
    if (letter != u'C') {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return std::nullopt;
    }
    return rooted || rest.empty() ? std::string() : current_folder();
}

// The parts of a path with "." and ".." resolved in the text; ".." at the root stays there.
void append_parts(std::u16string_view path, std::vector<std::u16string_view>& parts) {
    while (!path.empty()) {
        const auto end = std::min(path.find_first_of(u"\\/"), path.size());
        const auto part = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (part.empty() || part == u".") continue;
        if (part != u"..") {
            parts.push_back(part);
        } else if (!parts.empty()) {
            parts.pop_back();
        }
    }
}

bool exists(const std::string& path) {
    struct stat info {};
    return lstat(path.c_str(), &info) == 0;
}

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

// The entry of a folder that equals `name` without regard to case; the first in byte order, so that
// the answer doesn't hang on the order of the directory.
std::optional<std::string> find_without_case(const std::string& folder, std::u16string_view name) {
    const std::unique_ptr<DIR, CloseFolder> entries(opendir(folder.empty() ? "/" : folder.c_str()));
    if (!entries) return std::nullopt;
    const std::u16string wanted(name);
    std::optional<std::string> best;
    while (const auto* entry = readdir(entries.get())) {
        const std::string_view host_name(entry->d_name);
        const auto candidate = platform_name(host_name);
        if (candidate && _wcsicmp(candidate->c_str(), wanted.c_str()) == 0 &&
            (!best || host_name < *best)) {
            best = host_name;
        }
    }
    return best;
}

// Each part exactly first and without regard to case second; from the first one that isn't there
// on, all as written.
std::string found_part_by_part(std::string folder, const std::vector<std::u16string_view>& parts,
                               const std::vector<std::string>& names) {
    bool in_existing = true;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto exact = folder + "/" + names[i];
        if (in_existing && !exists(exact)) {
            if (const auto other = find_without_case(folder, parts[i])) {
                folder += "/" + *other;
                continue;
            }
            in_existing = false;
        }
        folder = exact;
    }
    return folder;
}

}  // namespace

std::optional<std::string> host_path(std::u16string_view path) {
    if (path.empty()) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return std::nullopt;
    }
    auto root = take_root(path);
    if (!root) return std::nullopt;
    // The current folder takes part in the "..", a drive's root doesn't.
    std::vector<std::u16string_view> parts;
    std::u16string current;
    if (*root == current_folder() && !path.empty() && !is_separator(path[0])) {
        current = to_utf16_lossy(*root);
        if (to_utf8(current) == *root) {
            append_parts(current, parts);
            root->clear();
        }
    }
    append_parts(path, parts);

    std::vector<std::string> names;
    std::string whole = *root;
    for (const auto part : parts) {
        auto name = to_utf8(part);
        if (!name || name->find('\0') != std::string::npos) {
            SetLastError(ERROR_INVALID_NAME);
            return std::nullopt;
        }
        whole += "/" + *name;
        names.push_back(std::move(*name));
    }
    if (whole.empty()) return "/";
    if (exists(whole)) return whole;
    return found_part_by_part(std::move(*root), parts, names);
}

std::optional<std::u16string> platform_path(std::string_view host) {
    Drive best{u'C', ""};
    for (auto& drive : mapped_drives()) {
        const bool covers = host.starts_with(drive.root) && (host.size() == drive.root.size() ||
                                                             host[drive.root.size()] == '/');
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
