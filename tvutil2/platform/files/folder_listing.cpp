#include "tvutil2/platform/files/folder_listing.h"

#include "tvutil2/platform/base/host_path.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <memory>
#include <tuple>

namespace tvutil2 {
namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

using FolderStream = std::unique_ptr<DIR, CloseFolder>;

// A stream of its own: it takes its descriptor along when it is closed.
FolderStream stream_of(int folder) {
    Descriptor copy(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    FolderStream entries(copy ? fdopendir(copy.get()) : nullptr);
    if (entries) static_cast<void>(copy.release());
    return entries;
}

struct Sorted {
    std::u16string upper;
    ListedName listed;
    friend bool operator<(const Sorted& a, const Sorted& b) {
        const auto rank = [](const Sorted& s) {
            return s.listed.host_name == "." || s.listed.host_name == ".." ? 0 : 1;
        };
        return std::forward_as_tuple(rank(a), a.upper, a.listed.host_name) <
               std::forward_as_tuple(rank(b), b.upper, b.listed.host_name);
    }
};

}  // namespace

Descriptor open_folder(const std::string& path) {
    return Descriptor(open(path.empty() ? "/" : path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

bool visit_host_folder(int folder,
                       const std::function<bool(const char* name, unsigned char)>& see) {
    const auto entries = stream_of(folder);
    if (!entries) return false;
    while (const auto* entry = readdir(entries.get())) {
        const std::string_view name(entry->d_name);
        if (name != "." && name != ".." && !see(entry->d_name, entry->d_type)) break;
    }
    return true;
}

bool list_host_folder(int folder, std::vector<HostEntry>& listed) {
    return visit_host_folder(folder, [&](const char* name, unsigned char type) {
        listed.push_back({name, type});
        return true;
    });
}

bool list_folder(int folder, const NamePattern& pattern, std::vector<ListedName>& names) {
    const auto entries = stream_of(folder);
    if (!entries) return false;
    std::vector<Sorted> found;
    while (const auto* entry = readdir(entries.get())) {
        auto name = platform_name(entry->d_name);
        if (!name) continue;
        auto upper = upper_of(*name);
        if (pattern.matches(upper)) {
            found.push_back({std::move(upper), {std::move(*name), entry->d_name}});
        }
    }
    std::sort(found.begin(), found.end());
    names.reserve(found.size());
    for (auto& entry : found) names.push_back(std::move(entry.listed));
    return true;
}

}  // namespace tvutil2
