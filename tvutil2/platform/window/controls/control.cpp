#include "tvutil2/platform/window/controls/control.h"

#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/window/controls/owner_draw.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {

LRESULT notify_parent(HWND control, WORD code) {
    auto* const parent = GetParent(control);
    if (parent == nullptr) return 0;
    return SendMessageW(parent, WM_COMMAND,
                        MAKEWPARAM(static_cast<WORD>(GetDlgCtrlID(control)), code),
                        reinterpret_cast<LPARAM>(control));
}

HBRUSH ask_colors(HWND control, HDC context, UINT message) {
    auto* const parent = GetParent(control);
    const auto wparam = reinterpret_cast<WPARAM>(context);
    const auto lparam = reinterpret_cast<LPARAM>(control);
    LRESULT brush = parent != nullptr ? SendMessageW(parent, message, wparam, lparam) : 0;
    if (brush == 0) brush = DefWindowProcW(control, message, wparam, lparam);
    return reinterpret_cast<HBRUSH>(brush);
}

std::u16string text_of(HWND control) {
    std::u16string text(static_cast<std::size_t>(GetWindowTextLengthW(control)), u'\0');
    const auto size = static_cast<int>(text.size()) + 1;
    text.resize(static_cast<std::size_t>(GetWindowTextW(control, text.data(), size)));
    return text;
}

DWORD style_of(HWND control) {
    return static_cast<DWORD>(GetWindowLongW(control, GWL_STYLE));
}

UINT reading_of(HWND control) {
    return (GetWindowLongW(control, GWL_EXSTYLE) & LONG{WS_EX_RTLREADING}) != 0 ? DT_RTLREADING : 0;
}

RECT client_of(HWND control) {
    RECT client{};
    GetClientRect(control, &client);
    return client;
}

void repaint(HWND control) {
    InvalidateRect(control, nullptr, TRUE);
}

int line_height(HWND control, const ControlState& state) {
    auto* const context = GetDC(control);
    auto* const font =
        state.font != nullptr ? static_cast<HGDIOBJ>(state.font) : GetStockObject(DEFAULT_GUI_FONT);
    auto* const before = SelectObject(context, font);
    TEXTMETRICW metrics{};
    GetTextMetricsW(context, &metrics);
    SelectObject(context, before);
    ReleaseDC(control, context);
    return std::max<int>(metrics.tmHeight, 1);
}

bool handle_control_message(HWND control, ControlState& state, UINT message, WPARAM wparam,
                            LPARAM lparam, LRESULT& result) {
    result = 0;
    switch (message) {
        case WM_SETFONT:
            state.font = reinterpret_cast<HFONT>(wparam);
            if (LOWORD(static_cast<WPARAM>(lparam)) != 0) repaint(control);
            return true;
        case WM_GETFONT:
            result = reinterpret_cast<LRESULT>(state.font);
            return true;
        case WM_SETTEXT:
            result = DefWindowProcW(control, message, wparam, lparam);
            repaint(control);
            return true;
        case WM_ENABLE:
            repaint(control);
            return true;
        default:
            return false;
    }
}

void ask_owner_to_draw(const OwnerDrawn& drawn) {
    const auto id = static_cast<UINT>(GetDlgCtrlID(drawn.control));
    DRAWITEMSTRUCT item{drawn.type,    id,         0, ODA_DRAWENTIRE, drawn.state, drawn.control,
                        drawn.context, drawn.area, 0};
    SendMessageW(GetParent(drawn.control), WM_DRAWITEM, id, reinterpret_cast<LPARAM>(&item));
}

struct ControlPaint::Data {
    PAINTSTRUCT paint{};
    HGDIOBJ before = nullptr;
};

ControlPaint::ControlPaint(HWND control, const ControlState& state)
    : m_control(control), m_dpi(GetDpiForWindow(control)), m_data(std::make_unique<Data>()) {
    BeginPaint(control, &m_data->paint);
    GetClientRect(control, &m_client);
    auto* const font =
        state.font != nullptr ? static_cast<HGDIOBJ>(state.font) : GetStockObject(DEFAULT_GUI_FONT);
    m_data->before = SelectObject(m_data->paint.hdc, font);
    SetBkMode(m_data->paint.hdc, TRANSPARENT);
}

ControlPaint::~ControlPaint() {
    SelectObject(m_data->paint.hdc, m_data->before);
    EndPaint(m_control, &m_data->paint);
}

ControlPaint::operator HDC() const {
    return m_data->paint.hdc;
}

}  // namespace tvutil2
