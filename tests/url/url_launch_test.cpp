#include "tvutil2/url/url_launch.h"

#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/settings/registry.h"
#include "tvutil2/url/url_info.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/fifo.h"
#include "tests/support/profile.h"
#include "tests/support/program.h"
#include "tests/support/url_items.h"

namespace {

std::string program(const char* name) {
    return std::string(TESTS_STARTED) + "/" + name;
}

// A folder with a program that launches, and the products that lie beside it.
std::string family(const std::vector<const char*>& products) {
    const auto folder = tests::new_folder();
    tests::copy_program(program("launcher.exe"), folder, "launcher.exe");
    for (const auto* product : products) {
        tests::copy_program(program("launched.exe"), folder, product);
    }
    return folder;
}

// The arguments that the product started by a URL got, behind the launcher's own result.
std::vector<std::string> launched(const std::string& folder, const std::string& url) {
    const tests::Fifo report;
    setenv("TVUTIL_TEST_REPORT", report.path().c_str(), 1);
    std::vector<std::string> result{tests::output_of(folder + "/launcher.exe", {url})};
    if (result[0] != "1") return result;
    std::istringstream lines(report.read_all());
    constexpr std::string_view kArgument = "argument=";
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(kArgument)) result.push_back(line.substr(kArgument.size()));
    }
    return result;
}

void install(const char16_t* subkey, const char16_t* value, const std::u16string& text) {
    CRegistry key;
    ASSERT_NE(
        key.Open(HKEY_LOCAL_MACHINE, CString(u"Software\\Tolvarine\\") + subkey, 1, KEY_ALL_ACCESS),
        0);
    ASSERT_NE(key.SetValue(value, text.c_str()), 0);
}

TEST(UrlLaunch, SchemesPickTheirProductAndItsCommandLine) {
    const auto folder = family({"Ombrelia.exe", "Pelrin.exe", "Dovr.exe"});
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"SSH://host", {"1", "-url", "ssh://host"}},
        {"telnet://h:23/a b", {"1", "-url", "telnet://h:23/a+b"}},
        {"rlogin://alice@h", {"1", "-url", "rlogin://alice@h"}},
        {"sftp://a%40b@h/x%2Fy", {"1", "-url", "sftp://a%40b@h/x%2Fy"}},
        {"ftp://h?Session=lab+1", {"1", "-url", "ftp://h?Session=lab+1"}},
        {"xdmcp://alice@host:177", {"1", ":[0]", "-query", "host"}},
        {"XDM://host", {"1", ":[0]", "-query", "host"}},
        {"rdp://host", {"0"}},
        {"host", {"0"}},
        {"ssh://", {"0"}},
        {"", {"0"}},
    };
    for (const auto& [url, result] : cases) EXPECT_EQ(launched(folder, url), result) << url;
}

// Nothing of a URL is an argument of its own, and a host that can't be one starts nothing.
TEST(UrlLaunch, HostilePartsStayParts) {
    const auto folder = family({"Ombrelia.exe", "Pelrin.exe"});
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"ssh://h%09-evil", {"0"}},
        {"ssh://h+-evil", {"0"}},
        {"ssh://-evil", {"0"}},
        {"ssh://h%22", {"0"}},
        {"ssh://h%00", {"0"}},
        {"ssh%00x://h", {"0"}},
        {"ssh%AD://h", {"0"}},
        {"ssh://h\u2003x", {"0"}},
        {"xdm://host+-ac+-config", {"0"}},
        {"xdm://host%09-ac", {"0"}},
        {"xdm://-ac", {"0"}},
        {"xdm://[fe80::1%25eth0]", {"1", ":[0]", "-query", "[fe80::1%eth0]"}},
        {"ssh://b\u00FCro_1.example", {"1", "-url", "ssh://b\u00FCro_1.example"}},
        {"ssh://a%09b%22 c@h", {"1", "-url", "ssh://a\tb\"+c@h"}},
        {"ssh://a%00b@h", {"1", "-url", "ssh://a%00b@h"}},
    };
    for (const auto& [url, result] : cases) EXPECT_EQ(launched(folder, url), result) << url;
}

TEST(UrlLaunch, TheRecordThatArrivesIsTheOneThatLeft) {
    const auto folder = family({"Pelrin.exe"});
    for (const auto* text :
         {u"DOM\\al\"ice\\", u"\"", u"\\\\\" -x", u"a\tb", u"%41+%00", u"'$(x)`;*"}) {
        CUrlInfo info;
        info.m_strScheme = u"ssh";
        info.m_strHost = u"host";
        info.m_strUser = info.m_strPassword = text;
        info.m_strPath = CString(u"/") + text;
        info.m_mapParams[text] = text;
        CString url;
        ASSERT_NE(info.MakeURL(url, 0, 1), 0);
        const auto result = launched(folder, *tvutil2::to_utf8(url.View()));
        ASSERT_EQ(result.size(), 3U) << result[0];
        CUrlInfo read;
        ASSERT_NE(read.Parse_URL(tvutil2::to_utf16(result[2])->c_str(), 1), 0);
        EXPECT_EQ(read.m_strHost, info.m_strHost);
        EXPECT_EQ(read.m_strUser, info.m_strUser);
        EXPECT_EQ(read.m_strPassword, info.m_strPassword);
        EXPECT_EQ(read.m_strPath, info.m_strPath);
        EXPECT_EQ(tests::items_of(read), tests::items_of(info));
    }
}

