// What the system's controls share.
#pragma once

#include "tvutil2/platform/draw/draw_types.h"
#include "tvutil2/platform/window/window_states.h"

#include <string>

namespace tvutil2 {

/// What a control keeps besides its window; for the window's thread.
struct ControlState : WindowState {
    HFONT font = nullptr;  ///< the owner's; null is the system's
};

/// WM_COMMAND to the parent.
LRESULT notify_parent(HWND control, WORD code);
/// Asks the parent for colours (WM_CTLCOLOR...): the brush of the background.
HBRUSH ask_colors(HWND control, HDC context, UINT message);
/// The text as WM_GETTEXT gives it.
[[nodiscard]] std::u16string text_of(HWND control);
[[nodiscard]] DWORD style_of(HWND control);
/// How DrawTextW is to read its text: DT_RTLREADING or 0.
[[nodiscard]] UINT reading_of(HWND control);
/// Its client area, in its own coordinates.
[[nodiscard]] RECT client_of(HWND control);
void repaint(HWND control);
/// Of a line in the control's font, in pixels; at least 1.
[[nodiscard]] int line_height(HWND control, const ControlState& state);

/// WM_SETFONT, WM_GETFONT, and what changes a control's look: WM_SETTEXT and WM_ENABLE. False for
/// any other message.
bool handle_control_message(HWND control, ControlState& state, UINT message, WPARAM wparam,
                            LPARAM lparam, LRESULT& result);

/// A context of WM_PAINT with the control's font in it, given back on every way out.
class ControlPaint {
  public:
    ControlPaint(HWND control, const ControlState& state);
    ~ControlPaint();
    ControlPaint(const ControlPaint&) = delete;
    ControlPaint& operator=(const ControlPaint&) = delete;

    operator HDC() const;
    [[nodiscard]] const RECT& client() const { return m_client; }
    [[nodiscard]] UINT dpi() const { return m_dpi; }

  private:
    struct Data;
    HWND m_control;
    RECT m_client{};
    UINT m_dpi;
    std::unique_ptr<Data> m_data;
};

LRESULT static_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
LRESULT scroll_bar_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
LRESULT list_box_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
LRESULT combo_box_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
LRESULT progress_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
LRESULT list_view_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
LRESULT tree_view_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
LRESULT menu_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
LRESULT edit_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
LRESULT button_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

}  // namespace tvutil2
