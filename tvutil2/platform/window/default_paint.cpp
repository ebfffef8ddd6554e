// How windows look that don't paint themselves: backgrounds, frames and the colours of controls.
#include "tvutil2/platform/window/default_paint.h"

#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/picture/icons.h"
#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/menus/menu_bar.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/system_metrics.h"
#include "tvutil2/platform/window/update.h"
#include "tvutil2/platform/window/window.h"

namespace tvutil2 {
namespace {

// A context for the whole window, given back on every way out.
class FrameContext {
  public:
    explicit FrameContext(HWND window) : m_window(window), m_context(GetWindowDC(window)) {}
    ~FrameContext() { ReleaseDC(m_window, m_context); }
    FrameContext(const FrameContext&) = delete;
    FrameContext& operator=(const FrameContext&) = delete;
    operator HDC() const { return m_context; }

  private:
    HWND m_window;
    HDC m_context;
};

struct Frame {
    RECT area{}, client{};  // from the window's corner
    DWORD style = 0, ex_style = 0;
    UINT dpi = 96;
    std::u16string title;
};

bool find_frame(HWND window, Frame& frame) {
    const TreeLock tree;
    const auto* const record = tree.table.find(window);
    if (record == nullptr || same_rect(record->client, area_of(*record))) return false;
    frame = {area_of(*record), record->client,  record->style,
             record->ex_style, dpi_of(*record), record->text};
    return true;
}

HBRUSH system_brush(int index) {
    return GetSysColorBrush(index);
}

// The line around a window, in pixels: all of a frame that can't be sized.
LONG line_of(const Frame& frame) {
    return GetSystemMetricsForDpi(SM_CXFIXEDFRAME, frame.dpi);
}

// A row of the frame, up to that line at both sides: a frame that can be sized is no margin.
void fill_across(HDC context, const Frame& frame, LONG top, LONG bottom, int color) {
    const auto line = line_of(frame);
    const RECT row{line, top, frame.area.right - line, bottom};
    FillRect(context, &row, system_brush(color));
}

// In front of the title; the rest of the bar is left.
void paint_icon(HDC context, HWND window, const Frame& frame, RECT& bar) {
    auto* const icon = reinterpret_cast<HICON>(SendMessageW(window, WM_GETICON, ICON_SMALL2, 0));
    if (icon == nullptr || (frame.style & WS_SYSMENU) == 0) return;
    const int side = scaled(16, frame.dpi);
    const auto left = static_cast<int>(bar.left) + scaled(8, frame.dpi);
    const auto top = static_cast<int>(bar.top + bar.bottom - side) / 2;
    DrawIconEx(context, left, top, icon, side, side, 0, nullptr, DI_NORMAL);
    bar.left = left + side - scaled(4, frame.dpi);
}

void paint_caption(HDC context, HWND window, const Frame& frame) {
    const bool is_active = GetActiveWindow() == window;
    const auto sides = frame_thickness(frame.style, frame.ex_style, frame.dpi);
    RECT bar{sides.left, sides.left, frame.area.right - sides.right, sides.top};
    fill_across(context, frame, line_of(frame), sides.top,
                is_active ? COLOR_ACTIVECAPTION : COLOR_INACTIVECAPTION);
    const auto color = GetSysColor(is_active ? COLOR_CAPTIONTEXT : COLOR_INACTIVECAPTIONTEXT);
    auto button = close_button_of(window);
    if (!is_empty(button)) {
        RECT place{};
        GetWindowRect(window, &place);
        button = moved(button, {-place.left, -place.top});
        draw_glyph(context, button, Glyph::close, scaled(10, frame.dpi), color);
        bar.right = button.left;
    }
    paint_icon(context, window, frame, bar);
    const auto description = interface_font(frame.dpi);
    auto* const font = CreateFontIndirectW(&description);
    auto* const before = SelectObject(context, font);
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, color);
    bar.left += scaled(10, frame.dpi);
    DrawTextW(context, frame.title.c_str(), static_cast<int>(frame.title.size()), &bar,
              DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX);
    SelectObject(context, before);
    DeleteObject(font);
}

void paint_menu_bar_of(HWND window, HDC context, const Frame& frame) {
    RECT place{};
    GetWindowRect(window, &place);
    const auto bar = moved(menu_bar_place(window), {-place.left, -place.top});
    if (is_empty(bar)) return;
    if ((frame.ex_style & WS_EX_CLIENTEDGE) != 0) {
        FillRect(context, &bar, system_brush(COLOR_MENU));
    } else {
        fill_across(context, frame, bar.top, bar.bottom, COLOR_MENU);
    }
    paint_menu_bar(context, window, bar);
}

bool has_focus_inside(HWND window) {
    auto* const focus = GetFocus();
    return focus != nullptr && (focus == window || IsChild(window, focus) != 0);
}

void paint_frame(HWND window) {
    Frame frame;
    if (!find_frame(window, frame)) return;
    const FrameContext context(window);
    const auto& client = frame.client;
    ExcludeClipRect(context, client.left, client.top, client.right, client.bottom);
    if ((frame.ex_style & WS_EX_CLIENTEDGE) != 0) {
        ControlLook look;
        look.is_default = has_focus_inside(window);
        look.is_disabled = (frame.style & WS_DISABLED) != 0;
        draw_field(context, frame.area, look,
                   GetSysColor(look.is_disabled ? COLOR_3DFACE : COLOR_WINDOW));
        paint_menu_bar_of(window, context, frame);
        paint_scroll_bars(window, context);
        return;
    }
    FillRect(context, &frame.area, system_brush(COLOR_3DFACE));
    auto* const line = CreateSolidBrush(theme().palette.divider);
    auto edge = frame.area;
    for (LONG i = 0; i < line_of(frame); ++i) {
        FrameRect(context, &edge, line);
        InflateRect(&edge, -1, -1);
    }
    DeleteObject(line);
    if ((frame.style & WS_CAPTION) == WS_CAPTION) paint_caption(context, window, frame);
    paint_menu_bar_of(window, context, frame);
    paint_scroll_bars(window, context);
}

bool erase_background(HWND window, HDC context) {
    HBRUSH brush = nullptr;
    RECT client{};
    {
        const TreeLock tree;
        const auto* const record = tree.table.find(window);
        if (record != nullptr) brush = record->window_class->description.hbrBackground;
    }
    if (brush == nullptr || !GetClientRect(window, &client)) return false;
    FillRect(context, &client, brush);
    return true;
}

LRESULT control_colors(UINT message, HDC context) {
    const bool is_field = message == WM_CTLCOLOREDIT || message == WM_CTLCOLORLISTBOX;
    const int background = is_field ? COLOR_WINDOW : COLOR_3DFACE;
    SetTextColor(context, GetSysColor(is_field ? COLOR_WINDOWTEXT : COLOR_BTNTEXT));
    SetBkColor(context, GetSysColor(background));
    return reinterpret_cast<LRESULT>(system_brush(background));
}

void freeze(HWND window, bool is_frozen) {
    const TreeLock tree;
    auto* const record = tree.table.find(window);
    if (record == nullptr) return;
    record->is_frozen = is_frozen;
    if (is_frozen) forget_updates(*record);
}

}  // namespace

