// A dialog as a screen reader has it, over a bus of the test's own.
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/list_box.h"
#include "tvutil2/platform/window/controls/progress.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/menus/menu_bar.h"
#include "tvutil2/platform/window/show.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/platform/display/await.h"
#include "tests/platform/display/private_desktop.h"
#include "tests/platform/window/trace.h"
#include "tests/support/profile.h"
#include "tests/support/session_bus.h"

namespace {

using tests::await;

constexpr auto kLauncher = "/usr/libexec/at-spi-bus-launcher";

// The session's bus starts the one of accessibility, whose socket would else lie where those of all
// tests lie.
void offer_accessibility() {
    const auto services = tests::profile_folder() + "/home/.local/share/dbus-1/services";
    std::filesystem::create_directories(services);
    tests::write_file(services + "/org.a11y.Bus.service",
                      "[D-BUS Service]\nName=org.a11y.Bus\nExec=/usr/bin/env XDG_RUNTIME_DIR=" +
                          tests::new_folder() + " " + kLauncher + "\n");
}

class Reader {
  public:
    Reader() : m_process(TESTS_STARTED "/screen_reader.exe", {std::to_string(getpid())}) {}

    /// Its answer, in one text. The windows go on meanwhile.
    std::string ask(const std::string& question, const std::function<void()>& meanwhile = {}) {
        std::string answer;
        std::atomic<bool> is_listening{false};
        std::atomic<bool> is_done{false};
        std::thread thread([&] {
            m_process.write_line(question);
            for (auto line = m_process.line(); !line.empty() && line != ".";
                 line = m_process.line()) {
                if (line == "listening") {
                    is_listening = true;
                } else {
                    answer += line + "\n";
                }
            }
            is_done = true;
        });
        bool has_worked = !meanwhile;
        EXPECT_TRUE(await([&] {
            if (!has_worked && is_listening) {
                has_worked = true;
                meanwhile();
            }
            return is_done.load();
        }));
        thread.join();
        return answer;
    }
    /// Waits for an answer.
    bool becomes(const std::string& question, const std::string& answer) {
        std::string last;
        for (int i = 0; i < 40 && last != answer; ++i) last = ask(question);
        EXPECT_EQ(last, answer);
        return last == answer;
    }

  private:
    tests::PipedProcess m_process;
};

TEST(ScreenReader, ReadsADialogAndWorksIt) {
    if (access(kLauncher, X_OK) != 0) GTEST_SKIP() << "at-spi2-core isn't installed";
    offer_accessibility();
    const tests::SessionBus bus;
    tests::PrivateDesktop::start();
    unsetenv("NO_AT_BRIDGE");

    auto* const dialog = tests::traced_window(WS_OVERLAPPEDWINDOW, nullptr, u"Settings");
    const auto add = [&](const char16_t* kind, DWORD style, int top, const char16_t* text) {
        return CreateWindowExW(0, kind, text, WS_CHILD | WS_VISIBLE | style, 10, top, 150, 24,
                               dialog, nullptr, nullptr, nullptr);
    };
    auto* const menu = CreateMenu();
    AppendMenuW(menu, MF_STRING, 1, u"&File\tF2");
    AppendMenuW(menu, MF_STRING | MF_GRAYED, 2, u"&Edit");
    SetMenu(dialog, menu);
    add(u"Static", 0, 0, u"&Name:");
    auto* const name = add(u"Edit", WS_TABSTOP, 30, u"Alice");
    auto* const check = add(u"Button", WS_TABSTOP | BS_AUTOCHECKBOX, 60, u"&Loud");
    add(u"Button", WS_TABSTOP | WS_DISABLED, 90, u"OK");
    add(u"Static", 0, 120, u"&Colours:");
    auto* const list = add(u"ListBox", WS_TABSTOP, 150, u"");
    MoveWindow(list, 10, 150, 150, 80, FALSE);
    for (const auto* const each : {u"red", u"blue"}) {
        SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(each));
    }
    SendMessageW(list, LB_SETCURSEL, 1, 0);
    add(u"Static", 0, 240, u"Done:");
    auto* const progress = add(u"msctls_progress32", 0, 270, u"");
    SendMessageW(progress, PBM_SETRANGE32, 10, 50);
    SendMessageW(progress, PBM_SETPOS, 20, 0);
    add(u"Static", 0, 300, u"Si&ze:");
    auto* const box = add(u"ComboBox", WS_TABSTOP | CBS_DROPDOWNLIST, 330, u"");
    for (const auto* const each : {u"small", u"large"}) {
        SendMessageW(box, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(each));
    }
    SendMessageW(box, CB_SETCURSEL, 1, 0);
    MoveWindow(dialog, 100, 100, 300, 430, FALSE);
    ShowWindow(dialog, SW_SHOW);
    SetFocus(name);

