#include "tvutil2/data/addons.h"

#include "tvutil2/settings/ini_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/executable_image.h"
#include "tests/support/profile.h"
#include "tests/support/signer.h"

namespace {

using tests::platform_path;

struct Entry {
    std::u16string identity, program, ext;
    std::u16string label = {};
};

// A list with a count that needn't be theirs.
CString written(const std::vector<Entry>& entries, const char16_t* count) {
    const CString path(platform_path(tests::new_folder() + "/Addons.ini").c_str());
    CIniFile file;
    file.SetValue(u"Info", u"Count", count);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        CString section;
        section.Format(u"%d", static_cast<int>(i));
        file.SetValue(section, u"Identity", entries[i].identity.c_str());
        file.SetValue(section, u"AddonPath", entries[i].program.c_str());
        file.SetValue(section, u"Ext", entries[i].ext.c_str());
        file.SetValue(section, u"Label", entries[i].label.c_str());
    }
    EXPECT_EQ(file.Write(path, 1, 0), 1);
    return path;
}

std::u16string program() {
    static const auto path = [] {
        const auto file = tests::new_folder() + "/Addon.exe";
        tests::write_file(file, tests::elf_image().all());
        return platform_path(file);
    }();
    return path;
}

std::u16string exts_of(const CAddonManager& manager) {
    std::u16string all;
    auto* const list = const_cast<CAddonManager&>(manager).GetAddonExts();
    for (auto position = list->GetHeadPosition(); position != nullptr;) {
        all.append(list->GetNext(position).View()).append(u" ");
    }
    return all;
}

TEST(Addons, TrimClosesTheGaps) {
    const auto path = written({{u"a", u"C:\\gone.exe", u".a"},
                               {u"b", program(), u".b", u"Ombrelia RDP"},
                               {u"c", program(), u".c", u"ombrelia rdp"}},
                              u"3");
    auto& manager = CAddonManager::GetInstance();
    EXPECT_EQ(manager.TrimIni(path), 1);
    CIniFile file(path);
    EXPECT_EQ(file.GetValue(u"Info", u"Count", 0), 2);
    EXPECT_EQ(file.GetValue(u"0", u"Identity", u""), u"b");
    EXPECT_EQ(file.GetValue(u"1", u"Identity", u""), u"c");
    EXPECT_EQ(file.GetValue(u"1", u"OpenInTab", 0), 1);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(manager.Load(path), 1);
    EXPECT_EQ(exts_of(manager), u".b .c ");
    EXPECT_EQ(manager.GetAddon(u".b")->m_strLabel, u"RDP");
    EXPECT_EQ(manager.GetAddon(u".c")->m_strLabel, u"ombrelia rdp");
    EXPECT_EQ(manager.GetAddon(u".c")->m_bOpenInTab, 1);
    EXPECT_EQ(manager.GetAddon(u"c"), nullptr);
}

TEST(Addons, ACountIsNoMoreThanWhatIsThere) {
    auto& manager = CAddonManager::GetInstance();
    const struct {
        const char16_t* count;
        int kept;
    } cases[] = {{u"2147483648", 2}, {u"2147483647", 2}, {u"-1", 0},
                 {u"x", 0},          {u"1", 1},          {u"0", 0}};
    for (const auto& [count, kept] : cases) {
        const auto path = written({{u"a", program(), u".a"}, {u"b", program(), u".b"}}, count);
        EXPECT_EQ(manager.Reload(path), 1) << kept;
        EXPECT_EQ(manager.GetAddonMap()->GetCount(), kept);
        EXPECT_EQ(CIniFile(path).GetValue(u"Info", u"Count", -1), kept);
    }
    const auto missing = written({}, u"0") + u"x";
    manager.Reload(written({{u"a", program(), u".a"}}, u"1"));
    EXPECT_EQ(manager.TrimIni(missing), 0);
    EXPECT_EQ(manager.Load(missing), 0);
    EXPECT_EQ(manager.Initiate(), 0);
    EXPECT_EQ(exts_of(manager), u".a ");
}

TEST(Addons, FirstOfAnIdentityWinsAndExtensionsCountEach) {
    auto& manager = CAddonManager::GetInstance();
    EXPECT_EQ(manager.Reload(written({{u"a", program(), u".x"},
                                      {u"a", program(), u".y"},
                                      {u"b", program(), u".x"},
                                      {u"", program(), u"z"},
                                      {u"", program(), u"zz"}},
                                     u"5")),
              1);
    EXPECT_EQ(exts_of(manager), u".x .x z ");
    const struct {
        const char16_t* path;
        int has;
    } cases[] = {{u"C:\\a.b\\c.x", 1}, {u"c.X", 0}, {u"c.z", 1},  {u"c.y", 0},
                 {u"C:\\a.x\\c", 0},   {u"", 0},    {u"c.xx", 0}, {u"c.", 0}};
    for (const auto& [path, has] : cases) {
        EXPECT_EQ(manager.HasOneOfAddonExt(path), has) << testing::PrintToString(path);
    }
    EXPECT_EQ(manager.IsOneOfAddonExt(u".z"), 0);
    manager.Remove(u"a");
    EXPECT_EQ(exts_of(manager), u".x z ");
    EXPECT_EQ(manager.GetAddon(u".x")->m_strIdentity, u"b");
    manager.Remove(u"none");
    manager.Remove(u"");
    manager.RemoveAll();
    EXPECT_EQ(manager.GetAddonMap()->GetCount(), 0);
    EXPECT_EQ(exts_of(manager), u"");
}

TEST(Addons, AreOneByTheirIdentityAndStartedWithTheMakersSignature) {
    const CAddon a(u"n", u"l", u"p", u"s", u".e", u"id", u"w", 0);
    CAddon b;
    EXPECT_FALSE(a == b);
    b.m_strIdentity = u"id";
    EXPECT_TRUE(a == b);
    b.m_strIdentity = u"ID";
    EXPECT_FALSE(a == b);
    b = a;
    EXPECT_EQ(b.m_strWndClass, u"w");

    const auto file = tests::signed_elf(tests::make_signer("Tolvarine Computer"));
    b.m_strAddonPath = platform_path(file).c_str();
    EXPECT_EQ(b.GetAddonPathForExecute(), b.m_strAddonPath);
    b.m_strAddonPath = u"C:\\gone.exe";
    EXPECT_EQ(b.GetAddonPathForExecute(), u"");
}

}  // namespace
