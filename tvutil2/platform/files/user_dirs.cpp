#include "tvutil2/platform/files/user_dirs.h"

#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/files/host_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace tvutil2 {
namespace {

constexpr std::size_t kLargestFile = std::size_t{64} << 10;

// The text between a double quote, already taken, and the next one, with a backslash protecting
// what follows it. Nothing for what a shell would expand or what has no closing quote.
std::optional<std::string> quoted_text(std::string_view rest) {
    std::string text;
    for (std::size_t at = 0; at < rest.size(); ++at) {
        char c = rest[at];
        if (c == '"') return text;
        if (c == '`' || (c == '$' && at != 0)) return std::nullopt;
        if (c == '\\') {
            if (++at == rest.size()) return std::nullopt;
            c = rest[at];
        }
        if (c == '\0') return std::nullopt;
        text += c;
    }
    return std::nullopt;
}

std::optional<std::string> folder_of_value(std::string_view value, std::string_view home) {
    if (!value.starts_with('"')) return std::nullopt;
    auto path = quoted_text(value.substr(1));
    if (!path) return std::nullopt;
    constexpr std::string_view kHome = "$HOME";
    // Quoted, "\$HOME" is a relative path, not the variable.
    if (value.substr(1).starts_with(kHome)) {
        if (path->size() > kHome.size() && (*path)[kHome.size()] != '/') return std::nullopt;
        path->replace(0, kHome.size(), home == "/" && path->size() > kHome.size() ? "" : home);
    }
    while (path->size() > 1 && path->back() == '/') path->pop_back();
    if (!path->starts_with('/') || path->size() >= PATH_MAX) return std::nullopt;
    return path;
}

std::optional<std::string> read_all(const std::string& path) {
    // Opening a pipe in its place mustn't wait for a writer.
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat info {};
    if (!file || fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
    std::string content(kLargestFile + 1, '\0');
    std::size_t size = 0;
    while (size < content.size()) {
        const auto count = read(file.get(), content.data() + size, content.size() - size);
        if (count == 0) break;
        if (count < 0 && errno != EINTR) return std::nullopt;
        if (count > 0) size += static_cast<std::size_t>(count);
    }
    if (size > kLargestFile) return std::nullopt;
    content.resize(size);
    return content;
}

}  // namespace

std::optional<std::string> user_dir(std::string_view content, std::string_view variable,
                                    std::string_view home) {
    std::optional<std::string> found;
    while (!content.empty()) {
        const auto end = std::min(content.find('\n'), content.size());
        auto line = content.substr(0, end);
        content.remove_prefix(std::min(end + 1, content.size()));
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        if (!line.starts_with(variable)) continue;
        line.remove_prefix(variable.size());
        if (!line.starts_with('=')) continue;
        if (auto folder = folder_of_value(line.substr(1), home)) found = std::move(folder);
    }
    return found;
}

std::optional<std::string> user_dir(std::string_view variable) {
    const auto content = read_all(config_folder() + "/user-dirs.dirs");
    return content ? user_dir(*content, variable, person_folder()) : std::nullopt;
}

}  // namespace tvutil2
