// Every dialog of the library in every language: nothing is cut off, nothing lies on something
// else, and no key means two things.
#include "tvutil2/data/text.h"
#include "tvutil2/lang/language_table.h"
#include "tvutil2/lang/library_dialog.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/files/item_list.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/accessibility.h"
#include "tvutil2/platform/window/classes.h"
#include "tvutil2/platform/window/common_dialogs/file_layout.h"
#include "tvutil2/platform/window/common_dialogs/folder_dialog.h"
#include "tvutil2/platform/window/common_dialogs/open_file_name.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/controls/static.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "tests/support/profile.h"

namespace {

using tvutil2::scaled;

struct Control {
    HWND window;
    DWORD style;
    std::u16string class_name, text;
    RECT place;  // in the dialog
};

std::u16string text_of(HWND window) {
    char16_t text[512] = {};
    GetWindowTextW(window, text, 512);
    return text;
}

std::vector<Control> controls_of(HWND dialog) {
    std::vector<Control> controls;
    for (auto* each = GetWindow(dialog, GW_CHILD); each != nullptr;
         each = GetWindow(each, GW_HWNDNEXT)) {
        char16_t name[64] = {};
        GetClassNameW(each, name, 64);
        RECT place{};
        GetWindowRect(each, &place);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
        controls.push_back({each, static_cast<DWORD>(GetWindowLongW(each, GWL_STYLE)), name,
                            text_of(each), place});
    }
    return controls;
}

// What the text takes, in lines of the control's width or in one.
SIZE extent(HWND dialog, const Control& control, LONG width, UINT format) {
    auto* const context = GetDC(dialog);
    auto* const before = SelectObject(
        context, reinterpret_cast<HFONT>(SendMessageW(control.window, WM_GETFONT, 0, 0)));
    RECT area{0, 0, width, 0};
    DrawTextW(context, control.text.c_str(), -1, &area, format | DT_CALCRECT);
    SelectObject(context, before);
    ReleaseDC(dialog, context);
    return {area.right, area.bottom};
}

bool is_group(const Control& control) {
    return control.class_name == u"Button" && (control.style & BS_TYPEMASK) == BS_GROUPBOX;
}

// Beside the arrow, in a font that is larger by a quarter.
bool link_shows_its_text(HWND dialog, const Control& control, SIZE size, UINT dpi) {
    const auto width = size.cx - scaled(36 + 8, dpi);
    const auto wanted = extent(dialog, control, width * 4 / 5, DT_WORDBREAK);
    return wanted.cx * 5 / 4 <= width && wanted.cy * 5 / 4 <= size.cy;
}

// Whether the text can be read as a whole, from the way in which such a control is painted.
bool shows_its_text(HWND dialog, const Control& control, UINT dpi) {
    const SIZE size{control.place.right - control.place.left,
                    control.place.bottom - control.place.top};
    if (control.class_name == u"Static") {
        const auto wanted = extent(dialog, control, size.cx, DT_WORDBREAK);
        return wanted.cx <= size.cx && wanted.cy <= size.cy;
    }
    if (control.class_name != u"Button") return true;
    const auto type = control.style & BS_TYPEMASK;
    if (type == BS_COMMANDLINK) return link_shows_its_text(dialog, control, size, dpi);
    const bool is_push = type <= BS_DEFPUSHBUTTON;
    const auto beside = is_push ? scaled(6, dpi) : tvutil2::check_size(dpi) + scaled(6, dpi);
    const bool has_lines = (control.style & BS_MULTILINE) != 0;
    const auto wanted =
        extent(dialog, control, size.cx - beside, has_lines ? DT_WORDBREAK : DT_SINGLELINE);
    return wanted.cx <= size.cx - beside && wanted.cy <= size.cy;
}

char16_t mnemonic_of(const Control& control) {
    if (control.class_name != u"Button" && control.class_name != u"Static") return 0;
    const auto& text = control.text;
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == u'&' && text[++i] != u'&') return tvutil2::to_lower(text[i]);
    }
    return 0;
}

