#include "tests/support/profile.h"

#include "tvutil2/platform/base/host_path.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace tests {
namespace {

// Made by the process that runs the tests, and removed by it alone: a forked child that exits
// mustn't pull the floor from under its parent.
class Profile {
  public:
    Profile() {
        std::string pattern = std::filesystem::temp_directory_path() / "tvutil2-test-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) std::abort();
        m_folder = pattern;
        setenv("TVUTIL_PROFILE", m_folder.c_str(), 1);
    }
    ~Profile() {
        std::error_code ignored;
        if (getpid() == m_owner) std::filesystem::remove_all(m_folder, ignored);
    }
    Profile(const Profile&) = delete;
    Profile& operator=(const Profile&) = delete;

    [[nodiscard]] const std::string& folder() const { return m_folder; }

  private:
    pid_t m_owner = getpid();
    std::string m_folder;
};

}  // namespace

const std::string& profile_folder() {
    static const Profile profile;
    return profile.folder();
}

std::string new_folder() {
    static std::atomic<int> count{0};
    auto folder = profile_folder() + "/folder" + std::to_string(++count);
    std::filesystem::create_directory(folder);
    return folder;
}

std::u16string platform_path(const std::string& host) {
    return tvutil2::platform_path(host).value_or(u"");
}

std::string read_file(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

void write_file(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

}  // namespace tests
