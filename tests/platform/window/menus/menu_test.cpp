#include "tvutil2/platform/window/menus/menu.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/menus/menu_template.h"
#include "tvutil2/platform/window/timers.h"

#include <cstring>

#include "tests/platform/window/controls/control_fixture.h"

namespace {

UINT_PTR as_id(HMENU menu) {
    return reinterpret_cast<UINT_PTR>(menu);
}

HMENU make_menu() {
    auto* const more = CreatePopupMenu();
    AppendMenuW(more, MF_STRING, 31, u"&First");
    AppendMenuW(more, MF_STRING | MF_GRAYED, 32, u"&Second");
    auto* const menu = CreatePopupMenu();
    AppendMenuW(menu, MF_STRING, 11, u"&Open\tCtrl+O");
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu, MF_POPUP, as_id(more), u"&More");
    AppendMenuW(menu, MF_STRING | MF_CHECKED, 12, u"&Visible");
    AppendMenuW(menu, MF_STRING, 13, u"O&ther");
    return menu;
}

TEST(Menus, KeepTheirItems) {
    auto* const menu = make_menu();
    EXPECT_EQ(GetMenuItemCount(menu), 5);
    EXPECT_EQ(GetMenuItemID(menu, 0), 11U);
    EXPECT_EQ(GetMenuItemID(menu, 2), ~0U);
    char16_t text[5];
    EXPECT_EQ(GetMenuStringW(menu, 31, text, 5, MF_BYCOMMAND), 4);
    EXPECT_EQ(std::u16string(text), u"&Fir");
    EXPECT_EQ(CheckMenuItem(menu, 12, MF_BYCOMMAND | MF_UNCHECKED), MF_CHECKED);
    EXPECT_EQ(GetMenuState(menu, 12, MF_BYCOMMAND), 0U);
    EXPECT_EQ(EnableMenuItem(menu, 32, MF_BYCOMMAND | MF_ENABLED), static_cast<BOOL>(MF_GRAYED));
    EXPECT_EQ(EnableMenuItem(menu, 99, MF_BYCOMMAND), -1);
    EXPECT_EQ(GetLastError(), ERROR_MENU_ITEM_NOT_FOUND);
    EXPECT_TRUE(CheckMenuRadioItem(menu, 11, 13, 13, MF_BYCOMMAND));
    EXPECT_EQ(GetMenuState(menu, 13, MF_BYCOMMAND), MFS_CHECKED | MFT_RADIOCHECK);
    auto* const more = GetSubMenu(menu, 2);
    EXPECT_EQ(GetMenuState(menu, 2, MF_BYPOSITION), MF_POPUP | 2U << 8);
    // No menu holds itself.
    EXPECT_FALSE(AppendMenuW(more, MF_POPUP, as_id(menu), u"Around"));
    EXPECT_FALSE(AppendMenuW(menu, MF_POPUP, as_id(menu), u"Around"));
    EXPECT_TRUE(InsertMenuW(menu, 13, MF_BYCOMMAND, 14, u"Before"));
    EXPECT_EQ(GetMenuItemID(menu, 4), 14U);
    EXPECT_TRUE(DeleteMenu(menu, 2, MF_BYPOSITION));
    EXPECT_FALSE(IsMenu(more));
    EXPECT_TRUE(DestroyMenu(menu));
    EXPECT_FALSE(DestroyMenu(menu));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_MENU_HANDLE);
    EXPECT_EQ(GetMenuItemCount(menu), -1);
}

std::string bytes_of(std::u16string_view units) {
    return {reinterpret_cast<const char*>(units.data()), units.size() * 2};
}

TEST(Menus, ComeOfTemplatesOfBothForms) {
    using namespace std::literals;
    const struct {
        std::string bytes;
        std::size_t count;
    } cases[] = {
        // A pop-up with two items, and an item behind it.
        {bytes_of(u"\0\0\x10&File\0\0\x0B&Open\0\x80\x0CQuit\0\x80\x0D&Help\0"sv), 2},
        {bytes_of(u"\x1\x4\0\0\0\0\0\0\x0B\0\x80Open\0"sv), 1},
    };
    for (const auto& each : cases) {
        const auto* const start = reinterpret_cast<const std::byte*>(each.bytes.data());
        for (std::size_t size = 0; size < each.bytes.size(); ++size) {
            EXPECT_FALSE(tvutil2::read_menu_template({start, size})) << size;
        }
        const auto read = tvutil2::read_menu_template({start, each.bytes.size()});
        ASSERT_TRUE(read);
        EXPECT_EQ(read->size(), each.count);
    }
    const std::string& whole = cases[0].bytes;
    std::string padded = whole + std::string(0x10000, '\0');
    auto* const menu = LoadMenuIndirectW(padded.data());
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(GetMenuItemID(GetSubMenu(menu, 0), 1), 12U);
    DestroyMenu(menu);
    // Nested without an end.
    std::u16string deep(u"\0\0", 2);
    for (int i = 0; i < 100; ++i) deep += std::u16string(u"\x90X\0", 3);
    padded = bytes_of(deep) + std::string(0x10000, '\0');
    EXPECT_EQ(LoadMenuIndirectW(padded.data()), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_DATA);
}

