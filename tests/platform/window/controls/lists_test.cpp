#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/list_box.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/controls/progress.h"
#include "tvutil2/platform/window/controls/tree_view.h"
#include "tvutil2/platform/window/scrolling.h"

#include <map>

#include "tests/platform/window/controls/control_fixture.h"

namespace {

LPARAM as_lparam(const void* pointer) {
    return reinterpret_cast<LPARAM>(pointer);
}

constexpr const char16_t* kWords[] = {u"delta", u"Alpha", u"charlie", u"bravo", u"alps"};

class ListBoxes : public tests::ControlTest {
  protected:
    HWND make(DWORD style) {
        auto* const list =
            add(u"ListBox", style | LBS_NOTIFY | WS_BORDER | WS_VSCROLL, {10, 10, 210, 90});
        for (const auto* word : kWords) SendMessageW(list, LB_ADDSTRING, 0, as_lparam(word));
        SetFocus(list);
        pump();
        return list;
    }
    static std::vector<int> selected(HWND list) {
        std::vector<int> items(10);
        items.resize(static_cast<std::size_t>(
            SendMessageW(list, LB_GETSELITEMS, items.size(), as_lparam(items.data()))));
        return items;
    }
};

TEST_F(ListBoxes, KeepAndFindTheirItems) {
    auto* const list = make(LBS_SORT);
    const auto text_at = [list](WPARAM index) {
        char16_t text[20] = {};
        SendMessageW(list, LB_GETTEXT, index, as_lparam(text));
        return std::u16string(text);
    };
    EXPECT_EQ(text_at(0), u"Alpha");
    EXPECT_EQ(text_at(4), u"delta");
    EXPECT_EQ(SendMessageW(list, LB_FINDSTRING, static_cast<WPARAM>(-1), as_lparam(u"AL")), 0);
    EXPECT_EQ(SendMessageW(list, LB_FINDSTRING, 0, as_lparam(u"al")), 1);
    EXPECT_EQ(SendMessageW(list, LB_FINDSTRINGEXACT, 0, as_lparam(u"al")), LB_ERR);
    EXPECT_EQ(SendMessageW(list, LB_INSERTSTRING, 9, as_lparam(u"x")), LB_ERR);
    EXPECT_EQ(SendMessageW(list, LB_SETCURSEL, 3, 0), 3);
    EXPECT_EQ(SendMessageW(list, LB_DELETESTRING, 1, 0), 4);
    EXPECT_EQ(SendMessageW(list, LB_GETCURSEL, 0, 0), 2);
    EXPECT_EQ(pump(), "");
    EXPECT_EQ(SendMessageW(list, LB_RESETCONTENT, 0, 0), LB_OKAY);
    EXPECT_EQ(SendMessageW(list, LB_GETCURSEL, 0, 0), LB_ERR);
    EXPECT_EQ(press(VK_DOWN), "");
}

TEST_F(ListBoxes, FollowKeysAndPointer) {
    auto* const list = make(0);
    const auto current = [list] { return SendMessageW(list, LB_GETCURSEL, 0, 0); };
    EXPECT_EQ(press(VK_DOWN), "1");
    EXPECT_EQ(press(VK_END), "1");
    EXPECT_EQ(current(), 4);
    EXPECT_EQ(press(VK_DOWN), "");
    EXPECT_GT(SendMessageW(list, LB_GETTOPINDEX, 0, 0), 0);
    EXPECT_EQ(GetScrollPos(list, SB_VERT), SendMessageW(list, LB_GETTOPINDEX, 0, 0));
    EXPECT_EQ(type(u"c"), "1");
    EXPECT_EQ(current(), 2);
    EXPECT_EQ(press(VK_HOME), "1");
    EXPECT_EQ(click(list, {30, 30}), "1");
    EXPECT_EQ(current(), 1);
    EXPECT_EQ(click(list, {30, 31}), "2");
    EXPECT_EQ(GetCapture(), nullptr);
    keep_picture("list_box");
}

TEST_F(ListBoxes, TakeSeveral) {
    auto* const list = make(LBS_EXTENDEDSEL);
    press(VK_DOWN);
    press(VK_DOWN);
    press(VK_DOWN, false, true);
    press(VK_DOWN, false, true);
    EXPECT_EQ(selected(list), (std::vector{1, 2, 3}));
    press(VK_HOME, true);
    press(VK_SPACE, true);
    EXPECT_EQ(selected(list), (std::vector{0, 1, 2, 3}));
    click(list, {30, 30});
    EXPECT_EQ(SendMessageW(list, LB_GETSELCOUNT, 0, 0), 1);
    keep_picture("list_box_several");
}

class ComboBoxes : public tests::ControlTest {
  protected:
    ComboBoxes() {
        m_name = [](HWND, WORD code) -> std::string {
            static const std::map<WORD, const char*> names{
                {CBN_SELCHANGE, "SELCHANGE"},      {CBN_SETFOCUS, "SETFOCUS"},
                {CBN_KILLFOCUS, "KILLFOCUS"},      {CBN_EDITCHANGE, "EDITCHANGE"},
                {CBN_EDITUPDATE, "EDITUPDATE"},    {CBN_DROPDOWN, "DROPDOWN"},
                {CBN_CLOSEUP, "CLOSEUP"},          {CBN_SELENDOK, "SELENDOK"},
                {CBN_SELENDCANCEL, "SELENDCANCEL"}};
            const auto found = names.find(code);
            return found != names.end() ? found->second : std::to_string(code);
        };
    }
    HWND make(DWORD style) {
        auto* const combo = add(u"ComboBox", style | WS_VSCROLL, {10, 10, 210, 200});
        for (const auto* word : kWords) SendMessageW(combo, CB_ADDSTRING, 0, as_lparam(word));
        return combo;
    }
};

TEST_F(ComboBoxes, TellTheirParentInOrder) {
    auto* const combo = make(CBS_DROPDOWNLIST);
    pump();
    const auto in_list = [&](int row) {
        RECT place{};
        GetWindowRect(combo, &place);
        return POINT{place.left + 20, place.bottom + 8 + row * 20};
    };
    const struct {
        std::function<void()> act;
        const char* told;
        LRESULT current;
    } cases[] = {
        {[&] { SetFocus(combo); }, "SETFOCUS", -1},
        {[&] { SendMessageW(combo, CB_SETCURSEL, 0, 0); }, "", 0},
        {[] { tvutil2::type_key(VK_DOWN); }, "SELENDOK SELCHANGE", 1},
        {[] { tvutil2::type_text(u"c"); }, "SELENDOK SELCHANGE", 2},
        {[] { tvutil2::type_key(VK_F4); }, "DROPDOWN", 2},
        {[] { tvutil2::type_key(VK_UP); }, "SELCHANGE", 1},
        {[] { tvutil2::type_key(VK_RETURN); }, "SELENDOK CLOSEUP", 1},
        {[] { tvutil2::type_key(VK_F4); }, "DROPDOWN", 1},
        {[] { tvutil2::type_key(VK_UP); }, "SELCHANGE", 0},
        {[] { tvutil2::type_key(VK_ESCAPE); }, "SELENDCANCEL CLOSEUP", 1},
        {[&] {
             tvutil2::click(on_screen(combo, {20, 10}));
         },
         "DROPDOWN", 1},
        {[&] { tvutil2::click(in_list(2)); }, "SELCHANGE SELENDOK CLOSEUP", 2},
        {[&] {
             tvutil2::click(on_screen(combo, {20, 10}));
         },
         "DROPDOWN", 2},
        {[&] {
             tvutil2::click({5, 5});
         },
         "SELENDCANCEL CLOSEUP", 2},
        {[] { tvutil2::type_key(VK_F4); }, "DROPDOWN", 2},
        {[&] { SetFocus(m_parent); }, "SELENDCANCEL CLOSEUP KILLFOCUS", 2},
        {[&] { SetFocus(combo); }, "SETFOCUS", 2},
        {[&] { SetFocus(m_parent); }, "SELENDCANCEL KILLFOCUS", 2},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        each.act();
        EXPECT_EQ(pump(), each.told);
        EXPECT_EQ(SendMessageW(combo, CB_GETCURSEL, 0, 0), each.current);
    }
    EXPECT_EQ(text_of(combo), u"charlie");
    EXPECT_EQ(GetCapture(), nullptr);
    // The style of a scroll bar is the list's.
    RECT client{};
    GetClientRect(combo, &client);
    EXPECT_EQ(client.right, 200);
    keep_picture("combo_list");
}

TEST_F(ComboBoxes, TakeWhatIsTyped) {
    auto* const combo = make(CBS_DROPDOWN);
    EXPECT_EQ(pump(), "");
    SetFocus(combo);
    EXPECT_EQ(pump(), "SETFOCUS");
    EXPECT_EQ(type(u"x"), "EDITUPDATE EDITCHANGE");
    EXPECT_EQ(text_of(combo), u"x");
    EXPECT_EQ(press(VK_DOWN), "SELENDOK SELCHANGE");
    EXPECT_EQ(text_of(combo), u"delta");
    EXPECT_EQ(type(u"y"), "EDITUPDATE EDITCHANGE");
    EXPECT_EQ(SendMessageW(combo, CB_GETCURSEL, 0, 0), CB_ERR);
    SetWindowTextW(combo, u"by code");
    EXPECT_EQ(pump(), "");
    keep_picture("combo_edit");
    SetFocus(m_parent);
    EXPECT_EQ(pump(), "SELENDCANCEL KILLFOCUS");
}

// The list reaches beyond its window, and goes with its box.
TEST_F(ComboBoxes, OpenBeyondTheirWindow) {
    SetWindowPos(m_parent, nullptr, 50, 50, 230, 60, SWP_NOZORDER);
    auto* const combo = make(CBS_DROPDOWNLIST);
    SendMessageW(combo, CB_SHOWDROPDOWN, TRUE, 0);
    pump();
    RECT place{};
    GetWindowRect(combo, &place);
    auto* const list = WindowFromPoint({place.left + 20, place.bottom + 70});
    char16_t name[20] = {};
    GetClassNameW(list, name, 20);
    EXPECT_EQ(std::u16string(name), u"ComboLBox");
    DestroyWindow(combo);
    EXPECT_FALSE(IsWindow(list));
    EXPECT_EQ(GetCapture(), nullptr);
}

class Values : public tests::ControlTest {};

TEST_F(Values, ScrollBarsTellWhatTheyAreAskedFor) {
    std::string heard;
    auto* const bar = add(u"ScrollBar", SBS_VERT | WS_TABSTOP, {10, 10, 27, 210});
    m_answer = [&](UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
        if (message == WM_VSCROLL && lparam == as_lparam(bar)) {
            heard += std::to_string(LOWORD(wparam)) + " ";
        }
        return 0;
    };
    SCROLLINFO info{sizeof info, SIF_ALL, 0, 99, 10, 95, 0};
    EXPECT_EQ(SetScrollInfo(bar, SB_CTL, &info, TRUE), 90);
    EXPECT_EQ(SetScrollPos(bar, SB_CTL, 40, TRUE), 90);
    pump();
    click(bar, {8, 5});
    click(bar, {8, 195});
    click(bar, {8, 25});
    EXPECT_EQ(heard, "0 8 1 8 2 8 ");
    heard.clear();
    press(VK_NEXT);
    press(VK_HOME);
    EXPECT_EQ(heard, "3 8 6 8 ");
    EXPECT_EQ(GetScrollPos(bar, SB_CTL), 40);
    keep_picture("scroll_bar");
}

TEST_F(Values, ProgressStaysInItsRange) {
    auto* const bar = add(PROGRESS_CLASSW, 0, {10, 10, 210, 26});
    SendMessageW(bar, PBM_SETRANGE32, static_cast<WPARAM>(-10), 30);
    EXPECT_EQ(SendMessageW(bar, PBM_SETPOS, 1000, 0), 0);
    EXPECT_EQ(SendMessageW(bar, PBM_GETPOS, 0, 0), 30);
    SendMessageW(bar, PBM_STEPIT, 0, 0);
    EXPECT_EQ(SendMessageW(bar, PBM_GETPOS, 0, 0), -10);
    SendMessageW(bar, PBM_DELTAPOS, 20, 0);
    EXPECT_EQ(SendMessageW(bar, PBM_GETPOS, 0, 0), 10);
    keep_picture("progress");
}

class ListViews : public tests::ControlTest {
  protected:
    ListViews() {
        m_answer = [this](UINT message, WPARAM, LPARAM lparam) -> LRESULT {
            if (message != WM_NOTIFY) return 0;
            const auto& told = *reinterpret_cast<const NMLISTVIEW*>(lparam);
            if (told.hdr.code == LVN_GETDISPINFOW) {
                auto& asked = reinterpret_cast<NMLVDISPINFOW*>(lparam)->item;
                ++m_asked;
                if ((asked.mask & LVIF_TEXT) != 0) asked.pszText[0] = u'x';
            } else if (told.hdr.code == LVN_ITEMCHANGED) {
                m_heard += std::to_string(told.iItem) + ":" + std::to_string(told.uNewState) + " ";
            } else if (told.hdr.code == LVN_COLUMNCLICK) {
                m_heard += "column" + std::to_string(told.iSubItem) + " ";
            } else if (told.hdr.code == LVN_ITEMACTIVATE) {
                m_heard += "activate" + std::to_string(told.iItem) + " ";
            } else if (told.hdr.code == LVN_ENDLABELEDITW) {
                return m_keeps ? TRUE : FALSE;
            }
            return 0;
        };
    }
    HWND make(DWORD style) {
        auto* const list = add(WC_LISTVIEWW, style | WS_BORDER, {10, 10, 310, 150});
        const char16_t* const titles[] = {u"Name", u"Size"};
        for (WPARAM i = 0; i < 2; ++i) {
            std::u16string title = titles[i];
            const LVCOLUMNW column{LVCF_TEXT | LVCF_WIDTH | LVCF_FMT,
                                   i == 0 ? LVCFMT_LEFT : LVCFMT_RIGHT,
                                   120,
                                   title.data(),
                                   0,
                                   0};
            SendMessageW(list, LVM_INSERTCOLUMNW, i, as_lparam(&column));
        }
        return list;
    }
    static void fill(HWND list) {
        for (int i = 0; i < 5; ++i) {
            std::u16string text = kWords[i];
            LVITEMW item{};
            item.mask = LVIF_TEXT | LVIF_PARAM;
            item.iItem = i;
            item.pszText = text.data();
            item.lParam = 100 + i;
            SendMessageW(list, LVM_INSERTITEMW, 0, as_lparam(&item));
            text = u"12 KB";
            item.iSubItem = 1;
            item.pszText = text.data();
            SendMessageW(list, LVM_SETITEMTEXTW, static_cast<WPARAM>(i), as_lparam(&item));
        }
    }
    std::string act(const std::function<void()>& what) {
        m_heard.clear();
        what();
        pump();
        return m_heard;
    }

