#include "tvutil2/platform/files/replaced_file.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "tests/support/child.h"
#include "tests/support/host_files.h"
#include "tests/support/profile.h"

namespace {

using namespace std::chrono_literals;
using tests::in_child;
using tests::new_folder;
using tests::tree;
using tests::write_file;

constexpr uid_t kStranger = 65534;

std::optional<std::string> append_x(std::string bytes) {
    return bytes + "x";
}

TEST(ReplacedFile, AForeignLockOnTheFolderIsWaitedForAndNotForEver) {
    const auto folder = new_folder();
    write_file(folder + "/file", "old");
    const int lock = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    EXPECT_FALSE(tvutil2::replace_content(folder + "/file", false, append_x, 20ms));
    EXPECT_EQ(GetLastError(), ERROR_LOCK_VIOLATION);
    close(lock);
    EXPECT_TRUE(tvutil2::replace_content(folder + "/file", false, append_x, 20ms));
    EXPECT_EQ(tree(folder), "file=oldx ");
}

TEST(ReplacedFile, LeftoversGoAndWhatIsHeldStays) {
    const auto folder = new_folder();
    write_file(folder + "/file", "old");
    write_file(folder + "/other", "other");
    write_file(folder + "/.tvutil2-copy-dead", "half");
    write_file(folder + "/.tvutil2-copy-alive", "half");
    const int alive = open((folder + "/.tvutil2-copy-alive").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(alive, LOCK_EX), 0);
    EXPECT_TRUE(tvutil2::replace_content(folder + "/file", false, append_x));
    EXPECT_EQ(tree(folder), ".tvutil2-copy-alive=half file=oldx other=other ");
    close(alive);
    const auto path = [&folder](const char* name) { return tests::platform_path(folder + name); };
    EXPECT_TRUE(CopyFileW(path("/file").c_str(), path("/other").c_str(), FALSE));
    EXPECT_EQ(tree(folder), "file=oldx other=oldx ");
}

// In a folder where anybody may make names and nobody may delete others'.
TEST(ReplacedFile, NeverOpensAFileToMorePeople) {
    if (geteuid() != 0) GTEST_SKIP() << "needs two accounts";
    const auto folder = new_folder();
    chmod(tests::profile_folder().c_str(), 0755);
    chmod(folder.c_str(), 01777);
    const struct {
        uid_t owner;
        gid_t group;
        mode_t mode;
        mode_t after;
    } cases[] = {
        {kStranger, kStranger, 0640, 0640},  // all kept
        {kStranger, kStranger, 04750, 04750},
        {kStranger, 4, 0640, 0600},  // not in that group
        {kStranger, 4, 0664, 0644},
        {kStranger, 4, 0606, 0600},  // those of the group could do less than others
    };
    for (const auto& c : cases) {
        const auto file = folder + "/file";
        unlink(file.c_str());
        write_file(file, "old");
        ASSERT_EQ(chown(file.c_str(), c.owner, c.group), 0);
        ASSERT_EQ(chmod(file.c_str(), c.mode), 0);
        EXPECT_EQ(in_child([&] {
                      if (setresgid(kStranger, kStranger, kStranger) != 0 ||
                          setresuid(kStranger, kStranger, kStranger) != 0) {
                          return 2;
                      }
                      return tvutil2::replace_content(file, false, append_x) ? 0 : 1;
                  }),
                  0);
        struct stat info {};
        ASSERT_EQ(stat(file.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777, c.after) << std::oct << c.mode;
        EXPECT_EQ(tree(folder), "file=oldx ");
    }
    // A foreign leftover under a name of ours, in a folder where it can't be deleted.
    write_file(folder + "/.tvutil2-new-content", "foreign");
    write_file(folder + "/.tvutil2-copy-0", "foreign");
    EXPECT_EQ(in_child([&] {
                  if (setresuid(kStranger, kStranger, kStranger) != 0) return 2;
                  return tvutil2::replace_content(folder + "/file", false, append_x) ? 0 : 1;
              }),
              0);
}

}  // namespace
