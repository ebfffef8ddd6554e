#include "tvutil2/platform/window/window.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/hooks.h"
#include "tvutil2/platform/window/properties.h"
#include "tvutil2/platform/window/show.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <thread>

#include "tests/platform/window/trace.h"

namespace {

using tests::Trace;
using tests::traced_window;

std::string text_of(HWND window) {
    char16_t text[32];
    GetWindowTextW(window, text, 32);
    return {text, text + std::u16string(text).size()};
}

HANDLE value(std::uintptr_t number) {
    return reinterpret_cast<HANDLE>(number);
}

class Windows : public testing::Test {
  protected:
    Windows() { m_trace = {}; }
    ~Windows() override { m_trace = {}; }

    Trace& m_trace = Trace::current();
};

TEST_F(Windows, TellTheirCreationInOrder) {
    const struct {
        DWORD style;
        bool has_parent;
        const char* heard;
    } cases[] = {
        {0, false, "A NCCREATE, A CALCSIZE, A CREATE"},
        {WS_POPUP, false, "A NCCREATE, A CALCSIZE, A CREATE, A SIZE, A MOVE"},
        {WS_OVERLAPPEDWINDOW, false, "A LIMITS, A NCCREATE, A CALCSIZE, A CREATE"},
        {WS_VISIBLE, false,
         "A NCCREATE, A CALCSIZE, A CREATE, A SHOW, A CHANGING, A CHANGED, A SIZE, A MOVE"},
        {WS_CHILD, true, "B NCCREATE, B CALCSIZE, B CREATE, B SIZE, B MOVE, A NOTIFY"},
    };
    for (const auto& each : cases) {
        auto* const parent = each.has_parent ? traced_window() : nullptr;
        m_trace.take();
        auto* const window = traced_window(each.style, parent);
        EXPECT_EQ(m_trace.take(), each.heard);
        DestroyWindow(parent != nullptr ? parent : window);
        m_trace.names.clear();
        m_trace.take();
    }
}

TEST_F(Windows, TellTheirEndFromTheParentDownAndFromTheChildrenUp) {
    auto* const a = traced_window();
    auto* const b = traced_window(WS_CHILD, a);
    auto* const c = traced_window(WS_CHILD, b);
    auto* const d = traced_window(WS_CHILD, a);
    auto* const e = traced_window(WS_POPUP, b);  // owned by what b is in
    auto* const f = traced_window(0, a);
    EXPECT_EQ(GetWindow(e, GW_OWNER), a);
    m_trace.take();
    EXPECT_TRUE(DestroyWindow(a));
    EXPECT_EQ(m_trace.take(),
              "F DESTROY, F NCDESTROY, E DESTROY, E NCDESTROY, A DESTROY, B DESTROY, C DESTROY, "
              "D DESTROY, C NCDESTROY, B NCDESTROY, D NCDESTROY, A NCDESTROY");
    for (auto* const each : {a, b, c, d, e, f}) EXPECT_FALSE(IsWindow(each));
    EXPECT_FALSE(DestroyWindow(a));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
}

// What a handler does to windows in the middle of their creation or end.
TEST_F(Windows, OutliveWhatTheirHandlersDo) {
    HWND parent = nullptr;
    UINT when = 0;
    std::function<void(HWND)> what;
    m_trace.handler = [&](HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
        if (message == when && window != parent) what(window);
        return DefWindowProcW(window, message, wparam, lparam);
    };
    const auto destroy_it = [](HWND window) { DestroyWindow(window); };
    const auto destroy_parent = [&](HWND) { DestroyWindow(parent); };
    const auto raise = [](HWND) { throw std::runtime_error("raised"); };
    const struct {
        UINT when;
        std::function<void(HWND)> what;
        bool creates, parent_stays;
    } cases[] = {
        {WM_NCCREATE, destroy_it, false, true},
        {WM_CREATE, destroy_it, false, true},
        {WM_SIZE, destroy_it, false, true},
        {WM_DESTROY, destroy_it, true, true},
        {WM_NCDESTROY, destroy_it, true, true},
        {WM_CREATE, destroy_parent, false, false},
        {WM_MOVE, destroy_parent, false, false},
        {WM_DESTROY, destroy_parent, true, false},
        {WM_NCDESTROY, destroy_parent, true, false},
        {WM_NCCREATE, raise, false, true},
        {WM_CREATE, raise, false, true},
        {WM_DESTROY, raise, true, true},
        {WM_NCDESTROY, raise, true, true},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.when);
        when = 0;
        parent = traced_window();
        when = each.when;
        what = each.what;
        HWND window = nullptr;
        try {
            window = traced_window(WS_CHILD, parent);
            EXPECT_EQ(window != nullptr, each.creates);
            if (window != nullptr) DestroyWindow(window);
        } catch (const std::runtime_error&) {
        }
        EXPECT_FALSE(IsWindow(window));
        EXPECT_EQ(IsWindow(parent) != 0, each.parent_stays);
        EXPECT_EQ(GetWindow(parent, GW_CHILD), nullptr);
        when = 0;
        DestroyWindow(parent);
    }
}

