#include "tvutil2/platform/window/controls/edit.h"

#include "tvutil2/lang/language_table.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/window/controls/edit_text.h"
#include "tvutil2/platform/window/controls/text_breaks.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/menus/menu.h"
#include "tvutil2/platform/window/scrolling.h"

#include <random>
#include <set>

#include "tests/platform/window/controls/control_fixture.h"

namespace {

using tvutil2::EditText;

constexpr DWORD kLine = WS_BORDER | ES_AUTOHSCROLL;
constexpr DWORD kLines = WS_BORDER | ES_MULTILINE | ES_AUTOVSCROLL | WS_VSCROLL;

TEST(TextBreaks, AreWherePeopleSeeThem) {
    const struct {
        std::u16string_view text;
        std::vector<std::size_t> stops;
    } cases[] = {
        {u"ab\r\nc", {0, 1, 2, 4, 5}},
        {u"e\u0301x", {0, 2, 3}},
        {u"\U0001F468\u200D\U0001F469\u200D\U0001F467!", {0, 8, 9}},
        {u"\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7", {0, 4, 8}},
        {u"\u0939\u093F\u0928", {0, 2, 3}},
        {u"\xD800z", {0, 1, 2}},
    };
    for (const auto& each : cases) {
        std::vector<std::size_t> found{0};
        while (found.back() < each.text.size()) {
            found.push_back(tvutil2::next_character(each.text, found.back()));
        }
        EXPECT_EQ(found, each.stops);
        for (auto i = found.size(); i-- > 1;) {
            EXPECT_EQ(tvutil2::previous_character(each.text, found[i]), found[i - 1]);
        }
    }
    EXPECT_EQ(tvutil2::next_word(u"one  two", 0), 5U);
    EXPECT_EQ(tvutil2::previous_word(u"one  two", 5), 0U);
    EXPECT_EQ(tvutil2::word_at(u"one  two", 6), std::pair(std::size_t{5}, std::size_t{8}));
}

// Whatever is done, what is undone is what was there.
TEST(EditText, IsUndoneStepByStep) {
    std::minstd_rand random(7);
    const auto number = [&](std::size_t below) { return std::size_t{random()} % below; };
    EditText text;
    text.set(u"begin");
    std::vector<std::u16string> states{text.text()};
    for (int i = 0; i < 300; ++i) {
        text.select(number(text.size() + 1), number(text.size() + 1));
        const std::u16string by(number(4), static_cast<char16_t>(u'a' + number(26)));
        if (by.empty() && text.selection().is_empty()) continue;
        text.replace(by, EditText::Kind::other);
        states.push_back(text.text());
    }
    for (auto i = states.size(); i-- > 1;) {
        ASSERT_TRUE(text.can_undo());
        text.undo();
        ASSERT_EQ(text.text(), states[i - 1]);
    }
    EXPECT_FALSE(text.can_undo());
    while (text.can_redo()) text.redo();
    EXPECT_EQ(text.text(), states.back());
}

class Edits : public tests::ControlTest {
  protected:
    Edits() {
        m_name = [](HWND, WORD code) -> std::string {
            switch (code) {
                case EN_SETFOCUS:
                    return "SETFOCUS";
                case EN_KILLFOCUS:
                    return "KILLFOCUS";
                case EN_CHANGE:
                    return "CHANGE";
                case EN_UPDATE:
                    return "UPDATE";
                case EN_MAXTEXT:
                    return "MAXTEXT";
                default:
                    return std::to_string(code);
            }
        };
    }
    static std::pair<DWORD, DWORD> selection_of(HWND edit) {
        DWORD start = 0;
        DWORD end = 0;
        SendMessageW(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&start),
                     reinterpret_cast<LPARAM>(&end));
        return {start, end};
    }
    static LPARAM as_lparam(const void* pointer) { return reinterpret_cast<LPARAM>(pointer); }
};