    Reader reader;
    // The first look asks for it all.
    reader.ask("tree");
    EXPECT_TRUE(reader.becomes("tree",
                               "frame 'Settings'\n"
                               " panel ''\n"
                               "  menu bar ''\n"
                               "   menu item 'File'\n"
                               "   menu item 'Edit' disabled\n"
                               "  label 'Name:'\n"
                               "  entry 'Name:' focused\n"
                               "  check box 'Loud'\n"
                               "  push button 'OK' disabled\n"
                               "  label 'Colours:'\n"
                               "  list 'Colours:'\n"
                               "   list item 'red'\n"
                               "   list item 'blue' selected\n"
                               "  label 'Done:'\n"
                               "  progress bar 'Done:'\n"
                               "  label 'Size:'\n"
                               "  combo box 'Size:'\n"
                               "   list item 'small'\n"
                               "   list item 'large' selected\n"));
    EXPECT_EQ(reader.ask("value Done:"), "10.000000 20.000000 50.000000\n");
    SendMessageW(progress, PBM_SETPOS, 30, 0);
    EXPECT_TRUE(reader.becomes("value Done:", "10.000000 30.000000 50.000000\n"));
    EXPECT_EQ(reader.ask("selected Colours:"), "blue\n");
    SendMessageW(list, LB_SETCURSEL, 0, 0);
    EXPECT_TRUE(reader.becomes("selected Colours:", "red\n"));

    EXPECT_EQ(reader.ask("listen", [&] { SetFocus(check); }), "focused Loud\n");
    reader.ask("press Loud");
    EXPECT_TRUE(await([&] { return SendMessageW(check, BM_GETCHECK, 0, 0) == BST_CHECKED; }));
    reader.ask("focus Name:");
    EXPECT_TRUE(await([&] { return GetFocus() == name; }));
    reader.ask("write Name: Bob");
    EXPECT_TRUE(await([&] {
        char16_t text[16] = {};
        GetWindowTextW(name, text, 16);
        return std::u16string_view(text) == u"Bob";
    }));
    EXPECT_EQ(reader.ask("selected Size:"), "large\n");
    tests::Trace::current().lines.clear();
    reader.ask("choose Size:");
    EXPECT_TRUE(await([&] { return SendMessageW(box, CB_GETCURSEL, 0, 0) == 0; }));
    // Its parent hears of it: CBN_SELENDOK, CBN_SELCHANGE.
    const auto& heard = tests::Trace::current().lines;
    EXPECT_EQ(std::count(heard.begin(), heard.end(), "A " + std::to_string(WM_COMMAND)), 2);
    EXPECT_TRUE(reader.becomes("selected Size:", "small\n"));

    // A menu that is open, and what is done in it.
    auto* const popup = CreatePopupMenu();
    AppendMenuW(popup, MF_STRING, 7, u"&Copy\tCtrl+C");
    BOOL chosen = 0;
    tests::Trace::current().handler = [&](HWND window, UINT message, WPARAM wparam,
                                          LPARAM lparam) -> LRESULT {
        if (message == WM_APP) {
            chosen = TrackPopupMenu(popup, TPM_RETURNCMD, 400, 500, 0, dialog, nullptr);
            return 0;
        }
        return DefWindowProcW(window, message, wparam, lparam);
    };
    PostMessageW(dialog, WM_APP, 0, 0);
    reader.ask("press Copy");
    EXPECT_TRUE(await([&] { return chosen == 7; }));
    DestroyMenu(popup);
    DestroyWindow(dialog);
}

}  // namespace