void repaint_frame(HWND window) {
    const TreeLock tree;
    auto* const record = tree.table.find(window);
    if (record != nullptr && is_on_display(*record)) invalidate_frame(*record);
}

bool handle_paint_message(HWND window, UINT message, WPARAM wparam, LRESULT& result) {
    result = 0;
    auto* const context = reinterpret_cast<HDC>(wparam);
    switch (message) {
        case WM_PAINT: {
            PAINTSTRUCT paint;
            if (BeginPaint(window, &paint) != nullptr) EndPaint(window, &paint);
            return true;
        }
        case WM_NCPAINT:
            paint_frame(window);
            return true;
        case WM_ERASEBKGND:
            result = erase_background(window, context) ? TRUE : FALSE;
            return true;
        case WM_NCACTIVATE:
            repaint_frame(window);
            result = TRUE;
            return true;
        case WM_SETREDRAW:
            freeze(window, wparam == 0);
            return true;
        case WM_CTLCOLORMSGBOX:
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORLISTBOX:
        case WM_CTLCOLORBTN:
        case WM_CTLCOLORDLG:
        case WM_CTLCOLORSCROLLBAR:
        case WM_CTLCOLORSTATIC:
            result = control_colors(message, context);
            return true;
        default:
            return false;
    }
}

}  // namespace tvutil2