TEST_F(Edits, TellTheirParentInOrder) {
    auto* const line = add(u"Edit", kLine);
    auto* const lines = add(u"Edit", kLines, {10, 60, 210, 160});
    pump();
    const auto set_text = [](HWND edit, const char16_t* text) { SetWindowTextW(edit, text); };
    const struct {
        std::function<void()> change;
        const char* told;
    } cases[] = {
        {[&] { SetFocus(line); }, "SETFOCUS"},
        {[&] { tvutil2::type_text(u"ab"); }, "UPDATE CHANGE UPDATE CHANGE"},
        {[&] { tvutil2::type_key(VK_BACK); }, "UPDATE CHANGE"},
        {[&] { tvutil2::type_key(VK_DELETE); }, ""},
        {[&] { tvutil2::type_key(VK_LEFT); }, ""},
        {[&] { SendMessageW(line, EM_UNDO, 0, 0); }, "UPDATE CHANGE"},
        {[&] { set_text(line, u"x"); }, "UPDATE CHANGE"},
        {[&] { SendMessageW(line, EM_REPLACESEL, 1, as_lparam(u"yz")); }, "UPDATE CHANGE"},
        {[&] { SendMessageW(line, EM_LIMITTEXT, 4, 0); }, ""},
        {[&] { tvutil2::type_text(u"12"); }, "UPDATE CHANGE MAXTEXT"},
        {[&] { SetFocus(lines); }, "KILLFOCUS SETFOCUS"},
        {[&] { set_text(lines, u"x"); }, ""},
        {[&] { tvutil2::type_text(u"\r"); }, "UPDATE CHANGE"},
        {[&] { SendMessageW(lines, EM_SETREADONLY, 1, 0); }, ""},
        {[&] { tvutil2::type_text(u"q\b"); }, ""},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        each.change();
        EXPECT_EQ(pump(), each.told);
    }
    EXPECT_EQ(text_of(line), u"yz1x");
    EXPECT_EQ(text_of(lines), u"\r\nx");
}

TEST_F(Edits, AskForColoursByWhatTheyAre) {
    UINT asked = 0;
    m_answer = [&](UINT message, WPARAM, LPARAM) -> LRESULT {
        if (message == WM_CTLCOLOREDIT || message == WM_CTLCOLORSTATIC) asked = message;
        return 0;
    };
    auto* const edit = add(u"Edit", kLine);
    const auto asks = [&] {
        InvalidateRect(edit, nullptr, TRUE);
        pump();
        return asked;
    };
    EXPECT_EQ(asks(), WM_CTLCOLOREDIT);
    EnableWindow(edit, FALSE);
    EXPECT_EQ(asks(), WM_CTLCOLORSTATIC);
    EnableWindow(edit, TRUE);
    SendMessageW(edit, EM_SETREADONLY, 1, 0);
    EXPECT_EQ(asks(), WM_CTLCOLORSTATIC);
}

// Before anything is scrolled: whoever looks at a long line sees that there is more.
TEST_F(Edits, ItsBarKnowsHowWideTheLinesInViewAre) {
    auto* const edit = add(u"Edit", kLines | ES_AUTOHSCROLL | WS_HSCROLL, {10, 10, 100, 200},
                           u"short\r\nmuch, much longer than the hundred pixels it is given");
    pump();
    SCROLLINFO info{sizeof info, SIF_RANGE | SIF_PAGE, 0, 0, 0, 0, 0};
    ASSERT_TRUE(GetScrollInfo(edit, SB_HORZ, &info));
    EXPECT_GT(info.nMax, 200);
    EXPECT_LT(info.nPage, 100U);
}

