// What the words of a dialog take, measured in its font; for dialogs that are laid out in pixels.
#pragma once

#include "tvutil2/platform/draw/draw_types.h"
#include "tvutil2/platform/window/window_types.h"

namespace tvutil2 {

/// For the time of one layout. All lengths are pixels of the dialog's monitor.
class DialogMeasures {
  public:
    explicit DialogMeasures(HWND dialog);
    ~DialogMeasures();
    DialogMeasures(const DialogMeasures&) = delete;
    DialogMeasures& operator=(const DialogMeasures&) = delete;

    /// Of a length at 96 dots an inch.
    [[nodiscard]] LONG length(int pixels) const;
    /// A control that isn't hidden.
    [[nodiscard]] bool has(int id) const;
    /// Of a control's text; 0 for what there isn't.
    [[nodiscard]] LONG width_of(int id) const;
    [[nodiscard]] LONG text_height(const char16_t* text, LONG width) const;
    [[nodiscard]] SIZE button(int id) const;
    /// Its width and the gap beside it; 0 for what there isn't.
    [[nodiscard]] LONG button_room(int id) const;
    /// That of boxes with a list.
    [[nodiscard]] LONG field_height() const { return line() * 14 / 8; }
    [[nodiscard]] LONG line() const { return m_line; }

    void place(int id, LONG x, LONG y, LONG width, LONG height) const;
    /// A control and the label beside it, from `left` to `right`.
    void place_row(int label, LONG label_width, int id, LONG left, LONG top, LONG right) const;
    /// Of the dialog's window, for what is in its frame.
    [[nodiscard]] SIZE with_frame(LONG width, LONG height) const;

  private:
    HWND m_dialog;
    UINT m_dpi;
    HDC m_context;
    HGDIOBJ m_before;
    LONG m_line;
};

/// Gives a dialog its first size, and its place in the middle of its owner.
void resize_in_the_middle(HWND dialog, SIZE size);

// In pixels at 96 dots an inch.
inline constexpr int kDialogMargin = 12;
inline constexpr int kDialogGap = 8;

}  // namespace tvutil2
