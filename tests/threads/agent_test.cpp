#include "tvutil2/threads/agent.h"

#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/threads/single_instance.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/profile.h"
#include "tests/support/program.h"
#include "tests/support/signer.h"

namespace {

const std::string kStarted = TESTS_STARTED;

// What a product in a folder of its own is told.
std::string run_agent(const std::string& product, const char* show, const char* arguments = "") {
    return tests::output_of(product, {"agent", show, arguments});
}

TEST(Agent, IsStartedOnlyWithTheMakersSignature) {
    const auto folder = tests::new_folder();
    const auto product = tests::copy_program(kStarted + "/siblings.exe", folder, "Product.EXE");
    EXPECT_EQ(run_agent(product, "0"), "0") << "missing";
    const auto agent = tests::copy_program(kStarted + "/with_window.exe", folder, "Halket.exe");
    EXPECT_EQ(run_agent(product, "0"), "0") << "unsigned";
    tests::sign_program(agent, tests::make_signer("Somebody"));
    EXPECT_EQ(run_agent(product, "0"), "0") << "another's";
    tests::sign_program(agent, tests::make_signer("Tolvarine Computer"));
    for (const char* const show : {"0", "1"}) {
        EXPECT_EQ(run_agent(product, show, "\"The agent\" x"), "1");
        auto* const window = FindWindowW(u"Tests::WithWindow", u"The agent");
        ASSERT_NE(window, nullptr) << "it has its window by now";
        SendMessageW(window, WM_USER + 2, 0, 0);
    }
    std::filesystem::remove(agent);
    tests::sign_program(tests::copy_program(kStarted + "/identify.exe", folder, "Halket.exe"),
                        tests::make_signer("Tolvarine Computer"));
    EXPECT_EQ(run_agent(product, "1"), "1") << "one that ends is waited for no longer";
}

class RunningAgent : public NSingleInstance::CSingleInstance {
  public:
    int told = 0;

  protected:
    LRESULT WindowProc(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (message == 1141 && wparam == 1 && lparam == 0) ++told;
        return CSingleInstance::WindowProc(message, wparam, lparam);
    }
};

TEST(Agent, ThatRunsIsToldToShowItself) {
    const auto product =
        tests::copy_program(kStarted + "/siblings.exe", tests::new_folder(), "Product.exe");
    RunningAgent agent;
    ASSERT_EQ(agent.Create(u"HALKET"), 1);
    for (const char* const show : {"0", "1"}) EXPECT_EQ(run_agent(product, show), "1");
    MSG message{};
    while (agent.told == 0 && GetMessageW(&message, nullptr, 0, 0)) DispatchMessageW(&message);
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    EXPECT_EQ(agent.told, 1);
}

}  // namespace
