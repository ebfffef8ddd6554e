// What the person does in an edit control.
#pragma once

#include "tvutil2/platform/window/controls/edit_view.h"

namespace tvutil2 {

/// For the time of a message.
class EditInput : public EditView {
  public:
    EditInput(HWND window, EditState& state) : EditView(window, state), m_window(window) {}

    /// Puts text in the place of the selection, as far as it may be there.
    void put(std::u16string_view given, EditText::Kind kind);
    void erase_selection();
    void set_text(const char16_t* given, bool tells);
    void undo(bool again);
    void copy() const;
    void cut();
    void paste();
    void type(char16_t unit);
    /// False for a key that means nothing here.
    bool press(WPARAM key);

    void press_button(POINT point, bool is_double, bool extends);
    void drag(POINT point);
    void end_drag();
    /// False for a timer that isn't its own.
    bool tick(WPARAM timer);
    void scroll(WORD code, bool is_vertical);
    /// False when there is nothing to scroll.
    bool turn_wheel(int delta);

  private:
    void changed(const EditText::Change& change);
    void erase(std::size_t from, std::size_t to);
    [[nodiscard]] std::u16string allowed(std::u16string_view given);
    [[nodiscard]] bool is_too_wide(std::u16string_view added);
    void move(std::size_t to);
    void move_rows(std::ptrdiff_t rows);
    bool press_to_change(WPARAM key, bool with_control);
    [[nodiscard]] EditText::Range unit_at(std::size_t at);

    HWND m_window;
};

}  // namespace tvutil2