TEST_F(Edits, KeysMoveAndSelect) {
    auto* const edit = add(u"Edit", kLines | ES_AUTOHSCROLL, {10, 10, 300, 200},
                           u"one two\r\ne\u0301x\r\nlonger third line");
    SetFocus(edit);
    pump();
    const struct {
        int key;
        bool control, shift;
        DWORD start, end;
    } cases[] = {
        {VK_RIGHT, false, false, 1, 1}, {VK_RIGHT, true, false, 4, 4},
        {VK_END, false, true, 4, 7},    {VK_RIGHT, false, false, 7, 7},
        {VK_RIGHT, false, false, 9, 9}, {VK_RIGHT, false, false, 11, 11},
        {VK_LEFT, false, false, 9, 9},  {VK_END, true, false, 31, 31},
        {VK_UP, false, false, 12, 12},  {VK_DOWN, false, false, 31, 31},
        {VK_HOME, false, true, 14, 31}, {VK_HOME, true, false, 0, 0},
        {'A', true, false, 0, 31},      {VK_LEFT, false, false, 0, 0},
        {VK_LEFT, true, false, 0, 0},   {VK_NEXT, false, true, 0, 14},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        press(each.key, each.control, each.shift);
        EXPECT_EQ(selection_of(edit), std::pair(each.start, each.end));
    }
    // What -1 stands for.
    SendMessageW(edit, EM_SETSEL, 3, 6);
    SendMessageW(edit, EM_SETSEL, static_cast<WPARAM>(-1), 0);
    EXPECT_EQ(selection_of(edit), std::pair(DWORD{6}, DWORD{6}));
    SendMessageW(edit, EM_SETSEL, 2, -1);
    EXPECT_EQ(selection_of(edit), std::pair(DWORD{2}, DWORD{31}));
    EXPECT_EQ(SendMessageW(edit, EM_GETLINECOUNT, 0, 0), 3);
    EXPECT_EQ(SendMessageW(edit, EM_LINEINDEX, 1, 0), 9);
    EXPECT_EQ(SendMessageW(edit, EM_LINEINDEX, 3, 0), -1);
    EXPECT_EQ(SendMessageW(edit, EM_LINELENGTH, 10, 0), 3);
    EXPECT_EQ(SendMessageW(edit, EM_LINEFROMCHAR, 30, 0), 2);
    char16_t row[4] = {4};
    EXPECT_EQ(SendMessageW(edit, EM_GETLINE, 0, as_lparam(row)), 4);
    EXPECT_EQ(std::u16string(row, 4), u"one ");
    keep_picture("edit_keys");
}

TEST_F(Edits, CutCopyPasteAndUndo) {
    auto* const edit = add(u"Edit", kLine, {10, 10, 210, 38}, u"one two");
    SetFocus(edit);
    press(VK_RIGHT, true, true);
    press('X', true);
    EXPECT_EQ(text_of(edit), u"two");
    press(VK_END);
    press('V', true);
    press('V', true);
    EXPECT_EQ(text_of(edit), u"twoone one ");
    press('Z', true);
    press('Z', true);
    press('Z', true);
    EXPECT_EQ(text_of(edit), u"one two");
    EXPECT_EQ(selection_of(edit), std::pair(DWORD{0}, DWORD{4}));
    press('Y', true);
    EXPECT_EQ(text_of(edit), u"two");
    // What is typed goes at once, and so does what is deleted.
    press(VK_END);
    type(u"abc");
    press(VK_BACK);
    press(VK_BACK);
    press('Z', true);
    EXPECT_EQ(text_of(edit), u"twoabc");
    press('Z', true);
    EXPECT_EQ(text_of(edit), u"two");
    // A password stays where it is.
    auto* const password = add(u"Edit", kLine | ES_PASSWORD, {10, 60, 210, 90}, u"secret");
    SetFocus(password);
    press('A', true);
    press('C', true);
    SetFocus(edit);
    press('A', true);
    press('V', true);
    EXPECT_EQ(text_of(edit), u"one ");
    // One line takes one line.
    SetFocus(password);
    SendMessageW(password, EM_REPLACESEL, 1, as_lparam(u"a\r\nb"));
    EXPECT_EQ(text_of(password), u"a");
}

