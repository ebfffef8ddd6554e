#include "tvutil2/lang/resource_language.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/menus/menu.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <vector>

#include "tests/support/profile.h"
#include "tests/support/resource_image.h"

namespace {

TEST(ResourceLanguage, MapsAnyLanguageToOneWithResources) {
    const std::pair<DWORD, WORD> cases[] = {
        {0x0407, 0x0407}, {0x0807, 0x0407}, {0x0007, 0x0407}, {0x0C0A, 0x0C0A},  {0x080A, 0x0C0A},
        {0x0C0C, 0x040C}, {0x0816, 0x0416}, {0x0804, 0x0804}, {0x0404, 0x0404},  {0x0C04, 0x0C04},
        {0x0411, 0x0411}, {0x0812, 0x0812}, {0x0419, 0x0419}, {0x041B, 0x041B},  {0x0409, 0x0409},
        {0x0809, 0x0409}, {0x0413, 0x0409}, {0x0000, 0x0409}, {0x10C04, 0x0C04}, {0x70407, 0x0407},
    };
    for (const auto& [language, mapped] : cases) EXPECT_EQ(TvMapResourceLanguage(language), mapped);
}

// A value "User" and when its key was written: earlier and later by hand of the clock.
struct Choice {
    int time;
    DWORD type;
    std::vector<WORD> units;  // the data, 16 bits at a time; none: a key without the value
};

void choose(HKEY root, const std::optional<Choice>& choice, const char16_t* product = u"Pelrin") {
    if (!choice) return;
    const auto time = tvutil2::file_time_of(std::uint64_t{130000000000000000} +
                                            static_cast<std::uint64_t>(choice->time) * 10000000);
    tvutil2::set_clock(&time);
    CString path;
    path.Format(u"Software\\Tolvarine\\%s\\8\\Language", product);
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(root, path, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr), 0);
    if (!choice->units.empty()) {
        RegSetValueExW(key, u"User", 0, choice->type,
                       reinterpret_cast<const BYTE*>(choice->units.data()),
                       static_cast<DWORD>(choice->units.size() * 2));
    }
    RegCloseKey(key);
}

// What the user's key says: -1 for no number.
std::int64_t stored_choice(const char16_t* product = u"Pelrin") {
    CString path;
    path.Format(u"Software\\Tolvarine\\%s\\8\\Language", product);
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, &key) != 0) return -1;
    DWORD type = 0, value = 0, size = sizeof value;
    const auto error =
        RegQueryValueExW(key, u"User", nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
    RegCloseKey(key);
    return error == 0 && type == REG_DWORD && size == sizeof value ? std::int64_t{value} : -1;
}

// The usual choice: a number.
Choice number(int time, WORD language, WORD high = 0) {
    return {time, REG_DWORD, {language, high}};
}

TEST(ResourceLanguage, OfAProductIsTheLaterOfTwoChoices) {
    const auto german = number(10, 0x0407);
    const Choice text{10, REG_SZ, {u'1', 0}};
    const Choice eight{10, REG_DWORD, {0x0407, 0, 0, 0}};
    const struct {
        const char* what;
        std::optional<Choice> user;
        std::optional<Choice> machine;
        LCID thread;
        WORD language;
        std::int64_t stored;
    } cases[] = {
        {"no choice, spoken thread", {}, {}, 0x10411, 0x0411, -1},
        {"no choice, unspoken thread", {}, {}, 0x0413, 0x0409, -1},
        {"no choice, Swiss German thread", {}, {}, 0x0807, 0x0407, -1},
        {"the user's", german, {}, 0x0411, 0x0407, 0x0407},
        {"high bits don't count", number(10, 0x0807, 0x1234), {}, 0x0411, 0x0407, 0x12340807},
        {"a string is none", text, {}, 0x0411, 0x0411, -1},
        {"of two bytes is none", Choice{10, REG_DWORD, {0x0407}}, {}, 0x0411, 0x0411, -1},
        {"of eight bytes is none", eight, {}, 0x0411, 0x0411, -1},
        {"unspoken choice", number(10, 0x0413), {}, 0x0411, 0x0409, 0x0413},
        {"Hong Kong", number(10, 0x0C04), {}, 0x0411, 0x0C04, 0x0C04},
        {"the machine's alone", {}, german, 0x0411, 0x0407, 0x0407},
        {"the machine's, later", number(9, 0x040C), german, 0x0411, 0x0407, 0x0407},
        {"the user's, later", number(11, 0x040C), german, 0x0411, 0x040C, 0x040C},
        {"the user's, at once", number(10, 0x040C), german, 0x0411, 0x040C, 0x040C},
        {"the machine has a key alone", {}, Choice{10, 0, {}}, 0x0411, 0x0411, 0x0411},
        {"the machine's string, later", number(9, 0x040C), text, 0x0411, 0x040C, 0x040C},
        {"kept as it was chosen", {}, number(10, 0x0807, 9), 0x0411, 0x0407, 0x0807},
    };
    for (const auto& c : cases) {
        RegDeleteTreeW(HKEY_CURRENT_USER, nullptr);
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, nullptr);
        choose(HKEY_CURRENT_USER, c.user);
        choose(HKEY_LOCAL_MACHINE, c.machine);
        SetThreadLocale(c.thread);
        EXPECT_EQ(MLS_TvGetUserLanguage(u"Pelrin"), c.language) << c.what;
        EXPECT_EQ(stored_choice(), c.stored) << c.what;
        EXPECT_EQ(MLS_TvGetResourceLanguage(u"Pelrin"), c.language) << c.what;
    }
    tvutil2::set_clock(nullptr);
}

