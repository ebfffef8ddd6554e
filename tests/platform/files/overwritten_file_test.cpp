#include "tvutil2/platform/files/overwritten_file.h"

#include "tvutil2/platform/base/last_error.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/child.h"
#include "tests/support/profile.h"

namespace {

using tvutil2::OverwrittenFile;

bool overwrite(const std::string& path, const std::string& content) {
    OverwrittenFile file(path, true);
    return file && file.overwrite([&](const std::string&) { return content; }, true);
}

// A disk of 64 KiB, full to its last page.
TEST(OverwrittenFile, KeepsTheOldContentOnAFullDisk) {
    const auto folder = tests::new_folder();
    const auto path = folder + "/a";
    EXPECT_EQ(tests::in_child([&] {
                  if (unshare(geteuid() == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0 ||
                      mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                      mount("none", folder.c_str(), "tmpfs", 0, "size=64k") != 0) {
                      return 1;
                  }
                  const std::string old(10'000, 'x');
                  tests::write_file(path, old);
                  tests::write_file(folder + "/rest", std::string(60'000, 'r'));
                  if (overwrite(path, std::string(20'000, 'y'))) return 2;
                  if (GetLastError() != ERROR_DISK_FULL) return 3;
                  if (tests::read_file(path) != old) return 4;
                  const std::string other(9'999, 'z');
                  return overwrite(path, other) && tests::read_file(path) == other ? 0 : 5;
              }),
              0);
}

// An account that may only read can hold a writer up, for a while.
TEST(OverwrittenFile, WaitsNoLongerThanItSays) {
    const auto path = tests::new_folder() + "/a";
    tests::write_file(path, "old");
    const int reader = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct flock turn {};
    turn.l_type = F_RDLCK;
    turn.l_start = 0x7FFFFFFFFFFFFF10;
    turn.l_len = 1;
    ASSERT_EQ(fcntl(reader, F_OFD_SETLK, &turn), 0);
    EXPECT_FALSE(overwrite(path, "new"));
    EXPECT_EQ(GetLastError(), ERROR_LOCK_VIOLATION);
    struct stat info {};
    std::string bytes;
    EXPECT_TRUE(tvutil2::read_between_writers(path, info, bytes));
    EXPECT_EQ(bytes, "old");
    close(reader);
    EXPECT_TRUE(overwrite(path, "new"));
}

TEST(OverwrittenFile, LeavesNoFileThatGotNoContent) {
    const auto folder = tests::new_folder();
    {
        OverwrittenFile file(folder + "/a", true);
        EXPECT_TRUE(file);
        EXPECT_TRUE(file.overwrite([](const std::string&) { return std::nullopt; }, false));
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    ASSERT_EQ(symlink("behind", (folder + "/link").c_str()), 0);
    EXPECT_TRUE(overwrite(folder + "/link", "content"));
    EXPECT_EQ(tests::read_file(folder + "/behind"), "content");
}

}  // namespace
