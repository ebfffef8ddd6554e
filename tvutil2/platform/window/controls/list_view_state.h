// A list view as it is: its items, columns, and where they are seen.
#pragma once

#include "tvutil2/platform/picture/image_list.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/field.h"
#include "tvutil2/platform/window/controls/list_rows.h"
#include "tvutil2/platform/window/controls/list_view.h"

#include <string>
#include <vector>

namespace tvutil2 {

inline constexpr int kMostColumns = 1000;

struct ListColumn {
    std::u16string title;
    int width = 50;
    int format = LVCFMT_LEFT;
};

struct ListViewItem {
    std::vector<std::u16string> texts;
    int image = 0;
    LPARAM data = 0;
};

struct ListViewState : ControlState {
    std::vector<ListColumn> columns;
    std::vector<ListViewItem> items;  ///< none with LVS_OWNERDATA
    std::vector<bool> selected;       ///< one an item: how many there are
    int selected_count = 0;
    int focused = -1;
    int anchor = -1;
    int hot = -1;
    ListRows rows;
    FieldLook field;
    int scroll_x = 0;
    int per_row = 1;  ///< icons beside each other
    int cell_width = 0;
    HIMAGELIST large = nullptr, small = nullptr;  ///< the owner's
    int sized_column = -1;                        ///< whose edge the person holds
    int pressed_column = -1;
    int held_x = 0, held_width = 0;
    HWND label = nullptr;  ///< over the name that the person changes
    int label_item = -1;

    [[nodiscard]] int count() const { return static_cast<int>(selected.size()); }
    [[nodiscard]] bool has(int index) const { return index >= 0 && index < count(); }
};

/// For the time of a message.
class ListViewView {
  public:
    ListViewView(HWND window, ListViewState& state);

    [[nodiscard]] ListViewState& state() { return m_state; }
    [[nodiscard]] bool has_style(DWORD bits) const { return (m_style & bits) != 0; }
    [[nodiscard]] bool shows_icons() const { return (m_style & LVS_TYPEMASK) == LVS_ICON; }
    [[nodiscard]] bool has_header() const;
    [[nodiscard]] RECT client() const;
    [[nodiscard]] int columns_width() const;
    [[nodiscard]] int row_count() const;

    /// Another font, size, view or number of items.
    void arrange();
    void scroll_to_x(int x);
    /// What an item shows in a column, and its picture.
    [[nodiscard]] std::u16string text_of_item(int index, int column) const;
    [[nodiscard]] std::vector<std::u16string> texts_of_row(int index) const;
    [[nodiscard]] int image_of(int index) const;
    [[nodiscard]] RECT place_of(int index) const;
    [[nodiscard]] RECT name_place(int index) const;
    [[nodiscard]] int item_at(POINT point) const;
    /// The column whose header is there; -1 for none. `is_edge`: it can be sized there.
    [[nodiscard]] int column_at(POINT point, bool& is_edge) const;
    [[nodiscard]] int width_for(int column) const;
    void show(int index);
    void repaint_item(int index) const;
    void paint();

  private:
    void paint_header(HDC context) const;
    void paint_row(HDC context, int index);
    void paint_icon(HDC context, int index);
    /// The band of an item, and the colour of its text.
    [[nodiscard]] COLORREF paint_band(HDC context, int index, RECT band) const;

    HWND m_window;
    ListViewState& m_state;
    DWORD m_style;
    UINT m_dpi;
};

/// Where the name is that the person changes, if any.
void place_list_label(HWND window, ListViewState& state);

}  // namespace tvutil2