TEST(UrlLaunch, SecretsTravelProtectedAndArrive) {
    CUrlInfo info;
    info.m_strScheme = u"ssh";
    info.m_strUser = u"alice";
    info.m_strPassword = u"open \"sesame\" \u00FC";
    info.m_strHost = u"192.0.2.10";
    info.m_mapParams.SetAt(u"Passphrase", u"mellon");
    CString url;
    ASSERT_NE(info.MakeURL(url, 0, 1), 0);

    const auto result = launched(family({"Pelrin.exe"}), *tvutil2::to_utf8(url.View()));
    ASSERT_EQ(result.size(), 3U);
    EXPECT_EQ(result[2].find("sesame"), std::string::npos);
    EXPECT_EQ(result[2].find("mellon"), std::string::npos);
    CUrlInfo read;
    ASSERT_NE(read.Parse_URL(tvutil2::to_utf16(result[2])->c_str(), 1), 0);
    EXPECT_EQ(read.m_strPassword, info.m_strPassword);
    CString passphrase;
    EXPECT_NE(read.m_mapParams.Lookup(u"Passphrase", passphrase), 0);
    EXPECT_EQ(passphrase, u"mellon");
}

TEST(UrlLaunch, SiblingWinsOverTheRegistryAndTheRegistryOverNothing) {
    const auto alone = family({});
    EXPECT_EQ(launched(alone, "ssh://h"), std::vector<std::string>{"0"});

    const auto elsewhere = family({"Pelrin.exe"});
    install(u"Pelrin\\7", u"Version", u"7.0.0001");
    install(u"Pelrin\\7", u"Path", tests::platform_path(elsewhere));
    EXPECT_EQ(launched(alone, "ssh://h"), (std::vector<std::string>{"1", "-url", "ssh://h"}));

    install(u"Pelrin\\7", u"Path", u"C:\\no\\such\\folder");
    EXPECT_EQ(launched(alone, "ssh://h"), std::vector<std::string>{"0"});
    EXPECT_EQ(launched(family({"Pelrin.exe"}), "ssh://h")[0], "1");
}

// What GetProductPath finds when nothing lies beside the test program.
struct Found {
    unsigned int version;
    std::string path;
};

Found find(const char16_t* name) {
    CString path;
    const auto version = GetProductPath(name, path);
    return {version, version != 0 ? tvutil2::to_utf8_lossy(path.View()) : ""};
}

std::string host(const std::string& folder, const char* file) {
    return tvutil2::to_utf8_lossy(tests::platform_path(folder + "/" + file));
}

TEST(UrlLaunch, HighestVersionAsTextThatIsReallyThere) {
    const auto seven = family({"Dovr.exe"});
    const auto eight = family({"Dovr.exe"});
    const auto ten = family({"Dovr.exe"});
    install(u"Dovr\\10", u"Version", u"10.0.0001");
    install(u"Dovr\\10", u"Path", tests::platform_path(ten));
    EXPECT_EQ(find(u"Dovr").path, host(ten, "Dovr.exe"));
    install(u"Dovr\\7", u"Version", u"7.0.0001");
    install(u"Dovr\\7", u"Path", tests::platform_path(seven) + u"\\");
    EXPECT_EQ(find(u"Dovr").version, 7U) << "\"10\" sorts below \"7\"";
    install(u"Dovr\\8", u"Version", u"8.0.0061");
    install(u"Dovr\\8", u"Path", tests::platform_path(eight));
    EXPECT_EQ(find(u"dovr").version, 8U);
    EXPECT_EQ(find(u"Dovr").path, host(eight, "Dovr.exe"));

    // A folder without the program is passed over, and so is a version that says nothing.
    install(u"Dovr\\8", u"Path", tests::platform_path(tests::new_folder()));
    EXPECT_EQ(find(u"Dovr").path, host(seven, "Dovr.exe"));
    install(u"Dovr\\8", u"Path", tests::platform_path(eight));
    install(u"Dovr\\8", u"Version", u"1.0");
    EXPECT_EQ(find(u"Dovr").version, 7U);
    install(u"Dovr\\8", u"Version", u"");
    EXPECT_EQ(find(u"Dovr").version, 7U);
}

TEST(UrlLaunch, LongKeyNameEndsTheWalk) {
    const auto folder = family({"Zemt.exe"});
    install(u"Zemt\\8", u"Path", tests::platform_path(folder));
    EXPECT_EQ(find(u"Zemt").version, 8U) << "other products need no version text";
    install(u"Zemt\\5.0-beta", u"Path", tests::platform_path(folder));
    EXPECT_EQ(find(u"Zemt").version, 0U) << "eight characters are listed before \"8\"";
}

TEST(UrlLaunch, DisplayServersFolderMayBeTheUnnamedValue) {
    const auto folder = family({"Ombrelia.exe", "Zemt.exe"});
    install(u"Ombrelia\\8", u"", tests::platform_path(folder));
    EXPECT_EQ(find(u"Ombrelia").path, host(folder, "Ombrelia.exe"));
    install(u"Zemt\\8", u"", tests::platform_path(folder));
    EXPECT_EQ(find(u"Zemt").version, 0U);
    install(u"Ombrelia\\8", u"Path", u"C:\\no\\such\\folder");
    EXPECT_EQ(find(u"Ombrelia").version, 0U) << "the unnamed value stands in for nothing else";
}

}  // namespace
