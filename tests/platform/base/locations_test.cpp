#include "tvutil2/platform/base/locations.h"

#include "tvutil2/platform/base/host_path.h"

#include <gtest/gtest.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "tests/support/child.h"
#include "tests/support/leak_check.h"
#include "tests/support/profile.h"

namespace {

constexpr uid_t kNobody = 65534;

// Plays two parts: it starts itself again as a program that runs with another account's rights.
TEST(Locations, AProgramWithMoreRightsThanItsCallerIsNotLedByIt) {
    if (getauxval(AT_SECURE) != 0) {
        tests::turn_off_leak_check();  // it can't look into a program with more rights
        for (const auto& folder :
             {tvutil2::profile_root(), tvutil2::user_store(), tvutil2::machine_store(),
              tvutil2::home_folder(), tvutil2::cache_folder(),
              tvutil2::host_path(u"D:\\x").value_or("")}) {
            EXPECT_EQ(folder.find("/from-the-caller"), std::string::npos) << folder;
        }
        return;
    }
    if (geteuid() != 0) GTEST_SKIP() << "takes the superuser, to give a program away";
    namespace fs = std::filesystem;
    fs::permissions(tests::profile_folder(), fs::perms(0755));
    const auto program = tests::new_folder() + "/program";
    fs::permissions(fs::path(program).parent_path(), fs::perms(0755));
    fs::copy_file("/proc/self/exe", program);
    ASSERT_EQ(chown(program.c_str(), kNobody, 0), 0);
    fs::permissions(program, fs::perms(04755));
    EXPECT_EQ(tests::in_child([&] {
                  for (const auto* name : {"TVUTIL_PROFILE", "HOME", "XDG_DATA_HOME",
                                           "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) {
                      setenv(name, "/from-the-caller", 1);
                  }
                  setenv("TVUTIL_DRIVES", "D=/from-the-caller", 1);
                  execl(program.c_str(), program.c_str(), "--gtest_filter=Locations.*",
                        static_cast<char*>(nullptr));
                  return 1;
              }),
              0);
}

}  // namespace
