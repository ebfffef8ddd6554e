// Rows in a window, one below the other: which show, and where. What list boxes, list views and
// trees share, edits as far as the wheel goes. For the window's thread.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

/// A mouse's wheel, by which rows are scrolled.
struct WheelTurn {
    /// The rows to go down for WM_MOUSEWHEEL's turn; what isn't a whole row yet counts for the next
    /// turn in that direction, since fine wheels and touch pads turn by less.
    int rows(int delta);

  private:
    int m_rest = 0;
};

/// Lengths in pixels.
struct ListRows {
    int height = 1;          ///< of a row
    int top = 0;             ///< the first row that shows
    int above = 0;           ///< of the client area, where no rows are: a header
    bool has_bar = false;    ///< was made with WS_VSCROLL
    bool keeps_bar = false;  ///< the bar stays when it isn't needed
    WheelTurn wheel;

    [[nodiscard]] int in_view(const RECT& client) const;
    /// Where a row is; outside of the client area for one that doesn't show.
    [[nodiscard]] RECT place(const RECT& client, int row) const;
    /// -1 for none.
    [[nodiscard]] int at(const RECT& client, int count, int y) const;
    /// The first row for one to show that the person goes to.
    [[nodiscard]] int top_for(const RECT& client, int row) const;
    [[nodiscard]] int last_top(const RECT& client, int count) const;
};

/// Scrolls, and tells the window's scroll bar. True when another row is the first.
bool show_rows_from(HWND window, ListRows& rows, int count, int top);
/// WM_VSCROLL and WM_MOUSEWHEEL. False for any other message.
bool scroll_rows(HWND window, ListRows& rows, int count, UINT message, WPARAM wparam);
/// The row that a key goes to from another one; `from` for a key that goes nowhere.
[[nodiscard]] int row_after_key(const ListRows& rows, const RECT& client, int count, int from,
                                WPARAM key);

}  // namespace tvutil2
