// How a tree view looks.
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/window/controls/label_edit.h"
#include "tvutil2/platform/window/controls/tree_state.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/window.h"

namespace tvutil2 {
namespace {

// In pixels at 96 dots an inch.
constexpr int kTreeMargin = 4;
constexpr int kIndent = 19;
constexpr int kTreeSide = 4;

void paint_tree_item(HWND window, TreeState& state, HDC context, int index, RECT row) {
    auto* const handle = state.at(index);
    const auto& item = *state.items.find(handle);
    const auto dpi = GetDpiForWindow(window);
    const auto style = style_of(window);
    const bool is_disabled = (style & WS_DISABLED) != 0;
    const bool has_focus = GetFocus() == window;
    auto ink = GetSysColor(is_disabled ? COLOR_GRAYTEXT : COLOR_WINDOWTEXT);
    auto band = row;
    InflateRect(&band, -scaled(2, dpi), -scaled(1, dpi));
    if (state.selected == handle && (has_focus || (style & TVS_SHOWSELALWAYS) != 0)) {
        draw_round_area(context, band, 3,
                        has_focus ? GetSysColor(COLOR_HIGHLIGHT) : theme().palette.quiet_row);
        if (has_focus) ink = GetSysColor(COLOR_HIGHLIGHTTEXT);
    } else if (state.hot == handle && !is_disabled) {
        draw_round_area(context, band, 3, theme().palette.hot_row);
    }
    const auto arrow = tree_arrow(item, row, dpi);
    if (!item.children.empty() || item.may_have_children) {
        draw_glyph(context, arrow, item.is_open ? Glyph::down : Glyph::right, scaled(9, dpi), ink);
    }
    if (state.images != nullptr) {
        int width = 0;
        int height = 0;
        ImageList_GetIconSize(state.images, &width, &height);
        const auto image = state.selected == handle ? item.selected_image : item.image;
        ImageList_Draw(state.images, image, context, static_cast<int>(arrow.right),
                       static_cast<int>((row.top + row.bottom - height) / 2), ILD_TRANSPARENT);
    }
    row = tree_name(window, state, item, row);
    SetTextColor(context, ink);
    DrawTextW(context, item.text.c_str(), static_cast<int>(item.text.size()), &row,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
}

}  // namespace

RECT tree_arrow(const TreeItem& item, RECT row, UINT dpi) {
    row.left += scaled(kTreeSide, dpi) + item.depth * scaled(kIndent, dpi);
    row.right = row.left + scaled(kIndent, dpi);
    return row;
}

RECT tree_name(HWND window, TreeState& state, const TreeItem& item, RECT row) {
    const auto dpi = GetDpiForWindow(window);
    row.left = tree_arrow(item, row, dpi).right;
    if (state.images != nullptr) {
        int width = 0;
        int height = 0;
        ImageList_GetIconSize(state.images, &width, &height);
        row.left += width + scaled(kTreeSide, dpi);
    }
    row.right -= scaled(kTreeSide, dpi);
    return row;
}

void place_tree_label(HWND window, TreeState& state) {
    const auto* const item = state.items.find(state.label_item);
    const auto row = state.row_of(state.label_item);
    if (state.label == nullptr || item == nullptr || row < 0) return;
    const auto place = label_edit_place(
        window, tree_name(window, state, *item, state.rows.place(client_of(window), row)));
    SetWindowPos(state.label, nullptr, place.left, place.top, place.right - place.left,
                 place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void arrange_tree(HWND window, TreeState& state) {
    if (state.is_frozen) return;
    state.rows.has_bar = true;
    state.rows.height =
        line_height(window, state) + 2 * scaled(kTreeMargin, GetDpiForWindow(window));
    show_rows_from(window, state.rows, state.count(), state.rows.top);
    place_tree_label(window, state);
    repaint(window);
}

void repaint_tree_item(HWND window, TreeState& state, HTREEITEM item) {
    const auto row = state.row_of(item);
    if (row < 0) return;
    const auto place = state.rows.place(client_of(window), row);
    InvalidateRect(window, &place, TRUE);
}

void paint_tree(HWND window, TreeState& state) {
    const ControlPaint paint(window, state);
    FillRect(paint, &paint.client(), GetSysColorBrush(COLOR_WINDOW));
    RECT box{};
    GetClipBox(paint, &box);
    for (int i = state.rows.top; i < state.count(); ++i) {
        const auto row = state.rows.place(paint.client(), i);
        if (row.top >= box.bottom) break;
        if (row.bottom > box.top) paint_tree_item(window, state, paint, i, row);
    }
}

HTREEITEM tree_item_at(HWND window, TreeState& state, POINT point) {
    const auto client = client_of(window);
    if (PtInRect(&client, point) == 0) return nullptr;
    return state.at(state.rows.at(client, state.count(), static_cast<int>(point.y)));
}

}  // namespace tvutil2
