#include "tvutil2/platform/window/controls/static.h"

#include "tvutil2/platform/draw/blit.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/frames.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/picture/icons.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/owner_draw.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <utility>

namespace tvutil2 {
namespace {

struct StaticState : ControlState {
    LRESULT image = 0;  // an icon's or a bitmap's handle
};

UINT text_format(HWND window, DWORD style) {
    UINT format = DT_EXPANDTABS | reading_of(window);
    const bool is_at_right = (GetWindowLongW(window, GWL_EXSTYLE) & LONG{WS_EX_RIGHT}) != 0;
    if (is_at_right && (style & SS_TYPEMASK) != SS_CENTER) format |= DT_RIGHT;
    switch (style & SS_TYPEMASK) {
        case SS_CENTER:
            format |= DT_CENTER | DT_WORDBREAK;
            break;
        case SS_RIGHT:
            format |= DT_RIGHT | DT_WORDBREAK;
            break;
        case SS_SIMPLE:
            format |= DT_SINGLELINE;
            break;
        case SS_LEFTNOWORDWRAP:
            break;
        default:
            format |= DT_WORDBREAK;
            break;
    }
    if ((style & SS_NOPREFIX) != 0) format |= DT_NOPREFIX;
    if ((style & SS_EDITCONTROL) != 0) format |= DT_EDITCONTROL;
    if ((style & SS_CENTERIMAGE) != 0) format |= DT_VCENTER | DT_SINGLELINE;
    const auto ellipsis = style & SS_WORDELLIPSIS;
    if (ellipsis != 0) format = (format & ~DT_WORDBREAK) | DT_SINGLELINE;
    if (ellipsis == SS_ENDELLIPSIS) format |= DT_END_ELLIPSIS;
    if (ellipsis == SS_PATHELLIPSIS) format |= DT_PATH_ELLIPSIS;
    if (ellipsis == SS_WORDELLIPSIS) format |= DT_WORD_ELLIPSIS;
    return format;
}

void paint_text(HWND window, const ControlPaint& paint, DWORD style) {
    if ((style & WS_DISABLED) != 0) SetTextColor(paint, GetSysColor(COLOR_GRAYTEXT));
    const auto text = text_of(window);
    auto area = paint.client();
    DrawTextW(paint, text.c_str(), static_cast<int>(text.size()), &area,
              text_format(window, style));
}

void paint_bitmap(const ControlPaint& paint, HBITMAP bitmap, DWORD style) {
    BITMAP description{};
    if (bitmap == nullptr || GetObjectW(bitmap, sizeof description, &description) == 0) return;
    auto* const memory = CreateCompatibleDC(paint);
    auto* const before = SelectObject(memory, bitmap);
    const auto& client = paint.client();
    const bool is_centred = (style & SS_CENTERIMAGE) != 0;
    const auto x = is_centred ? (client.right - description.bmWidth) / 2 : 0;
    const auto y = is_centred ? (client.bottom - description.bmHeight) / 2 : 0;
    BitBlt(paint, x, y, description.bmWidth, description.bmHeight, memory, 0, 0, SRCCOPY);
    SelectObject(memory, before);
    DeleteDC(memory);
}

void paint_icon(const ControlPaint& paint, HICON icon, DWORD style) {
    SIZE size{};
    if (icon == nullptr || icon_pixels(icon, size) == nullptr) return;
    const auto& client = paint.client();
    const bool is_centred = (style & SS_CENTERIMAGE) != 0;
    DrawIconEx(paint, is_centred ? (client.right - size.cx) / 2 : 0,
               is_centred ? (client.bottom - size.cy) / 2 : 0, icon, size.cx, size.cy, 0, nullptr,
               DI_NORMAL);
}

// What has no size of its own in mind is as large as its picture.
void take_image_size(HWND window, LRESULT image) {
    const auto style = style_of(window);
    if ((style & (SS_CENTERIMAGE | SS_REALSIZECONTROL)) != 0) return;
    SIZE size{};
    BITMAP description{};
    const auto type = style & SS_TYPEMASK;
    if (type == SS_ICON) {
        if (icon_pixels(reinterpret_cast<HICON>(image), size) == nullptr) return;
    } else if (type == SS_BITMAP && GetObjectW(reinterpret_cast<HBITMAP>(image), sizeof description,
                                               &description) != 0) {
        size = {description.bmWidth, description.bmHeight};
    }
    if (size.cx <= 0 || size.cy <= 0) return;
    RECT place{};
    RECT client{};
    GetWindowRect(window, &place);
    GetClientRect(window, &client);
    SetWindowPos(window, nullptr, 0, 0, place.right - place.left - client.right + size.cx,
                 place.bottom - place.top - client.bottom + size.cy,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// Areas and frames by name: the colours of frames, of quieter ones, and that of fields. Those of
// shadows would be lost on a dark ground.
int color_index(DWORD type) {
    constexpr int kIndices[] = {COLOR_WINDOWFRAME, COLOR_ACTIVEBORDER, COLOR_WINDOW};
    return kIndices[(type - SS_BLACKRECT) % 3];
}

void paint(HWND window, const StaticState& state) {
    const ControlPaint paint(window, state);
    const auto style = style_of(window);
    const auto type = style & SS_TYPEMASK;
    auto* const background = ask_colors(window, paint, WM_CTLCOLORSTATIC);
    auto area = paint.client();
    if (type == SS_OWNERDRAW) {
        ask_owner_to_draw({ODT_STATIC, window, paint, area, 0});
        return;
    }
    FillRect(paint, &area, background);
    if (type >= SS_BLACKRECT && type <= SS_WHITERECT) {
        FillRect(paint, &area, GetSysColorBrush(color_index(type)));
    } else if (type >= SS_BLACKFRAME && type <= SS_WHITEFRAME) {
        FrameRect(paint, &area, GetSysColorBrush(color_index(type)));
    } else if (type == SS_ETCHEDHORZ || type == SS_ETCHEDVERT) {
        DrawEdge(paint, &area, EDGE_ETCHED, type == SS_ETCHEDHORZ ? BF_TOP : BF_LEFT);
    } else if (type == SS_BITMAP) {
        paint_bitmap(paint, reinterpret_cast<HBITMAP>(state.image), style);
    } else if (type == SS_ICON) {
        paint_icon(paint, reinterpret_cast<HICON>(state.image), style);
    } else {
        paint_text(window, paint, style);
    }
}

}  // namespace

LRESULT static_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const auto state = state_of<StaticState>(window);
    if (!state) return DefWindowProcW(window, message, wparam, lparam);
    const bool notifies = (style_of(window) & SS_NOTIFY) != 0;
    switch (message) {
        case WM_PAINT:
            paint(window, *state);
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_NCHITTEST:
            return notifies ? HTCLIENT : HTTRANSPARENT;
        case WM_GETDLGCODE:
            return DLGC_STATIC;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            if (notifies) {
                notify_parent(window, message == WM_LBUTTONDOWN ? STN_CLICKED : STN_DBLCLK);
            }
            return 0;
        case WM_ENABLE:
            repaint(window);
            if (notifies) notify_parent(window, wparam != 0 ? STN_ENABLE : STN_DISABLE);
            return 0;
        case STM_SETIMAGE:
        case STM_SETICON: {
            const auto given = message == STM_SETIMAGE ? lparam : static_cast<LPARAM>(wparam);
            const auto before = std::exchange(state->image, given);
            take_image_size(window, given);
            repaint(window);
            return before;
        }
        case STM_GETIMAGE:
        case STM_GETICON:
            return state->image;
        default:
            break;
    }
    LRESULT result = 0;
    if (handle_control_message(window, *state, message, wparam, lparam, result)) return result;
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace tvutil2
