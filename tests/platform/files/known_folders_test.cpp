#include "tvutil2/platform/files/known_folders.h"

#include "tvutil2/platform/base/last_error.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/profile.h"

namespace {

namespace fs = std::filesystem;

constexpr HRESULT failure(DWORD error) {
    return static_cast<HRESULT>(0x80070000 | error);
}

std::u16string path_of(int folder, HRESULT expected, DWORD type = SHGFP_TYPE_CURRENT) {
    char16_t path[MAX_PATH] = u"stale";
    EXPECT_EQ(SHGetFolderPathW(nullptr, folder, nullptr, type, path), expected) << folder;
    return path;
}

void move_documents(const std::string& value) {
    const auto folder = tests::profile_folder() + "/home/.config";
    fs::create_directories(folder);
    tests::write_file(folder + "/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"" + value + "\"\n");
}

TEST(KnownFolders, AProfileHoldsAllOfThem) {
    const auto& root = tests::profile_folder();
    setenv("XDG_CONFIG_HOME", "/elsewhere", 1);
    setenv("XDG_DATA_HOME", "/elsewhere", 1);
    const std::pair<int, std::string> cases[] = {
        {CSIDL_PERSONAL, "/home/Documents"},
        {CSIDL_APPDATA, "/home/.config"},
        {CSIDL_LOCAL_APPDATA, "/home/.local/share"},
        {CSIDL_COMMON_APPDATA, "/common"},
        {CSIDL_PROFILE, "/home"},
    };
    for (const auto& [folder, place] : cases) {
        const auto expected = tests::platform_path(root + place);
        EXPECT_EQ(path_of(folder, S_FALSE), expected);
        EXPECT_FALSE(fs::exists(root + place)) << "asked for, not made";
    }
    for (const auto& [folder, place] : cases) {
        const auto expected = tests::platform_path(root + place);
        EXPECT_EQ(path_of(folder | CSIDL_FLAG_CREATE, S_OK), expected);
        EXPECT_TRUE(fs::is_directory(root + place));
        EXPECT_EQ(path_of(folder, S_OK), expected);
    }
    struct stat info {};
    ASSERT_EQ(stat((root + "/home/.config").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700U);
}

TEST(KnownFolders, ThePersonsOwnWithoutAProfile) {
    const auto home = tests::new_folder();
    unsetenv("TVUTIL_PROFILE");
    setenv("HOME", (home + "//").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (home + "/settings").c_str(), 1);
    setenv("XDG_DATA_HOME", "relative", 1);
    fs::create_directories(home + "/settings");
    tests::write_file(home + "/settings/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Papers\"\n");

    EXPECT_EQ(path_of(CSIDL_PERSONAL, S_FALSE), tests::platform_path(home + "/Papers"));
    EXPECT_EQ(path_of(CSIDL_PERSONAL, S_FALSE, SHGFP_TYPE_DEFAULT),
              tests::platform_path(home + "/Documents"));
    EXPECT_EQ(path_of(CSIDL_APPDATA, S_OK), tests::platform_path(home + "/settings"));
    EXPECT_EQ(path_of(CSIDL_LOCAL_APPDATA, S_FALSE), tests::platform_path(home + "/.local/share"));
    EXPECT_EQ(path_of(CSIDL_PROFILE, S_OK), tests::platform_path(home));
    EXPECT_EQ(path_of(CSIDL_COMMON_APPDATA, S_OK), u"C:\\var\\lib");
}

TEST(KnownFolders, DocumentsThatWereMoved) {
    const auto there = tests::new_folder();
    move_documents(there);
    EXPECT_EQ(path_of(CSIDL_PERSONAL, S_OK), tests::platform_path(there));

    // A disk that isn't mounted is a failure, and nothing is made in its place.
    move_documents(there + "/gone");
    EXPECT_EQ(path_of(CSIDL_PERSONAL | CSIDL_FLAG_CREATE, failure(ERROR_PATH_NOT_FOUND)), u"");
    EXPECT_FALSE(fs::exists(there + "/gone"));

    move_documents("$HOME/Papers");
    EXPECT_EQ(path_of(CSIDL_PERSONAL, S_FALSE),
              tests::platform_path(tests::profile_folder() + "/home/Papers"));

    move_documents(there + "/file");
    tests::write_file(there + "/file", "");
    EXPECT_EQ(path_of(CSIDL_PERSONAL, failure(ERROR_DIRECTORY)), u"");

    move_documents(there + "/bad\xFF");
    EXPECT_EQ(path_of(CSIDL_PERSONAL, failure(ERROR_INVALID_NAME)), u"");
    move_documents("/" + std::string(256, 'x'));
    EXPECT_EQ(path_of(CSIDL_PERSONAL, failure(ERROR_FILENAME_EXCED_RANGE)), u"");
    move_documents("/" + std::string(257, 'x'));
    EXPECT_EQ(path_of(CSIDL_PERSONAL, failure(ERROR_INSUFFICIENT_BUFFER)), u"");
}

TEST(KnownFolders, AChoiceThatCannotBeReadIsNone) {
    const auto expected = tests::platform_path(tests::profile_folder() + "/home/Documents");
    const auto file = tests::profile_folder() + "/home/.config/user-dirs.dirs";
    move_documents("/mnt/x\"\n" + std::string(70000, '#'));
    EXPECT_EQ(path_of(CSIDL_PERSONAL, S_FALSE), expected) << "too large";
    fs::remove(file);
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    EXPECT_EQ(path_of(CSIDL_PERSONAL, S_FALSE), expected) << "a pipe that nobody writes to";
    fs::remove(file);
    fs::create_directory(file);
    EXPECT_EQ(path_of(CSIDL_PERSONAL, S_FALSE), expected) << "a folder";
}

TEST(KnownFolders, WrongArguments) {
    char16_t path[MAX_PATH] = u"stale";
    EXPECT_EQ(SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(SHGetFolderPathW(nullptr, 0x7F, nullptr, 0, path), E_INVALIDARG);
    EXPECT_EQ(*path, 0);
    EXPECT_EQ(SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, 2, path), E_INVALIDARG);
    EXPECT_EQ(SHGetFolderPathW(nullptr, CSIDL_PERSONAL, INVALID_HANDLE_VALUE, 0, path),
              E_INVALIDARG);
}

std::u16string temporary() {
    char16_t path[MAX_PATH];
    const auto length = GetTempPathW(MAX_PATH, path);
    return {path, length};
}

TEST(TemporaryFolder, SizesAreThePlatforms) {
    const auto expected = tests::platform_path(tests::profile_folder() + "/temp") + u"\\";
    const auto length = static_cast<DWORD>(expected.size());
    char16_t path[MAX_PATH];
    EXPECT_EQ(GetTempPathW(0, nullptr), length + 1);
    EXPECT_EQ(GetTempPathW(length, path), length + 1);
    EXPECT_EQ(GetTempPathW(length + 1, path), length);
    EXPECT_EQ(path, expected);
}

TEST(TemporaryFolder, IsTheCallersAlone) {
    const auto shared = tests::new_folder();
    const auto home = tests::new_folder();
    unsetenv("TVUTIL_PROFILE");
    setenv("TMPDIR", shared.c_str(), 1);
    setenv("HOME", home.c_str(), 1);
    unsetenv("XDG_CACHE_HOME");
    const auto place = shared + "/tvutil2-" + std::to_string(geteuid());

    EXPECT_EQ(temporary(), tests::platform_path(place) + u"\\");
    struct stat info {};
    ASSERT_EQ(stat(place.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700U);
    chmod(place.c_str(), 0777);
    EXPECT_EQ(temporary(), tests::platform_path(place) + u"\\");
    ASSERT_EQ(stat(place.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700U) << "opened by mistake, closed again";

    // Somebody was there first: with a link to what is the caller's own, or with a file.
    const auto fallback = tests::platform_path(home + "/.cache/tvutil2/temp") + u"\\";
    fs::remove(place);
    fs::create_directory_symlink(home, place);
    EXPECT_EQ(temporary(), fallback);
    fs::remove(place);
    tests::write_file(place, "");
    EXPECT_EQ(temporary(), fallback);

    fs::remove_all(home);
    tests::write_file(home, "");
    EXPECT_EQ(GetTempPathW(0, nullptr), 0U);
    EXPECT_NE(GetLastError(), 0U);
}

}  // namespace