// By the menu key and a mnemonic; Escape ends the menu where the item is greyed.
TEST_F(Edits, HaveAMenu) {
    SetThreadLocale(0x0409);
    const struct {
        DWORD style;
        WPARAM from, to;  // what is selected
        const char16_t* chosen;
        const char16_t* text;
    } cases[] = {
        {0, 0, 4, u"t", u"two"},
        {0, 0, 0, u"t", u"one two"},
        {0, 0, 4, u"d", u"two"},
        {0, 0, 4, u"p", u"kepttwo"},
        {0, 0, 4, u"u", u"one two"},
        {ES_READONLY, 0, 4, u"t", u"one two"},
        {ES_READONLY, 0, 4, u"p", u"one two"},
        {ES_READONLY, 0, 4, u"d", u"one two"},
        {ES_PASSWORD, 0, 4, u"t", u"one two"},
        {ES_PASSWORD, 0, 4, u"d", u"two"},
        {ES_PASSWORD, 0, 4, u"p", u"kepttwo"},
    };
    auto* const keeper = add(u"Edit", kLine, {10, 60, 210, 90});
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        SetWindowTextW(keeper, u"kept");
        SendMessageW(keeper, EM_SETSEL, 0, -1);
        SendMessageW(keeper, WM_COPY, 0, 0);
        auto* const edit = add(u"Edit", kLine | each.style, {10, 10, 210, 38}, u"one two");
        SetFocus(edit);
        SendMessageW(edit, EM_SETSEL, each.from, static_cast<LPARAM>(each.to));
        tvutil2::type_key(VK_APPS);
        tvutil2::type_text(each.chosen);
        tvutil2::type_key(VK_ESCAPE);
        pump();
        EXPECT_EQ(text_of(edit), each.text);
        EXPECT_EQ(GetCapture(), nullptr);
        DestroyWindow(edit);
    }
    // The secondary button takes the focus along; what was chosen can be undone.
    auto* const edit = add(u"Edit", kLine, {10, 10, 210, 38}, u"one two");
    const auto by_pointer = [&](const char16_t* chosen) {
        tvutil2::click(on_screen(edit, {20, 10}), 1);
        tvutil2::type_text(chosen);
        pump();
    };
    by_pointer(u"a");
    EXPECT_EQ(GetFocus(), edit);
    EXPECT_EQ(selection_of(edit), std::pair(DWORD{0}, DWORD{7}));
    by_pointer(u"d");
    EXPECT_EQ(text_of(edit), u"");
    by_pointer(u"u");
    EXPECT_EQ(text_of(edit), u"one two");
    SendMessageW(edit, EM_SETSEL, 2, 2);
    tvutil2::press_key(VK_SHIFT);
    tvutil2::type_key(VK_F10);
    tvutil2::release_key(VK_SHIFT);
    tvutil2::type_text(u"a");
    pump();
    EXPECT_EQ(selection_of(edit), std::pair(DWORD{0}, DWORD{7}));
}

// Of the menu that an edit is about to show.
std::u16string g_menu_mnemonics;
WNDPROC g_edit_procedure = nullptr;
LRESULT read_menu(HWND edit, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_INITMENUPOPUP) {
        auto* const menu = reinterpret_cast<HMENU>(wparam);
        for (int i = 0; i < GetMenuItemCount(menu); ++i) {
            char16_t text[100] = {};
            GetMenuStringW(menu, static_cast<UINT>(i), text, 100, MF_BYPOSITION);
            const auto at = std::u16string_view(text).find(u'&');
            if (at < 99) g_menu_mnemonics += tvutil2::to_lower(text[at + 1]);
        }
        DestroyWindow(edit);
        return 0;
    }
    return CallWindowProcW(g_edit_procedure, edit, message, wparam, lparam);
}

TEST_F(Edits, HaveAMenuInEveryLanguage) {
    for (const auto& language : tvutil2::kLanguages) {
        SetThreadLocale(language.id);
        auto* const edit = add(u"Edit", kLine);
        g_edit_procedure = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(read_menu)));
        g_menu_mnemonics.clear();
        // The window goes while its menu opens.
        SendMessageW(edit, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(edit), -1);
        EXPECT_FALSE(IsWindow(edit));
        EXPECT_EQ(std::set<char16_t>(g_menu_mnemonics.begin(), g_menu_mnemonics.end()).size(), 6U)
            << language.id;
    }
}

