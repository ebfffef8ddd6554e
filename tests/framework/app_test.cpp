#include "tvutil2/framework/app.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/resource.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tests/support/child.h"

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