TEST(ResourceLanguage, OfTheMachineReachesAUserOnce) {
    choose(HKEY_LOCAL_MACHINE, number(10, 0x0407));
    choose(HKEY_CURRENT_USER, number(5, 0x0411));
    const auto now = tvutil2::file_time_of(std::uint64_t{130000000000000000} + 200000000);
    tvutil2::set_clock(&now);
    EXPECT_EQ(MLS_TvGetUserLanguage(u"Pelrin"), 0x0407);
    choose(HKEY_CURRENT_USER, number(21, 0x040C));
    EXPECT_EQ(MLS_TvGetUserLanguage(u"Pelrin"), 0x040C);
    choose(HKEY_LOCAL_MACHINE, number(22, 0x0412));
    EXPECT_EQ(MLS_TvGetUserLanguage(u"Pelrin"), 0x0412);
    tvutil2::set_clock(nullptr);
}

TEST(ResourceLanguage, TakesNineteenUnitsOfAProductsName) {
    SetThreadLocale(0x0411);
    choose(HKEY_CURRENT_USER, number(10, 0x0407), u"1234567890123456789");
    EXPECT_EQ(MLS_TvGetUserLanguage(u"1234567890123456789"), 0x0407);
    EXPECT_EQ(MLS_TvGetUserLanguage(u"12345678901234567890 and more"), 0x0407);
    EXPECT_EQ(MLS_TvGetUserLanguage(u"123456789012345678"), 0x0411);
    EXPECT_EQ(MLS_TvGetUserLanguage(u""), 0x0411);
}

const HMODULE kModule = reinterpret_cast<HMODULE>(std::uintptr_t{0x1234});

TEST(ResourceLanguage, LoadsStringsCutToTheRoomThereIs) {
    const std::u16string long_text(300, u'x');
    // A pair from the fifth unit on.
    const std::u16string pair = u"1234\U0001F600 and more";
    tests::ResourceImage image;
    image.add(u"#6", u"#1", 0x409, tests::string_block({long_text, pair, u"", u"ab"}));
    ASSERT_TRUE(tvutil2::add_module_resources(kModule, image.bytes().data(), image.bytes().size()));
    const struct {
        unsigned int id;
        int size;
        int result;
        std::u16string text;
    } cases[] = {
        {0, 512, 1, long_text.substr(0, 255)},
        {0, 513, 1, long_text.substr(0, 255)},
        {0, 600, 1, long_text.substr(0, 299)},
        {0, 602, 1, long_text},
        {3, 6, 1, u"ab"},
        {3, 5, 1, u"a"},
        {3, 2, 1, u""},
        {3, 1, 0, u"before"},
        {3, -2, 0, u"before"},
        {1, 14, 1, pair.substr(0, 6)},
        {1, 12, 1, u"1234"},
        {1, 10, 1, u"1234"},
        {2, 512, 0, u"before"},
        {15, 512, 0, u"before"},
        {16, 512, 0, u"before"},
        {0x100000, 512, 1, long_text.substr(0, 255)},  // the block's number has 16 bits
    };
    for (const auto& c : cases) {
        char16_t text[400] = u"before";
        EXPECT_EQ(MLS_TvLoadString(kModule, c.id, text, c.size, nullptr), c.result) << c.id;
        EXPECT_EQ(text, c.text) << c.id << ' ' << c.size;
    }
    EXPECT_EQ(MLS_TVUTIL_ID2STR_DLL(kModule, 0).GetLength(), 255);
    EXPECT_EQ(MLS_TVUTIL_ID2STR_DLL(kModule, 2), u"??");
    EXPECT_EQ(MLS_TVUTIL_ID2STR_DLL(kModule, 999), u"??");
}