TEST_F(Edits, ThePointerSelects) {
    auto* const edit = add(u"Edit", kLine, {10, 10, 210, 38}, u"one two three");
    pump();
    const auto point_of = [&](WPARAM at) {
        const auto packed = static_cast<WPARAM>(SendMessageW(edit, EM_POSFROMCHAR, at, 0));
        return POINT{LOWORD(packed) + 1, HIWORD(packed) + 3};
    };
    click(edit, point_of(5));
    EXPECT_EQ(GetFocus(), edit);
    EXPECT_EQ(selection_of(edit), std::pair(DWORD{5}, DWORD{5}));
    tvutil2::press_button(on_screen(edit, point_of(9)));
    tvutil2::move_pointer(on_screen(edit, point_of(2)));
    pump();
    EXPECT_EQ(selection_of(edit), std::pair(DWORD{2}, DWORD{9}));
    tvutil2::move_pointer(on_screen(edit, {-50, 3}));
    pump();
    EXPECT_EQ(selection_of(edit), std::pair(DWORD{0}, DWORD{9}));
    tvutil2::release_button(on_screen(edit, {-50, 3}));
    pump();
    EXPECT_EQ(GetCapture(), nullptr);
    click(edit, point_of(5));
    click(edit, point_of(5));
    EXPECT_EQ(selection_of(edit), std::pair(DWORD{4}, DWORD{7}));
    click(edit, point_of(5));
    EXPECT_EQ(selection_of(edit), std::pair(DWORD{0}, DWORD{13}));
}

TEST_F(Edits, MarkWhatIsReadFromTheRightAsAWhole) {
    auto* const edit = add(u"Edit", kLine);
    SetFocus(edit);
    const auto highlight = GetSysColor(COLOR_HIGHLIGHT);
    const auto pixel = (highlight & 0xFF) << 16 | (highlight & 0xFF00) | highlight >> 16;
    // The columns of pixels from the first marked one to the last.
    const auto marked = [&](const char16_t* text, WPARAM from, LPARAM to) {
        SetWindowTextW(edit, text);
        SendMessageW(edit, EM_SETSEL, from, to);
        pump();
        const auto picture = tvutil2::picture_of(m_parent);
        std::pair columns{1000, -1};
        for (int y = 16; y < 30; ++y) {
            for (int x = 10; x < 210; ++x) {
                if ((picture->row(y)[x] & 0xFFFFFF) != pixel) continue;
                columns = {std::min(columns.first, x), std::max(columns.second, x)};
            }
        }
        return columns;
    };
    const auto plain = marked(u"abc.xts", 0, 7);
    const auto whole = marked(u"שלום (3).xts", 0, 12);
    EXPECT_LT(plain.first, plain.second);
    EXPECT_EQ(whole.first, plain.first);
    // What closes the brackets stands leftmost.
    const auto bracket = marked(u"שלום (3).xts", 7, 8);
    EXPECT_EQ(bracket.first, plain.first);
    EXPECT_LT(bracket.second, plain.first + 10);
}

TEST_F(Edits, ScrollWithWhatIsWritten) {
    auto* const edit = add(u"Edit", kLines, {10, 10, 210, 110});
    SendMessageW(edit, EM_LIMITTEXT, 0, 0);
    std::u16string text;
    for (int i = 0; i < 200; ++i) text += u"a line that is wider than the control is\r\n";
    SetWindowTextW(edit, text.c_str());
    pump();
    const auto rows = SendMessageW(edit, EM_GETLINECOUNT, 0, 0);
    EXPECT_GT(rows, 400);
    EXPECT_EQ(SendMessageW(edit, EM_GETFIRSTVISIBLELINE, 0, 0), 0);
    SetFocus(edit);
    press(VK_END, true);
    const auto first = SendMessageW(edit, EM_GETFIRSTVISIBLELINE, 0, 0);
    EXPECT_GT(first, rows - 10);
    EXPECT_EQ(GetScrollPos(edit, SB_VERT), first);
    tvutil2::turn_wheel(on_screen(edit, {20, 20}), 240);
    pump();
    EXPECT_EQ(SendMessageW(edit, EM_GETFIRSTVISIBLELINE, 0, 0), first - 6);
    // By less than a notch: what is left over counts the next time, but not for the way back.
    const std::pair<int, LRESULT> turns[] = {{50, 7}, {50, 8},  {20, 9},
                                             {30, 9}, {-40, 8}, {-80, 6}};
    for (const auto& [delta, scrolled] : turns) {
        tvutil2::turn_wheel(on_screen(edit, {20, 20}), delta);
        pump();
        EXPECT_EQ(SendMessageW(edit, EM_GETFIRSTVISIBLELINE, 0, 0), first - scrolled);
    }
    // The arrow at the bar's upper end.
    RECT client{};
    GetClientRect(edit, &client);
    click(edit, {client.right + 5, 5});
    EXPECT_EQ(SendMessageW(edit, EM_GETFIRSTVISIBLELINE, 0, 0), first - 7);
    // The thumb, to the upper end.
    tvutil2::press_button(on_screen(edit, {client.right + 5, client.bottom - 30}));
    tvutil2::move_pointer(on_screen(edit, {client.right + 5, -100}));
    tvutil2::release_button(on_screen(edit, {client.right + 5, -100}));
    pump();
    EXPECT_EQ(SendMessageW(edit, EM_GETFIRSTVISIBLELINE, 0, 0), 0);
    keep_picture("edit_scrolled");
}

