#include "tvutil2/services/help_links.h"

#include "tvutil2/diag/app_log.h"
#include "tvutil2/framework/menus.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/settings/registry.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>

#include "tests/support/fifo.h"
#include "tests/support/profile.h"
#include "tests/support/program.h"

namespace {

// An opener of the desktop that reports what it is to open.
class Opener {
  public:
    Opener() {
        const auto folder = tests::new_folder();
        tests::write_file(folder + "/xdg-open",
                          "#!/bin/sh\nprintf '%s' \"$#:$1\" > \"$TVUTIL_TEST_REPORT\"\n");
        chmod((folder + "/xdg-open").c_str(), 0755);
        setenv("PATH", (folder + ":" + m_path).c_str(), 1);
        setenv("TVUTIL_TEST_REPORT", m_report.path().c_str(), 1);
    }
    ~Opener() { setenv("PATH", m_path.c_str(), 1); }
    Opener(const Opener&) = delete;
    Opener& operator=(const Opener&) = delete;
    [[nodiscard]] std::string opened() const { return m_report.read_all(); }

  private:
    std::string m_path = std::getenv("PATH");
    tests::Fifo m_report;
};

int support_entry(const char16_t* product, unsigned int program, const char16_t* title,
                  const std::u16string& link) {
    CRegistry key;
    key.Open(HKEY_LOCAL_MACHINE, CString(u"Software\\Tolvarine\\") + product + u"\\8", 1,
             KEY_ALL_ACCESS);
    key.SetValue(u"UserMenuTitle", title);
    key.SetValue(u"UserMenuLink", link.c_str());
    key.Close();
    return TVUTIL_IsUserSupportMenu(program, 7);
}

TEST(HelpLinks, SupportLinkIsCleanedAndThenTested) {
    const struct {
        std::u16string link;
        const char16_t* cleaned;
        bool is_good;
    } cases[] = {
        {u" \tHTTPS://a.b/\r\n", u"HTTPS://a.b/", true},
        {u"http://a/?x=1;&y=\"2\"|'`", u"http://a/?x=1y=2", true},
        {u"'http'://a", u"http://a", true},
        {u"https://a b", u"https://a b", false},
        {u"https://a\u2003b", u"https://a\u2003b", false},
        {u"https://a '", u"https://a ", false},
        {u"https://a<b", u"https://a<b", false},
        {u"https://", u"https://", false},
        {u"http:/a", u"http:/a", false},
        {u"xhttp://a", u"xhttp://a", false},
        {u"file:///etc/passwd", u"file:///etc/passwd", false},
        {u"--help", u"--help", false},
        {u"", u"", false},
    };
    for (const auto& [link, cleaned, is_good] : cases) {
        const auto result = tvutil2::cleaned_link(CString(std::u16string_view(link)));
        EXPECT_EQ(result.View(), cleaned);
        EXPECT_EQ(tvutil2::is_web_link(result.View()), is_good) << tvutil2::to_utf8_lossy(link);
    }
    EXPECT_FALSE(tvutil2::is_web_link(u"http://a'b"));
    EXPECT_TRUE(tvutil2::is_web_link(u"http://" + std::u16string(1 << 22, u'a')));
}

TEST(HelpLinks, SupportEntryComesFromTheProgramsKeyAndOpens) {
    EXPECT_EQ(TVUTIL_IsUserSupportMenu(0, 0), 0) << "no key";
    EXPECT_EQ(support_entry(u"Wendl", 3, u"Help me", u"https://a"), 0)
        << "no program with an entry";
    EXPECT_EQ(support_entry(u"Pelrin", 1, u"", u"https://a"), 0);
    EXPECT_EQ(support_entry(u"Zemt", 2, u"Help me", u""), 0);
    EXPECT_EQ(support_entry(u"Dovr", 4, u"Help me", u" https://a/$(id)?\"b\" "), 1);
    const Opener opener;
    TVUTIL_OnUserSupportMenu(0, 0);
    EXPECT_EQ(opener.opened(), "1:https://a/$(id)?b");
}

TEST(HelpLinks, SupportEntryGoesIntoTheHelpMenuAlone) {
    EXPECT_EQ(support_entry(u"Pelrin", 1, u"Ask us", u"https://a"), 1);
    CMFCPopupMenu help;
    TVUTIL_AddUserSupportMenu(nullptr);
    help.InsertItem(CMFCToolBarMenuButton(100, nullptr, -1, u"&Contents"));
    TVUTIL_AddUserSupportMenu(&help);
    EXPECT_EQ(help.GetMenuBar()->GetCount(), 1) << "not the Help menu yet";
    help.InsertItem(CMFCToolBarMenuButton(ID_APP_ABOUT, nullptr, 3, u"&About"), 0);
    TVUTIL_AddUserSupportMenu(&help);
    std::string entries;
    for (int i = 0; const auto* button = help.GetMenuBar()->GetButton(i); ++i) {
        entries += std::to_string(button->m_nID) + ' ' +
                   tvutil2::to_utf8_lossy(button->m_strText.View()) + '\n';
    }
    EXPECT_EQ(entries, "57664 &About\n100 &Contents\n0 \n2999 Ask us\n");
    EXPECT_EQ(help.InsertSeparator(5), -1);
}

TEST(HelpLinks, ProgramForTheManualIsTheStoredOneWithoutADisplay) {
    EXPECT_EQ(TvGetHelpProgram(FALSE), -1) << "no key";
    EXPECT_TRUE(tvutil2::set_help_program(2));
    EXPECT_EQ(TvGetHelpProgram(FALSE), 2);
    EXPECT_EQ(TvGetHelpProgram(TRUE), 2) << "nobody can be asked";
    EXPECT_TRUE(tvutil2::set_help_program(-1));
    CRegistry key;
    key.Open(HKEY_CURRENT_USER, u"Software\\Tolvarine\\Common\\8\\Settings", 0, KEY_ALL_ACCESS);
    EXPECT_EQ(key.GetValue(u"HelpProgram", DWORD{7}), 0xFFFFFFFF);
    key.SetValue(u"HelpProgram", u"2");
    EXPECT_EQ(TvGetHelpProgram(TRUE), -1) << "no number";
}

TEST(HelpLinks, SupportEntryLogsWhatFails) {
    _InitApplicationLog(tests::platform_path(tests::new_folder()).c_str(), u"help", 1, 0);
    const std::string path = std::getenv("PATH");
    setenv("PATH", "/no/such/folder", 1);
    EXPECT_EQ(support_entry(u"Ombrelia", 0, u"Help me", u"https://a"), 1);
    TVUTIL_OnUserSupportMenu(0, 0);
    EXPECT_EQ(support_entry(u"Ombrelia", 0, u"Help me", u"ftp://%s"), 0);
    TVUTIL_OnUserSupportMenu(0, 0);
    setenv("PATH", path.c_str(), 1);
    auto file = tvutil2::to_utf8_lossy(tvutil2::log_path().View());
    std::replace(file.begin(), file.end(), '\\', '/');
    const auto bytes = tests::read_file(file.substr(2));
    std::string log;
    for (std::size_t at = 2; at < bytes.size(); at += 2) log.push_back(bytes[at]);
    _SetWriteAppLog(0, nullptr, nullptr);
    const auto failed = log.find("Failed open user support menu link: 31\r\n");
    EXPECT_NE(failed, std::string::npos) << log;
    EXPECT_EQ(log.find("Failed open", failed + 1), std::string::npos) << "a bad link isn't opened";
    EXPECT_NE(log.find("User support menu link invalid: ftp://%s\r\n"), std::string::npos) << log;
}

TEST(HelpLinks, TokensNameTheirRequest) {
    constexpr auto kType = static_cast<HTTP_LINK_TYPE>(-3);
    EXPECT_EQ(TvGetHTTPToken(7, 8, kType, 0xFFFFFFFF).View(), u"7.8.-3.4294967295");
    EXPECT_EQ(TvGetHTTPLink(1, 8, 18, kType, 5).View(),
              u"/verchk/move.html?data=1.8.-3.5&validate=1");
    EXPECT_EQ(TvGetHelpLink(0, 8, 9, u" 12x", u"&evil=1").View(), u"/h/0.8.12.0");
    EXPECT_EQ(TvGetHelpLink(0, 8, 9, nullptr, nullptr).View(), u"/h/0.8.0.0");
    EXPECT_TRUE(TvGetHTTPToken(8, 8, kType, 5).IsEmpty());
    EXPECT_TRUE(TvGetHTTPLink(8, 8, 9, kType, 5).IsEmpty());
    EXPECT_TRUE(TvGetHelpLink(0xFFFFFFFF, 8, 9, u"1", u"1").IsEmpty());
}

TEST(HelpLinks, PagesOpenBelowTheMakersAddresses) {
    constexpr auto kType = static_cast<HTTP_LINK_TYPE>(2);
    const Opener opener;
    const std::string home =
        "https://transact.tolvarine.example/verchk/move.html?data=1.8.2.5&validate=1";
    EXPECT_EQ(tvutil2::to_utf8_lossy(TvGetHomePageLink(1, 8, kType, 5)), home);
    TvOpenHomePage(1, 8, 9, kType, 5);
    EXPECT_EQ(opener.opened(), "1:" + home);
    EXPECT_EQ(TvOpenHelpFile(u"Pelrin", u"3", u"4"), 1);
    EXPECT_TRUE(opener.opened().starts_with("1:https://api.tolvarine.example"));
}

TEST(HelpLinks, ManualLiesBesideTheExecutableInTheProductsLanguage) {
    const Opener opener;
    const auto folder = tests::new_folder();
    tests::copy_program(std::string(TESTS_STARTED) + "/helper.exe", folder, "helper.exe");
    const auto helper = folder + "/helper.exe";
    EXPECT_EQ(tests::output_of(helper, {"Pelrin"}), "0");
    for (const auto& [language, file] :
         {std::pair(0x412, "/Pelrin7_ko.pdf"), std::pair(0x407, "/Pelrin7_en.pdf")}) {
        tests::write_file(folder + file, "");
        CRegistry key;
        key.Open(HKEY_CURRENT_USER, u"Software\\Tolvarine\\Pelrin\\8\\Language", 1, KEY_ALL_ACCESS);
        key.SetValue(u"User", static_cast<DWORD>(language));
        key.Close();
        EXPECT_EQ(tests::output_of(helper, {"Pelrin"}), "11");
        // The second call, for another product, opens the first one's.
        const auto expected = "1:" + folder + file + "1:" + folder + file;
        std::string opened;
        while (opened.size() < expected.size()) opened += opener.opened();
        EXPECT_EQ(opened, expected);
    }
    EXPECT_EQ(tests::output_of(helper, {std::string(300, 'x')}), "0");
}

}  // namespace
