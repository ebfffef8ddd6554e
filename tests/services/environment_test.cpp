#include "tvutil2/services/environment.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/registry/registry.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/executable_image.h"
#include "tests/support/profile.h"

namespace {

constexpr auto kFacts = u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

struct Value {
    const char16_t* name;
    std::u16string data;  // with the zero that it ends in, if it does
    DWORD type = REG_SZ;
};

std::u16string zeroed(std::u16string text) {
    return text + u'\0';
}

void store(const std::vector<Value>& values) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, kFacts, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &key, nullptr),
              0);
    for (const auto& [name, data, type] : values) {
        RegSetValueExW(key, name, 0, type, reinterpret_cast<const BYTE*>(data.data()),
                       static_cast<DWORD>(data.size() * 2));
    }
    RegCloseKey(key);
}

TEST(Environment, NamesThisSystemUntilTheRegistryDoes) {
    const auto name = TvGetOSFriendlyName();
    EXPECT_GT(name.Find(u" Build "), 0);
    const auto host_build = TvGetOSBuildVersion();
    EXPECT_GT(host_build, 0U);
    const std::u16string longest(1023, u'x');
    const struct {
        std::vector<Value> values;
        std::u16string name;
        unsigned int build;
    } cases[] = {
        {{}, std::u16string(name.View()), host_build},
        {{{u"ProductName", zeroed(u"Windows 10 Pro")},
          {u"CurrentBuildNumber", zeroed(u"19045")},
          {u"DisplayVersion", zeroed(u"22H2")}},
         u"Windows 10 Pro Build 19045 22H2",
         19045},
        {{{u"CurrentBuildNumber", zeroed(u"22000")}}, u"Windows 11 22H2 Build 22000", 22000},
        {{{u"DisplayVersion", zeroed(u"")}}, u"Windows 11  Build 22000", 22000},
        {{{u"CurrentBuildNumber", zeroed(u"21999"), REG_EXPAND_SZ}},
         u"Windows 10 Pro Build 21999",
         21999},
        {{{u"ProductName", u"no zero"}}, u" Build 21999", 21999},
        {{{u"ProductName", zeroed(u"binary"), REG_BINARY}}, u" Build 21999", 21999},
        {{{u"ProductName", zeroed(longest)}}, longest + u" Build 21999", 21999},
        {{{u"ProductName", zeroed(longest + u'x')}}, u" Build 21999", 21999},
    };
    for (const auto& [values, expected, build] : cases) {
        store(values);
        EXPECT_EQ(std::u16string(TvGetOSFriendlyName().View()), expected);
        EXPECT_EQ(TvGetOSBuildVersion(), build);
    }
    EXPECT_EQ(TvIsWindows10OrGreater(), 1);
}

TEST(Environment, KeepsTheNamesOfMachineAndAccount) {
    EXPECT_FALSE(TvGetComputerName().IsEmpty());
    EXPECT_FALSE(TvGetUserName().IsEmpty());
    EXPECT_EQ(TvGetUserName(), TvGetUserName());
}

TEST(Environment, TellsTheVersionOfAFile) {
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/x.exe", tests::pe_image().all());
    tests::write_file(folder + "/short.exe", tests::pe_image(12).all());
    tests::write_file(folder + "/long.exe", tests::pe_image(53, 40 + 53).all());
    const auto path = [&folder](const char* name) { return tests::platform_path(folder + name); };
    CString version = u"before";
    EXPECT_EQ(TvGetFileVersion(path("/none").c_str(), version), 0);
    EXPECT_EQ(TvGetFileVersion(path("/short.exe").c_str(), version), 0);
    EXPECT_EQ(TvGetFileVersion(path("/long.exe").c_str(), version), 0);
    EXPECT_EQ(TvGetFileVersion(nullptr, version), 0);
    EXPECT_EQ(version, u"before");
    EXPECT_EQ(TvGetFileVersion(path("/x.exe").c_str(), version), 1);
    EXPECT_EQ(version, u"8.1.2.61");
}

TEST(Environment, SaysWhatAnErrorMeans) {
    CString text = u"before";
    GetLastErrorString(text, 0);
    GetLastErrorString(text, 0x12345678);
    EXPECT_EQ(text, u"before");
    GetLastErrorString(text, ERROR_ACCESS_DENIED);
    EXPECT_EQ(text, u"Access is denied.\r\n");
}

TEST(Environment, FindsNoMiddlewareValid) {
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/x86.dll", tests::pe_image().all());
    auto other = tests::pe_image();
    other.put(68, std::uint16_t{0x8664});
    tests::write_file(folder + "/x64.dll", other.all());
    tests::write_file(folder + "/cut.dll", other.all().substr(0, 100));
    const std::string none = "The middleware is not appropriate.";
    const std::pair<const char*, std::string> cases[] = {
        {"/x86.dll", "The middleware is not architecure matching."},
        {"/x64.dll", none},
        {"/cut.dll", none},
        {"/none.dll", none},
    };
    for (const auto& [name, message] : cases) {
        const auto path = tests::platform_path(folder + name);
        std::string printed;
        EXPECT_EQ(
            tests::in_child_alone([&] { return TvCheckMiddlewareValid(path.c_str()); }, printed),
            0);
        EXPECT_NE(printed.find(message), std::string::npos) << name << ": " << printed;
    }
}

}  // namespace
