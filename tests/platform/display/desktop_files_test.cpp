// The desktop's own dialog for files, worked by hand.
#include "tvutil2/platform/window/dialogs/desktop_files.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/window/common_dialogs/open_file_name.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/show.h"

#include <X11/keysym.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/platform/display/await.h"
#include "tests/platform/display/private_desktop.h"
#include "tests/platform/window/trace.h"
#include "tests/support/profile.h"
#include "tests/support/session_bus.h"

namespace {

using tests::await;
using tests::PrivateDesktop;
using tvutil2::FileQuestion;
using Paths = std::vector<std::string>;

class DesktopFiles : public testing::Test {
  protected:
    DesktopFiles() : m_folder(tests::profile_folder() + "/chosen") {
        std::filesystem::create_directory(m_folder);
        for (const auto* const name : {"one.TXT", "two.txt", "three.png"}) {
            std::ofstream(m_folder + "/" + name) << "x";
        }
    }

    HWND show_window() {
        auto* const window = tests::traced_window(WS_OVERLAPPEDWINDOW, nullptr, u"Owner");
        ShowWindow(window, SW_SHOW);
        EXPECT_TRUE(await([&] { return GetFocus() == window; }));
        return window;
    }

    FileQuestion question(FileQuestion::Kind kind, HWND owner) const {
        FileQuestion asked;
        asked.kind = kind;
        asked.owner = owner;
        asked.title = u"Choose \u00e4";
        asked.folder = m_folder;
        return asked;
    }

    // Asks, and has `work` done once the dialog is there.
    template <class Work>
    static std::optional<tvutil2::FileAnswer> ask(PrivateDesktop& desktop, FileQuestion asked,
                                                  Work work) {
        static std::function<void()> step;
        bool is_done = false;
        step = [&] {
            const auto clients = desktop.clients();
            if (is_done || clients.empty() || clients.back().title != "Choose \u00e4") return;
            is_done = true;
            work(clients);
        };
        const auto timer = SetTimer(nullptr, 0, 200, [](HWND, UINT, UINT_PTR, DWORD) { step(); });
        auto answer = choose_files(std::move(asked));
        KillTimer(nullptr, timer);
        EXPECT_TRUE(is_done);
        return answer;
    }

    static void type(PrivateDesktop& desktop, std::string_view text) {
        for (const auto c : text) {
            // Latin letters are their own symbols.
            const auto symbol = c == '\n' ? XK_Return : static_cast<unsigned long>(c);
            desktop.press_key(symbol);
            desktop.release_key(symbol);
        }
    }

    // In the field for paths, which stands in the folder that is shown.
    static void type_name(PrivateDesktop& desktop, std::string_view name) {
        press_with(desktop, XK_Control_L, XK_l);
        type(desktop, std::string(name) + "\n");
    }

    static void press_with(PrivateDesktop& desktop, unsigned long modifier, unsigned long symbol) {
        desktop.press_key(modifier);
        desktop.press_key(symbol);
        desktop.release_key(symbol);
        desktop.release_key(modifier);
    }

    const std::string m_folder;
};

TEST_F(DesktopFiles, AreChosenWhileTheProgramsOtherWindowsGoOn) {
    auto& desktop = PrivateDesktop::start();
    auto* const owner = show_window();
    auto asked = question(FileQuestion::Kind::open, owner);
    asked.filters = {{u"Pictures", {u"*.png"}}, {u"Texts", {u"*.txt"}}};
    asked.filter = 1;
    auto answer = ask(desktop, asked, [&](const auto& clients) {
        EXPECT_FALSE(IsWindowEnabled(owner));
        EXPECT_EQ(clients.back().owner, clients.front().id);
        EXPECT_TRUE(clients.back().is_modal);
        type_name(desktop, "two.txt");
    });
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->paths, Paths{m_folder + "/two.txt"});
    EXPECT_EQ(answer->filter, 1U);
    EXPECT_TRUE(IsWindowEnabled(owner));
    EXPECT_TRUE(await([&] { return GetFocus() == owner; }));

    // Nothing is chosen.
    answer = ask(desktop, asked, [&](const auto&) {
        desktop.press_key(XK_Escape);
        desktop.release_key(XK_Escape);
    });
    EXPECT_TRUE(answer && answer->paths.empty());
    EXPECT_TRUE(IsWindowEnabled(owner));

    // The owner goes away meanwhile.
    answer = ask(desktop, asked, [&](const auto&) { DestroyWindow(owner); });
    EXPECT_TRUE(answer && answer->paths.empty());
    EXPECT_TRUE(await([&] { return desktop.clients().empty(); }));
}

