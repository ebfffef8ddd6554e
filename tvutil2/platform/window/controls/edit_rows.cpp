#include "tvutil2/platform/window/controls/edit_rows.h"

#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {
namespace {

// The index of a row or a place that -1 stands for the caret's in.
std::size_t row_index(EditInput& edit, WPARAM wparam) {
    const auto index = static_cast<int>(wparam);
    auto& state = edit.state();
    return index < 0 ? state.lines.row_of(state.text.caret()) : static_cast<std::size_t>(index);
}

// The first unit of the buffer says how many there are; no zero is put behind them.
LRESULT copy_row(EditInput& edit, WPARAM index, char16_t* to) {
    edit.ready();
    if (static_cast<std::size_t>(index) >= edit.state().lines.count()) return 0;
    const auto row = edit.state().lines.row(index);
    const auto room = static_cast<std::size_t>(*to);
    return as_result(
        edit.state().text.text().copy(to, std::min(room, row.end - row.start), row.start));
}

LRESULT row_length(EditInput& edit, WPARAM wparam) {
    edit.ready();
    const auto at = static_cast<int>(wparam);
    const auto& text = edit.state().text;
    auto& lines = edit.state().lines;
    if (at < 0) {
        const auto [start, end] = text.selection();
        const auto first = lines.row(lines.row_of(start));
        const auto last = lines.row(lines.row_of(end));
        return as_result(start - first.start + (last.end > end ? last.end - end : 0));
    }
    if (static_cast<std::size_t>(at) > text.size()) return 0;
    const auto row = lines.row(lines.row_of(static_cast<std::size_t>(at)));
    return as_result(row.end - row.start);
}

LRESULT row_start(EditInput& edit, WPARAM wparam) {
    edit.ready();
    const auto index = row_index(edit, wparam);
    if (index >= edit.state().lines.count()) return -1;
    return as_result(edit.state().lines.row(index).start);
}

LRESULT row_of_place(EditInput& edit, WPARAM wparam) {
    edit.ready();
    const auto at = static_cast<int>(wparam);
    const auto& text = edit.state().text;
    const auto place = at < 0 ? text.selection().start : static_cast<std::size_t>(at);
    return as_result(edit.state().lines.row_of(std::min(place, text.size())));
}

LRESULT position_of(EditInput& edit, WPARAM at) {
    edit.ready();
    if (static_cast<std::size_t>(at) >= edit.state().text.size()) return -1;
    const auto point = edit.point_of(at);
    return MAKELPARAM(static_cast<WORD>(point.x), static_cast<WORD>(point.y));
}

LRESULT place_of(EditInput& edit, LPARAM lparam) {
    edit.ready();
    const auto at = edit.place_at({GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)});
    return MAKELPARAM(static_cast<WORD>(at), static_cast<WORD>(edit.state().lines.row_of(at)));
}

void set_format(EditInput& edit, HWND window, const RECT* rect, bool repaints) {
    auto& state = edit.state();
    if (rect == nullptr) {
        edit.reset_format();
    } else {
        state.format = *rect;
        state.format.right = std::max(rect->left, rect->right);
        state.format.bottom = std::max(rect->top, rect->bottom);
        state.has_own_format = true;
    }
    state.is_laid_out = false;
    if (repaints) repaint(window);
}

void set_margins(EditInput& edit, HWND window, WPARAM which, LPARAM widths) {
    auto& state = edit.state();
    const auto value = static_cast<WPARAM>(widths);
    // EC_USEFONTINFO: what the look has anyway.
    const bool is_usual = which == 0xFFFF;
    if ((which & EC_LEFTMARGIN) != 0) state.left_margin = is_usual ? 0 : LOWORD(value);
    if ((which & EC_RIGHTMARGIN) != 0) state.right_margin = is_usual ? 0 : HIWORD(value);
    edit.reset_format();
    state.is_laid_out = false;
    repaint(window);
}

}  // namespace

bool handle_edit_rows(EditInput& edit, HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                      LRESULT& result) {
    auto& state = edit.state();
    switch (message) {
        case EM_GETLINECOUNT:
            edit.ready();
            result = as_result(state.lines.count());
            return true;
        case EM_LINEINDEX:
            result = row_start(edit, wparam);
            return true;
        case EM_LINELENGTH:
            result = row_length(edit, wparam);
            return true;
        case EM_LINEFROMCHAR:
            result = row_of_place(edit, wparam);
            return true;
        case EM_GETLINE:
            result = copy_row(edit, wparam, reinterpret_cast<char16_t*>(lparam));
            return true;
        case EM_GETFIRSTVISIBLELINE:
            result = as_result(state.first_row);
            return true;
        case EM_POSFROMCHAR:
            result = position_of(edit, wparam);
            return true;
        case EM_CHARFROMPOS:
            result = place_of(edit, lparam);
            return true;
        case EM_GETRECT:
            *reinterpret_cast<RECT*>(lparam) = state.format;
            return true;
        case EM_SETRECT:
        case EM_SETRECTNP:
            set_format(edit, window, reinterpret_cast<const RECT*>(lparam), message == EM_SETRECT);
            return true;
        case EM_SETMARGINS:
            set_margins(edit, window, wparam, lparam);
            return true;
        case EM_GETMARGINS:
            result = MAKELPARAM(static_cast<WORD>(state.left_margin),
                                static_cast<WORD>(state.right_margin));
            return true;
        case EM_SCROLLCARET:
            edit.ready();
            edit.scroll_to_caret();
            result = 1;
            return true;
        case EM_LINESCROLL:
            edit.ready();
            edit.scroll_to_row(static_cast<std::ptrdiff_t>(state.first_row) + lparam);
            result = edit.is_multiline() ? 1 : 0;
            return true;
        case EM_SCROLL: {
            edit.ready();
            const auto before = static_cast<int>(state.first_row);
            edit.scroll(LOWORD(wparam), true);
            const auto moved = static_cast<int>(state.first_row) - before;
            result = MAKELPARAM(static_cast<WORD>(moved), 1);
            return true;
        }
        default:
            return false;
    }
}

}  // namespace tvutil2