TEST_F(Windows, AreRefusedByTheirProcedureOrAHook) {
    UINT refused = 0;
    m_trace.handler = [&](HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
        if (message == refused) return message == WM_CREATE ? -1 : 0;
        return DefWindowProcW(window, message, wparam, lparam);
    };
    refused = WM_NCCREATE;
    EXPECT_EQ(traced_window(), nullptr);
    EXPECT_EQ(m_trace.take(), "A NCCREATE, A NCDESTROY");
    refused = WM_CREATE;
    EXPECT_EQ(traced_window(), nullptr);
    EXPECT_EQ(m_trace.take(), "B NCCREATE, B CALCSIZE, B CREATE, B DESTROY, B NCDESTROY");
    m_trace.handler = DefWindowProcW;

    static HWND announced = nullptr;
    auto* const hook = SetWindowsHookExW(
        WH_CBT,
        [](int code, WPARAM window, LPARAM /*creation*/) -> LRESULT {
            announced = reinterpret_cast<HWND>(window);
            return code == HCBT_CREATEWND ? 1 : 0;
        },
        nullptr, GetWindowThreadProcessId(traced_window(), nullptr));
    m_trace.take();
    EXPECT_EQ(traced_window(), nullptr);
    EXPECT_EQ(m_trace.take(), "");
    EXPECT_NE(announced, nullptr);
    EXPECT_FALSE(IsWindow(announced));
    EXPECT_TRUE(UnhookWindowsHookEx(hook));
    EXPECT_FALSE(UnhookWindowsHookEx(hook));
}

TEST_F(Windows, WrongCreationsAreRefused) {
    const struct {
        const char16_t* name;
        DWORD style;
        HWND parent;
        DWORD error;
    } cases[] = {
        {u"no such class", 0, nullptr, ERROR_CANNOT_FIND_WND_CLASS},
        {nullptr, 0, nullptr, ERROR_CANNOT_FIND_WND_CLASS},
        {tests::traced_class(), WS_CHILD, nullptr, ERROR_TLW_WITH_WSCHILD},
        {tests::traced_class(), 0, reinterpret_cast<HWND>(0x1234567890),
         ERROR_INVALID_WINDOW_HANDLE},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(CreateWindowExW(0, each.name, u"", each.style, 0, 0, 0, 0, each.parent, nullptr,
                                  nullptr, nullptr),
                  nullptr);
        EXPECT_EQ(GetLastError(), each.error);
    }
    auto* const first = traced_window();
    auto* deepest = first;
    int depth = 1;
    while (auto* const child = traced_window(WS_CHILD, deepest)) {
        deepest = child;
        ++depth;
    }
    EXPECT_EQ(depth, 100);
    EXPECT_TRUE(DestroyWindow(first));
}

TEST_F(Windows, KeepTheirPlaceAmongOthers) {
    auto* const a = traced_window();
    auto* const b = traced_window(WS_CHILD, a, u"", 1);
    auto* const c = traced_window(WS_CHILD, a, u"", 2);
    auto* const d = traced_window(WS_CHILD, c, u"", 2);
    auto* const only_messages = traced_window(0, HWND_MESSAGE);
    // A new child stands behind its siblings.
    EXPECT_EQ(GetWindow(a, GW_CHILD), b);
    EXPECT_EQ(GetWindow(b, GW_HWNDNEXT), c);
    EXPECT_EQ(GetWindow(c, GW_HWNDPREV), b);
    EXPECT_EQ(GetWindow(c, GW_HWNDFIRST), b);
    EXPECT_EQ(GetWindow(b, GW_HWNDLAST), c);
    EXPECT_EQ(GetParent(d), c);
    EXPECT_EQ(GetParent(a), nullptr);
    EXPECT_EQ(GetAncestor(d, GA_ROOT), a);
    EXPECT_EQ(GetDlgItem(a, 2), c);
    EXPECT_EQ(GetDlgItem(a, 3), nullptr);
    EXPECT_TRUE(IsChild(a, d));
    EXPECT_FALSE(IsChild(b, d));
    EXPECT_FALSE(IsChild(a, a));
    BringWindowToTop(c);
    EXPECT_EQ(GetWindow(a, GW_CHILD), c);
    EXPECT_EQ(GetWindow(only_messages, GW_HWNDNEXT), nullptr);
    DestroyWindow(a);
    DestroyWindow(only_messages);
}