TEST_F(DesktopFiles, AreWrittenSeveralAndFolders) {
    auto& desktop = PrivateDesktop::start();
    auto asked = question(FileQuestion::Kind::save, nullptr);
    asked.name = u"n\u00e4me";
    asked.asks_to_replace = true;
    auto answer = ask(desktop, asked, [&](const auto&) { type(desktop, "\n"); });
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->paths, Paths{m_folder + "/n\u00e4me"});

    // The filter leaves two, which are found whatever their case.
    asked = question(FileQuestion::Kind::open, nullptr);
    asked.takes_several = true;
    asked.filters = {{u"Texts", {u"*.txt"}}};
    answer = ask(desktop, asked, [&](const auto&) {
        press_with(desktop, XK_Control_L, XK_a);
        type(desktop, "\n");
    });
    ASSERT_TRUE(answer);
    std::sort(answer->paths.begin(), answer->paths.end());
    EXPECT_EQ(answer->paths, (Paths{m_folder + "/one.TXT", m_folder + "/two.txt"}));

    asked = question(FileQuestion::Kind::folder, nullptr);
    asked.name = u"below";
    std::filesystem::create_directory(m_folder + "/below");
    answer = ask(desktop, asked, [&](const auto&) { press_with(desktop, XK_Alt_L, XK_s); });
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->paths, Paths{m_folder + "/below"});
}

TEST_F(DesktopFiles, AreSavedWithTheExtensionThatTheyLack) {
    auto& desktop = PrivateDesktop::start();
    const auto folder = tvutil2::platform_path(m_folder).value();
    char16_t file[300] = u"two";
    OPENFILENAMEW asked{};
    asked.lStructSize = sizeof asked;
    asked.lpstrTitle = u"Choose \u00e4";
    asked.lpstrInitialDir = folder.c_str();
    asked.lpstrFile = file;
    asked.nMaxFile = 300;
    asked.lpstrDefExt = u"txt";
    asked.Flags = OFN_OVERWRITEPROMPT;
    // The one that is there is to stay; then the dialog comes again, and another name is typed.
    const std::string typed[] = {"\n", "\n", "other\n"};
    static std::size_t step;
    static std::function<void()> work;
    step = 0;
    std::string before;
    work = [&] {
        const auto clients = desktop.clients();
        const auto now = clients.empty() ? "" : std::to_string(clients.back().id);
        if (step == std::size(typed) || now.empty() || now == before) return;
        before = now;
        // In the place of the name that is there.
        if (step + 1 == std::size(typed)) press_with(desktop, XK_Control_L, XK_a);
        type(desktop, typed[step++]);
    };
    const auto timer = SetTimer(nullptr, 0, 200, [](HWND, UINT, UINT_PTR, DWORD) { work(); });
    EXPECT_TRUE(GetSaveFileNameW(&asked));
    KillTimer(nullptr, timer);
    EXPECT_EQ(std::u16string(file), folder + u"\\other.txt");
}

TEST_F(DesktopFiles, AreThePortalsAffairWhereThatAnswers) {
    const struct {
        std::vector<std::string> portal;
        bool shows_ours;
    } cases[] = {
        {{"chosen", "file://" + m_folder + "/one.TXT"}, false},
        {{"silent"}, true},
        {{"refuses"}, true},
        {{"hangs"}, true},
        {{"dies"}, true},
    };
    const tests::SessionBus bus;
    setenv("GTK_USE_PORTAL", "1", 1);
    auto& desktop = PrivateDesktop::start();
    for (const auto& each : cases) {
        SCOPED_TRACE(each.portal[0]);
        tests::PipedProcess portal(TESTS_STARTED "/portal.exe", each.portal);
        ASSERT_EQ(portal.line(), "ready");
        auto asked = question(FileQuestion::Kind::open, nullptr);
        asked.filters = {{u"Pictures", {u"*.png"}}, {u"Texts", {u"*.txt"}}};
        if (each.shows_ours) {
            const auto answer =
                ask(desktop, asked, [&](const auto&) { type_name(desktop, "two.txt"); });
            ASSERT_TRUE(answer);
            EXPECT_EQ(answer->paths, Paths{m_folder + "/two.txt"});
        } else {
            const auto answer = choose_files(asked);
            ASSERT_TRUE(answer);
            EXPECT_EQ(answer->paths, Paths{m_folder + "/one.TXT"});
            EXPECT_EQ(answer->filter, 1U);
            EXPECT_EQ(portal.line(), "asked Choose \u00e4");
        }
    }
}

TEST_F(DesktopFiles, AreNotAskedForOffscreen) {
    setenv("TVUTIL_DISPLAY", "offscreen", 1);
    EXPECT_FALSE(choose_files(question(FileQuestion::Kind::open, nullptr)));
}

}  // namespace
