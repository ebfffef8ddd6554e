#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/edit_view.h"
#include "tvutil2/platform/window/focus.h"

#include <algorithm>

namespace tvutil2 {

void EditView::paint_selection(HDC context, std::size_t row, POINT corner) {
    const bool has_focus = GetFocus() == m_window;
    const auto selection = m_state.text.selection();
    if (selection.is_empty() || (!has_focus && !has_style(ES_NOHIDESEL))) return;
    const auto background = has_focus ? GetSysColor(COLOR_HIGHLIGHT) : theme().palette.quiet_row;
    const auto ink = GetSysColor(has_focus ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT);
    auto* const brush = CreateSolidBrush(background);
    auto with_context = font();
    with_context.context = context;
    for (const auto& span : m_state.lines.spans(shown(), font(), row, selection)) {
        const RECT part{corner.x + span.left, corner.y, corner.x + span.right,
                        corner.y + m_state.row_height};
        const auto saved = SaveDC(context);
        IntersectClipRect(context, part.left, part.top, part.right, part.bottom);
        FillRect(context, &part, brush);
        m_state.lines.draw(shown(), with_context, row, corner, span, ink);
        RestoreDC(context, saved);
    }
    DeleteObject(brush);
}

void EditView::paint_row(HDC context, std::size_t row, COLORREF color) {
    const POINT corner{row_left(row), row_top(row)};
    auto with_context = font();
    with_context.context = context;
    const EditLines::Span in_view{m_state.format.left - corner.x, m_state.format.right - corner.x};
    m_state.lines.draw(shown(), with_context, row, corner, in_view, color);
    paint_selection(context, row, corner);
}

void EditView::paint() {
    const ControlPaint paint(m_window, m_state);
    const bool is_disabled = has_style(WS_DISABLED);
    auto* const brush = ask_colors(m_window, paint, m_state.field.color_message);
    FillRect(paint, &paint.client(), brush);
    if (!m_state.is_laid_out) return;
    const auto color = is_disabled ? GetSysColor(COLOR_GRAYTEXT) : GetTextColor(paint);
    const auto& format = m_state.format;
    const auto saved = SaveDC(paint);
    // A single line may be higher than its field.
    const LONG top = row_top(m_state.first_row);
    const auto bottom =
        is_multiline() ? format.bottom : std::max<LONG>(format.bottom, top + m_state.row_height);
    IntersectClipRect(paint, format.left, std::min(format.top, top), format.right, bottom);
    RECT box{};
    GetClipBox(paint, &box);
    const bool has_focus = GetFocus() == m_window;
    if (m_state.text.size() == 0 && (!has_focus || m_state.cue_stays) && !m_state.cue.empty()) {
        SetTextColor(paint, is_disabled ? color : theme().palette.placeholder);
        auto area = format;
        const UINT side = (m_style & ES_RIGHT) != 0    ? DT_RIGHT
                          : (m_style & ES_CENTER) != 0 ? DT_CENTER
                                                       : DT_LEFT;
        DrawTextW(paint, m_state.cue.c_str(), static_cast<int>(m_state.cue.size()), &area,
                  side | reading_of(m_window) | DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS |
                      DT_NOPREFIX);
    }
    if (box.bottom > box.top) {
        const auto last = row_at(box.bottom - 1);
        for (auto row = row_at(box.top); row <= last; ++row) paint_row(paint, row, color);
    }
    RestoreDC(paint, saved);
    if (!has_focus || !m_state.caret_shows || is_disabled) return;
    const auto caret = caret_rect();
    auto* const ink = CreateSolidBrush(color);
    FillRect(paint, &caret, ink);
    DeleteObject(ink);
}

}  // namespace tvutil2
