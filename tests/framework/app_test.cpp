#include "tvutil2/framework/app.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/platform/resource/resource.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/support/child.h"
#include "tests/support/profile.h"

namespace {

// The block of sixteen strings that holds the library's string 14126.
constexpr WORD kStringBlock = 14126 / 16 + 1;

class Application : public CWinApp {
  public:
    explicit Application(BOOL answer, const char16_t* name = nullptr)
        : CWinApp(name), m_answer(answer) {}
    BOOL InitInstance() override {
        instance_at_start = m_hInstance;
        return m_answer;
    }
    int ExitInstance() override { return ++exits; }

    HINSTANCE instance_at_start = nullptr;
    int exits = 0;
    using CWinApp::SetRegistryKey;

  private:
    BOOL m_answer;
};

TEST(Application, LibrarysOwnIsThereUntilTheProgramHasOne) {
    auto* const library = AfxGetApp();
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(library->m_hInstance, tvutil2::library_instance());
    {
        const Application own(TRUE);
        EXPECT_EQ(AfxGetApp(), &own);
        EXPECT_EQ(AfxGetInstanceHandle(), GetModuleHandleW(nullptr));
    }
    EXPECT_EQ(AfxGetApp(), library);
    EXPECT_EQ(AfxGetInstanceHandle(), tvutil2::library_instance());
}

TEST(Application, StartGivesTheInstanceFirst) {
    Application app(TRUE);
    const auto instance = GetModuleHandleW(nullptr);
    EXPECT_NE(AfxStartModule(instance), FALSE);
    EXPECT_EQ(app.instance_at_start, instance);
    EXPECT_EQ(app.exits, 0);
    EXPECT_EQ(AfxGetResourceHandle(), instance);
    AfxSetResourceHandle(tvutil2::library_instance());
    EXPECT_EQ(AfxGetResourceHandle(), tvutil2::library_instance());
}

TEST(Application, FailedStartIsEndedAgain) {
    Application app(FALSE);
    EXPECT_EQ(AfxStartModule(GetModuleHandleW(nullptr)), FALSE);
    EXPECT_EQ(app.exits, 1);
    EXPECT_EQ(AfxStartModule(nullptr), FALSE) << "no instance, no start";
    EXPECT_EQ(app.exits, 1);
}

TEST(Application, ResourcesAreFoundAlongTheChain) {
    const Application app(TRUE);
    const auto library = tvutil2::library_instance();
    const auto* const strings = MAKEINTRESOURCEW(kStringBlock);
    EXPECT_EQ(FindResourceW(AfxGetResourceHandle(), strings, RT_STRING), nullptr);
    EXPECT_EQ(AfxFindResourceHandle(strings, RT_STRING), library) << "the library is in the chain";
    EXPECT_EQ(AfxFindResourceHandle(MAKEINTRESOURCEW(4095), RT_STRING), AfxGetResourceHandle());
}

// The same in the private-profile file that the first round writes, and in the registry.
TEST(Application, KeepsSettings) {
    Application app(TRUE, u"Session tool");
    for (const bool in_registry : {false, true}) {
        if (in_registry) app.SetRegistryKey(u"Maker");
        EXPECT_EQ(app.GetProfileInt(u"A", u"n", -7), static_cast<UINT>(-7));
        EXPECT_EQ(app.GetProfileString(u"A", u"t", u"fallback"), u"fallback");
        EXPECT_EQ(app.GetProfileString(u"A", u"t"), u"");
        for (const int value : {0, 7, -1}) {
            EXPECT_TRUE(app.WriteProfileInt(u"A", u"n", value));
            EXPECT_EQ(app.GetProfileInt(u"A", u"n", 9), static_cast<UINT>(value));
        }
        for (const auto& text :
             {std::u16string(), std::u16string(u"\u00E4 \u4E2D"), std::u16string(10000, u'x')}) {
            EXPECT_TRUE(app.WriteProfileString(u"A", u"t", text.c_str()));
            EXPECT_EQ(app.GetProfileString(u"A", u"t", u"no").View(), text);
        }
        EXPECT_TRUE(app.WriteProfileString(u"A", u"t", nullptr));
        EXPECT_EQ(app.GetProfileString(u"A", u"t", u"gone"), u"gone");
        EXPECT_TRUE(app.WriteProfileString(u"A", nullptr, nullptr));
        EXPECT_EQ(app.GetProfileInt(u"A", u"n", 9), 9U);
        EXPECT_TRUE(app.WriteProfileInt(u"B", u"n", 1));
        EXPECT_FALSE(app.WriteProfileString(u"", nullptr, nullptr)) << "not all of them at once";
        EXPECT_FALSE(app.WriteProfileInt(nullptr, u"n", 1));
        EXPECT_EQ(app.GetProfileInt(u"B", u"n", 0), 1U);
    }
    HKEY key = nullptr;
    ASSERT_EQ(
        RegOpenKeyExW(HKEY_CURRENT_USER, u"Software\\Maker\\Session tool\\B", 0, KEY_READ, &key),
        ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_EQ(tests::read_file(tests::profile_folder() + "/home/.config/framework_tests.INI"),
              "[B]\r\nn=1\r\n");
}

// What a message box prints where nobody can be asked.
std::string printed(const std::function<int()>& show, int expected) {
    std::string text;
    EXPECT_EQ(tests::in_child_alone(show, text), expected);
    return text;
}

TEST(Application, MessagesCarryItsName) {
    const auto show = [] { return AfxMessageBox(u"Disk full", MB_OKCANCEL); };
    EXPECT_NE(printed(show, IDCANCEL).find("[framework_tests]"), std::string::npos);
    const Application named(TRUE, u"Session tool");
    const auto text = printed(show, IDCANCEL);
    EXPECT_NE(text.find("[Session tool]"), std::string::npos);
    EXPECT_NE(text.find("Warning: Disk full"), std::string::npos) << "an icon for want of one";
}

}  // namespace
