#include "tvutil2/platform/window/controls/edit_input.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/window/controls/clipboard_text.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/text_breaks.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

using Kind = EditText::Kind;

constexpr UINT kDragTime = 50;

}  // namespace

void EditInput::changed(const EditText::Change& change) {
    state().is_modified = true;
    if (state().is_laid_out) follow(change);
    notify_parent(m_window, EN_UPDATE);
    if (!IsWindow(m_window)) return;
    if (state().is_laid_out) scroll_to_caret();
    if (GetFocus() == m_window) show_caret(true);
    notify_parent(m_window, EN_CHANGE);
}

// What of a text may be put in: one line of it, in the case that the style asks for, up to the
// limit.
std::u16string EditInput::allowed(std::u16string_view given) {
    if (!is_multiline()) given = given.substr(0, given.find_first_of(u"\r\n"));
    std::u16string text(given);
    if (has_style(ES_UPPERCASE)) std::ranges::transform(text, text.begin(), to_upper);
    if (has_style(ES_LOWERCASE)) std::ranges::transform(text, text.begin(), to_lower);
    if (has_style(ES_NUMBER)) {
        std::erase_if(text, [](char16_t unit) { return unit < u'0' || unit > u'9'; });
    }
    const auto& whole = state().text;
    const auto rest = whole.size() - whole.selected().size();
    const auto room = state().limit > rest ? state().limit - rest : 0;
    if (text.size() > room) {
        const bool parts_pair = room > 0 && (text[room] & 0xFC00) == 0xDC00;
        text.resize(parts_pair ? room - 1 : room);
        notify_parent(m_window, EN_MAXTEXT);
    }
    return text;
}

// Text that doesn't scroll ends where the control does.
bool EditInput::is_too_wide(std::u16string_view added) {
    if (is_multiline() || has_style(ES_AUTOHSCROLL) || added.empty()) return false;
    auto whole = state().text.text();
    const auto [start, end] = state().text.selection();
    whole.replace(start, end - start, added);
    if (state().password != 0) whole.assign(whole.size(), state().password);
    return !fits(whole);
}

void EditInput::put(std::u16string_view given, Kind kind) {
    const auto text = allowed(given);
    if (!IsWindow(m_window)) return;
    // Nothing in a selection's place is meant only where nothing was given.
    if (text.empty() && (!given.empty() || state().text.selection().is_empty())) return;
    if (is_too_wide(text)) {
        notify_parent(m_window, EN_MAXTEXT);
        return;
    }
    changed(state().text.replace(text, kind));
}

void EditInput::erase_selection() {
    if (!state().text.selection().is_empty()) changed(state().text.replace({}, Kind::other));
}

void EditInput::erase(std::size_t from, std::size_t to) {
    if (from != to) changed(state().text.replace({from, to}, {}, Kind::deleted));
}

void EditInput::set_text(const char16_t* given, bool tells) {
    std::u16string text(given != nullptr ? given : u"");
    if (!is_multiline()) text.resize(std::min(text.size(), text.find_first_of(u"\r\n")));
    state().text.set(std::move(text));
    state().is_modified = false;
    state().scroll_x = 0;
    state().first_row = 0;
    state().is_laid_out = false;
    repaint(m_window);
    if (!tells || is_multiline()) return;
    notify_parent(m_window, EN_UPDATE);
    if (IsWindow(m_window)) notify_parent(m_window, EN_CHANGE);
}

void EditInput::undo(bool again) {
    auto& text = state().text;
    if (is_read_only() || (again ? !text.can_redo() : !text.can_undo())) return;
    changed(again ? text.redo() : text.undo());
}

// What isn't to be seen isn't to be had either.
void EditInput::copy() const {
    const auto& text = m_state.text;
    if (m_state.password == 0 && !text.selection().is_empty()) {
        put_clipboard_text(m_window, text.selected());
    }
}

void EditInput::cut() {
    copy();
    if (state().password == 0 && !is_read_only()) erase_selection();
}

void EditInput::paste() {
    if (is_read_only()) return;
    const auto text = clipboard_text(m_window);
    if (!text.empty()) put(text, Kind::other);
}

void EditInput::type(char16_t unit) {
    const bool follows_pair = (unit & 0xFC00) == 0xDC00;
    const auto first = std::exchange(state().first_of_pair, char16_t{0});
    switch (unit) {
        case 1:
            return select(0, state().text.size(), false);
        case 3:
            return copy();
        case 22:
            return paste();
        case 24:
            return cut();
        case 25:
            return undo(true);
        case 26:
            return undo(false);
        default:
            break;
    }
    if (is_read_only()) return;
    if ((unit & 0xFC00) == 0xD800) {
        state().first_of_pair = unit;
    } else if (follows_pair) {
        if (first != 0) put(std::u16string{first, unit}, Kind::typed);
    } else if (unit == u'\r' || unit == u'\n') {
        if (is_multiline()) put(u"\r\n", Kind::typed);
    } else if (unit >= u' ' ? unit != 0x7F : unit == u'\t' && is_multiline()) {
        put({&unit, 1}, Kind::typed);
    }
}

