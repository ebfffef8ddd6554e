// What handlers do to windows that are being painted, typed into or clicked.
#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/list_box.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/controls/static.h"
#include "tvutil2/platform/window/controls/tree_view.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

#include "tests/platform/window/trace.h"

namespace {

using tests::Trace;

void run_dry() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

template <class Action>
void whatever_is_raised(const Action& action) {
    try {
        action();
    } catch (const std::runtime_error&) {
    }
}

class Faults : public testing::Test {
  protected:
    Faults() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        m_trace = {};
    }
    ~Faults() override { m_trace = {}; }

    // Some of everything that can become of a child, each step also behind one that raised.
    void live(HWND parent, HWND child) {
        POINT inside{5, 5};
        ClientToScreen(child, &inside);
        const std::function<void()> steps[] = {
            [&] { SetFocus(child); },
            [&] { tvutil2::type_key('A', u"a"); },
            [&] { tvutil2::move_pointer(inside); },
            [&] { SetActiveWindow(nullptr); },
            [&] { tvutil2::click(inside); },
            [&] {
                // An edit shows its menu.
                tvutil2::click(inside, 1);
                tvutil2::type_key(VK_ESCAPE);
            },
            [&] { tvutil2::turn_wheel(inside, -120); },
            [&] { SetWindowTextW(child, u"text"); },
            [&] { SetWindowPos(child, nullptr, 3, 3, 70, 60, SWP_NOZORDER); },
            [&] { SetCapture(child); },
            [&] { ReleaseCapture(); },
            [&] { EnableWindow(child, FALSE); },
            [&] { EnableWindow(child, TRUE); },
            [&] {
                tvutil2::move_pointer({300, 300});
            },
            [&] { SetFocus(parent); },
            [&] { SendMessageW(child, WM_CLOSE, 0, 0); },
        };
        for (const auto& step : steps) {
            whatever_is_raised(step);
            whatever_is_raised(run_dry);
        }
    }

    Trace& m_trace = Trace::current();
};

TEST_F(Faults, EndNoWindowButTheirs) {
    const struct {
        const char* name;
        std::function<void(HWND parent, HWND child)> what;
    } faults[] = {
        {"ends itself", [](HWND, HWND child) { DestroyWindow(child); }},
        {"ends its parent", [](HWND parent, HWND) { DestroyWindow(parent); }},
        {"raises", [](HWND, HWND) { throw std::runtime_error("raised"); }},
        {"hides its parent", [](HWND parent, HWND) { ShowWindow(parent, SW_HIDE); }},
    };
    constexpr UINT kWhen[] = {
        WM_SIZE,        WM_MOVE,           WM_CLOSE,       WM_SHOWWINDOW,  WM_NCCALCSIZE,
        WM_SETTEXT,     WM_ENABLE,         WM_PAINT,       WM_NCPAINT,     WM_ERASEBKGND,
        WM_SETFOCUS,    WM_KILLFOCUS,      WM_CANCELMODE,  WM_NCHITTEST,   WM_WINDOWPOSCHANGING,
        WM_MOUSEMOVE,   WM_CAPTURECHANGED, WM_LBUTTONDOWN, WM_LBUTTONUP,   WM_WINDOWPOSCHANGED,
        WM_RBUTTONDOWN, WM_MOUSEACTIVATE,  WM_KEYDOWN,     WM_KEYUP,       WM_CHAR,
        WM_SETCURSOR,   WM_MOUSEWHEEL,     WM_CONTEXTMENU, WM_PARENTNOTIFY};
    std::size_t handles = 0;
    for (const auto& fault : faults) {
        for (const auto when : kWhen) {
            SCOPED_TRACE(std::string(fault.name) + " at " + std::to_string(when));
            m_trace.names.clear();
            HWND parent = nullptr;
            HWND child = nullptr;
            int count = 0;
            m_trace.handler = [&](HWND window, UINT message, WPARAM wparam,
                                  LPARAM lparam) -> LRESULT {
                const bool is_its = window == child || message == WM_PARENTNOTIFY;
                if (child != nullptr && is_its && message == when && count++ < 3) {
                    fault.what(parent, child);
                }
                return DefWindowProcW(window, message, wparam, lparam);
            };
            auto* const bystander = tests::traced_window(WS_POPUP | WS_VISIBLE);
            parent = tests::traced_window(WS_POPUP | WS_VISIBLE);
            SetWindowPos(parent, nullptr, 0, 0, 200, 200, SWP_NOZORDER);
            child = tests::traced_window(WS_CHILD | WS_VISIBLE | WS_BORDER, parent);
            live(parent, child);
            whatever_is_raised([&] { DestroyWindow(parent); });
            EXPECT_GT(count, 0);
            EXPECT_FALSE(IsWindow(parent));
            EXPECT_FALSE(IsWindow(child));
            EXPECT_TRUE(IsWindow(bystander));
            EXPECT_EQ(GetCapture(), nullptr);
            EXPECT_TRUE(DestroyWindow(bystander));
            // The first fault makes what is kept for ever.
            const auto now = tvutil2::handle_table::count_live();
            if (&fault == faults) handles = now;
            EXPECT_EQ(now, handles);
        }
    }
}