TEST_F(Windows, HaveValuesTextsAndProperties) {
    auto* const window = traced_window(0, nullptr, u"first");
    EXPECT_EQ(text_of(window), "first");
    EXPECT_TRUE(SetWindowTextW(window, u"second one"));
    char16_t cut[7];
    EXPECT_EQ(GetWindowTextW(window, cut, 7), 6);
    EXPECT_EQ(std::u16string(cut), u"second");
    EXPECT_EQ(GetWindowTextLengthW(window), 10);
    SetWindowTextW(window, nullptr);
    EXPECT_EQ(GetWindowTextLengthW(window), 0);
    char16_t name[8];
    EXPECT_EQ(GetClassNameW(window, name, 8), 7);
    EXPECT_EQ(std::u16string(name), u"Tests::");

    EXPECT_EQ(GetWindowLongPtrW(window, GWL_STYLE), WS_CAPTION | WS_CLIPSIBLINGS);
    EXPECT_EQ(SetWindowLongPtrW(window, GWLP_USERDATA, 5), 0);
    EXPECT_EQ(SetWindowLongPtrW(window, GWLP_USERDATA, -7), 5);
    EXPECT_EQ(GetWindowLongPtrW(window, GWLP_USERDATA), -7);
    EXPECT_EQ(SetWindowLongPtrW(window, 8, 99), 0);
    EXPECT_EQ(GetWindowLongPtrW(window, 8), 99);
    for (const int outside : {9, 16, -1, 0x7FFFFFFF}) {
        EXPECT_EQ(GetWindowLongPtrW(window, outside), 0);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_INDEX);
    }

    EXPECT_TRUE(SetPropW(window, u"Some Name", value(7)));
    EXPECT_TRUE(SetPropW(window, MAKEINTRESOURCEW(9), value(8)));
    EXPECT_EQ(GetPropW(window, u"SOME NAME"), value(7));
    EXPECT_EQ(GetPropW(window, MAKEINTRESOURCEW(9)), value(8));
    EXPECT_EQ(GetPropW(window, u"another"), nullptr);
    EXPECT_EQ(RemovePropW(window, MAKEINTRESOURCEW(9)), value(8));
    EXPECT_EQ(RemovePropW(window, MAKEINTRESOURCEW(9)), nullptr);
    // They are still there when the window hears its last message.
    HANDLE last = nullptr;
    m_trace.handler = [&](HWND each, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
        if (message == WM_NCDESTROY) last = GetPropW(each, u"some name");
        return DefWindowProcW(each, message, wparam, lparam);
    };
    DestroyWindow(window);
    EXPECT_EQ(last, value(7));
    EXPECT_EQ(GetPropW(window, u"some name"), nullptr);
}

TEST_F(Windows, BelongToTheirThreadAndEndWithIt) {
    auto* const here = traced_window(0, nullptr, u"here");
    HWND there = nullptr;
    std::string heard;
    std::thread([&] {
        EXPECT_FALSE(DestroyWindow(here));
        EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
        there = traced_window(WS_POPUP, here);
        traced_window(WS_CHILD, there);
        Trace::current().take();
    }).join();
    EXPECT_FALSE(IsWindow(there));
    EXPECT_TRUE(DestroyWindow(here));
}

TEST_F(Windows, GiveNoHandleTwiceSoon) {
    auto* const first = traced_window();
    DestroyWindow(first);
    for (int i = 0; i < 1000; ++i) {
        auto* const next = traced_window();
        ASSERT_NE(next, first);
        DestroyWindow(next);
    }
    EXPECT_FALSE(IsWindow(first));
}

TEST(WindowClasses, AreFoundWithoutCaseAndByNumber) {
    WNDCLASSW description{};
    description.lpfnWndProc = DefWindowProcW;
    description.lpszClassName = u"Tests::\u00c4pfel";
    const auto atom = RegisterClassW(&description);
    ASSERT_NE(atom, 0);
    EXPECT_EQ(RegisterClassW(&description), 0);
    EXPECT_EQ(GetLastError(), ERROR_CLASS_ALREADY_EXISTS);
    const auto make = [](const char16_t* name) {
        return CreateWindowExW(0, name, u"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    };
    auto* const by_name = make(u"TESTS::\u00e4PFEL");
    auto* const by_number = make(MAKEINTRESOURCEW(atom));
    EXPECT_NE(by_name, nullptr);
    EXPECT_NE(by_number, nullptr);
    EXPECT_FALSE(UnregisterClassW(description.lpszClassName, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_CLASS_HAS_WINDOWS);
    DestroyWindow(by_name);
    DestroyWindow(by_number);
    EXPECT_TRUE(UnregisterClassW(description.lpszClassName, nullptr));
    EXPECT_FALSE(UnregisterClassW(description.lpszClassName, nullptr));
    EXPECT_EQ(make(description.lpszClassName), nullptr);
    WNDCLASSW found{};
    EXPECT_TRUE(GetClassInfoW(nullptr, u"STATIC", &found));
    EXPECT_NE(found.lpfnWndProc, nullptr);
}

}  // namespace
