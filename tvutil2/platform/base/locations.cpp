#include "tvutil2/platform/base/locations.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

namespace tvutil2 {
namespace {

std::string without_trailing_slashes(const char* value) {
    std::string path(value != nullptr ? value : "");
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

// A folder that the environment names; empty unless it is absolute.
std::string named_folder(const char* variable) {
    auto path = without_trailing_slashes(secure_getenv(variable));
    return path.starts_with('/') ? path : std::string();
}

// A base folder of the person. The rules want a relative value passed over.
std::string base_folder(const char* variable, const char* below_home) {
    if (profile_root().empty()) {
        if (auto folder = named_folder(variable); !folder.empty()) return folder;
    }
    const auto home = person_folder();
    return (home == "/" ? "" : home) + below_home;
}

}  // namespace

std::string profile_root() {
    return without_trailing_slashes(secure_getenv("TVUTIL_PROFILE"));
}

std::string home_folder() {
    if (auto home = named_folder("HOME"); !home.empty()) return home;
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr && *found->pw_dir != 0) {
        return found->pw_dir;
    }
    return "/";
}

std::string person_folder() {
    const auto root = profile_root();
    return root.empty() ? home_folder() : root + "/home";
}

std::string config_folder() {
    return base_folder("XDG_CONFIG_HOME", "/.config");
}

std::string data_folder() {
    return base_folder("XDG_DATA_HOME", "/.local/share");
}

std::string cache_folder() {
    return base_folder("XDG_CACHE_HOME", "/.cache");
}

std::string common_folder() {
    const auto root = profile_root();
    return root.empty() ? "/var/lib" : root + "/common";
}

std::string user_store() {
    const auto root = profile_root();
    return root.empty() ? data_folder() + "/tvutil2" : root + "/user";
}

std::string machine_store() {
    if (const auto root = profile_root(); !root.empty()) return root + "/machine";
    return "/var/lib/tvutil2";
}

bool make_host_folders(const std::string& folder, bool is_private) {
    const mode_t mode = is_private ? 0700 : 0777;
    if (mkdir(folder.c_str(), mode) == 0 || errno == EEXIST) return true;
    if (errno != ENOENT) return false;
    const auto slash = folder.find_last_of('/');
    if (slash == std::string::npos || slash == 0) return false;
    return make_host_folders(folder.substr(0, slash), is_private) &&
           (mkdir(folder.c_str(), mode) == 0 || errno == EEXIST);
}

}  // namespace tvutil2
