#include "tvutil2/settings/option_storage.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/files/known_folders.h"
#include "tvutil2/settings/registry.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>

#include "tests/support/profile.h"

namespace {

constexpr auto kKey = u"Software\\Co\\App";

std::string application_data() {
    char16_t folder[MAX_PATH];
    EXPECT_GE(SHGetFolderPathW(nullptr, CSIDL_APPDATA | CSIDL_FLAG_CREATE, nullptr, 0, folder), 0);
    return tvutil2::host_path(folder).value_or("");
}

bool has_key(const std::u16string& path) {
    return CRegistry().Open(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ) != 0;
}

DWORD number_at(const std::u16string& path, const char16_t* name) {
    CRegistry key;
    key.Open(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ);
    return key.GetValue(name, DWORD{0});
}

// What a caller who doesn't know the place sees, in both.
TEST(OptionStorage, KeepsOptionsInEitherPlace) {
    std::filesystem::create_directories(application_data() + "/Co");
    for (const int in_registry : {0, 1}) {
        COptionStorage store;
        ASSERT_EQ(store.Open(u"Co", u"App", in_registry), 1);
        for (const auto* section : {u"", u"a", u"b\\c", u""}) {
            ASSERT_NE(store.SetSection(section), 0);
            ASSERT_NE(store.SetSection(section), 0);
            EXPECT_EQ(store.GetValue(u"Number", 7), *section == 0 ? store.GetValue(u"n", 7) : 7);
            for (const int value : {0, -5, 2147483647, -2147483647 - 1}) {
                store.SetValue(u"Number", value);
                EXPECT_EQ(store.GetValue(u"number", 7), value);
                store.SetValue(u"n", value);
            }
            for (const auto* text : {u"text", u"", u"\u00E4 \u4E2D=;\"x"}) {
                store.SetValue(u"Text", text);
                EXPECT_EQ(store.GetValue(u"Text", u"no"), text);
            }
            store.SetValue(u"Text", static_cast<const char16_t*>(nullptr));
            EXPECT_EQ(store.GetValue(u"Text", u"no"), u"");
            EXPECT_EQ(store.GetValue(nullptr, u"no"), u"no");
            EXPECT_EQ(store.GetValue(u"none", u"no "), u"no ");
            EXPECT_EQ(store.GetValue(u"none", nullptr), u"");
        }
        store.Close();
        EXPECT_EQ(store.GetValue(u"Number", 7), 7);
        EXPECT_EQ(store.GetValue(u"Text", u"no"), u"no");
        store.SetValue(u"Number", 1);
        EXPECT_EQ(store.SetSection(u"a"), 0);
        ASSERT_EQ(store.Open(u"Co", u"App", 1 - in_registry), 1);
    }
}

TEST(OptionStorage, JoinsPathsWithOneSeparator) {
    const struct {
        const char16_t* company;
        const char16_t* product;
        const char* file;
    } cases[] = {{u"Co", nullptr, "/Co/setup.ini"},
                 {u"\\Co", u"\\x.ini", "/Co/x.ini"},
                 {u"Co\\", u"x.ini", "/Co/x.ini"},
                 {nullptr, u"x.ini", "/x.ini"},
                 {u"", u"y.ini", "/y.ini"}};
    std::filesystem::create_directories(application_data() + "/Co");
    for (const auto& [company, product, file] : cases) {
        COptionStorage store;
        ASSERT_EQ(store.OpenIniFile(company, product), 1);
        store.SetValue(u"k", u"v");
        EXPECT_EQ(tests::read_file(application_data() + file), "[Default]\r\nk=v\r\n");
        std::filesystem::remove(application_data() + file);
    }
    COptionStorage store;
    ASSERT_EQ(store.OpenIniFile(u"Missing", u"x.ini"), 1);
    store.SetValue(u"k", u"v");
    EXPECT_FALSE(std::filesystem::exists(application_data() + "/Missing"));
}

TEST(OptionStorage, OpensOnce) {
    const auto path = tests::platform_path(tests::new_folder() + "/a.ini");
    COptionStorage store;
    ASSERT_EQ(store.OpenIniFile(path.c_str()), 1);
    store.SetSection(u"s");
    store.SetValue(u"k", 1);
    EXPECT_EQ(store.OpenRegistry(u"Co", u"App"), 0);
    EXPECT_EQ(store.OpenIniFile(u"C:\\other.ini"), 0);
    EXPECT_EQ(store.OpenIniFile(u"Co", u"App"), 0);
    EXPECT_FALSE(has_key(kKey));
    EXPECT_EQ(store.GetValue(u"k", 7), 1);
    store.Close();
    ASSERT_EQ(store.OpenRegistry(u"Co", u"App"), 1);
    EXPECT_EQ(store.Open(u"Co", u"App", 0), 0);
    EXPECT_EQ(store.GetValue(u"k", 7), 7);  // the section ended with the file
    store.Close();
    EXPECT_EQ(store.OpenRegistry(u"Co", std::u16string(256, u'x').c_str()), 0);
    EXPECT_EQ(store.OpenIniFile(path.c_str()), 1);
}

TEST(OptionStorage, SectionsAreSubKeysOfTheFirstKey) {
    COptionStorage store;
    ASSERT_EQ(store.OpenRegistry(u"Co", u"App"), 1);
    store.SetValue(u"k", 1);
    store.SetSection(u"a");
    store.SetValue(u"k", 2);
    store.SetSection(u"b");
    store.SetValue(u"k", 3);
    EXPECT_EQ(store.SetSection(u"\\y"), 0);
    EXPECT_EQ(store.GetValue(u"k", 7), 3);
    store.SetSection(nullptr);
    EXPECT_EQ(store.GetValue(u"k", 7), 1);
    EXPECT_EQ(number_at(u"Software\\Co\\App\\a", u"k"), 2U);
    EXPECT_EQ(number_at(u"Software\\Co\\App\\b", u"k"), 3U);
    EXPECT_FALSE(has_key(u"Software\\Co\\App\\a\\b"));
    EXPECT_FALSE(has_key(u"Software\\Co\\App\\Default"));
}

TEST(OptionStorage, ReadsOneTypeAndOneSize) {
    COptionStorage store;
    ASSERT_EQ(store.OpenRegistry(u"Co", u"App"), 1);
    store.SetValue(u"n", 5);
    store.SetValue(u"t", u"5");
    EXPECT_EQ(store.GetValue(u"t", 7), 7);
    EXPECT_EQ(store.GetValue(u"n", u"no"), u"no");
    store.SetValue(u"t", std::u16string(4096, u'x').c_str());
    EXPECT_EQ(store.GetValue(u"t", u"no").GetLength(), 4096);
    store.SetValue(u"t", std::u16string(4097, u'x').c_str());
    EXPECT_EQ(store.GetValue(u"t", u"no"), u"no");
    const auto path = tests::platform_path(tests::new_folder() + "/a.ini");
    COptionStorage file;
    ASSERT_EQ(file.OpenIniFile(path.c_str()), 1);
    file.SetValue(u"t", std::u16string(5000, u'x').c_str());
    EXPECT_EQ(file.GetValue(u"t", u"no").GetLength(), 4095);
}

// Copies close nothing of each other, in whatever order they end.
TEST(OptionStorage, CopiesAreStoresOfTheirOwn) {
    std::optional<COptionStorage> first(std::in_place);
    ASSERT_EQ(first->OpenRegistry(u"Co", u"App"), 1);
    COptionStorage root(*first);
    first->SetSection(u"s");
    first->SetValue(u"k", 1);
    COptionStorage copy;
    copy.OpenIniFile(u"C:\\other.ini");
    copy = *first;
    copy = static_cast<const COptionStorage&>(copy);
    first.reset();
    EXPECT_EQ(copy.GetValue(u"k", 7), 1);
    EXPECT_EQ(root.GetValue(u"k", 7), 7);
    copy.SetSection(u"");
    copy.SetValue(u"k", 2);
    EXPECT_EQ(root.GetValue(u"k", 7), 2);
    CRegistry company;
    ASSERT_NE(company.Open(HKEY_CURRENT_USER, u"Software\\Co", 0, KEY_ALL_ACCESS), 0);
    ASSERT_NE(company.DeleteTree(u"App"), 0);
    COptionStorage late(copy);
    EXPECT_EQ(late.GetValue(u"k", 7), 7);
    EXPECT_EQ(late.OpenRegistry(u"Co", u"App"), 1);

    const auto path = tests::platform_path(tests::new_folder() + "/a.ini");
    COptionStorage file;
    ASSERT_EQ(file.OpenIniFile(path.c_str()), 1);
    file.SetSection(u"s");
    COptionStorage other(file);
    other.SetValue(u"k", 3);
    EXPECT_EQ(file.GetValue(u"k", 7), 3);
}

}  // namespace
