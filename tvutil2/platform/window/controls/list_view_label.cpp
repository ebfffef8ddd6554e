// Names of a list view's items that the person changes.
#include "tvutil2/platform/window/controls/label_edit.h"
#include "tvutil2/platform/window/controls/list_view_input.h"
#include "tvutil2/platform/window/controls/notify.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <utility>

namespace tvutil2 {
namespace {

constexpr UINT kEndListLabel = WM_USER + 1;

HWND edit_list_label(HWND window, ListViewState& state, int index) {
    end_list_label(window, state, false);
    if (!IsWindow(window) || !state.has(index) || (style_of(window) & LVS_EDITLABELS) == 0) {
        return nullptr;
    }
    NMLVDISPINFOW told{};
    told.item.iItem = index;
    if (notify_parent_of(window, told.hdr, LVN_BEGINLABELEDITW) != 0 || !IsWindow(window)) {
        return nullptr;
    }
    ListViewView view(window, state);
    if (!state.has(index) || view.shows_icons()) return nullptr;
    view.show(index);
    state.label_item = index;
    state.label =
        open_label_edit(window, kEndListLabel, label_edit_place(window, view.name_place(index)),
                        view.text_of_item(index, 0), state.font);
    return state.label;
}

}  // namespace

void end_list_label(HWND window, ListViewState& state, bool gives_up) {
    auto* const edit = std::exchange(state.label, nullptr);
    const auto index = std::exchange(state.label_item, -1);
    if (edit == nullptr) return;
    auto text = close_label_edit(edit);
    NMLVDISPINFOW told{};
    told.item.mask = LVIF_TEXT;
    told.item.iItem = index;
    told.item.pszText = gives_up || !state.has(index) ? nullptr : text.data();
    const bool is_taken = notify_parent_of(window, told.hdr, LVN_ENDLABELEDITW) != 0;
    if (!IsWindow(window)) return;
    if (is_taken && told.item.pszText != nullptr && state.has(index) && !state.items.empty()) {
        LVITEMW given{};
        given.pszText = text.data();
        SendMessageW(window, LVM_SETITEMTEXTW, static_cast<WPARAM>(index),
                     reinterpret_cast<LPARAM>(&given));
    }
    ListViewView(window, state).repaint_item(index);
}

void place_list_label(HWND window, ListViewState& state) {
    if (state.label == nullptr || !state.has(state.label_item)) return;
    const auto name = ListViewView(window, state).name_place(state.label_item);
    const auto place = label_edit_place(window, name);
    SetWindowPos(state.label, nullptr, place.left, place.top, place.right - place.left,
                 place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

bool handle_list_label(HWND window, ListViewState& state, UINT message, WPARAM wparam,
                       LRESULT& result) {
    switch (message) {
        case LVM_EDITLABELW:
            result =
                reinterpret_cast<LRESULT>(edit_list_label(window, state, static_cast<int>(wparam)));
            return true;
        case LVM_GETEDITCONTROL:
            result = reinterpret_cast<LRESULT>(state.label);
            return true;
        case kEndListLabel:
            end_list_label(window, state, wparam != 0);
            return true;
        default:
            return false;
    }
}

}  // namespace tvutil2
