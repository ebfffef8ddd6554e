#include "tvutil2/data/user_data.h"

#include "tvutil2/data/session_folders.h"
#include "tvutil2/frame/product.h"
#include "tvutil2/platform/registry/registry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/profile.h"
#include "tests/support/threads.h"

namespace {

namespace fs = std::filesystem;
using tests::platform_path;

constexpr auto kKey = u"Software\\Tolvarine\\Common\\8\\UserData";
constexpr auto kKeyV5 = u"Software\\Tolvarine\\Common\\5\\UserData";

HKEY key_of(const char16_t* name) {
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, name, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                              nullptr),
              ERROR_SUCCESS);
    return key;
}

void store(const char16_t* name, std::u16string_view path, DWORD type = REG_SZ) {
    const auto key = key_of(name);
    RegSetValueExW(key, u"UserDataPath", 0, type, reinterpret_cast<const BYTE*>(path.data()),
                   static_cast<DWORD>(path.size() * 2));
    RegCloseKey(key);
}

// As it is stored, byte for byte.
std::u16string stored(const char16_t* name) {
    const auto key = key_of(name);
    std::u16string text(1000, u'\0');
    auto size = static_cast<DWORD>(text.size() * 2);
    const auto error = RegQueryValueExW(key, u"UserDataPath", nullptr, nullptr,
                                        reinterpret_cast<BYTE*>(text.data()), &size);
    RegCloseKey(key);
    text.resize(error == ERROR_SUCCESS ? size / 2 : 0);
    return text;
}

std::string documents() {
    return tests::profile_folder() + "/home/Documents";
}

void move_documents(const std::string& value) {
    const auto folder = tests::profile_folder() + "/home/.config";
    fs::create_directories(folder);
    tests::write_file(folder + "/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"" + value + "\"\n");
}

// Nobody opens a hive that is a file's place.
void break_registry() {
    const auto hive = tests::profile_folder() + "/user";
    fs::remove_all(hive);
    tests::write_file(hive, "");
}

struct Answer {
    int result;
    std::u16string path;
    friend bool operator==(const Answer&, const Answer&) = default;
};

Answer user_data() {
    char16_t path[MAX_PATH] = u"stale";
    const int result = TvGetUserDataPath(path);
    return {result, path};
}

std::u16string fallback() {
    return platform_path(tests::profile_folder() + "/temp");
}

TEST(UserData, AFirstRunFixesTheDefaultForGood) {
    const auto expected = platform_path(documents() + "/Tolvarine Computer/8");
    EXPECT_EQ(user_data(), (Answer{1, expected}));
    EXPECT_EQ(stored(kKey), expected) << "without a zero";
    EXPECT_TRUE(fs::is_directory(documents() + "/Tolvarine Computer/8"));

    move_documents(tests::new_folder());
    EXPECT_EQ(user_data(), (Answer{1, expected}));
    EXPECT_EQ(GetUserDataFolderPath(0), expected);
}

TEST(UserData, StoredPathsAreTakenAsTheyAre) {
    const auto place = tests::new_folder();
    tests::write_file(place + "/file", "");
    struct {
        const char* what;
        std::u16string path;
        Answer answer;
    } const cases[] = {
        {"new", platform_path(place + "/a/b"), {1, platform_path(place + "/a/b")}},
        {"with a zero", platform_path(place) + u'\0', {1, platform_path(place)}},
        {"drive that isn't there", u"Q:\\data", {0, u"Q:\\data"}},
        {"network", u"\\\\host\\share", {0, u"\\\\host\\share"}},
        {"a file", platform_path(place + "/file"), {0, platform_path(place + "/file")}},
        {"below a file", platform_path(place + "/file/x"), {0, platform_path(place + "/file/x")}},
        {"no room", u"C:\\" + std::u16string(257, u'x'), {0, u""}},
        {"far beyond", std::u16string(900, u'x'), {0, u""}},
    };
    for (const auto& [what, path, answer] : cases) {
        store(kKey, path);
        EXPECT_EQ(user_data(), answer) << what;
        EXPECT_EQ(stored(kKey), path) << what << ": kept";
        EXPECT_EQ(GetUserDataFolderPath(1), answer.result != 0 ? answer.path : fallback()) << what;
    }
    EXPECT_TRUE(fs::is_directory(tests::profile_folder() + "/temp"));
    EXPECT_FALSE(fs::exists(documents())) << "never the default behind a stored path's back";
}