EditText::Range EditInput::unit_at(std::size_t at) {
    const auto& text = state().text.text();
    if (state().select_by == SelectBy::character) return {at, at};
    // The words of a password are nobody's business.
    if (state().select_by == SelectBy::line || state().password != 0) {
        return state().lines.row(state().lines.row_of(at));
    }
    const auto [start, end] = word_at(text, at);
    return {start, end};
}

void EditInput::press_button(POINT point, bool is_double, bool extends) {
    if (GetFocus() != m_window) SetFocus(m_window);
    if (!IsWindow(m_window)) return;
    const auto now = static_cast<DWORD>(GetMessageTime());
    const auto last = state().double_click_time;
    const bool is_third = last && !is_double && now - *last <= GetDoubleClickTime();
    state().double_click_time = is_double ? std::optional(now) : std::nullopt;
    state().select_by = is_double  ? SelectBy::word
                        : is_third ? SelectBy::line
                                   : SelectBy::character;
    const auto at = place_at(point);
    state().goal_x = -1;
    state().drag_start = unit_at(at);
    const auto& text = state().text;
    if (extends) state().drag_start = {text.anchor(), text.anchor()};
    select(state().drag_start.start, extends ? at : state().drag_start.end, true);
    state().is_dragging = true;
    state().drag_point = point;
    SetCapture(m_window);
}

void EditInput::drag(POINT point) {
    if (!state().is_dragging) return;
    state().drag_point = point;
    const auto& format = state().format;
    const bool is_outside = point.x < format.left || point.x >= format.right ||
                            (is_multiline() && (point.y < format.top || point.y >= format.bottom));
    if (is_outside) SetTimer(m_window, kDragTimer, kDragTime, nullptr);
    const auto at = unit_at(place_at(point));
    const auto& start = state().drag_start;
    if (at.start < start.start) {
        select(start.end, at.start, true);
    } else {
        select(start.start, std::max(at.end, start.end), true);
    }
}

void EditInput::end_drag() {
    if (!std::exchange(state().is_dragging, false)) return;
    KillTimer(m_window, kDragTimer);
    if (GetCapture() == m_window) ReleaseCapture();
}

bool EditInput::tick(WPARAM timer) {
    if (timer == kCaretTimer) {
        blink();
        return true;
    }
    if (timer != kDragTimer) return false;
    drag(state().drag_point);
    return true;
}

void EditInput::scroll(WORD code, bool is_vertical) {
    auto& lines = state().lines;
    const auto first = static_cast<std::ptrdiff_t>(state().first_row);
    const auto page = static_cast<std::ptrdiff_t>(rows_in_view());
    const auto room = static_cast<int>(state().format.right - state().format.left);
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_TRACKPOS;
    if (code == SB_THUMBTRACK || code == SB_THUMBPOSITION) {
        GetScrollInfo(m_window, is_vertical ? SB_VERT : SB_HORZ, &info);
    }
    struct Goal {
        std::ptrdiff_t row;
        int x;
    };
    const auto x = state().scroll_x;
    const auto most = std::max(lines.widest() + 2 - room, 0);
    const auto goal = [&]() -> Goal {
        switch (code) {
            case SB_LINEUP:
                return {first - 1, x - state().row_height};
            case SB_LINEDOWN:
                return {first + 1, x + state().row_height};
            case SB_PAGEUP:
                return {first - page, x - room};
            case SB_PAGEDOWN:
                return {first + page, x + room};
            case SB_THUMBTRACK:
            case SB_THUMBPOSITION:
                return {info.nTrackPos, info.nTrackPos};
            case SB_TOP:
                return {0, 0};
            case SB_BOTTOM:
                return {static_cast<std::ptrdiff_t>(lines.count()), most};
            default:
                return {first, x};
        }
    }();
    if (is_vertical) {
        if (scroll_to_row(goal.row)) notify_parent(m_window, EN_VSCROLL);
        return;
    }
    if (!wraps()) scroll_to_x(std::clamp(goal.x, 0, most));
    tell_scroll_bars();
    notify_parent(m_window, EN_HSCROLL);
}

bool EditInput::turn_wheel(int delta) {
    if (!is_multiline() || state().lines.count() <= rows_in_view()) return false;
    const auto rows = state().wheel.rows(delta);
    if (scroll_to_row(static_cast<std::ptrdiff_t>(state().first_row) + rows)) {
        notify_parent(m_window, EN_VSCROLL);
    }
    return true;
}

}  // namespace tvutil2
