#include "tvutil2/platform/base/locale.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/registry/registry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

namespace {

TEST(Locale, GivesTheIdOfAHostsName) {
    const std::pair<const char*, LANGID> cases[] = {
        {"de_DE.UTF-8", 0x0407},
        {"de_AT@euro", 0x0C07},
        {"de", 0x0407},
        {"en", 0x0409},
        {"en_GB.utf8", 0x0809},
        {"pt_PT", 0x0816},
        {"pt_BR.UTF-8", 0x0416},
        {"pt", 0x0416},
        {"es", 0x0C0A},
        {"es_ES.UTF-8", 0x0C0A},
        {"es_MX", 0x080A},
        {"fr_CA", 0x0C0C},
        {"zh", 0x0804},
        {"zh_CN.GB18030", 0x0804},
        {"zh_TW.UTF-8", 0x0404},
        {"zh_HK", 0x0C04},
        {"zh_SG", 0x1004},
        {"zh_Hant_TW", 0x0404},
        {"ja_JP.eucJP", 0x0411},
        {"ko", 0x0412},
        {"ru_RU.KOI8-R", 0x0419},
        {"sk_SK", 0x041B},
        {"sr_RS@latin", 0x241A},
        {"sr_RS", 0x281A},
        {"nb_NO", 0x0414},
        {"C", 0x0409},
        {"C.UTF-8", 0x0409},
        {"POSIX", 0x0409},
        {"", 0x0409},
        {"xx_YY", 0x0409},
        {"tlh", 0x0409},
        {".UTF-8", 0x0409},
        {"@latin", 0x0409},
    };
    for (const auto& [host, id] : cases) EXPECT_EQ(tvutil2::language_of(host), id) << host;
    // Longer than any buffer for names.
    EXPECT_EQ(tvutil2::language_of(std::string(100000, 'q')), 0x0409);
}

TEST(Locale, OfTheSystemIsTheFirstVariableThatIsSet) {
    setenv("LC_ALL", "", 1);
    setenv("LC_MESSAGES", "sk_SK.UTF-8", 1);
    setenv("LANG", "ja_JP.UTF-8", 1);
    EXPECT_EQ(GetSystemDefaultLangID(), 0x041B);
}

class MachineLanguage : public testing::TestWithParam<std::pair<std::u16string, LANGID>> {};

// It is the installation's: the account's environment has no say where it is set.
TEST_P(MachineLanguage, GoesBeforeTheEnvironment) {
    const auto& [text, id] = GetParam();
    setenv("LC_ALL", "sk_SK.UTF-8", 1);
    HKEY key = nullptr;
    ASSERT_EQ(
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, u"SYSTEM\\CurrentControlSet\\Control\\Nls\\Language", 0,
                        nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
        0);
    RegSetValueExW(key, u"Default", 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                   static_cast<DWORD>(text.size() + 1) * 2);
    RegCloseKey(key);
    EXPECT_EQ(GetSystemDefaultLangID(), id);
}
INSTANTIATE_TEST_SUITE_P(Texts, MachineLanguage,
                         testing::Values(std::pair{u"0411", 0x0411}, std::pair{u"C04", 0x0C04},
                                         std::pair{u"", 0x041B}, std::pair{u"0411h", 0x041B},
                                         std::pair{u"0400", 0x041B}, std::pair{u"10411", 0x041B},
                                         std::pair{u"\uFF10\u0134", 0x041B}));

TEST(Locale, OfAThreadIsItsOwn) {
    SetThreadLocale(0x10407);
    EXPECT_FALSE(SetThreadLocale(0x10000));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(GetThreadLocale(), 0x10407U);
    std::thread([] { EXPECT_EQ(GetThreadLocale(), GetSystemDefaultLangID()); }).join();
}

}  // namespace
