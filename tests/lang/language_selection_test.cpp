#include "tvutil2/lang/language_selection.h"

#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/process/system_modules.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/platform/resource/data_module.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/system/runtime_locale.h"

#include <gtest/gtest.h>

#include <clocale>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/executable_image.h"
#include "tests/support/host_files.h"
#include "tests/support/profile.h"
#include "tests/support/resource_image.h"

namespace {

// A number among a product's choices; nothing for what is none.
std::optional<DWORD> stored(const char16_t* value) {
    DWORD number = 0, size = sizeof number, type = 0;
    HKEY key = nullptr;
    RegOpenKeyExW(HKEY_CURRENT_USER, u"Software\\Tolvarine\\Pelrin\\8\\Language", 0, KEY_READ,
                  &key);
    const auto result =
        RegQueryValueExW(key, value, nullptr, &type, reinterpret_cast<BYTE*>(&number), &size);
    RegCloseKey(key);
    return result == ERROR_SUCCESS && type == REG_DWORD ? std::optional(number) : std::nullopt;
}

TEST(LanguageSelection, StoresAChoiceThatIsFinalOrNotYet) {
    struct Stored {
        std::optional<DWORD> user, temporary;
        bool operator==(const Stored&) const = default;
    };
    const struct {
        WORD language;
        int temporary;
        Stored stored;
    } steps[] = {
        {0, 0, {{}, 0}},        {0x407, 1, {{}, 0x407}},
        {0, 0, {0x407, 0}},     {0x411, 1, {0x407, 0x411}},
        {0x40C, 0, {0x40C, 0}}, {0, 0, {0x40C, 0}},
        {0, 1, {0x40C, 0}},
    };
    for (const auto& step : steps) {
        MLS_TvSaveLanguage(u"Pelrin", step.language, step.temporary);
        EXPECT_EQ((Stored{stored(u"User"), stored(u"Temporary")}), step.stored) << (&step - steps);
    }
    EXPECT_EQ(MLS_TvGetUserLanguage(u"Pelrin"), 0x40C);
}

// A string "Salut" in French, and a resource by names, in one section of an executable.
tests::Bytes satellite() {
    using u16 = std::uint16_t;
    using u32 = std::uint32_t;
    auto image = tests::pe_image();
    const auto put = [&image](u32 place, auto value) { image.put(tests::kPeRoot + place, value); };
    const auto directory = [&put](u32 place, u16 named, u16 numbered) {
        put(place + 12, named);
        put(place + 14, numbered);
    };
    const auto text = [&put](u32 place, std::u16string_view units) {
        put(place, static_cast<u16>(units.size()));
        for (const auto unit : units) put(place += 2, static_cast<u16>(unit));
    };
    directory(0, 1, 1);
    put(16, u32{0x80000000 + 240});  // "Custom"
    put(20, u32{0x80000000 + 48});
    put(24, u32{6});  // strings
    put(28, u32{0x80000000 + 72});
    directory(48, 1, 0);
    put(64, u32{0x80000000 + 256});  // "Name"
    put(68, u32{0x80000000 + 96});
    directory(72, 0, 1);
    put(88, u32{1});
    put(92, u32{0x80000000 + 120});
    directory(96, 0, 1);
    put(112, u32{0x409});
    put(116, u32{144});
    directory(120, 0, 1);
    put(136, u32{0x40C});
    put(140, u32{160});
    put(144, u32{0x1000 + 271});  // odd places are no matter
    put(148, u32{3});
    put(160, u32{0x1000 + 280});
    put(164, u32{44});
    text(240, u"Custom");
    text(256, u"Name");
    image.put_text(tests::kPeRoot + 271, "own");
    image.put_text(tests::kPeRoot + 280, tests::string_block({u"", u"Salut"}));
    return image;
}

std::string text_in(HMODULE module, const char16_t* type, const char16_t* name) {
    const auto found = FindResourceW(module, name, type);
    const auto* bytes = static_cast<const char*>(LockResource(LoadResource(module, found)));
    return bytes == nullptr ? "none" : std::string(bytes, SizeofResource(module, found));
}

class Satellites : public testing::Test {
  protected:
    const std::string m_folder = tests::new_folder();
    HMODULE m_module = nullptr;

