#include "tvutil2/platform/base/locations.h"

#include <cerrno>
#include <cstdlib>
#include <vector>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tvutil2 {
namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

}  // namespace

std::string profile_root() {
    auto root = environment("TVUTIL_PROFILE");
    while (root.size() > 1 && root.back() == '/') root.pop_back();
    return root;
}

std::string home_folder() {
    if (auto home = environment("HOME"); !home.empty()) return home;
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr && *found->pw_dir != 0) {
        return found->pw_dir;
    }
    return "/";
}

std::string user_store() {
    if (const auto root = profile_root(); !root.empty()) return root + "/user";
    // The base directory rules: a relative value is to be passed over.
    if (const auto data = environment("XDG_DATA_HOME"); data.starts_with('/')) {
        return data + "/tvutil2";
    }
    return home_folder() + "/.local/share/tvutil2";
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