TEST_F(Edits, KeepWithinTheirStyles) {
    const struct {
        DWORD style;
        const char16_t *typed, *text;
    } cases[] = {
        {ES_AUTOHSCROLL | ES_NUMBER, u"a1-2", u"12"},
        {ES_AUTOHSCROLL | ES_UPPERCASE, u"a\u00E4", u"A\u00C4"},
        {ES_AUTOHSCROLL | ES_LOWERCASE, u"Ab", u"ab"},
        {ES_AUTOHSCROLL | ES_READONLY, u"ab", u""},
        {ES_AUTOHSCROLL, u"a\tb\r", u"ab"},
        {ES_MULTILINE, u"a\tb\r", u"a\tb\r\n"},
        {ES_AUTOHSCROLL, u"\U0001F600\b", u""},
    };
    for (const auto& each : cases) {
        auto* const edit = add(u"Edit", each.style);
        SetFocus(edit);
        for (const auto unit : std::u16string_view(each.typed)) {
            SendMessageW(edit, unit == u'\b' ? WM_KEYDOWN : WM_CHAR,
                         unit == u'\b' ? WPARAM{VK_BACK} : unit, 0);
        }
        EXPECT_EQ(text_of(edit), each.text);
        DestroyWindow(edit);
    }
    auto* const narrow = add(u"Edit", WS_BORDER, {10, 10, 50, 38});
    SetFocus(narrow);
    EXPECT_NE(type(std::u16string(50, u'm')).find("MAXTEXT"), std::string::npos);
    EXPECT_LT(text_of(narrow).size(), 10U);
}

// A parent that destroys the edit in any of its messages.
TEST_F(Edits, MayGoInAnyMessage) {
    for (const WORD code : {EN_UPDATE, EN_CHANGE, EN_SETFOCUS, EN_KILLFOCUS, EN_MAXTEXT}) {
        auto* const edit = add(u"Edit", kLine);
        SendMessageW(edit, EM_LIMITTEXT, 3, 0);
        m_answer = [&](UINT message, WPARAM wparam, LPARAM) -> LRESULT {
            if (message == WM_COMMAND && HIWORD(wparam) == code) DestroyWindow(edit);
            return 0;
        };
        SetFocus(edit);
        type(u"abcdef");
        SetFocus(m_parent);
        EXPECT_FALSE(IsWindow(edit)) << code;
        m_answer = {};
    }
}

TEST_F(Edits, TakeAMegabyte) {
    const struct {
        DWORD style;
        std::size_t size;
    } cases[] = {{kLine, 1 << 20}, {kLines, 1 << 16}, {kLines | ES_AUTOHSCROLL, 1 << 20}};
    for (const auto& [style, size] : cases) {
        auto* const edit = add(u"Edit", style, {10, 60, 210, 160});
        SetWindowTextW(edit, std::u16string(size, u'w').c_str());
        SetFocus(edit);
        SendMessageW(edit, EM_LIMITTEXT, 0, 0);
        press(VK_END, true);
        type(u"x");
        EXPECT_EQ(GetWindowTextLengthW(edit), static_cast<int>(size) + 1);
        DestroyWindow(edit);
    }
}

}  // namespace
