#include "tvutil2/platform/window/common_dialogs/dialog_measures.h"

#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/dialogs/built_dialog.h"
#include "tvutil2/platform/window/dialogs/dialog_state.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {
namespace {

LONG line_of(HDC context) {
    TEXTMETRICW metrics{};
    GetTextMetricsW(context, &metrics);
    return metrics.tmHeight;
}

}  // namespace

DialogMeasures::DialogMeasures(HWND dialog)
    : m_dialog(dialog),
      m_dpi(GetDpiForWindow(dialog)),
      m_context(GetDC(dialog)),
      m_before(
          SelectObject(m_context, reinterpret_cast<HFONT>(SendMessageW(dialog, WM_GETFONT, 0, 0)))),
      m_line(line_of(m_context)) {}

DialogMeasures::~DialogMeasures() {
    SelectObject(m_context, m_before);
    ReleaseDC(m_dialog, m_context);
}

LONG DialogMeasures::length(int pixels) const {
    return scaled(pixels, m_dpi);
}

bool DialogMeasures::has(int id) const {
    auto* const control = GetDlgItem(m_dialog, id);
    return control != nullptr &&
           (static_cast<DWORD>(GetWindowLongW(control, GWL_STYLE)) & WS_VISIBLE) != 0;
}

LONG DialogMeasures::width_of(int id) const {
    if (!has(id)) return 0;
    return text_extent(m_context, text_of(GetDlgItem(m_dialog, id)).c_str(), 0, DT_SINGLELINE).cx;
}

LONG DialogMeasures::text_height(const char16_t* text, LONG width) const {
    constexpr UINT kFormat = DT_WORDBREAK | DT_EDITCONTROL | DT_NOPREFIX;
    return *text == 0 ? 0 : text_extent(m_context, text, width, kFormat).cy;
}

SIZE DialogMeasures::button(int id) const {
    return {std::max(length(80), width_of(id) + length(24)), line() + length(9)};
}

LONG DialogMeasures::button_room(int id) const {
    return has(id) ? button(id).cx + length(kDialogGap) : 0;
}

void DialogMeasures::place(int id, LONG x, LONG y, LONG width, LONG height) const {
    SetWindowPos(GetDlgItem(m_dialog, id), nullptr, x, y, std::max<LONG>(width, 0),
                 std::max<LONG>(height, 0), SWP_NOZORDER | SWP_NOACTIVATE);
}

void DialogMeasures::place_row(int label, LONG label_width, int id, LONG left, LONG top,
                               LONG right) const {
    if (!has(id)) return;
    const auto height = field_height();
    place(label, left, top + (height - line()) / 2, label_width, line());
    const auto begin = left + label_width + length(kDialogGap);
    // The height of a box with a list is its open list's too.
    place(id, begin, top, right - begin, height);
}

SIZE DialogMeasures::with_frame(LONG width, LONG height) const {
    RECT frame{0, 0, width, height};
    AdjustWindowRectExForDpi(&frame, static_cast<DWORD>(GetWindowLongW(m_dialog, GWL_STYLE)), FALSE,
                             static_cast<DWORD>(GetWindowLongW(m_dialog, GWL_EXSTYLE)), m_dpi);
    return {frame.right - frame.left, frame.bottom - frame.top};
}

void resize_in_the_middle(HWND dialog, SIZE size) {
    SetWindowPos(dialog, nullptr, 0, 0, size.cx, size.cy,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    centre_dialog(dialog);
}

}  // namespace tvutil2
