#include "tvutil2/frame/startup.h"

#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/process/system_modules.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/settings/registry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/profile.h"
#include "tests/support/program.h"

namespace {

constexpr const char16_t* kCommon = u"Software\\Tolvarine\\Common\\8\\Settings";
constexpr const char16_t* kVantrosa = u"Software\\Tolvarine\\Ombrelia\\8\\Vantrosa";
constexpr const char16_t* kPelrin = u"Software\\Tolvarine\\Pelrin\\8";
constexpr const char16_t* kDovr = u"Software\\Tolvarine\\Dovr\\8";
constexpr const char16_t* kZemt = u"Software\\Tolvarine\\Zemt\\8";

std::vector<std::intptr_t> g_contexts;

BOOL record_context(DPI_AWARENESS_CONTEXT context) {
    g_contexts.push_back(reinterpret_cast<std::intptr_t>(context));
    return TRUE;
}

void set_preference(const char16_t* key_name, DWORD value) {
    CRegistry key;
    ASSERT_NE(key.Open(HKEY_CURRENT_USER, key_name, 1, KEY_ALL_ACCESS), 0);
    ASSERT_NE(key.SetValue(u"DpiAwareness", value), 0);
}

TEST(Startup, LibraryStartsWithItsInstance) {
    EXPECT_EQ(tvutil2::resource_instance(), tvutil2::library_instance());
    EXPECT_NE(dynamic_cast<CtvutilApp*>(AfxGetApp()), nullptr);
}

TEST(Startup, LoadTouchesNothing) {
    const auto profile = tests::new_folder() + "/untouched";
    setenv("TVUTIL_PROFILE", profile.c_str(), 1);
    EXPECT_EQ(tests::output_of(std::string(TESTS_STARTED) + "/identify.exe"), "0");
    EXPECT_FALSE(std::filesystem::exists(profile));
}

TEST(Startup, PreferenceIsThePrograms) {
    tvutil2::exchange_system_export(u"user32.dll", "SetProcessDpiAwarenessContext",
                                    tvutil2::as_export(record_context));
    const auto context_for = [](unsigned int program) {
        g_contexts.clear();
        TvCommonInitialize(program);
        return g_contexts.size() == 1 ? g_contexts[0] : 0;
    };
    EXPECT_EQ(context_for(0), -4) << "nothing is set anywhere";
    set_preference(kCommon, 2);
    EXPECT_EQ(context_for(0), -5);
    EXPECT_EQ(context_for(2), -4) << "a product without a key doesn't take the common preference";
    EXPECT_EQ(context_for(9), -5) << "programs without a key of their own have the common one";

    struct {
        unsigned int program;
        const char16_t* key;
        DWORD value;
        std::intptr_t context;
    } const cases[] = {
        {1, kVantrosa, 1, -2}, {2, kPelrin, 0, -4}, {3, kDovr, 1, -2}, {4, kZemt, 1, -2}};
    for (const auto& [program, key, value, context] : cases) {
        set_preference(key, value);
        EXPECT_EQ(context_for(program), context) << program;
        CRegistry product;
        ASSERT_NE(product.Open(HKEY_CURRENT_USER, key, 0, KEY_ALL_ACCESS), 0);
        ASSERT_NE(product.SetValue(u"DpiAwareness", u"1"), 0);
        EXPECT_EQ(context_for(program), -5) << "a text is no preference: the common one stands";
    }
    EXPECT_EQ(tvutil2::default_dll_directories(), 0x0C00U);
}

TEST(Startup, SetsPerMonitorAwarenessAndKeepsTheFirst) {
    TvCommonInitialize(0);
    EXPECT_EQ(tvutil2::process_dpi_awareness(), DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    set_preference(kCommon, 1);
    TvCommonInitialize(0);
    EXPECT_EQ(tvutil2::process_dpi_awareness(), DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
}

TEST(Startup, PreferenceOutOfRangeGoesTheOldWay) {
    set_preference(kCommon, 7);
    tvutil2::exchange_system_export(u"user32.dll", "SetProcessDpiAwarenessContext",
                                    tvutil2::as_export(record_context));
    TvCommonInitialize(0);
    EXPECT_TRUE(g_contexts.empty());
    EXPECT_EQ(tvutil2::process_dpi_awareness(), DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE);
}

TEST(Startup, WithoutUserModuleTheOldWay) {
    tvutil2::set_system_module_present(u"user32.dll", false);
    tvutil2::set_system_module_present(u"kernel32.dll", false);
    TvCommonInitialize(0);
    EXPECT_EQ(tvutil2::process_dpi_awareness(), DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE);
    EXPECT_EQ(tvutil2::default_dll_directories(), 0U);
}

TEST(Startup, WithoutContextsAndShcoreSystemAware) {
    tvutil2::exchange_system_export(u"user32.dll", "SetProcessDpiAwarenessContext", nullptr);
    tvutil2::exchange_system_export(u"kernel32.dll", "SetDefaultDllDirectories", nullptr);
    tvutil2::set_system_module_present(u"shcore.dll", false);
    TvCommonInitialize(0);
    EXPECT_EQ(tvutil2::process_dpi_awareness(), DPI_AWARENESS_CONTEXT_SYSTEM_AWARE);
}

HRESULT refuse_awareness(int /*awareness*/) {
    return E_FAIL;
}

BOOL refuse_context(DPI_AWARENESS_CONTEXT /*context*/) {
    return FALSE;
}

TEST(Startup, RefusalsFallThroughToSystemAwareness) {
    tvutil2::exchange_system_export(u"user32.dll", "SetProcessDpiAwarenessContext",
                                    tvutil2::as_export(refuse_context));
    tvutil2::exchange_system_export(u"shcore.dll", "SetProcessDpiAwareness",
                                    tvutil2::as_export(refuse_awareness));
    TvCommonInitialize(2);
    EXPECT_EQ(tvutil2::process_dpi_awareness(), DPI_AWARENESS_CONTEXT_SYSTEM_AWARE);
}

}  // namespace
