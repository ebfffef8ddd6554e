// How the list of a combo box opens, closes and is chosen from.
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/combo_state.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

constexpr int kMostRows = 30;

// Below the field, above it where there is no room; beyond the window if need be.
RECT list_place(HWND window, const ComboState& state, const ListState& list) {
    RECT field{};
    GetWindowRect(window, &field);
    const auto work = monitor_at(field).work;
    const int rows = std::clamp(list.items.count(), 1, kMostRows);
    const int edge = 2;
    auto height = static_cast<LONG>(rows * list.rows.height + edge);
    const bool is_placed = !display_finds_room();
    const auto below = is_placed ? work.bottom - field.bottom : (work.bottom - work.top) / 2;
    const auto above = is_placed ? field.top - work.top : 0;
    const bool is_below = height <= below || below >= above;
    height = std::min(height, std::max(is_below ? below : above, LONG{1} * list.rows.height));
    const auto width = std::max<LONG>(field.right - field.left, state.dropped_width);
    const auto top = is_below ? field.bottom : field.top - height;
    return {field.left, top, field.left + width, top + height};
}

}  // namespace

std::shared_ptr<ListState> list_of(const ComboState& state) {
    return state.list != nullptr ? state_of<ListState>(state.list) : nullptr;
}

void fill_combo_edit(ComboState& state, int index) {
    const auto list = list_of(state);
    if (state.edit == nullptr || !list) return;
    state.is_filling = true;
    SetWindowTextW(state.edit, list->items.has(index) ? list->items.at(index).text.c_str() : u"");
    SendMessageW(state.edit, EM_SETSEL, 0, -1);
    state.is_filling = false;
}

void go_to_in_combo(HWND window, ComboState& state, int index) {
    const auto list = list_of(state);
    if (!list) return;
    go_to_item(state.list, *list, index);
    fill_combo_edit(state, index);
    repaint(window);
}

void open_combo(HWND window, ComboState& state) {
    if (state.is_open) return;
    notify_parent(window, CBN_DROPDOWN);
    const auto list = IsWindow(window) ? list_of(state) : nullptr;
    if (!list) return;
    state.selected_before = list->current;
    const auto place = list_place(window, state, *list);
    state.is_open = true;
    RECT field{};
    GetWindowRect(window, &field);
    set_popup_base(state.list, field);
    SetWindowPos(state.list, HWND_TOPMOST, place.left, place.top, place.right - place.left,
                 place.bottom - place.top, SWP_NOACTIVATE | SWP_SHOWWINDOW);
    arrange_list(state.list, *list);
    if (list->current >= 0) go_to_item(state.list, *list, list->current);
    SetCapture(state.list);
    repaint(window);
}

void close_combo(HWND window, ComboState& state, bool takes) {
    if (!std::exchange(state.is_open, false)) return;
    if (GetCapture() == state.list) ReleaseCapture();
    if (!takes) go_to_in_combo(window, state, state.selected_before);
    ShowWindow(state.list, SW_HIDE);
    repaint(window);
    notify_parent(window, takes ? CBN_SELENDOK : CBN_SELENDCANCEL);
    if (IsWindow(window)) notify_parent(window, CBN_CLOSEUP);
}

void follow_combo_key(HWND window, ComboState& state, int index) {
    const auto list = list_of(state);
    if (!list || index == list->current || !list->items.has(index)) return;
    if (!state.is_open) notify_parent(window, CBN_SELENDOK);
    if (!IsWindow(window)) return;
    go_to_in_combo(window, state, index);
    notify_parent(window, CBN_SELCHANGE);
}

bool press_combo_key(HWND window, ComboState& state, WPARAM key, bool with_alt) {
    const auto list = list_of(state);
    if (!list) return false;
    const bool toggles = key == VK_F4 || (with_alt && (key == VK_DOWN || key == VK_UP));
    if (toggles) {
        if (state.is_open) {
            close_combo(window, state, true);
        } else {
            open_combo(window, state);
        }
        return true;
    }
    if (state.is_open && (key == VK_RETURN || key == VK_ESCAPE)) {
        close_combo(window, state, key == VK_RETURN);
        return true;
    }
    const bool is_edit_key = state.edit != nullptr && (key == VK_HOME || key == VK_END);
    if (is_edit_key) return false;
    const auto to =
        row_after_key(list->rows, client_of(state.list), list->items.count(), list->current, key);
    if (to == list->current) return key == VK_UP || key == VK_DOWN;
    follow_combo_key(window, state, to);
    return true;
}

void turn_combo_wheel(HWND window, ComboState& state, int delta) {
    const auto list = list_of(state);
    if (!list || list->items.count() == 0) return;
    if (state.is_open) {
        SendMessageW(state.list, WM_MOUSEWHEEL,
                     MAKEWPARAM(0, static_cast<WORD>(static_cast<std::int16_t>(delta))), 0);
    } else if (state.has_focus) {
        follow_combo_key(
            window, state,
            std::clamp(list->current + (delta > 0 ? -1 : 1), 0, list->items.count() - 1));
    }
}

// The pointer has chosen. What changes is told first, as by keys.
void list_chosen(HWND combo, int index) {
    const auto state = state_of<ComboState>(combo);
    if (!state || !state->is_open) return;
    go_to_in_combo(combo, *state, index);
    if (index != state->selected_before) notify_parent(combo, CBN_SELCHANGE);
    if (IsWindow(combo)) close_combo(combo, *state, true);
}

void list_left(HWND combo) {
    const auto state = state_of<ComboState>(combo);
    if (state) close_combo(combo, *state, false);
}

}  // namespace tvutil2