class PopupMenus : public tests::ControlTest {
  protected:
    PopupMenus() {
        m_answer = [this](UINT message, WPARAM wparam, LPARAM) -> LRESULT {
            switch (message) {
                case WM_ENTERMENULOOP:
                    m_heard += "enter ";
                    break;
                case WM_INITMENUPOPUP:
                    m_heard += "popup ";
                    break;
                case WM_UNINITMENUPOPUP:
                    m_heard += "close ";
                    break;
                case WM_MENUSELECT:
                    m_heard +=
                        HIWORD(wparam) == 0xFFFF ? "none " : std::to_string(LOWORD(wparam)) + " ";
                    break;
                case WM_EXITMENULOOP:
                    m_heard += "exit";
                    break;
                default:
                    break;
            }
            return 0;
        };
        SetFocus(m_parent);
        pump();
    }
    ~PopupMenus() override { DestroyMenu(m_menu); }

    BOOL track(UINT flags = TPM_RETURNCMD) {
        m_heard.clear();
        return TrackPopupMenu(m_menu, flags, 100, 100, 0, m_parent, nullptr);
    }

    HMENU m_menu = make_menu();
    std::string m_heard;
};

TEST_F(PopupMenus, FollowTheKeys) {
    const struct {
        std::vector<int> keys;
        std::u16string_view typed;
        int chosen;
        const char* heard;
    } cases[] = {
        {{VK_DOWN, VK_RETURN}, u"", 11, "enter popup 11 close none exit"},
        {{VK_UP, VK_UP, VK_RETURN}, u"", 12, "enter popup 13 12 close none exit"},
        {{VK_ESCAPE}, u"", 0, "enter popup close none exit"},
        {{VK_DOWN, VK_DOWN, VK_RIGHT, VK_RETURN},
         u"",
         31,
         "enter popup 11 2 popup 31 close close none exit"},
        {{VK_DOWN, VK_DOWN, VK_RIGHT, VK_LEFT, VK_DOWN, VK_RETURN},
         u"",
         12,
         "enter popup 11 2 popup 31 close 12 close none exit"},
        {{}, u"v", 12, "enter popup 12 close none exit"},
        {{}, u"mf", 31, "enter popup 2 popup 31 31 close close none exit"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        for (const auto key : each.keys) tvutil2::type_key(key);
        tvutil2::type_text(each.typed);
        EXPECT_EQ(track(), each.chosen);
        EXPECT_EQ(m_heard.substr(0, 20), std::string(each.heard).substr(0, 20));
    }
    // What is disabled isn't chosen; the command comes behind the menu.
    for (const int key : {VK_DOWN, VK_DOWN, VK_RIGHT, VK_DOWN, VK_RETURN, VK_ESCAPE, VK_ESCAPE}) {
        tvutil2::type_key(key);
    }
    EXPECT_EQ(track(), 0);
    tvutil2::type_text(u"t");
    EXPECT_EQ(track(0), TRUE);
    EXPECT_EQ(m_told, "");
    EXPECT_EQ(pump(), "0");
    EXPECT_EQ(GetCapture(), nullptr);
}

TEST_F(PopupMenus, FollowThePointer) {
    tvutil2::click({140, 100 + 4 + 14});
    EXPECT_EQ(track(), 11);
    tvutil2::click({10, 10});
    EXPECT_EQ(track(), 0);
    EXPECT_EQ(m_heard, "enter popup close none exit");
}

// The window that is in front goes to another program, or ends, with a menu open.
TEST_F(PopupMenus, EndWithTheirOwner) {
    SetTimer(m_parent, 1, 10, [](HWND window, UINT, UINT_PTR id, DWORD) {
        KillTimer(window, id);
        DestroyWindow(window);
    });
    EXPECT_EQ(track(), 0);
    EXPECT_FALSE(IsWindow(m_parent));
    EXPECT_FALSE(TrackPopupMenu(m_menu, 0, 0, 0, 0, m_parent, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
}

}  // namespace