TEST(UserData, WhatIsNoTextIsReplaced) {
    const auto expected = platform_path(documents() + "/Tolvarine Computer/8");
    store(kKey, u"\x1\x2", REG_DWORD);
    EXPECT_EQ(user_data(), (Answer{1, expected}));
    store(kKey, u"");
    EXPECT_EQ(user_data(), (Answer{1, expected}));
    EXPECT_EQ(stored(kKey), expected);
}

TEST(UserData, WithoutARegistryATemporaryFolderServes) {
    break_registry();
    EXPECT_EQ(user_data(), (Answer{0, u""}));
    EXPECT_EQ(GetUserDataFolderPath(0), fallback());
    EXPECT_EQ(TvGetCredentialPath(), fallback() + u"\\Common\\Credential");
    EXPECT_TRUE(fs::is_directory(tests::profile_folder() + "/temp/Common/Credential"));
    EXPECT_EQ(TvGetQCmdRootPath(), u"\\Pelrin\\QuickButton Files");
    char16_t path[MAX_PATH];
    EXPECT_EQ(TvGetUserDataPathV5(path, nullptr), 0);
}

TEST(UserData, WithoutDocumentsThereIsNoDefault) {
    move_documents("/nowhere/at/all");
    EXPECT_EQ(user_data(), (Answer{0, u""}));
    EXPECT_EQ(stored(kKey), u"");
    EXPECT_EQ(GetUserDataFolderPath(0), fallback());
    EXPECT_EQ(TvGetDefaultDataPath(), nullptr);

    const auto place = platform_path(tests::new_folder());
    store(kKey, place);
    EXPECT_EQ(user_data(), (Answer{1, place}));
}

TEST(UserData, WhatIsMadeIsTheAccountsAlone) {
    const auto place = tests::new_folder();
    store(kKey, platform_path(place + "/new/data"));
    umask(0);
    TvGetCredentialPath();
    AfxGetDefaultSessionPath(u"Lumsey");
    AfxGetOmbrAddonCommonPath();
    int folders = 0;
    for (const auto& entry : fs::recursive_directory_iterator(place)) {
        EXPECT_EQ(entry.status().permissions(), fs::perms::owner_all) << entry;
        ++folders;
    }
    EXPECT_EQ(folders, 9);
}

TEST(UserData, TheCacheAsksAgainOnlyForARefresh) {
    const auto first = platform_path(tests::new_folder());
    const auto second = platform_path(tests::new_folder());
    store(kKey, first);
    const auto* path = GetUserDataFolderPath(0);
    EXPECT_EQ(path, first);
    store(kKey, second);
    EXPECT_EQ(GetUserDataFolderPath(0), first);
    EXPECT_EQ(TvGetCredentialPath(), first + u"\\Common\\Credential");
    EXPECT_EQ(GetUserDataFolderPath(1), path) << "one buffer";
    EXPECT_EQ(path, second);
    EXPECT_EQ(TvGetCredentialPath(), first + u"\\Common\\Credential") << "stays for the process";
}

TEST(UserData, ManyThreadsFillTheCachesTogether) {
    const auto expected = platform_path(documents() + "/Tolvarine Computer/8");
    tests::on_threads(8, [&](int i) {
        for (int round = 0; round < 50; ++round) {
            EXPECT_EQ(GetUserDataFolderPath(i % 2), expected);
            EXPECT_EQ(TvGetCredentialPath(), expected + u"\\Common\\Credential");
            EXPECT_NE(*GetCommonDataFolderPath(), 0);
        }
    });
}

TEST(UserData, CommonFolders) {
    const auto root = tests::profile_folder() + "/common";
    EXPECT_EQ(GetPreviousCommonDataFolderPath(), platform_path(root + "/Tolvarine"));
    EXPECT_FALSE(fs::exists(root)) << "one level, and its parent isn't there";
    EXPECT_EQ(GetCommonDataFolderPath(), platform_path(root + "/Tolvarine Computer/8"));
    EXPECT_TRUE(fs::is_directory(root + "/Tolvarine Computer/8"));
}

TEST(UserData, CommonDataBesideTheProgramWhereThereIsNoPlace) {
    tests::write_file(tests::profile_folder() + "/common", "");
    const auto program = fs::read_symlink("/proc/self/exe").parent_path().string();
    EXPECT_EQ(GetCommonDataFolderPath(), platform_path(program + "Common/Tolvarine Computer/8"));
    std::error_code ignored;
    fs::remove_all(program + "Common", ignored);
}

