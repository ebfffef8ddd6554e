// What is left of a loop of the layer when a handler has raised something in it: nothing.
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/menus/menu.h"
#include "tvutil2/platform/window/menus/menu_bar.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"
#include "tvutil2/platform/window/system_commands.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

#include "tests/platform/window/dialogs/template_bytes.h"
#include "tests/platform/window/trace.h"

namespace {

constexpr UINT kRaise = WM_APP + 1;

HMENU some_menu() {
    auto* const menu = CreatePopupMenu();
    AppendMenuW(menu, MF_STRING, 1, u"One");
    AppendMenuW(menu, MF_STRING, 2, u"Two");
    return menu;
}

void run_menu(HWND owner) {
    static auto* const menu = some_menu();
    TrackPopupMenu(menu, 0, 10, 10, 0, owner, nullptr);
}

void run_menu_bar(HWND owner) {
    auto* const bar = CreateMenu();
    AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(some_menu()), u"Menu");
    SetMenu(owner, bar);
    SendMessageW(owner, WM_SYSCOMMAND, SC_KEYMENU, 0);
}

void run_dialog_by(HWND owner, DLGPROC procedure) {
    const tests::TemplateBytes bytes(u"Dialog", WS_POPUP | WS_CAPTION, 80, 40);
    DialogBoxIndirectParamW(nullptr, bytes.bytes().data(), owner, procedure, 0);
}

void hold_scroll_bar(HWND owner) {
    auto* const bar = CreateWindowExW(0, u"ScrollBar", u"", WS_CHILD | WS_VISIBLE | SBS_VERT, 0, 0,
                                      20, 100, owner, nullptr, nullptr, nullptr);
    SetScrollRange(bar, SB_CTL, 0, 100, FALSE);
    SendMessageW(bar, WM_LBUTTONDOWN, 0, MAKELPARAM(10, 5));
}

// What nobody has got round to yet.
void run_dry() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        try {
            DispatchMessageW(&message);
        } catch (const std::runtime_error&) {
        }
    }
}

class Loops : public testing::Test {
  protected:
    Loops() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        tests::Trace::current() = {};
        tests::Trace::current().handler = [](HWND window, UINT message, WPARAM wparam,
                                             LPARAM lparam) -> LRESULT {
            if (message == kRaise) throw std::runtime_error("raised");
            return DefWindowProcW(window, message, wparam, lparam);
        };
    }
    ~Loops() override { tests::Trace::current() = {}; }
};

TEST_F(Loops, LeaveNothingBehindWhenAHandlerRaises) {
    const struct {
        const char* name;
        std::function<void(HWND owner)> run;
    } loops[] = {
        {"menu", run_menu},
        {"menu bar", run_menu_bar},
        {"dialog",
         [](HWND owner) {
             run_dialog_by(owner, [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return 0; });
         }},
        {"dialog that raises with every message",
         [](HWND owner) {
             run_dialog_by(owner, [](HWND, UINT message, WPARAM, LPARAM) -> INT_PTR {
                 if (message == WM_INITDIALOG) return 1;
                 throw std::runtime_error("raised");
             });
         }},
        {"message box", [](HWND owner) { MessageBoxW(owner, u"Text", u"Title", MB_OK); }},
        {"dragging", [](HWND owner) { SendMessageW(owner, WM_NCLBUTTONDOWN, HTCAPTION, 0); }},
        {"scroll bar", hold_scroll_bar},
    };
    for (const auto& loop : loops) {
        SCOPED_TRACE(loop.name);
        auto* const owner = tests::traced_window(WS_POPUP | WS_VISIBLE | WS_CAPTION);
        SetWindowPos(owner, nullptr, 50, 50, 200, 200, SWP_NOZORDER);
        PostMessageW(owner, kRaise, 0, 0);
        EXPECT_THROW(loop.run(owner), std::runtime_error);
        EXPECT_EQ(GetCapture(), nullptr);
        EXPECT_TRUE(IsWindowEnabled(owner));
        EXPECT_EQ(FindWindowW(u"#32770", nullptr), nullptr);
        run_dry();
        // Another menu can be opened, which is the first one then.
        tvutil2::type_key(VK_ESCAPE);
        static auto* const menu = some_menu();
        EXPECT_TRUE(TrackPopupMenu(menu, 0, 10, 10, 0, owner, nullptr));
        DestroyWindow(owner);
    }
}

}  // namespace
