// An edit control as it is seen: its rows in the window, what of them shows, the caret.
#pragma once

#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/edit_lines.h"
#include "tvutil2/platform/window/controls/edit_text.h"
#include "tvutil2/platform/window/controls/field.h"
#include "tvutil2/platform/window/controls/list_rows.h"

#include <optional>
#include <string>

namespace tvutil2 {

/// What the person selects with the pointer at a time.
enum class SelectBy : std::uint8_t { character, word, line };

struct EditState : ControlState {
    EditText text;
    EditLines lines;
    FieldLook field;
    std::size_t limit = 30000;  ///< of what the person types and EM_REPLACESEL puts in
    char16_t password = 0;
    std::u16string mask;  ///< what shows of a password
    std::u16string cue;
    bool cue_stays = false;  ///< with the focus
    bool is_modified = false;
    char16_t first_of_pair = 0;  ///< typed, and its second half to come

    RECT format{};  ///< where the text is, in the client area
    bool has_own_format = false;
    int left_margin = 0, right_margin = 0;
    bool is_laid_out = false;
    int row_height = 1;
    int scroll_x = 0;
    std::size_t first_row = 0;
    int told_rows = -1, told_page = -1, told_first = -1;  ///< the scroll bars
    int told_width = -1, told_room = -1, told_x = -1;

    WheelTurn wheel;
    int goal_x = -1;  ///< where up and down go
    bool caret_shows = true;
    int blinks = 0;
    bool is_dragging = false;
    SelectBy select_by = SelectBy::character;
    EditText::Range drag_start;
    POINT drag_point{};
    std::optional<DWORD> double_click_time;
};

/// For the time of a message.
class EditView {
  public:
    EditView(HWND window, EditState& state);
    ~EditView();
    EditView(const EditView&) = delete;
    EditView& operator=(const EditView&) = delete;

    [[nodiscard]] bool has_style(DWORD bits) const { return (m_style & bits) != 0; }
    [[nodiscard]] bool is_multiline() const;
    [[nodiscard]] bool wraps() const;
    [[nodiscard]] bool is_read_only() const;
    [[nodiscard]] bool is_right_to_left() const { return m_font.is_right_to_left; }

    /// The text as it shows.
    [[nodiscard]] std::u16string_view shown();
    /// Lays the text out if that is due.
    void ready();
    /// Lays the text out anew, in its place in the client area: another font, size or text.
    void lay_out();
    /// What has changed of the text.
    void follow(const EditText::Change& change);
    void reset_format();

    [[nodiscard]] std::size_t rows_in_view() const;
    [[nodiscard]] int row_top(std::size_t row) const;
    [[nodiscard]] int row_left(std::size_t row);
    [[nodiscard]] std::size_t row_at(int y);
    /// In the client area.
    [[nodiscard]] POINT point_of(std::size_t at);
    [[nodiscard]] std::size_t place_at(POINT point);
    [[nodiscard]] std::size_t place_in_row(std::size_t row, int x);
    [[nodiscard]] int x_in_row(std::size_t at);
    [[nodiscard]] bool fits(const std::u16string& text);

    void scroll_to_caret();
    /// True when it has moved.
    bool scroll_to_row(std::ptrdiff_t row);
    void scroll_to_x(int x);
    void tell_scroll_bars();

    void repaint_rows(std::size_t first, std::size_t last);
    void repaint_from(std::size_t first);
    void repaint_caret();
    void show_caret(bool has_focus);
    void blink();
    void paint();

    /// Selects, and shows it.
    void select(std::size_t anchor, std::size_t caret, bool scrolls);

    [[nodiscard]] EditState& state() { return m_state; }
    [[nodiscard]] const EditState& state() const { return m_state; }

    static constexpr UINT_PTR kCaretTimer = 0xFFF0;
    static constexpr UINT_PTR kDragTimer = 0xFFF1;

  protected:
    EditState& m_state;

  private:
    [[nodiscard]] RECT caret_rect();
    [[nodiscard]] RowFont& font();
    void paint_row(HDC context, std::size_t row, COLORREF color);
    void paint_selection(HDC context, std::size_t row, POINT corner);

    HWND m_window;
    DWORD m_style;
    RowFont m_font;  ///< its context is got when it is first needed
    HGDIOBJ m_font_before = nullptr;
    UINT m_dpi;
};

}  // namespace tvutil2
