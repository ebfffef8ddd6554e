#include "tvutil2/frame/product.h"

#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/settings/registry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/profile.h"
#include "tests/support/program.h"

namespace {

// Read while the program itself is still being built up, as a product's own static objects do.
const CString g_early = PELRIN_CLASS_NAME + u"!";

TEST(Product, Constants) {
    EXPECT_EQ(g_early, u"Pelrin8:MainWnd!");
    const std::pair<const CString&, const char16_t*> cases[] = {
        {DOVR_CLASS_NAME, u"Dovr8:MainWnd"},
        {PELRIN_CLASS_NAME, u"Pelrin8:MainWnd"},
        {VANTROSA_CLASS_NAME, u"Vantrosa8:MainWnd"},
        {VANTROSA_CORE_CLASSNAME, u"Vantrosa8::Core"},
        {OMBR_CLASS_NAME, u"Ombrelia8"},
        {PELRIN_CORE_CLASS_NAME, u"Pelrin8::CoreApp"},
        {PELRIN_FM_CLASS_NAME, u"Pelrin8::FrameMgr"},
        {VANTROSA_FM_CLASS_NAME, u"Vantrosa8::FrameMgr"},
        {PELRIN_VIEWER_CLASS_NAME, u"Pelrin8::MainFrame"},
        {VANTROSA_VIEWER_CLASSNAME, u"Vantrosa8::MainFrame"},
        {CFM_VERSION, u"8"},
    };
    for (const auto& [constant, value] : cases) EXPECT_EQ(constant, value);
}

TEST(Product, NamesStopBehindTheTable) {
    EXPECT_EQ(TvGetProductName(0), u"Ombrelia");
    EXPECT_EQ(TvGetProductName(4), u"Dovr");
    EXPECT_EQ(TvGetProductName(7), u"Pelrin/Dovr");
    EXPECT_EQ(TvGetProductName(8), u"");
    EXPECT_EQ(TvGetProductName(0xFFFFFFFF), u"");
}

void install(const char16_t* product, const char16_t* value, const char16_t* text) {
    CRegistry key;
    ASSERT_NE(key.Open(HKEY_LOCAL_MACHINE, CString(u"Software\\Tolvarine\\") + product, 1,
                       KEY_ALL_ACCESS),
              0);
    ASSERT_NE(key.SetValue(value, text), 0);
}

TEST(Product, BuildVersions) {
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"8.0.0061", u"0061"},
        {u"8.0.2018", u"2018"},
        {u"8.0.12", u"0012"},
        {u"8.0.0000", u""},
        {u"8.0", u""},
        {u"", u""},
        {u"8..1", u""},
        {u" 8. 0. 7 rc1", u"0007"},
        {u"8.0.x", u""},
        {u"8,0,7", u""},
        {u"8.0.12345.6", u"12345"},
        {u"8.0.-5", u"-005"},
        {u"8 .0.7", u""},
        {u"-1.+2.3", u"0003"},
        {u"8.0.99999999999", u"2147483647"},
    };
    EXPECT_EQ(TvGetProductBuildVersion(1, 8), u"") << "no key";
    for (const auto& [version, build] : cases) {
        install(u"Pelrin\\8", u"Version", version);
        EXPECT_EQ(TvGetProductBuildVersion(1, 8), build) << CStringA(version).GetString();
    }
}

TEST(Product, FactsBelongToAProductAndAMajorVersion) {
    install(u"Pelrin\\8", u"Version", u"8.0.0061");
    install(u"Pelrin\\7", u"Version", u"7.0.0001");
    install(u"Pelrin/Dovr\\8", u"Reseller", u"Northwind");
    EXPECT_EQ(TvGetProductVersion(1, 8), u"8.0.0061");
    EXPECT_EQ(TvGetProductVersion(1, 7), u"7.0.0001");
    EXPECT_EQ(TvGetProductVersion(1, 9), u"");
    EXPECT_EQ(TvGetProductVersion(4, 8), u"");
    EXPECT_EQ(TvGetResellerName(7, 8), u"Northwind");
    EXPECT_EQ(TvGetResellerName(1, 8), u"");
}

TEST(Product, Packages) {
    EXPECT_EQ(TvGetPackageCode(1, 8), 1U);
    const std::pair<const char16_t*, unsigned> cases[] = {{u"pelrinplus", 7}, {u"GRANDLINE", 6},
                                                          {u"Grandline ", 1}, {u"Other", 1},
                                                          {u"", 1},           {u"PelrinPlus", 7}};
    for (const auto& [package, code] : cases) {
        install(u"Pelrin\\8", u"Package", package);
        EXPECT_EQ(TvGetPackageCode(1, 8), code) << CStringA(package).GetString();
    }
    CRegistry key;
    ASSERT_NE(key.Open(HKEY_LOCAL_MACHINE, u"Software\\Tolvarine\\Pelrin\\8", 0, KEY_ALL_ACCESS),
              0);
    ASSERT_NE(key.SetValue(u"Package", DWORD{7}), 0);
    EXPECT_EQ(TvGetPackageCode(1, 8), 1U) << "a number is no package name";
}

TEST(Product, CodeOfTheRunningExecutable) {
    struct {
        const char* name;
        std::vector<const char*> siblings;
        const char* code;
    } const cases[] = {
        {"VANTROSACORE.EXE", {"Dovr.exe"}, "0"},
        {"Ombrelia.exe", {}, "0"},
        {"OmbreliaClassic.exe", {"Pelrin.exe"}, "0"},
        {"PelrinCore.exe", {}, "1"},
        {"dovr.exe", {"Ombrelia.exe"}, "4"},
        {"ZemtCore.exe", {}, "2"},
        {"Zemt", {"Dovr.exe"}, "2"},
        {"Other.exe", {"Dovr.exe", "Zemt.exe"}, "4"},
        {"Other.exe", {"Zemt.exe", "pelrin.EXE"}, "1"},
        {"Other.exe", {"Zemt.exe"}, "2"},
        {"Other.exe", {"Ombrelia.exe", "Pelrin.exe"}, "0"},
        {"Pelrin2.exe", {}, "0"},
        {"Pelrin.old.exe", {"Dovr"}, "0"},
    };
    for (const auto& [name, siblings, code] : cases) {
        const auto folder = tests::new_folder();
        const auto program =
            tests::copy_program(std::string(TESTS_STARTED) + "/identify.exe", folder, name);
        for (const auto* sibling : siblings) tests::write_file(folder + "/" + sibling, "");
        EXPECT_EQ(tests::output_of(program), code) << name;
    }
}

}  // namespace
