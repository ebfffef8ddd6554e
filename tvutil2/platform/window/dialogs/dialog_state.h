// What a dialog keeps besides its window.
#pragma once

#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/window/window_states.h"

namespace tvutil2 {

/// For the dialog's thread.
struct DialogState : WindowState {
    DialogState() = default;
    ~DialogState() override {
        if (font != nullptr) DeleteObject(font);
    }
    DialogState(const DialogState&) = delete;
    DialogState& operator=(const DialogState&) = delete;

    HFONT font = nullptr;           ///< its own
    HFONT set_font = nullptr;       ///< what WM_GETFONT answers
    SIZE unit{8, 16};               ///< pixels of 4 units across and 8 down
    WORD default_id = 0;            ///< 0 for none
    HWND default_shown = nullptr;   ///< the button that looks like the default
    HWND last_focus = nullptr;      ///< while the dialog isn't active
    HWND disabled_owner = nullptr;  ///< of one that is run
    bool has_ended = false;
    INT_PTR result = 0;
};

/// Takes down which of its controls has the focus, if one has.
void keep_focus(HWND dialog, DialogState& state);
/// Gives the focus to a control as Tab does: with its text selected.
void focus_control(HWND control);
/// Lets the button with the focus, or else the default one, look like the default.
void show_default_button(HWND dialog);
/// In the middle of its owner, or of the monitor.
void centre_dialog(HWND dialog);
/// The dialog that a window is, or is in.
[[nodiscard]] bool is_dialog(HWND window);

}  // namespace tvutil2