    Satellites() {
        std::filesystem::create_directory(m_folder + "/Languages");
        std::filesystem::copy_file(TESTS_STARTED "/unversioned.dll", m_folder + "/tool.dll");
        m_module = LoadLibraryW(tvutil2::platform_path(m_folder + "/tool.dll")->c_str());
    }
    ~Satellites() override { FreeLibrary(m_module); }
    void write(const std::string& name, const std::string& bytes) {
        tests::write_file(m_folder + "/Languages/" + name, bytes);
    }
};

TEST_F(Satellites, AreFoundByTheProductsLanguage) {
    write("toolFRA.dll", satellite().all());
    tests::ResourceImage traditional;
    traditional.add(u"#6", u"#1", 0x404, tests::string_block({u"", u"T"}));
    write("toolCHT.dll", traditional.bytes());
    write("toolKOR.dll", "MZ and no more");
    const struct {
        WORD language;
        const char16_t* text;  // null: no satellite
        LANGID thread;
    } cases[] = {
        {0x409, nullptr, 0x409},  {0x413, nullptr, 0x409}, {0x40C, u"Salut", 0x40C},
        {0xC0C, u"Salut", 0x40C}, {0x404, u"T", 0x404},    {0xC04, u"T", 0x404},
        {0x1404, u"T", 0x404},    {0x804, nullptr, 0x419}, {0x412, nullptr, 0x419},
    };
    for (const auto& [language, text, thread] : cases) {
        SCOPED_TRACE(language);
        SetThreadLocale(0x419);
        MLS_TvSaveLanguage(u"tool", language, 0);
        auto* const satellite = TvLoadAppLangResourceDLL(m_module, u"tool");
        EXPECT_EQ(GetThreadLocale(), thread);
        ASSERT_EQ(satellite != nullptr, text != nullptr);
        if (satellite == nullptr) continue;
        EXPECT_EQ(MLS_TVUTIL_ID2STR_DLL(satellite, 1), CString(text));
        EXPECT_TRUE(FreeLibrary(satellite));
        EXPECT_FALSE(FreeLibrary(satellite));
    }
    EXPECT_EQ(TvLoadAppLangResourceDLL(reinterpret_cast<HMODULE>(std::uintptr_t{7}), u"tool"),
              nullptr);
}

TEST_F(Satellites, AreLoadedWholeOrNot) {
    const auto whole = satellite().all();
    write("a.dll", whole);
    const auto path = *tvutil2::platform_path(m_folder + "/Languages/a.dll");
    auto* const module = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(text_in(module, u"custom", u"NAME"), "own");
    EXPECT_EQ(GetModuleHandleW(path.c_str()), nullptr) << "it has no code";
    // What becomes of the file is no matter any more.
    write("a.dll", "");
    EXPECT_EQ(text_in(module, u"custom", u"NAME"), "own");
    FreeLibrary(module);

    const auto load = [&](const std::string& bytes) {
        write("a.dll", bytes);
        auto* const loaded = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
        return loaded != nullptr ? !FreeLibrary(loaded) : static_cast<int>(GetLastError());
    };
    const auto with = [&](std::size_t place, std::uint32_t number) {
        auto changed = satellite();
        changed.put(tests::kPeRoot + place, number);
        return changed.all();
    };
    const std::pair<std::string, int> cases[] = {
        {whole, 0},
        {"", ERROR_BAD_EXE_FORMAT},
        {"\x7F"
         "ELF",
         ERROR_BAD_EXE_FORMAT},
        {whole.substr(0, tests::kPeRoot + 300), ERROR_BAD_EXE_FORMAT},
        {with(12, 0xFFFFFFFF), ERROR_BAD_EXE_FORMAT},   // entries without end
        {with(16, 0x80000FFF), ERROR_BAD_EXE_FORMAT},   // a name outside
        {with(20, 48), ERROR_BAD_EXE_FORMAT},           // data a level too early
        {with(20, 0x80000000), ERROR_BAD_EXE_FORMAT},   // in a circle
        {with(148, 0x7FFFFFFF), ERROR_BAD_EXE_FORMAT},  // longer than the section
    };
    for (const auto& [bytes, error] : cases)
        EXPECT_EQ(load(bytes), error) << (&error - &cases[0].second);
    std::filesystem::remove(m_folder + "/Languages/a.dll");
    EXPECT_EQ(LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(LoadLibraryExW(path.c_str(), nullptr, 0x1000), nullptr);
}

TEST(LanguageSelection, PutsAThreadIntoALocale) {
    EXPECT_NE(TvSetThreadLocale(0x40407), 0);
    EXPECT_EQ(GetThreadLocale(), 0x40407U);
    EXPECT_EQ(TvSetThreadLocale(0), 0);
    EXPECT_EQ(GetThreadLocale(), GetSystemDefaultLangID());
    SetThreadLocale(0x411);
    const auto taken =
        tvutil2::exchange_system_export(u"KERNEL32.DLL", "SetThreadUILanguage", nullptr);
    EXPECT_EQ(TvSetThreadLocale(0x407), 0);
    EXPECT_EQ(GetThreadLocale(), 0x411U);
    tvutil2::exchange_system_export(u"KERNEL32.DLL", "SetThreadUILanguage", taken);
}

// Which locales a host has is its own affair; the plain one is always there.
TEST(LanguageSelection, SetsTheRunTimeLibrarysLocale) {
    const auto set = [](const char16_t* name) {
        const auto* const taken = _wsetlocale(LC_ALL, name);
        return std::u16string(taken != nullptr ? taken : u"none");
    };
    EXPECT_EQ(set(u"C"), u"C");
    EXPECT_EQ(set(u"Klingon"), u"none");
    EXPECT_EQ(set(u"\xD800"), u"none");
    EXPECT_EQ(set(nullptr), u"C");
    const auto german = set(u"German");
    EXPECT_TRUE(german == u"none" || german.starts_with(u"de_DE"));
    TvSetLocale();
    setlocale(LC_ALL, "C");
}

}  // namespace
