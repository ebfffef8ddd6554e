#include "tvutil2/data/features.h"

#include "tvutil2/data/user_data.h"
#include "tvutil2/settings/ini_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/profile.h"

namespace {

TEST(Features, NoFileIsNoSwitchAndStaysNoFile) {
    auto& features = CTvExpFeatures::GetInstance();
    EXPECT_EQ(features.m_strPath, CString(GetUserDataFolderPath(0)) + u"\\Features.ini");
    features.m_bScpCmd = TRUE;
    features.m_nReserved = 5;
    features.Load();
    EXPECT_EQ(features.m_bScpCmd, FALSE);
    EXPECT_EQ(features.m_nReserved, 5);
    EXPECT_FALSE(std::filesystem::exists(tests::profile_folder() +
                                         "/home/Documents/Tolvarine Computer/8/Features.ini"));
}

TEST(Features, EachSwitchHasItsPlace) {
    struct {
        BOOL CTvExpFeatures::*value;
        const char16_t* section;
        const char16_t* key;
    } const cases[] = {
        {&CTvExpFeatures::m_bCertKey, u"Common", u"CertKey"},
        {&CTvExpFeatures::m_bRealCmd, u"Pelrin", u"RealCmd"},
        {&CTvExpFeatures::m_bPelrinRecentList, u"Pelrin", u"RecentList"},
        {&CTvExpFeatures::m_bJumpHost, u"Pelrin", u"JumpHost"},
        {&CTvExpFeatures::m_bScpCmd, u"Pelrin", u"ScpCmd"},
        {&CTvExpFeatures::m_bDovrRecentList, u"Dovr", u"RecentList"},
        {&CTvExpFeatures::m_bFileFilter, u"Dovr", u"FileFilter"},
    };
    auto& features = CTvExpFeatures::GetInstance();
    {
        CIniFile file;
        file.SetValue(u"Other", u"Key", u"kept");
        ASSERT_NE(file.Write(features.m_strPath, 1, 0), 0);
    }
    int number = 10;
    for (const auto& c : cases) features.*c.value = ++number;
    const auto copy = features;
    features.Save();
    number = 10;
    for (const auto& c : cases) {
        ++number;
        EXPECT_EQ(CIniFile(features.m_strPath).GetValue(c.section, c.key, 0), number);
        features.*c.value = 0;
    }
    EXPECT_EQ(CIniFile(features.m_strPath).GetValue(u"Other", u"Key", u""), u"kept");
    features.Load();
    for (const auto& c : cases) EXPECT_EQ(features.*c.value, copy.*c.value);
}

TEST(Features, ConfigureTellsThePerson) {
    setsid();
    testing::internal::CaptureStderr();
    EXPECT_EQ(CTvExpFeatures::GetInstance().Configure(7, 8), 1);
    EXPECT_NE(testing::internal::GetCapturedStderr().find(
                  "We currently do not have any experimental features."),
              std::string::npos);
    testing::internal::CaptureStderr();
    CTvExpFeatures::GetInstance().PopupOnce(7, 8);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
