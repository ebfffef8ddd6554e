#include "tvutil2/platform/window/controls/edit_input.h"
#include "tvutil2/platform/window/controls/text_breaks.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/scrolling.h"

#include <algorithm>

namespace tvutil2 {
namespace {

bool is_down(int key) {
    return GetKeyState(key) < 0;
}

}  // namespace

void EditInput::move(std::size_t to) {
    state().goal_x = -1;
    select(is_down(VK_SHIFT) ? state().text.anchor() : to, to, true);
}

void EditInput::move_rows(std::ptrdiff_t rows) {
    const auto caret = state().text.caret();
    const auto row = static_cast<std::ptrdiff_t>(state().lines.row_of(caret));
    const auto last = static_cast<std::ptrdiff_t>(state().lines.count()) - 1;
    const auto to = std::clamp<std::ptrdiff_t>(row + rows, 0, last);
    const auto goal = state().goal_x >= 0 ? state().goal_x : x_in_row(caret);
    if (to != row) move(place_in_row(static_cast<std::size_t>(to), goal));
    state().goal_x = goal;
}

// Keys that change the text. False for any other.
bool EditInput::press_to_change(WPARAM key, bool with_control) {
    const bool with_shift = is_down(VK_SHIFT);
    auto& text = state().text;
    const auto caret = text.caret();
    switch (key) {
        case VK_BACK:
            if (is_read_only()) return true;
            if (!text.selection().is_empty()) {
                erase_selection();
            } else if (with_control) {
                erase(previous_word(text.text(), caret), caret);
            } else {
                erase(previous_character(text.text(), caret), caret);
            }
            return true;
        case VK_DELETE:
            if (with_shift) {
                cut();
            } else if (is_read_only()) {
                return true;
            } else if (!text.selection().is_empty()) {
                erase_selection();
            } else {
                const auto end = with_control ? next_word(text.text(), caret)
                                              : next_character(text.text(), caret);
                erase(caret, end);
            }
            return true;
        case VK_INSERT:
            if (with_control) copy();
            if (with_shift) paste();
            return true;
        default:
            return false;
    }
}

bool EditInput::press(WPARAM key) {
    const bool with_control = is_down(VK_CONTROL);
    if (press_to_change(key, with_control)) return true;
    const auto& text = state().text;
    const auto caret = text.caret();
    const auto row = state().lines.row(state().lines.row_of(caret));
    const auto page = static_cast<std::ptrdiff_t>(rows_in_view());
    const bool collapses = !is_down(VK_SHIFT) && !text.selection().is_empty() && !with_control;
    switch (key) {
        case VK_LEFT:
        case VK_RIGHT: {
            // In a text that is read from right to left the next character is the one to the left.
            const bool is_back = (key == VK_LEFT) != is_right_to_left();
            if (collapses) {
                move(is_back ? text.selection().start : text.selection().end);
            } else if (with_control) {
                move(is_back ? previous_word(text.text(), caret) : next_word(text.text(), caret));
            } else {
                move(is_back ? previous_character(text.text(), caret)
                             : next_character(text.text(), caret));
            }
            return true;
        }
        case VK_HOME:
            move(with_control ? 0 : row.start);
            return true;
        case VK_END: {
            // Of a row that wraps: in front of what goes on in the next one.
            auto end = with_control ? text.size() : row.end;
            if (!with_control && end > row.start &&
                state().lines.row(state().lines.row_of(end)).start == end) {
                end = previous_character(text.text(), end);
            }
            move(end);
            return true;
        }
        case VK_UP:
        case VK_DOWN:
            if (is_multiline()) {
                move_rows(key == VK_UP ? -1 : 1);
            } else {
                const bool is_back = key == VK_UP;
                move(is_back ? previous_character(text.text(), caret)
                             : next_character(text.text(), caret));
            }
            return true;
        case VK_PRIOR:
        case VK_NEXT:
            if (!is_multiline()) return false;
            scroll(key == VK_PRIOR ? SB_PAGEUP : SB_PAGEDOWN, true);
            move_rows(key == VK_PRIOR ? -page : page);
            return true;
        default:
            return false;
    }
}

}  // namespace tvutil2