TEST(UserData, TheDefaultIsTestedAndNothingMade) {
    EXPECT_EQ(TvGetDefaultDataPath(), nullptr);
    fs::create_directories(documents());
    chmod(documents().c_str(), 0555);
    if (geteuid() != 0) {
        EXPECT_EQ(TvGetDefaultDataPath(), nullptr);
    }
    chmod(documents().c_str(), 0755);
    EXPECT_EQ(TvGetDefaultDataPath(), platform_path(documents() + "/Tolvarine Computer/8"));
    EXPECT_TRUE(fs::is_empty(documents()));
}

TEST(PreviousData, Version5) {
    char16_t path[MAX_PATH];
    EXPECT_EQ(TvGetUserDataPathV5(path, nullptr), 0) << "no key";
    const auto place = tests::new_folder();
    fs::create_directories(place + "/Pelrin");
    store(kKeyV5, platform_path(place));
    EXPECT_EQ(TvGetUserDataPathV5(path, nullptr), 1);
    EXPECT_EQ(path, platform_path(place));
    EXPECT_EQ(TvGetUserDataPathV5(path, u"Pelrin"), 1);
    EXPECT_EQ(path, platform_path(place)) << "without the product";
    EXPECT_EQ(TvGetUserDataPathV5(path, u"Dovr"), 0);

    store(kKeyV5, u"Q:\\gone");
    fs::create_directories(documents());
    const auto documents_v5 = platform_path(documents() + "/Tolvarine");
    EXPECT_EQ(TvGetUserDataPathV5(path, nullptr), 0);
    EXPECT_EQ(path, documents_v5);
    EXPECT_EQ(stored(kKeyV5), documents_v5);
    fs::create_directories(documents() + "/Tolvarine");
    EXPECT_EQ(TvGetUserDataPathV5(path, nullptr), 1);
}

TEST(PreviousData, Version4) {
    char16_t path[MAX_PATH];
    const auto place = tests::profile_folder() + "/home/.config/Tolvarine";
    EXPECT_EQ(TvGetUserDataPathV4(path, nullptr), 0);
    EXPECT_EQ(path, platform_path(place));
    fs::create_directories(place + "/Dovr");
    EXPECT_EQ(TvGetUserDataPathV4(path, nullptr), 1);
    EXPECT_EQ(TvGetUserDataPathV4(path, u"Dovr"), 1);
    EXPECT_EQ(TvGetUserDataPathV4(path, u"Pelrin"), 0);
}

TEST(PreviousData, RegistryTellsWhoWasThere) {
    for (const auto* name :
         {u"Software\\Tolvarine\\Ombrelia Enterprise\\4",
          u"Software\\Tolvarine\\Pelrin\\5\\Language", u"Software\\Tolvarine\\Dovr\\6"}) {
        RegCloseKey(key_of(name));
    }
    struct {
        unsigned int version;
        const char16_t* product;
        int exists;
    } const cases[] = {
        {4, u"Enterprise", 1}, {4, u"Ombrelia Enterprise", 1},
        {4, u"Ombrelia", 0},   {5, u"Pelrin", 1},
        {5, u"Enterprise", 0}, {6, u"Dovr", 1},
        {5, u"Dovr", 0},       {4, u"", 0},
        {4, nullptr, 0},
    };
    for (const auto& [version, product, exists] : cases) {
        EXPECT_EQ(TvExsistPreviousUserData(version, product), exists)
            << version << (product != nullptr ? CStringA(product).GetString() : " null");
    }
}

TEST(UserData, IsValidUnlessThePersonWantsAnother) {
    testing::internal::CaptureStderr();
    EXPECT_NE(TvIsValidDataFolder(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "no message when all is well";

    store(kKey, u"Q:\\gone");
    setsid();
    testing::internal::CaptureStderr();
    EXPECT_NE(TvIsValidDataFolder(), 0) << "nobody to ask is a No";
    EXPECT_NE(testing::internal::GetCapturedStderr().find("user data folder 'Q:\\gone'"),
              std::string::npos);
    EXPECT_EQ(TvGetQCmdRootPath(), u"Q:\\gone\\Pelrin\\QuickButton Files");
}

}  // namespace
