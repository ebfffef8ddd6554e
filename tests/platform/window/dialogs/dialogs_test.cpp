#include "tvutil2/platform/window/dialogs/dialogs.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/dialogs/dialog_template.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/menus/menu_bar.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>

#include "tests/platform/window/dialogs/template_bytes.h"
#include "tests/platform/window/trace.h"
#include "tests/support/resource_image.h"

namespace {

using tests::TemplateBytes;

constexpr WORD kButton = 0x80;
constexpr WORD kStatic = 0x82;

// What the dialog's procedure is told, and what it does.
struct Heard {
    std::string commands;
    std::function<INT_PTR(HWND, UINT, WPARAM, LPARAM)> handler;
};
Heard g_heard;

INT_PTR procedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_COMMAND) {
        g_heard.commands += (g_heard.commands.empty() ? "" : " ") + std::to_string(LOWORD(wparam));
    }
    return g_heard.handler ? g_heard.handler(dialog, message, wparam, lparam)
                           : INT_PTR{message == WM_INITDIALOG};
}

TemplateBytes every_kind() {
    TemplateBytes bytes(u"Every kind", WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME, 200,
                        120);
    bytes.add(kStatic, 0xFFFF, 0, u"&Name:", 7, 7, 50, 10)
        .add(kButton, 10, WS_TABSTOP, u"Browse", 60, 5, 50, 14)
        .add(kButton, 20, WS_TABSTOP | WS_GROUP | BS_AUTORADIOBUTTON, u"&One", 7, 30, 50, 10)
        .add(kButton, 21, BS_AUTORADIOBUTTON, u"T&wo", 7, 42, 50, 10)
        .add(kButton, 22, BS_AUTORADIOBUTTON, u"T&hree", 7, 54, 50, 10)
        .add(kButton, 30, WS_TABSTOP | WS_GROUP | BS_AUTOCHECKBOX, u"&Check && tell", 7, 70, 80, 10)
        .add(kButton, 1, WS_TABSTOP | WS_GROUP | BS_DEFPUSHBUTTON, u"OK", 90, 100, 50, 14)
        .add(kButton, 2, WS_TABSTOP, u"Cancel", 145, 100, 50, 14);
    return bytes;
}

class Dialogs : public testing::Test {
  protected:
    Dialogs() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        g_heard = {};
    }
    ~Dialogs() override {
        if (IsWindow(m_dialog)) DestroyWindow(m_dialog);
    }

    void make(const TemplateBytes& bytes) {
        m_dialog = CreateDialogIndirectParamW(nullptr, bytes.bytes().data(), nullptr, procedure, 0);
        ASSERT_NE(m_dialog, nullptr);
        ShowWindow(m_dialog, SW_SHOW);
        pump();
    }
    void pump() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (!IsDialogMessageW(m_dialog, &message)) DispatchMessageW(&message);
        }
    }
    void press(int key, bool with_alt = false, bool with_shift = false) {
        if (with_alt) tvutil2::press_key(VK_MENU);
        if (with_shift) tvutil2::press_key(VK_SHIFT);
        tvutil2::type_key(key);
        if (with_shift) tvutil2::release_key(VK_SHIFT);
        if (with_alt) tvutil2::release_key(VK_MENU);
        pump();
    }
    static int focus() { return GetDlgCtrlID(GetFocus()); }

    HWND m_dialog = nullptr;
};

TEST_F(Dialogs, AreLaidOutInUnitsOfTheirFont) {
    make(every_kind());
    RECT client{};
    GetClientRect(m_dialog, &client);
    RECT wanted{60, 5, 110, 19};
    ASSERT_TRUE(MapDialogRect(m_dialog, &wanted));
    RECT whole{0, 0, 200, 120};
    MapDialogRect(m_dialog, &whole);
    EXPECT_EQ(client.right, whole.right);
    EXPECT_EQ(client.bottom, whole.bottom);
    EXPECT_GT(whole.right, 200);
    RECT place{};
    GetWindowRect(GetDlgItem(m_dialog, 10), &place);
    MapWindowPoints(nullptr, m_dialog, reinterpret_cast<POINT*>(&place), 2);
    EXPECT_EQ(place.left, wanted.left);
    EXPECT_EQ(place.top, wanted.top);
    EXPECT_NEAR(place.right, wanted.right, 1);
    EXPECT_NE(SendDlgItemMessageW(m_dialog, 10, WM_GETFONT, 0, 0), 0);
}