struct Control {
    const char16_t* name;
    DWORD style;
    UINT add;  // a message that gives it an item
};
constexpr Control kControls[] = {
    {u"Button", BS_DEFPUSHBUTTON, 0},
    {u"Button", BS_AUTORADIOBUTTON, 0},
    {u"Button", BS_OWNERDRAW, 0},
    {u"Static", SS_NOTIFY, 0},
    {u"Edit", WS_BORDER, 0},
    {u"Edit", ES_MULTILINE | WS_VSCROLL | WS_BORDER, 0},
    {u"ListBox", LBS_NOTIFY | WS_VSCROLL, LB_ADDSTRING},
    {u"ComboBox", CBS_DROPDOWN, CB_ADDSTRING},
    {u"ComboBox", CBS_DROPDOWNLIST, CB_ADDSTRING},
    {u"ScrollBar", SBS_VERT, 0},
    {u"SysListView32", LVS_REPORT, 0},
    {u"SysTreeView32", 0, 0},
};

bool is_of_a_control(UINT message) {
    return message == WM_COMMAND || message == WM_NOTIFY || message == WM_DRAWITEM ||
           message == WM_VSCROLL || (message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC);
}

HWND make_control(const Control& control, HWND parent) {
    auto* const window =
        CreateWindowExW(0, control.name, u"text", control.style | WS_CHILD | WS_VISIBLE, 2, 2, 90,
                        90, parent, nullptr, nullptr, nullptr);
    for (int i = 0; i < 3 && control.add != 0; ++i) {
        SendMessageW(window, control.add, 0, reinterpret_cast<LPARAM>(u"an item"));
    }
    std::u16string text = u"an item";
    LVITEMW row{};
    row.mask = LVIF_TEXT;
    row.pszText = text.data();
    TVINSERTSTRUCTW node{};
    node.item.mask = TVIF_TEXT;
    node.item.pszText = text.data();
    if (control.name == std::u16string(WC_LISTVIEWW)) {
        SendMessageW(window, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&row));
    } else if (control.name == std::u16string(WC_TREEVIEWW)) {
        SendMessageW(window, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&node));
    }
    return window;
}

// A handler that ends the control, or its parent, in whatever it is told or asked: each in turn.
TEST_F(Faults, ControlsOutliveWhatTheirParentDoes) {
    for (const auto& control : kControls) {
        for (const bool ends_parent : {false, true}) {
            int count = 0;
            for (int fatal = 0; fatal <= count && fatal < 40; ++fatal) {
                SCOPED_TRACE(std::string(control.name, control.name + 4) + " " +
                             std::to_string(control.style) + " " + std::to_string(fatal));
                count = 0;
                HWND child = nullptr;
                auto* const parent = tests::traced_window(WS_POPUP | WS_VISIBLE);
                SetWindowPos(parent, nullptr, 0, 0, 200, 200, SWP_NOZORDER);
                m_trace.handler = [&](HWND window, UINT message, WPARAM wparam,
                                      LPARAM lparam) -> LRESULT {
                    if (child != nullptr && is_of_a_control(message) && ++count == fatal) {
                        DestroyWindow(ends_parent ? parent : child);
                    }
                    return DefWindowProcW(window, message, wparam, lparam);
                };
                child = make_control(control, parent);
                live(parent, child);
                EXPECT_EQ(IsWindow(parent) != 0, !ends_parent || fatal == 0);
                DestroyWindow(parent);
                EXPECT_FALSE(IsWindow(child));
            }
            EXPECT_GT(count, 0);
        }
    }
}

}  // namespace