void register_missing_classes() {
    // The products bring the list of switches; whatever else isn't there yet isn't looked at.
    for (const auto* name : {u"MfcPropertyGrid", u"Edit", u"ComboBox"}) {
        WNDCLASSW description{};
        if (GetClassInfoW(nullptr, name, &description) != 0) continue;
        description.lpfnWndProc = DefWindowProcW;
        description.style = CS_GLOBALCLASS;
        description.lpszClassName = name;
        RegisterClassW(&description);
    }
}

// The selection dialog as TvSelectCommandFolder asks.
void fill_selection(HWND dialog) {
    CString question;
    question.Format(tvutil2::library_string(14057), u"C:\\Users\\somebody\\Sessions\\Archive");
    SetDlgItemTextW(dialog, 14027, question);
    UINT text = 14058;
    for (const int id : {14024, 14025, 14026, 14033}) {
        SetDlgItemTextW(dialog, id, tvutil2::library_string(text++));
    }
}

void expect_good(HWND dialog, UINT dpi) {
    RECT client{};
    GetClientRect(dialog, &client);
    std::map<char16_t, std::u16string> mnemonics;
    const auto controls = controls_of(dialog);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const auto& control = controls[i];
        SCOPED_TRACE(tvutil2::to_utf8_lossy(control.text));
        EXPECT_TRUE(shows_its_text(dialog, control, dpi)) << "cut off";
        EXPECT_GE(control.place.left, 0);
        EXPECT_LE(control.place.right, client.right);
        EXPECT_LE(control.place.bottom, client.bottom);
        if (const auto mnemonic = mnemonic_of(control)) {
            EXPECT_TRUE(mnemonics.emplace(mnemonic, control.text).second)
                << "as of " << tvutil2::to_utf8_lossy(mnemonics[mnemonic]);
        }
        for (std::size_t k = 0; k < i; ++k) {
            RECT common{};
            EXPECT_TRUE(is_group(control) || is_group(controls[k]) ||
                        !IntersectRect(&common, &control.place, &controls[k].place))
                << "on " << tvutil2::to_utf8_lossy(controls[k].text);
        }
    }
}

// Whatever can be worked by keys has a role and a name, for those who don't see it. The list of
// switches is the products' affair.
void expect_told(HWND dialog) {
    for (const auto& each : tvutil2::accessible_tree(dialog).children) {
        char16_t name[64] = {};
        GetClassNameW(each.window, name, 64);
        if (std::u16string_view(name) == u"MfcPropertyGrid") continue;
        SCOPED_TRACE(tvutil2::to_utf8_lossy(name));
        EXPECT_NE(each.role, tvutil2::AccessibleRole::custom);
        EXPECT_FALSE(each.state.is_focusable && each.name.empty());
    }
}

void set_scale(UINT dpi) {
    tvutil2::set_system_dpi(dpi);
    tvutil2::set_monitors({{{0, 0, 4000, 3000}, {0, 0, 4000, 3000}, dpi}});
}

// Names have what the titles and texts beside them leave.
void expect_columns_fit(HWND list) {
    RECT client{};
    GetClientRect(list, &client);
    auto names = client.right - client.left;
    for (WPARAM column = 1; column < 4; ++column) {
        const auto width = SendMessageW(list, LVM_GETCOLUMNWIDTH, column, 0);
        names -= static_cast<LONG>(width);
        constexpr LPARAM kAsNeeded = -1;
        SendMessageW(list, LVM_SETCOLUMNWIDTH, column, kAsNeeded);
        EXPECT_LE(SendMessageW(list, LVM_GETCOLUMNWIDTH, column, 0), width) << column;
    }
    EXPECT_EQ(SendMessageW(list, LVM_GETCOLUMNWIDTH, 0, 0), names);
}

// In the loop of a dialog that the system shows.
UINT g_scale = 96;
int g_looked_at = 0;
void look_at_dialog(HWND, UINT, UINT_PTR id, DWORD) {
    auto* const dialog = FindWindowW(u"#32770", nullptr);
    if (dialog == nullptr) return;
    auto* const rows = GetDlgItem(dialog, tvutil2::kFileRows);
    if (rows != nullptr && SendMessageW(rows, LVM_GETITEMCOUNT, 0, 0) < 2) return;
    KillTimer(nullptr, id);
    ++g_looked_at;
    expect_good(dialog, g_scale);
    if (rows != nullptr) expect_columns_fit(rows);
    if ((GetWindowLongW(dialog, GWL_STYLE) & WS_THICKFRAME) != 0) {
        SCOPED_TRACE("as small as it gets");
        SetWindowPos(dialog, nullptr, 0, 0, 1, 1, SWP_NOMOVE | SWP_NOZORDER);
        expect_good(dialog, g_scale);
    }
    const auto button =
        rows != nullptr ? IDCANCEL : LOWORD(SendMessageW(dialog, DM_GETDEFID, 0, 0));
    SendMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(button), 0);
}

