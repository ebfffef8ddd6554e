// Dialogs by the thousand, windows full of controls, and scales that nobody has.
#include "tvutil2/framework/dialog.h"
#include "tvutil2/lang/library_dialog.h"
#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

constexpr WORD kDialogs[] = {14010, 14029, 14034};

void run_dry() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

std::size_t descriptors() {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(open), end(open)));
}

// Shown, painted and closed.
void open_and_close(WORD id) {
    CDialog dialog;
    ASSERT_TRUE(dialog.CreateIndirect(LockResource(tvutil2::find_library_dialog(id).loaded)));
    dialog.ShowWindow(SW_SHOW);
    run_dry();
    EXPECT_NE(tvutil2::picture_of(dialog.m_hWnd), nullptr);
    dialog.DestroyWindow();
    run_dry();
}

class ManyDialogs : public testing::Test {
  protected:
    ManyDialogs() { setenv("TVUTIL_DISPLAY", "offscreen", 1); }
    ~ManyDialogs() override {
        tvutil2::set_system_dpi(96);
        tvutil2::set_monitors({});
    }
};

TEST_F(ManyDialogs, LeaveNothingBehind) {
    // The most that there is between dialogs: texts are kept for a while, and then forgotten.
    const auto open_some = [](int count) {
        std::size_t bytes = 0;
        for (int i = 0; i < count; ++i) {
            open_and_close(kDialogs[i % 3]);
            bytes = std::max(bytes, mallinfo2().uordblks);
        }
        return bytes;
    };
    // What is kept for ever is made by then.
    const auto bytes = open_some(200);
    const auto handles = tvutil2::handle_table::count_live();
    const auto files = descriptors();
    open_some(800);
    // Less than the smallest block that there is, for each.
    EXPECT_LE(open_some(200), bytes + std::size_t{1000} * 16);
    EXPECT_EQ(tvutil2::handle_table::count_live(), handles);
    EXPECT_EQ(descriptors(), files);
}

TEST_F(ManyDialogs, HaveAnyScale) {
    for (const UINT dpi : {0U, 1U, 24U, 95U, 960U, 96000U}) {
        SCOPED_TRACE(dpi);
        tvutil2::set_system_dpi(dpi);
        const RECT screen{0, 0, 1920, 1080};
        tvutil2::set_monitors({{screen, screen, tvutil2::system_dpi()}});
        for (const auto id : kDialogs) open_and_close(id);
        tvutil2::set_monitors({{screen, screen, dpi}});
        for (const auto id : kDialogs) open_and_close(id);
    }
}

TEST_F(ManyDialogs, AWindowHoldsTenThousandControls) {
    auto* const top = CreateWindowExW(0, u"#32770", u"", WS_POPUP | WS_VISIBLE, 0, 0, 800, 600,
                                      nullptr, nullptr, nullptr, nullptr);
    constexpr int kCount = 10000;
    constexpr const char16_t* kClasses[] = {u"Button", u"Static", u"Edit", u"ComboBox"};
    for (int i = 0; i < kCount; ++i) {
        ASSERT_NE(CreateWindowExW(0, kClasses[i % 4], u"text", WS_CHILD | WS_VISIBLE | WS_TABSTOP,
                                  i % 100 * 8, i / 100 * 6, 40, 20, top, nullptr, nullptr, nullptr),
                  nullptr);
    }
    run_dry();
    auto* const first = GetWindow(top, GW_CHILD);
    EXPECT_EQ(GetNextDlgTabItem(top, first, TRUE), GetWindow(first, GW_HWNDLAST));
    SetWindowPos(top, nullptr, 0, 0, 700, 500, SWP_NOMOVE | SWP_NOZORDER);
    run_dry();
    EXPECT_TRUE(DestroyWindow(top));
    EXPECT_FALSE(IsWindow(first));
}

TEST_F(ManyDialogs, TextsMayHaveAMegabyte) {
    const std::u16string text(1 << 20, u'w');
    for (const auto* const name : {u"Static", u"Button", u"Edit", u"#32770"}) {
        auto* const window = CreateWindowExW(0, name, text.c_str(), WS_POPUP | WS_VISIBLE, 0, 0,
                                             300, 200, nullptr, nullptr, nullptr, nullptr);
        run_dry();
        EXPECT_EQ(GetWindowTextLengthW(window), static_cast<int>(text.size()));
        DestroyWindow(window);
    }
}

// A program without windows has nothing of them.
TEST(NoDialogs, NoDrawingLibraryIsLoaded) {
    EXPECT_EQ(FindWindowW(u"#32770", u"nobody's"), nullptr);
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        for (const auto* const name : {"libcairo", "libpango", "libgtk", "libX11", "libfontconfig",
                                       "tvutil2-draw", "tvutil2-desktop"}) {
            EXPECT_EQ(line.find(name), std::string::npos) << line;
        }
    }
}

}  // namespace
