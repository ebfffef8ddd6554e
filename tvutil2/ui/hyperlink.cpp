#include "tvutil2/ui/hyperlink.h"

#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/controls/static.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/properties.h"
#include "tvutil2/platform/window/window.h"

namespace {

constexpr const char16_t* kProcedure = u"_Hyperlink_Original_Proc_";
constexpr const char16_t* kFont = u"_Hyperlink_Original_Font_";
constexpr const char16_t* kUnderlined = u"_Hyperlink_Underline_Font_";
constexpr const char16_t* kIsLink = u"_Hyperlink_From_Static_";

// Dark blue can't be read on a dark background.
COLORREF link_color() {
    constexpr COLORREF kBlue = 0xC00000;
    return tvutil2::theme().mode == tvutil2::ThemeMode::light ? kBlue : GetSysColor(COLOR_HOTLIGHT);
}

WNDPROC former_procedure(HWND window) {
    return reinterpret_cast<WNDPROC>(GetPropW(window, kProcedure));
}

void replace_procedure(HWND window, WNDPROC procedure) {
    const auto before =
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
    SetPropW(window, kProcedure, reinterpret_cast<HANDLE>(before));
}

// What the window's procedure was, which goes on from here.
WNDPROC restore_procedure(HWND window) {
    const auto former = former_procedure(window);
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(former));
    RemovePropW(window, kProcedure);
    return former;
}

LRESULT parent_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const auto former =
        message == WM_DESTROY ? restore_procedure(window) : former_procedure(window);
    const auto answer = CallWindowProcW(former, window, message, wparam, lparam);
    if (message == WM_CTLCOLORSTATIC &&
        GetPropW(reinterpret_cast<HWND>(lparam), kIsLink) != nullptr) {
        SetTextColor(reinterpret_cast<HDC>(wparam), link_color());
    }
    return answer;
}

void take_font(HWND link, const char16_t* which, BOOL redraw) {
    SendMessageW(link, WM_SETFONT, reinterpret_cast<WPARAM>(GetPropW(link, which)), FALSE);
    if (redraw != 0) InvalidateRect(link, nullptr, FALSE);
}

void follow_pointer(HWND link, LPARAM place) {
    if (GetCapture() != link) {
        take_font(link, kUnderlined, TRUE);
        SetCapture(link);
        return;
    }
    POINT point{LOWORD(static_cast<WPARAM>(place)), HIWORD(static_cast<WPARAM>(place))};
    ClientToScreen(link, &point);
    RECT area{};
    GetWindowRect(link, &area);
    if (PtInRect(&area, point)) return;
    take_font(link, kFont, TRUE);
    ReleaseCapture();
}

WNDPROC end_link(HWND link) {
    const auto former = restore_procedure(link);
    take_font(link, kFont, FALSE);
    DeleteObject(reinterpret_cast<HGDIOBJ>(GetPropW(link, kUnderlined)));
    for (const auto* name : {kFont, kUnderlined, kIsLink}) RemovePropW(link, name);
    return former;
}

LRESULT link_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    auto former = former_procedure(window);
    switch (message) {
        case WM_DESTROY:
            former = end_link(window);
            break;
        case WM_SETCURSOR: {
            auto* cursor = LoadCursorW(nullptr, IDC_HAND);
            if (cursor == nullptr) cursor = LoadCursorW(nullptr, IDC_ARROW);
            SetCursor(cursor);
            return TRUE;
        }
        case WM_MOUSEMOVE:
            follow_pointer(window, lparam);
            break;
        default:
            break;
    }
    return CallWindowProcW(former, window, message, wparam, lparam);
}

HFONT underlined(HFONT font) {
    LOGFONTW description{};
    if (font == nullptr) font = static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT));
    GetObjectW(font, sizeof description, &description);
    description.lfUnderline = TRUE;
    return CreateFontIndirectW(&description);
}

}  // namespace

BOOL ConvertStaticToHyperlink(HWND hWnd) {
    // A second time would lose what the control was.
    if (GetPropW(hWnd, kIsLink) != nullptr) return TRUE;
    auto* const parent = GetParent(hWnd);
    if (parent != nullptr &&
        GetWindowLongPtrW(parent, GWLP_WNDPROC) != reinterpret_cast<LONG_PTR>(&parent_procedure)) {
        replace_procedure(parent, parent_procedure);
    }
    SetWindowLongW(hWnd, GWL_STYLE, GetWindowLongW(hWnd, GWL_STYLE) | LONG{SS_NOTIFY});
    replace_procedure(hWnd, link_procedure);
    auto* const font = reinterpret_cast<HFONT>(SendMessageW(hWnd, WM_GETFONT, 0, 0));
    SetPropW(hWnd, kFont, reinterpret_cast<HANDLE>(font));
    SetPropW(hWnd, kUnderlined, reinterpret_cast<HANDLE>(underlined(font)));
    SetPropW(hWnd, kIsLink, reinterpret_cast<HANDLE>(std::intptr_t{1}));
    return TRUE;
}

BOOL ConvertStaticToHyperlink(HWND hParent, UINT nID) {
    return ConvertStaticToHyperlink(GetDlgItem(hParent, static_cast<int>(nID)));
}