TEST_F(Dialogs, HaveTheMenuBarThatTheirTemplateNames) {
    static const auto image = [] {
        tests::ResourceImage made;
        // Version, size of the header; flags (the last one), number and text of the item.
        const WORD bar[] = {0, 0, 0x80, 5, u'A', 0};
        made.add(u"#4", u"#77", 0, {reinterpret_cast<const char*>(bar), sizeof bar});
        return made;
    }();
    ASSERT_TRUE(tvutil2::add_module_resources(nullptr, image.bytes().data(), image.bytes().size()));
    const auto style = WS_POPUP | WS_CAPTION;
    make(TemplateBytes(u"", style, 100, 50).menu(77).add(kButton, 1, 0, u"OK", 7, 7, 50, 14));
    auto* const menu = GetMenu(m_dialog);
    EXPECT_EQ(GetMenuItemID(menu, 0), 5U);
    // It takes none of the client area's room.
    RECT client{}, wanted{0, 0, 100, 50};
    GetClientRect(m_dialog, &client);
    MapDialogRect(m_dialog, &wanted);
    EXPECT_EQ(client.bottom, wanted.bottom);
    DestroyWindow(m_dialog);
    EXPECT_FALSE(IsMenu(menu));
    // One that isn't there is no reason to have no dialog.
    make(TemplateBytes(u"", style, 100, 50).menu(78));
    EXPECT_EQ(GetMenu(m_dialog), nullptr);
}

TEST_F(Dialogs, KeysMoveAmongTheControls) {
    make(every_kind());
    const struct {
        int key;
        bool with_alt, with_shift;
        int focus, default_look;
        const char* commands;
    } cases[] = {
        // No key: the focus that the dialog opens with counts as well.
        {0, false, false, 10, 10, ""},         {VK_TAB, false, false, 20, 1, ""},
        {VK_TAB, false, true, 10, 10, ""},     {VK_TAB, false, true, 2, 2, ""},
        {VK_TAB, false, false, 10, 10, ""},    {VK_RETURN, false, false, 10, 10, "10"},
        {'N', true, false, 10, 10, ""},        {'O', true, false, 20, 1, "20"},
        {VK_DOWN, false, false, 21, 1, "21"},  {VK_RIGHT, false, false, 22, 1, "22"},
        {VK_DOWN, false, false, 20, 1, "20"},  {VK_UP, false, false, 22, 1, "22"},
        {VK_TAB, false, false, 30, 1, ""},     {VK_SPACE, false, false, 30, 1, "30"},
        {VK_TAB, false, true, 22, 1, ""},      {'W', false, false, 21, 1, "21"},
        {'C', true, false, 30, 1, "30"},       {VK_RETURN, false, false, 30, 1, "1"},
        {VK_ESCAPE, false, false, 30, 1, "2"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        g_heard.commands.clear();
        if (each.key != 0) press(each.key, each.with_alt, each.with_shift);
        EXPECT_EQ(focus(), each.focus);
        EXPECT_EQ(g_heard.commands, each.commands);
        EXPECT_EQ(LOWORD(static_cast<WPARAM>(SendMessageW(m_dialog, DM_GETDEFID, 0, 0))), 1);
        for (const int id : {10, 1, 2}) {
            const auto code = SendDlgItemMessageW(m_dialog, id, WM_GETDLGCODE, 0, 0);
            EXPECT_EQ((code & DLGC_DEFPUSHBUTTON) != 0, id == each.default_look) << id;
        }
    }
    EXPECT_EQ(IsDlgButtonChecked(m_dialog, 21), 1U);
    EXPECT_EQ(IsDlgButtonChecked(m_dialog, 22), 0U);
    EXPECT_EQ(IsDlgButtonChecked(m_dialog, 30), 0U);
}

TEST_F(Dialogs, CommandLinksTakeTheDefaultLookAndStayCommandLinks) {
    TemplateBytes bytes(u"Links", WS_POPUP | WS_CAPTION, 200, 60);
    bytes.add(kButton, 10, WS_TABSTOP | BS_COMMANDLINK, u"One", 7, 7, 180, 20)
        .add(kButton, 1, WS_TABSTOP | BS_DEFPUSHBUTTON, u"OK", 90, 40, 50, 14);
    make(bytes);
    const auto type = [this] {
        return GetWindowLongW(GetDlgItem(m_dialog, 10), GWL_STYLE) & LONG{BS_TYPEMASK};
    };
    EXPECT_EQ(type(), LONG{BS_DEFCOMMANDLINK});
    press(VK_TAB);
    EXPECT_EQ(type(), LONG{BS_COMMANDLINK});
}

// The check has changed and the capture has ended when the dialog hears of a click.
TEST_F(Dialogs, ClicksAreToldWhenAllIsDone) {
    make(every_kind());
    std::string seen;
    g_heard.handler = [&](HWND dialog, UINT message, WPARAM, LPARAM) -> INT_PTR {
        if (message != WM_COMMAND) return FALSE;
        seen += std::to_string(IsDlgButtonChecked(dialog, 30)) +
                (GetCapture() == nullptr ? " free" : " held");
        return TRUE;
    };
    RECT place{};
    GetWindowRect(GetDlgItem(m_dialog, 30), &place);
    const POINT inside{place.left + 5, place.top + 5};
    tvutil2::press_button(inside);
    pump();
    EXPECT_EQ(SendDlgItemMessageW(m_dialog, 30, BM_GETSTATE, 0, 0) & BST_PUSHED, BST_PUSHED);
    EXPECT_EQ(seen, "");
    tvutil2::release_button(inside);
    pump();
    EXPECT_EQ(seen, "1 free");
    // What is let go elsewhere isn't a click.
    tvutil2::press_button(inside);
    tvutil2::move_pointer({place.left - 3, place.top});
    tvutil2::release_button({place.left - 3, place.top});
    pump();
    EXPECT_EQ(seen, "1 free");
    EXPECT_EQ(IsDlgButtonChecked(m_dialog, 30), 1U);
}

TEST_F(Dialogs, RunWithTheirOwnerDisabledAndEndInOrder) {
    auto& trace = tests::Trace::current();
    trace = {};
    auto* const owner = tests::traced_window(WS_POPUP | WS_VISIBLE);
    HWND dialog = nullptr;
    std::string order;
    g_heard.handler = [&](HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> INT_PTR {
        if (message == WM_INITDIALOG) {
            dialog = window;
            EXPECT_EQ(lparam, 77);
            EXPECT_FALSE(IsWindowEnabled(owner));
            tvutil2::type_key(VK_ESCAPE);
        }
        if (message == WM_COMMAND) EndDialog(window, 40 + LOWORD(wparam));
        if (message == WM_DESTROY) {
            order = std::string(IsWindowEnabled(owner) ? "enabled " : "") +
                    (IsWindowVisible(window) ? "" : "hidden");
        }
        return message == WM_INITDIALOG;
    };
    const auto bytes = every_kind();
    EXPECT_EQ(DialogBoxIndirectParamW(nullptr, bytes.bytes().data(), owner, procedure, 77), 42);
    EXPECT_EQ(order, "enabled hidden");
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ(GetActiveWindow(), owner);
    // A wish to quit ends it, and is there afterwards.
    g_heard.handler = [&](HWND, UINT message, WPARAM, LPARAM) -> INT_PTR {
        if (message == WM_INITDIALOG) PostQuitMessage(9);
        return message == WM_INITDIALOG;
    };
    DialogBoxIndirectParamW(nullptr, bytes.bytes().data(), owner, procedure, 0);
    EXPECT_TRUE(IsWindowEnabled(owner));
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) && message.message != WM_QUIT) {
    }
    EXPECT_EQ(message.message, WM_QUIT);
    EXPECT_EQ(message.wParam, 9U);
    // A dialog that is destroyed in the middle of its creation isn't there, and harms nobody.
    g_heard.handler = [&](HWND window, UINT message_number, WPARAM, LPARAM) -> INT_PTR {
        if (message_number == WM_INITDIALOG) DestroyWindow(window);
        return FALSE;
    };
    EXPECT_EQ(DialogBoxIndirectParamW(nullptr, bytes.bytes().data(), owner, procedure, 0), -1);
    EXPECT_TRUE(IsWindowEnabled(owner));
    DestroyWindow(owner);
    trace = {};
}