    std::string m_heard;
    int m_asked = 0;
    bool m_keeps = true;  ///< what a person has named
};

TEST_F(ListViews, FollowKeysAndPointer) {
    auto* const list = make(LVS_REPORT);
    fill(list);
    SetFocus(list);
    pump();
    EXPECT_EQ(act([] { tvutil2::type_key(VK_DOWN); }), "0:3 ");
    EXPECT_EQ(act([] { tvutil2::type_key(VK_DOWN); }), "0:1 1:3 ");
    RECT place{};
    SendMessageW(list, LVM_GETITEMRECT, 3, as_lparam(&place));
    const auto row3 = on_screen(list, {place.left + 20, place.top + 5});
    EXPECT_EQ(act([&] { tvutil2::click(row3); }), "1:1 3:3 ");
    EXPECT_EQ(act([&] { tvutil2::click(row3); }), "activate3 ");
    press(VK_UP, false, true);
    EXPECT_EQ(SendMessageW(list, LVM_GETSELECTEDCOUNT, 0, 0), 2);
    EXPECT_EQ(SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED), 2);
    EXPECT_EQ(act([&] { tvutil2::click(on_screen(list, {130, 8})); }), "column1 ");
    // The edge between both columns is moved.
    tvutil2::press_button(on_screen(list, {120, 8}));
    tvutil2::move_pointer(on_screen(list, {150, 8}));
    tvutil2::release_button(on_screen(list, {150, 8}));
    pump();
    EXPECT_EQ(SendMessageW(list, LVM_GETCOLUMNWIDTH, 0, 0), 150);
    SendMessageW(list, LVM_DELETEITEM, 0, 0);
    LVITEMW item{};
    item.mask = LVIF_PARAM;
    item.iItem = 1;
    EXPECT_EQ(SendMessageW(list, LVM_GETITEMW, 0, as_lparam(&item)), TRUE);
    EXPECT_EQ(item.lParam, 102);
    keep_picture("list_view");
    SetWindowLongW(list, GWL_STYLE,
                   static_cast<LONG>(WS_CHILD | WS_VISIBLE | WS_BORDER | LVS_ICON));
    SendMessageW(list, LVM_SETITEMCOUNT, 5, 0);
    pump();
    keep_picture("list_view_icons");
}

