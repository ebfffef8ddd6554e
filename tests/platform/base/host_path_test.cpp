#include "tvutil2/platform/base/host_path.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/child.h"
#include "tests/support/profile.h"
#include "tests/support/threads.h"

namespace {

namespace fs = std::filesystem;
using tvutil2::host_path;

// The host path, or the number of the last error.
std::string mapped(std::u16string_view path) {
    const auto host = host_path(path);
    return host ? *host : std::to_string(GetLastError());
}

TEST(HostPath, DrivesRootsAndDots) {
    const auto folder = tests::new_folder();
    fs::create_directories(folder + "/data/sub");
    std::string drives("d=");
    drives += folder + "/data/;E=relative;Q;=;F=/;G=" + folder + "/data/sub";
    setenv("TVUTIL_DRIVES", drives.c_str(), 1);
    fs::current_path(folder);
    const std::pair<std::u16string, std::string> cases[] = {
        {u"C:\\", "/"},
        {u"c:/", "/"},
        {u"C:", "/"},
        {u"\\", "/"},
        {u"C:\\no\\such", "/no/such"},
        {u"/no\\such/", "/no/such"},
        {u"C:\\no\\\\\\such\\\\", "/no/such"},
        {u"C:\\no\\.\\x\\..\\such", "/no/such"},
        {u"C:\\..\\..\\no", "/no"},
        {u"\\\\?\\C:\\no\\such", "/no/such"},
        {u"D:\\x", folder + "/data/x"},
        {u"D:", folder + "/data"},
        {u"d:..\\..\\x", folder + "/data/x"},  // a drive's root can't be left
        {u"F:\\no", "/no"},
        {u"x", folder + "/x"},
        {u"..\\x\\..\\..\\y", fs::path(folder).parent_path().parent_path().string() + "/y"},
        {u".", folder},
        {u"C:x", folder + "/x"},
        {u"", std::to_string(ERROR_PATH_NOT_FOUND)},
        {u"E:\\x", std::to_string(ERROR_PATH_NOT_FOUND)},
        {u"1:\\x", std::to_string(ERROR_PATH_NOT_FOUND)},
        {u"\\\\server\\share", std::to_string(ERROR_BAD_NETPATH)},
        {u"//server/share", std::to_string(ERROR_BAD_NETPATH)},
        {u"\\\\?\\UNC\\server", std::to_string(ERROR_BAD_NETPATH)},
        {u"\\\\", std::to_string(ERROR_BAD_NETPATH)},
        {std::u16string(u"C:\\x\xD800y"), std::to_string(ERROR_INVALID_NAME)},
        {std::u16string(u"C:\\x\0y", 6), std::to_string(ERROR_INVALID_NAME)},
    };
    for (const auto& [path, expected] : cases) EXPECT_EQ(mapped(path), expected);

    EXPECT_EQ(tvutil2::platform_path(folder + "/data/sub/x"), u"G:\\x");
    EXPECT_EQ(tvutil2::platform_path(folder + "/data/subx"), u"D:\\subx");
    EXPECT_EQ(tvutil2::platform_path(folder + "/data"), u"D:\\");
    EXPECT_EQ(tvutil2::platform_path("/"), u"C:\\");
    EXPECT_EQ(tvutil2::platform_path("/a\\b"), std::nullopt);
    EXPECT_EQ(tvutil2::platform_path("/\xFF"), std::nullopt);
}

TEST(HostPath, CurrentFolderThatIsGone) {
    const auto folder = tests::new_folder();
    fs::current_path(folder);
    fs::remove(folder);
    EXPECT_EQ(mapped(u"x"), std::to_string(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(mapped(u"C:x"), std::to_string(ERROR_PATH_NOT_FOUND));
    EXPECT_EQ(mapped(u"\\x"), "/x");
    fs::current_path("/");
}

TEST(HostPath, CurrentFolderOfAnyBytesCanBeLeft) {
    const auto folder = tests::new_folder();
    fs::create_directory(folder + "/b\\ad\xFF");
    fs::current_path(folder + "/b\\ad\xFF");
    EXPECT_EQ(mapped(u"..\\x"), folder + "/x");
    EXPECT_EQ(mapped(u"x"), folder + "/b\\ad\xFF/x");
    fs::current_path("/");
}

TEST(HostPath, ExactlyFirstAndWithoutCaseSecond) {
    const auto folder = tests::new_folder();
    for (const auto* name : {"Sub/File.txt", "Two/x", "two/y", "\xC3\x84/z"}) {
        fs::create_directories(fs::path(folder + "/" + name).parent_path());
        tests::write_file(folder + "/" + name, "");
    }
    const auto base = tests::platform_path(folder);
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"\\SUB\\FILE.TXT", "/Sub/File.txt"},
        {u"\\Two\\x", "/Two/x"},
        {u"\\two\\X", "/two/X"},  // exact folder first, whatever is in it
        {u"\\TWO\\x", "/Two/x"},  // the first of both in byte order
        {u"\\\u00E4\\Z", "/\xC3\x84/z"},
        {u"\\SUB\\New\\FILE", "/Sub/New/FILE"},
        {u"\\sub\\file.txt\\x", "/Sub/File.txt/x"},
    };
    for (const auto& [path, expected] : cases) {
        EXPECT_EQ(mapped(base + path), folder + expected);
        EXPECT_EQ(host_path(base + path, tvutil2::Lookup::likely_new), folder + expected);
    }
    EXPECT_EQ(host_path(base + u"\\sub\\FILE.txt", tvutil2::Lookup::last_as_written),
              folder + "/Sub/FILE.txt");
}

TEST(HostPath, HugePathsEnd) {
    for (const auto* part : {u"\\x", u"\\..", u"\\"}) {
        std::u16string path = u"C:";
        for (int i = 0; i < 100000; ++i) path += part;
        EXPECT_TRUE(host_path(path).has_value());
    }
}

// A large folder is kept in memory and watched from its second question on. Whatever changes it,
// here or in another process, the next answer knows.
class LargeFolder : public testing::Test {
  protected:
    void SetUp() override {
        for (int i = 0; i < 200; ++i) tests::write_file(m_folder + "/f" + std::to_string(i), "");
        for (int i = 0; i < 3; ++i) EXPECT_EQ(found(u"NEW"), "NEW");
    }
    // The last part of the host's name for a name in the folder.
    [[nodiscard]] std::string found(const std::u16string& name) const {
        return fs::path(mapped(m_base + u"\\" + name)).filename();
    }
    const std::string m_folder = tests::new_folder();
    const std::u16string m_base = tests::platform_path(m_folder);
};

TEST_F(LargeFolder, AnswersFollowEveryChange) {
    const auto path = [this](const char* name) { return m_folder + "/" + name; };
    EXPECT_EQ(found(u"F17"), "f17");
    tests::write_file(path("New"), "");
    EXPECT_EQ(found(u"NEW"), "New");
    tests::in_child([&] { return tests::write_file(path("NEw"), ""), 0; });
    EXPECT_EQ(found(u"new"), "NEw") << "the first in byte order";
    tests::in_child([&] { return fs::rename(path("NEw"), path("other")), 0; });
    EXPECT_EQ(found(u"new"), "New");
    EXPECT_EQ(found(u"OTHER"), "other");
    fs::rename(path("New"), m_folder + "-outside");
    EXPECT_EQ(found(u"new"), "new");
    fs::rename(m_folder + "-outside", path("nEW"));
    EXPECT_EQ(found(u"new"), "nEW");
    fs::remove(path("nEW"));
    EXPECT_EQ(found(u"new"), "new");
    // More changes than the queue holds.
    for (int i = 0; i < 8500; ++i) {
        tests::write_file(path("Flood"), "");
        fs::remove(path("Flood"));
    }
    tests::write_file(path("After"), "");
    EXPECT_EQ(found(u"AFTER"), "After");
}

TEST_F(LargeFolder, FolderThatIsReplacedIsReadAnew) {
    fs::rename(m_folder, m_folder + "-moved");
    fs::create_directory(m_folder);
    EXPECT_EQ(found(u"F17"), "F17");
    tests::write_file(m_folder + "/F17", "");
    EXPECT_EQ(found(u"f17"), "F17");
    fs::remove_all(m_folder + "-moved");
    EXPECT_EQ(found(u"f17"), "F17");
}

TEST_F(LargeFolder, ChildAndParentEachSeeAllChanges) {
    const auto path = [this](const char* name) { return m_folder + "/" + name; };
    const int answer = tests::in_child([&] {
        tests::write_file(path("Child"), "");
        for (const auto* name : {u"CHILD", u"NONE", u"CHILD"}) {
            if (found(name) == "CHILD") return 1;
        }
        return 0;
    });
    EXPECT_EQ(answer, 0);
    EXPECT_EQ(found(u"CHILD"), "Child");
}

TEST_F(LargeFolder, ManyThreadsMakeFilesAtOnce) {
    std::atomic<int> wrong{0};
    tests::on_threads(4, [this, &wrong](int t) {
        for (int i = 0; i < 200; ++i) {
            std::string lower("t");
            lower += std::to_string(t * 1000 + i);
            std::u16string name(lower.begin(), lower.end());
            if (CopyFileW((m_base + u"\\f1").c_str(), (m_base + u"\\" + name).c_str(), TRUE) ==
                FALSE) {
                ++wrong;
            }
            name[0] = u'T';
            if (found(name) != lower) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
}

}  // namespace
