#include "tvutil2/platform/watch/change_notification.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/objects/objects.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "tests/support/profile.h"

namespace {

// Longer than anything that is waited for takes, and only waited for in full by a test that fails.
constexpr DWORD kLong = 20'000;

class Notification {
  public:
    Notification(const std::string& folder, bool subtree, DWORD filter)
        : m_handle(
              FindFirstChangeNotificationW(tests::platform_path(folder).c_str(), subtree, filter)) {
        EXPECT_NE(m_handle, INVALID_HANDLE_VALUE);
    }
    ~Notification() { EXPECT_TRUE(FindCloseChangeNotification(m_handle)); }
    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;

    [[nodiscard]] bool comes() const {
        return WaitForSingleObject(m_handle, kLong) == WAIT_OBJECT_0;
    }
    [[nodiscard]] BOOL next() const { return FindNextChangeNotification(m_handle); }
    operator HANDLE() const { return m_handle; }

  private:
    HANDLE m_handle;
};

constexpr DWORD kNames = FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME;

TEST(ChangeNotification, WrongCallsAreRefused) {
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/file", "");
    const auto path = tests::platform_path(folder);
    const struct {
        std::u16string path;
        DWORD filter;
        DWORD error;
    } cases[] = {
        {path, 0, ERROR_INVALID_PARAMETER},
        {path, 0x80, ERROR_INVALID_PARAMETER},
        {path + u"\\none", kNames, ERROR_FILE_NOT_FOUND},
        {path + u"\\none\\none", kNames, ERROR_PATH_NOT_FOUND},
        {path + u"\\file", kNames, ERROR_DIRECTORY},
        {u"", kNames, ERROR_PATH_NOT_FOUND},
    };
    for (const auto& wrong : cases) {
        SetLastError(0);
        EXPECT_EQ(FindFirstChangeNotificationW(wrong.path.c_str(), FALSE, wrong.filter),
                  INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), wrong.error);
    }
    EXPECT_FALSE(FindNextChangeNotification(nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    const Notification notification(folder, false, kNames);
    EXPECT_FALSE(CloseHandle(notification));
}

// Each change is told by the filter that asks for it. That a filter doesn't tell of others is seen
// by what comes first: a change of another kind, then one that is asked for, must be one signal.
TEST(ChangeNotification, FiltersTellWhatTheyAskFor) {
    using Change = std::function<void(const std::string&)>;
    const Change add_file = [](const auto& f) { tests::write_file(f + "/new", ""); };
    const Change add_folder = [](const auto& f) { mkdir((f + "/sub").c_str(), 0700); };
    const Change write = [](const auto& f) { tests::write_file(f + "/old", "more"); };
    const Change protect = [](const auto& f) { chmod((f + "/old").c_str(), 0400); };
    const struct {
        DWORD filter;
        Change change;
        Change other;
    } cases[] = {
        {FILE_NOTIFY_CHANGE_FILE_NAME, add_file, add_folder},
        {FILE_NOTIFY_CHANGE_DIR_NAME, add_folder, add_file},
        {FILE_NOTIFY_CHANGE_SIZE, write, protect},
        {FILE_NOTIFY_CHANGE_LAST_WRITE, write, add_file},
        {FILE_NOTIFY_CHANGE_ATTRIBUTES, protect, write},
        {FILE_NOTIFY_CHANGE_SECURITY, protect, add_folder},
    };
    for (const auto& row : cases) {
        const auto folder = tests::new_folder();
        tests::write_file(folder + "/old", "");
        const Notification all(folder, false, kNames | row.filter);
        const Notification asked(folder, false, row.filter);
        row.other(folder);
        EXPECT_EQ(WaitForSingleObject(asked, 0), WAIT_TIMEOUT) << row.filter;
        row.change(folder);
        EXPECT_TRUE(asked.comes()) << row.filter;
        EXPECT_TRUE(all.comes()) << row.filter;
    }
}

TEST(ChangeNotification, StaysSignalledUntilTheNextIsAskedFor) {
    const auto folder = tests::new_folder();
    const Notification notification(folder, false, kNames);
    EXPECT_EQ(WaitForSingleObject(notification, 0), WAIT_TIMEOUT);
    tests::write_file(folder + "/a", "");
    EXPECT_TRUE(notification.comes());
    EXPECT_TRUE(notification.comes());
    EXPECT_TRUE(notification.next());
    EXPECT_EQ(WaitForSingleObject(notification, 0), WAIT_TIMEOUT);
    unlink((folder + "/a").c_str());
    EXPECT_TRUE(notification.comes());
}

TEST(ChangeNotification, FollowsATreeAsItGrows) {
    const auto folder = tests::new_folder();
    const Notification tree(folder, true, FILE_NOTIFY_CHANGE_FILE_NAME);
    const Notification flat(folder, false, FILE_NOTIFY_CHANGE_FILE_NAME);
    mkdir((folder + "/a").c_str(), 0700);
    mkdir((folder + "/a/b").c_str(), 0700);
    EXPECT_EQ(WaitForSingleObject(tree, 0), WAIT_TIMEOUT);
    tests::write_file(folder + "/a/b/file", "");
    EXPECT_TRUE(tree.comes());
    EXPECT_EQ(WaitForSingleObject(flat, 0), WAIT_TIMEOUT);
}

TEST(ChangeNotification, TheEndOfTheFolderIsTheLastSignal) {
    const auto folder = tests::new_folder();
    const Notification notification(folder, true, kNames);
    rmdir(folder.c_str());
    EXPECT_TRUE(notification.comes());
    EXPECT_FALSE(notification.next());
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(notification.comes());
}

TEST(ChangeNotification, TheEndOfTheFolderBehindAnotherChangeIsASignalOfItsOwn) {
    const auto folder = tests::new_folder();
    const auto other = tests::new_folder();
    const Notification notification(folder, true, kNames);
    tests::write_file(folder + "/a", "");
    EXPECT_TRUE(notification.comes());
    unlink((folder + "/a").c_str());
    rmdir(folder.c_str());
    // One thread reads what changed in all folders, in order.
    const Notification behind(other, true, kNames);
    tests::write_file(other + "/a", "");
    EXPECT_TRUE(behind.comes());
    EXPECT_TRUE(notification.next());
    EXPECT_TRUE(notification.comes());
    EXPECT_FALSE(notification.next());
}

}  // namespace