TEST_F(ListViews, ChangeNamesAndColumns) {
    auto* const list = make(LVS_REPORT | LVS_EDITLABELS);
    fill(list);
    const auto name_of = [&](int index) {
        char16_t text[50] = {};
        LVITEMW asked{};
        asked.pszText = text;
        asked.cchTextMax = 50;
        SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(index), as_lparam(&asked));
        return std::u16string(text);
    };
    const struct {
        int key;
        bool keeps;
        std::u16string name;
    } cases[] = {
        {VK_RETURN, true, u"new"}, {VK_ESCAPE, true, kWords[1]}, {VK_RETURN, false, kWords[2]}};
    for (int i = 0; i < 3; ++i) {
        m_keeps = cases[i].keeps;
        SetFocus(list);
        SendMessageW(list, LVM_EDITLABELW, static_cast<WPARAM>(i), 0);
        ASSERT_NE(SendMessageW(list, LVM_GETEDITCONTROL, 0, 0), 0);
        tvutil2::type_text(u"new");
        press(cases[i].key);
        EXPECT_EQ(SendMessageW(list, LVM_GETEDITCONTROL, 0, 0), 0);
        EXPECT_EQ(GetFocus(), list);
        EXPECT_EQ(name_of(i), cases[i].name) << i;
    }
    EXPECT_EQ(SendMessageW(list, LVM_EDITLABELW, 9, 0), 0);
    // What isn't named in the mask stays.
    LVCOLUMNW column{};
    column.mask = LVCF_WIDTH;
    column.cx = 77;
    EXPECT_TRUE(SendMessageW(list, LVM_SETCOLUMNW, 1, as_lparam(&column)));
    EXPECT_FALSE(SendMessageW(list, LVM_SETCOLUMNW, 2, as_lparam(&column)));
    EXPECT_EQ(SendMessageW(list, LVM_GETCOLUMNWIDTH, 1, 0), 77);
    EXPECT_EQ(SendMessageW(list, LVM_GETCOLUMNWIDTH, 0, 0), 120);
    keep_picture("list_view_names");
}

