#include "tvutil2/platform/window/common_dialogs/file_names.h"

#include "tvutil2/platform/files/full_path.h"
#include "tvutil2/platform/window/common_dialogs/folder_entry.h"

namespace tvutil2 {
namespace {

constexpr DWORD kLongestPath = 4096;

bool is_full(const std::u16string& path) {
    return path[0] == u'\\' || path[0] == u'/' || (path.size() > 1 && path[1] == u':');
}

}  // namespace

std::vector<std::u16string> names_in(const std::u16string& typed, bool takes_several) {
    std::vector<std::u16string> names;
    if (!takes_several || !typed.starts_with(u'"')) {
        if (!typed.empty()) names.push_back(typed);
        return names;
    }
    for (std::size_t at = 0; at < typed.size();) {
        const auto first = typed.find(u'"', at);
        const auto last = first < typed.size() ? typed.find(u'"', first + 1) : first;
        if (last > typed.size()) break;
        if (last > first + 1) names.push_back(typed.substr(first + 1, last - first - 1));
        at = last + 1;
    }
    return names;
}

std::u16string typed_names(const std::vector<std::u16string>& names) {
    if (names.size() == 1) return names[0];
    std::u16string text;
    for (const auto& name : names) {
        text.append(text.empty() ? u"\"" : u" \"").append(name).append(u"\"");
    }
    return text;
}

std::optional<std::u16string> path_in(const std::u16string& folder, const std::u16string& name) {
    if (name.empty()) return std::nullopt;
    const auto path = is_full(name) || folder.empty() ? name : joined(folder, name);
    char16_t full[kLongestPath];
    const auto length = GetFullPathNameW(path.c_str(), kLongestPath, full, nullptr);
    if (length == 0 || length >= kLongestPath) return std::nullopt;
    return std::u16string(full, length);
}

std::u16string folder_above(const std::u16string& path) {
    constexpr std::size_t kRoot = 3;
    const auto end = path.find_last_of(u'\\', path.size() - (path.ends_with(u'\\') ? 2 : 1));
    if (path.size() <= kRoot || end == std::u16string::npos) return path;
    return path.substr(0, end < kRoot ? kRoot : end);
}

}  // namespace tvutil2
