// The dialogs and questions of the services, answered by a person at the keyboard.
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/services/help_links.h"
#include "tvutil2/services/signature.h"
#include "tvutil2/settings/registry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <deque>
#include <functional>
#include <string>
#include <utility>

#include "tests/support/profile.h"
#include "tests/support/signer.h"

namespace {

using Step = std::function<void(HWND)>;
using Steps = std::deque<Step>;

Steps g_steps;

// One a timer's message, which comes behind what was typed before.
void act(HWND, UINT, UINT_PTR id, DWORD) {
    auto* const dialog = FindWindowW(u"#32770", nullptr);
    if (dialog == nullptr) return;
    if (g_steps.empty()) {
        KillTimer(nullptr, id);
        return;
    }
    const auto step = std::move(g_steps.front());
    g_steps.pop_front();
    step(dialog);
}

Step key(int code) {
    return [code](HWND) { tvutil2::type_key(code); };
}

Step with_alt(int code) {
    return [code](HWND) {
        tvutil2::press_key(VK_MENU);
        tvutil2::type_key(code);
        tvutil2::release_key(VK_MENU);
    };
}

class ServiceDialogs : public testing::Test {
  protected:
    ServiceDialogs() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        SetThreadLocale(0x0409);
    }
    // All steps are taken, and then nobody is asked any more.
    template <class Ask>
    int answered(Steps steps, Ask ask) {
        g_steps = std::move(steps);
        const auto timer = SetTimer(nullptr, 0, 1, act);
        const int result = ask();
        KillTimer(nullptr, timer);
        EXPECT_TRUE(g_steps.empty());
        EXPECT_EQ(FindWindowW(u"#32770", nullptr), nullptr);
        return result;
    }
};

TEST_F(ServiceDialogs, AProgramForTheManualIsChosen) {
    const auto list_is = [](bool is_enabled) -> Step {
        return [is_enabled](HWND dialog) {
            for (const int control : {14031, 14032}) {
                EXPECT_EQ(IsWindowEnabled(GetDlgItem(dialog, control)) != FALSE, is_enabled);
            }
        };
    };
    const struct {
        int stored;
        Steps steps;
        int result;
    } cases[] = {
        {-1, {list_is(false), key(VK_RETURN)}, -1},
        {-1,
         {with_alt('O'), list_is(true), with_alt('P'), key(VK_DOWN), key(VK_DOWN), key(VK_RETURN)},
         2},
        {2, {list_is(true), with_alt('O'), list_is(false), key(VK_RETURN)}, -1},
        {2, {with_alt('O'), with_alt('O'), with_alt('P'), key(VK_UP), key(VK_RETURN)}, 1},
        {1, {with_alt('O'), key(VK_ESCAPE)}, 1},
        {7, {list_is(true), key(VK_RETURN)}, -1},  // none of the list
    };
    CRegistry key;
    ASSERT_NE(
        key.Open(HKEY_CURRENT_USER, u"Software\\Tolvarine\\Common\\8\\Settings", 1, KEY_ALL_ACCESS),
        0);
    for (const auto& [stored, steps, result] : cases) {
        SCOPED_TRACE(&stored - &cases[0].stored);
        key.SetValue(u"HelpProgram", static_cast<DWORD>(stored));
        EXPECT_EQ(answered(steps, [] { return TvGetHelpProgram(TRUE); }), result);
        EXPECT_EQ(key.GetValue(u"HelpProgram", DWORD{99}), static_cast<DWORD>(result));
    }
}

TEST_F(ServiceDialogs, WhatIsntTheMakersIsRefusedUnlessAPersonInsists) {
    const auto file = tests::signed_elf(tests::make_signer("Somebody Else"));
    const auto path = tests::platform_path(file);
    const auto install = [&path] { return TvVerifyPackageSigned(path.c_str()); };
    const auto run = [&path] { return TvVerifyTolvarineExe(path.c_str(), FALSE); };
    const Step focus_is_no = [](HWND) { EXPECT_EQ(GetDlgCtrlID(GetFocus()), IDCANCEL); };
    const struct {
        Steps steps;
        int result;
    } cases[] = {
        {{focus_is_no, key(VK_RETURN)}, 0},
        {{key(VK_ESCAPE)}, 0},
        {{key(VK_TAB), key(VK_SPACE)}, 1},
        {{key(VK_TAB), key(VK_RETURN)}, 1},
        {{key(VK_TAB), key(VK_TAB), key(VK_RETURN)}, 0},
    };
    for (const auto& [steps, result] : cases) {
        SCOPED_TRACE(&result - &cases[0].result);
        EXPECT_EQ(answered(steps, install), result);
        EXPECT_EQ(answered(steps, run), result);
    }
}

}  // namespace