// Only what shows is asked for, however many there are.
TEST_F(ListViews, AskForWhatTheyShow) {
    auto* const list = make(LVS_REPORT | LVS_OWNERDATA);
    SendMessageW(list, LVM_SETITEMCOUNT, 100000, 0);
    SetFocus(list);
    pump();
    m_asked = 0;
    press(VK_END);
    EXPECT_GT(m_asked, 4);
    EXPECT_LT(m_asked, 60);
    const auto page = SendMessageW(list, LVM_GETCOUNTPERPAGE, 0, 0);
    EXPECT_EQ(SendMessageW(list, LVM_GETTOPINDEX, 0, 0), 100000 - page);
    EXPECT_EQ(act([] { tvutil2::type_key(VK_HOME); }), "99999:1 0:3 ");
}

// A text has the room of its column, or of the row if there is nothing else in it.
TEST_F(ListViews, GiveTheRoomOfTheRowToATextThatIsAlone) {
    auto* const list = make(LVS_REPORT | LVS_NOCOLUMNHEADER);
    const auto has_ink_in_the_second_column = [&](std::u16string size) {
        SendMessageW(list, LVM_DELETEALLITEMS, 0, 0);
        std::u16string text(60, u'M');
        LVITEMW item{};
        item.mask = LVIF_TEXT;
        item.pszText = text.data();
        SendMessageW(list, LVM_INSERTITEMW, 0, as_lparam(&item));
        item.iSubItem = 1;
        item.pszText = size.data();
        SendMessageW(list, LVM_SETITEMTEXTW, 0, as_lparam(&item));
        pump();
        const auto picture = tvutil2::picture_of(m_parent);
        for (int y = 14; y < 34; ++y) {
            // Left of what stands at the right.
            for (int x = 140; x < 200; ++x) {
                if (picture->row(y)[x] != picture->row(100)[100]) return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(has_ink_in_the_second_column(u""));
    EXPECT_FALSE(has_ink_in_the_second_column(u"1 KB"));
}

class Trees : public tests::ControlTest {
  protected:
    HTREEITEM insert(HWND tree, HTREEITEM parent, std::u16string text, bool may_open = false) {
        TVINSERTSTRUCTW given{};
        given.hParent = parent;
        given.hInsertAfter = TVI_SORT;
        given.item.mask = TVIF_TEXT | TVIF_CHILDREN;
        given.item.pszText = text.data();
        given.item.cChildren = may_open ? 1 : 0;
        return reinterpret_cast<HTREEITEM>(
            SendMessageW(tree, TVM_INSERTITEMW, 0, as_lparam(&given)));
    }
};

TEST_F(Trees, OpenCloseAndSelect) {
    auto* const tree = add(WC_TREEVIEWW, WS_BORDER | TVS_HASBUTTONS, {10, 10, 210, 200});
    auto* const beta = insert(tree, TVI_ROOT, u"beta", true);
    auto* const alpha = insert(tree, TVI_ROOT, u"alpha");
    auto* const leaf = insert(tree, alpha, u"leaf");
    const std::map<HTREEITEM, std::string> names{
        {alpha, "alpha"}, {beta, "beta"}, {leaf, "leaf"}, {nullptr, "none"}};
    std::string heard;
    m_answer = [&](UINT message, WPARAM, LPARAM lparam) -> LRESULT {
        if (message != WM_NOTIFY) return 0;
        const auto& told = *reinterpret_cast<const NMTREEVIEWW*>(lparam);
        if (told.hdr.code == TVN_SELCHANGEDW) heard += names.at(told.itemNew.hItem) + " ";
        if (told.hdr.code == TVN_ITEMEXPANDINGW) {
            heard += (told.action == TVE_EXPAND ? "open-" : "close-") +
                     names.at(told.itemNew.hItem) + " ";
            // What is below is there when it is asked for.
            if (told.itemNew.hItem == beta) insert(tree, beta, u"late");
        }
        return 0;
    };
    const auto act = [&](const std::function<void()>& what) {
        heard.clear();
        what();
        pump();
        return heard;
    };
    EXPECT_EQ(act([&] { SetFocus(tree); }), "alpha ");
    EXPECT_EQ(act([] { tvutil2::type_key(VK_RIGHT); }), "open-alpha ");
    EXPECT_EQ(act([] { tvutil2::type_key(VK_RIGHT); }), "leaf ");
    EXPECT_EQ(act([] { tvutil2::type_key(VK_DOWN); }), "beta ");
    EXPECT_EQ(act([] { tvutil2::type_text(u"l"); }), "leaf ");
    keep_picture("tree");
    // The selection doesn't go with what closes.
    EXPECT_EQ(act([&] { SendMessageW(tree, TVM_EXPAND, TVE_COLLAPSE, as_lparam(alpha)); }),
              "close-alpha alpha ");
    EXPECT_EQ(act([&] { tvutil2::click(on_screen(tree, {12, 36})); }), "open-beta ");
    EXPECT_EQ(SendMessageW(tree, TVM_GETCOUNT, 0, 0), 4);
    SendMessageW(tree, TVM_DELETEITEM, 0, as_lparam(alpha));
    EXPECT_EQ(SendMessageW(tree, TVM_GETCOUNT, 0, 0), 2);
    EXPECT_EQ(SendMessageW(tree, TVM_SELECTITEM, TVGN_CARET, as_lparam(leaf)), FALSE);
    EXPECT_EQ(insert(tree, alpha, u"x"), nullptr);
}

}  // namespace