TEST_F(Dialogs, TemplatesAreReadAsAWholeOrNotAtAll) {
    const auto made = every_kind();
    const auto& bytes = made.bytes();
    const auto* const start = reinterpret_cast<const std::byte*>(bytes.data());
    const auto whole = tvutil2::read_dialog_template({start, bytes.size()});
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->title.text, u"Every kind");
    EXPECT_EQ(whole->face, u"MS Shell Dlg");
    ASSERT_EQ(whole->items.size(), 8U);
    EXPECT_EQ(whole->items[5].title.text, u"&Check && tell");
    EXPECT_EQ(whole->items[7].id, 2U);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        EXPECT_FALSE(tvutil2::read_dialog_template({start, size})) << size;
    }
    // A control of a class that isn't there takes the dialog along.
    auto strange = every_kind();
    strange.add(0x99, 5, 0, u"", 0, 0, 9, 9);
    EXPECT_EQ(CreateDialogIndirectParamW(nullptr, strange.bytes().data(), nullptr, procedure, 0),
              nullptr);
    EXPECT_EQ(GetLastError(), ERROR_CANNOT_FIND_WND_CLASS);
    EXPECT_EQ(DialogBoxIndirectParamW(nullptr, nullptr, nullptr, procedure, 0), -1);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

}  // namespace
