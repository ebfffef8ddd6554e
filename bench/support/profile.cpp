#include "bench/support/profile.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace bench {
namespace {

struct Profile {
    Profile() {
        if (mkdtemp(folder.data()) == nullptr) std::abort();
        setenv("TVUTIL_PROFILE", folder.c_str(), 1);
    }
    ~Profile() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    Profile(const Profile&) = delete;
    Profile& operator=(const Profile&) = delete;

    std::string folder = std::filesystem::temp_directory_path() / "tvutil2-bench-XXXXXX";
};

}  // namespace

const std::string& profile_folder() {
    static const Profile profile;
    return profile.folder;
}

}  // namespace bench