TEST(ResourceLanguage, FallsBackToTheSystemsChoice) {
    setenv("LC_ALL", "ko_KR.UTF-8", 1);
    const auto library = tvutil2::library_instance();
    const std::pair<LCID, const char16_t*> cases[] = {
        {0x0807, u"Geben Sie eine ganze Zahl ein."},
        {0x040C, u"Entrez un nombre entier."},
        {0x0413, u"Enter an integer."},
        // Chinese of Hong Kong is asked for, isn't there, and the system speaks Korean.
        {0x0C04, u"\uC815\uC218\uB97C \uC785\uB825\uD558\uC2ED\uC2DC\uC624."},
    };
    for (const auto& [thread, text] : cases) {
        SetThreadLocale(thread);
        EXPECT_EQ(MLS_TVUTIL_ID2STR_DLL(library, 14127), text) << thread;
    }
    EXPECT_EQ(MLS_TvGetLocalLanguage(), 0x0412);
}

// The image of a product, as a resource compiler makes it.
class ProductResources : public testing::Test {
  protected:
    void SetUp() override {
        m_image = tests::read_file(TESTS_STARTED "/product.res");
        ASSERT_TRUE(tvutil2::add_module_resources(nullptr, m_image.data(), m_image.size()));
        // What the application object of a product does.
        AfxSetResourceHandle(GetModuleHandleW(nullptr));
        choose(HKEY_CURRENT_USER, number(10, 0x0407), u"Dovr");
        tvutil2::set_clock(nullptr);
        SetThreadLocale(0x0409);
    }
    ~ProductResources() override { tvutil2::remove_module_resources(nullptr); }

  private:
    std::string m_image;
};

INT_PTR ignore(HWND, UINT, WPARAM, LPARAM) {
    return 0;
}

TEST_F(ProductResources, AreReadInTheProductsLanguage) {
    EXPECT_EQ(MLS_TVUTIL_ID2STR(1, u"Dovr"), u"Deutsch");
    EXPECT_EQ(MLS_TVUTIL_ID2STR(1, u"Pelrin"), u"English");
    EXPECT_EQ(MLS_TVUTIL_ID2STR(1, nullptr), u"English");
    EXPECT_EQ(MLS_TVUTIL_ID2STR(3, u"Dovr"), u"??");
}

TEST_F(ProductResources, HoldMenusAndDialogsThatTemplatesAreTakenFrom) {
    const struct {
        const char16_t* name;
        bool is_dialog;
        int result;
        DWORD error;
    } cases[] = {
        {u"MainMenu", false, 1, 0},
        {MAKEINTRESOURCEW(200), true, -1, ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION},
        {u"OnlyFrench", true, -1, ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION},
        {u"Missing", false, 0, ERROR_RESOURCE_NAME_NOT_FOUND},
        {MAKEINTRESOURCEW(201), true, 0, ERROR_RESOURCE_NAME_NOT_FOUND},
    };
    for (const auto& c : cases) {
        SetLastError(0);
        if (c.is_dialog) {
            EXPECT_EQ(MLS_TvDialogBoxParam(nullptr, c.name, nullptr, ignore, 0, u"Dovr"), c.result);
        } else {
            auto* const menu = MLS_TvLoadMenu(nullptr, c.name, u"Dovr");
            EXPECT_EQ(menu != nullptr, c.result != 0);
            if (menu != nullptr) DestroyMenu(menu);
        }
        if (c.error != 0) {
            EXPECT_EQ(GetLastError(), c.error);
        }
    }
    tests::ResourceImage image;
    image.add(u"#4", u"Short", 0x409, "");
    image.add(u"#4", u"Other", 0x409, std::string("\xFF\xFF\x00\x00", 4));
    image.add(u"#5", u"Short", 0x409, std::string(17, '\0'));
    image.add(u"#5", u"Other", 0x409, std::string("\x02\x00\xFF\xFF", 4) + std::string(14, '\0'));
    ASSERT_TRUE(tvutil2::add_module_resources(kModule, image.bytes().data(), image.bytes().size()));
    for (const auto* name : {u"Short", u"Other"}) {
        EXPECT_EQ(MLS_TvLoadMenu(kModule, name, u"Dovr"), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_DATA);
        EXPECT_NE(MLS_TvDialogBoxParam(kModule, name, nullptr, ignore, 0, u"Dovr"), 1);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_DATA);
    }
}

}  // namespace