void ask_for_folder() {
    BROWSEINFOW asked{};
    const auto title = tvutil2::library_string(14130);
    asked.lpszTitle = title;
    asked.ulFlags = BIF_USENEWUI;
    SetTimer(nullptr, 0, 1, look_at_dialog);
    ILFree(SHBrowseForFolderW(&asked));
}

void ask_for_files(const std::u16string& folder) {
    char16_t chosen[260] = {};
    OPENFILENAMEW asked{};
    asked.lStructSize = sizeof asked;
    asked.lpstrFile = chosen;
    asked.nMaxFile = 260;
    asked.lpstrFilter = u"*.xts\0*.xts\0";
    asked.lpstrInitialDir = folder.c_str();
    for (const auto& ask : {GetOpenFileNameW, GetSaveFileNameW}) {
        SetTimer(nullptr, 0, 1, look_at_dialog);
        EXPECT_EQ(ask(&asked), FALSE);
    }
}

TEST(SystemDialogs, ShowAllTheirTextsInEveryLanguageAndScale) {
    setenv("TVUTIL_DISPLAY", "offscreen", 1);
    const auto host = tests::new_folder();
    for (const auto* const name : {"/a.xts", "/b.xts"}) {
        tests::write_file(host + name, std::string(1000, 'x'));
    }
    const auto folder = tests::platform_path(host);
    for (const UINT dpi : {96U, 192U}) {
        set_scale(dpi);
        g_scale = dpi;
        for (const auto& language : tvutil2::kLanguages) {
            SetThreadLocale(language.id);
            SCOPED_TRACE(tvutil2::to_utf8_lossy(language.name) + " at " + std::to_string(dpi));
            CString question;
            question.Format(tvutil2::library_string(14138), u"C:\\Programs\\Pelrin.exe");
            for (const UINT type : {MB_OKCANCEL | MB_ICONERROR, MB_YESNOCANCEL, MB_ABORTRETRYIGNORE,
                                    MB_CANCELTRYCONTINUE}) {
                SetTimer(nullptr, 0, 1, look_at_dialog);
                MessageBoxW(nullptr, question, u"?", type);
            }
            ask_for_folder();
            ask_for_files(folder);
        }
    }
    EXPECT_EQ(g_looked_at, 2 * 11 * 7);
}

TEST(LibraryDialogs, ShowAllTheirTextsInEveryLanguageAndScale) {
    setenv("TVUTIL_DISPLAY", "offscreen", 1);
    register_missing_classes();
    for (const UINT dpi : {96U, 120U, 144U, 192U}) {
        set_scale(dpi);
        for (const auto& language : tvutil2::kLanguages) {
            SetThreadLocale(language.id);
            for (const int id : {14010, 14012, 14013, 14014, 14023, 14029, 14034}) {
                SCOPED_TRACE(std::to_string(id) + " " + tvutil2::to_utf8_lossy(language.name) +
                             " at " + std::to_string(dpi));
                const auto found = tvutil2::find_library_dialog(static_cast<WORD>(id));
                ASSERT_NE(found.loaded, nullptr);
                auto* const dialog = CreateDialogIndirectParamW(
                    nullptr, LockResource(found.loaded), nullptr,
                    [](HWND, UINT message, WPARAM, LPARAM) -> INT_PTR {
                        return message == WM_INITDIALOG;
                    },
                    0);
                ASSERT_NE(dialog, nullptr);
                if (id == 14023) fill_selection(dialog);
                expect_good(dialog, dpi);
                expect_told(dialog);
                DestroyWindow(dialog);
            }
        }
    }
}

}  // namespace
