#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/window/controls/list_view_state.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

// In pixels at 96 dots an inch.
constexpr int kCellMargin = 4;
constexpr int kCellSide = 8;
constexpr int kGap = 4;
constexpr int kCellWidth = 96;
constexpr int kEdge = 4;
constexpr int kWidestColumn = 2000;

constexpr UINT kTextFormat = DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS;

SIZE size_of_images(HIMAGELIST images) {
    int width = 0;
    int height = 0;
    if (images != nullptr) ImageList_GetIconSize(images, &width, &height);
    return {width, height};
}

UINT side_of(int format) {
    return format == LVCFMT_RIGHT ? DT_RIGHT : format == LVCFMT_CENTER ? DT_CENTER : DT_LEFT;
}

}  // namespace

ListViewView::ListViewView(HWND window, ListViewState& state)
    : m_window(window), m_state(state), m_style(style_of(window)), m_dpi(GetDpiForWindow(window)) {}

bool ListViewView::has_header() const {
    return (m_style & LVS_TYPEMASK) == LVS_REPORT && !has_style(LVS_NOCOLUMNHEADER);
}

RECT ListViewView::client() const {
    RECT client{};
    GetClientRect(m_window, &client);
    return client;
}

int ListViewView::columns_width() const {
    int width = 0;
    for (const auto& each : m_state.columns) width += each.width;
    return width;
}

int ListViewView::row_count() const {
    return shows_icons() ? (m_state.count() + m_state.per_row - 1) / m_state.per_row
                         : m_state.count();
}

void ListViewView::arrange() {
    const auto line = line_height(m_window, m_state);
    const auto margin = scaled(kCellMargin, m_dpi);
    m_state.rows.has_bar = true;
    if (shows_icons()) {
        const auto images = size_of_images(m_state.large);
        m_state.cell_width = std::max<int>(scaled(kCellWidth, m_dpi), images.cx + 2 * margin);
        const auto area = client();
        m_state.per_row = std::max<int>((area.right - area.left) / m_state.cell_width, 1);
        m_state.rows.height = images.cy + line + 4 * margin;
        m_state.rows.above = 0;
    } else {
        m_state.per_row = 1;
        m_state.rows.height =
            std::max<int>(line + 2 * margin, size_of_images(m_state.small).cy + scaled(2, m_dpi));
        m_state.rows.above = has_header() ? line + 2 * margin : 0;
    }
    show_rows_from(m_window, m_state.rows, row_count(), m_state.rows.top);
    place_list_label(m_window, m_state);
    scroll_to_x(m_state.scroll_x);
    repaint(m_window);
}

void ListViewView::scroll_to_x(int x) {
    const auto area = client();
    const auto width = shows_icons() ? 0 : columns_width();
    const auto room = std::max<int>(area.right - area.left, 1);
    const auto to = std::clamp(x, 0, std::max(width - room, 0));
    if (std::exchange(m_state.scroll_x, to) != to) repaint(m_window);
    const SCROLLINFO info{sizeof info,
                          SIF_RANGE | SIF_PAGE | SIF_POS,
                          0,
                          std::max(width - 1, 0),
                          static_cast<UINT>(room),
                          to,
                          0};
    SetScrollInfo(m_window, SB_HORZ, &info, TRUE);
}

std::u16string ListViewView::text_of_item(int index, int column) const {
    if (!has_style(LVS_OWNERDATA)) {
        if (static_cast<std::size_t>(index) >= m_state.items.size()) return {};
        const auto& texts = m_state.items[static_cast<std::size_t>(index)].texts;
        return static_cast<std::size_t>(column) < texts.size()
                   ? texts[static_cast<std::size_t>(column)]
                   : std::u16string{};
    }
    char16_t text[260] = {};
    NMLVDISPINFOW asked{};
    asked.item = {LVIF_TEXT, index, column, 0, 0, text, 260, 0, 0};
    notify_parent_of(m_window, asked.hdr, LVN_GETDISPINFOW);
    // The owner fills the buffer, or names a text of its own.
    return asked.item.pszText != nullptr ? asked.item.pszText : u"";
}

int ListViewView::image_of(int index) const {
    if (!has_style(LVS_OWNERDATA)) return m_state.items[static_cast<std::size_t>(index)].image;
    NMLVDISPINFOW asked{};
    asked.item.mask = LVIF_IMAGE;
    asked.item.iItem = index;
    notify_parent_of(m_window, asked.hdr, LVN_GETDISPINFOW);
    return asked.item.iImage;
}

RECT ListViewView::place_of(int index) const {
    const auto area = client();
    auto place = m_state.rows.place(area, index / m_state.per_row);
    if (shows_icons()) {
        place.left += m_state.cell_width * (index % m_state.per_row);
        place.right = place.left + m_state.cell_width;
    } else {
        place.left -= m_state.scroll_x;
        if (!m_state.columns.empty()) place.right = place.left + columns_width();
    }
    return place;
}

// Of a row's.
RECT ListViewView::name_place(int index) const {
    auto place = place_of(index);
    if (!m_state.columns.empty()) place.right = place.left + m_state.columns[0].width;
    InflateRect(&place, -scaled(kCellSide, m_dpi), 0);
    if (m_state.small != nullptr) {
        place.left += size_of_images(m_state.small).cx + scaled(kGap, m_dpi);
    }
    return place;
}

int ListViewView::item_at(POINT point) const {
    const auto area = client();
    if (PtInRect(&area, point) == 0) return -1;
    const auto row = m_state.rows.at(area, row_count(), static_cast<int>(point.y));
    if (row < 0) return -1;
    if (!shows_icons()) {
        const auto place = place_of(row);
        return point.x < place.right ? row : -1;
    }
    const auto column = static_cast<int>(point.x) / m_state.cell_width;
    const auto index = row * m_state.per_row + column;
    return column < m_state.per_row && m_state.has(index) ? index : -1;
}

int ListViewView::column_at(POINT point, bool& is_edge) const {
    is_edge = false;
    if (!has_header() || point.y < 0 || point.y >= m_state.rows.above) return -1;
    const auto reach = scaled(kEdge, m_dpi);
    int right = -m_state.scroll_x;
    for (std::size_t i = 0; i < m_state.columns.size(); ++i) {
        right += m_state.columns[i].width;
        if (point.x >= right + reach) continue;
        is_edge = point.x >= right - reach;
        return static_cast<int>(i);
    }
    return -1;
}

// Of the texts that show.
int ListViewView::width_for(int column) const {
    auto* const context = GetDC(m_window);
    auto* const font = m_state.font != nullptr ? static_cast<HGDIOBJ>(m_state.font)
                                               : GetStockObject(DEFAULT_GUI_FONT);
    auto* const before = SelectObject(context, font);
    const auto measured = [&](const std::u16string& text) {
        SIZE size{};
        GetTextExtentPoint32W(context, text.c_str(), static_cast<int>(text.size()), &size);
        return static_cast<int>(size.cx);
    };
    int width = measured(m_state.columns[static_cast<std::size_t>(column)].title);
    const auto end =
        std::min(m_state.count(), m_state.rows.top + m_state.rows.in_view(client()) + 1);
    for (int i = m_state.rows.top; i < end; ++i) {
        width = std::max(width, measured(text_of_item(i, column)));
    }
    SelectObject(context, before);
    ReleaseDC(m_window, context);
    const auto image = column == 0 && m_state.small != nullptr
                           ? size_of_images(m_state.small).cx + scaled(kGap, m_dpi)
                           : 0;
    return std::min<int>(width + image + 2 * scaled(kCellSide, m_dpi),
                         scaled(kWidestColumn, m_dpi));
}

void ListViewView::show(int index) {
    if (!m_state.has(index)) return;
    show_rows_from(m_window, m_state.rows, row_count(),
                   m_state.rows.top_for(client(), index / m_state.per_row));
}

void ListViewView::repaint_item(int index) const {
    if (!m_state.has(index)) return;
    const auto place = place_of(index);
    InvalidateRect(m_window, &place, TRUE);
}

COLORREF ListViewView::paint_band(HDC context, int index, RECT band) const {
    const bool has_focus = GetFocus() == m_window;
    const auto& palette = theme().palette;
    const bool is_disabled = has_style(WS_DISABLED);
    auto ink = GetSysColor(is_disabled ? COLOR_GRAYTEXT : COLOR_WINDOWTEXT);
    InflateRect(&band, -scaled(2, m_dpi), -scaled(1, m_dpi));
    const bool shows = has_focus || has_style(LVS_SHOWSELALWAYS);
    if (m_state.selected[static_cast<std::size_t>(index)] && shows) {
        draw_round_area(context, band, 3,
                        has_focus ? GetSysColor(COLOR_HIGHLIGHT) : palette.quiet_row);
        if (has_focus) ink = GetSysColor(COLOR_HIGHLIGHTTEXT);
    } else if (m_state.hot == index && !is_disabled) {
        draw_round_area(context, band, 3, palette.hot_row);
    }
    if (has_focus && m_state.focused == index && !has_style(LVS_SINGLESEL)) {
        draw_focus_ring(context, band);
    }
    return ink;
}

std::vector<std::u16string> ListViewView::texts_of_row(int index) const {
    std::vector<std::u16string> texts(std::max<std::size_t>(m_state.columns.size(), 1));
    for (std::size_t i = 0; i < texts.size(); ++i) {
        texts[i] = text_of_item(index, static_cast<int>(i));
    }
    return texts;
}

// A text that stands alone in its row, like a note that nothing is there, has all of its room.
void ListViewView::paint_row(HDC context, int index) {
    auto row = place_of(index);
    SetTextColor(context, paint_band(context, index, row));
    const auto side = scaled(kCellSide, m_dpi);
    const auto images = size_of_images(m_state.small);
    const auto texts = texts_of_row(index);
    const bool is_alone = std::all_of(texts.begin() + 1, texts.end(),
                                      [](const std::u16string& text) { return text.empty(); });
    auto left = row.left;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const auto right = is_alone ? row.right : left + m_state.columns[i].width;
        RECT cell{left + side, row.top, right - side, row.bottom};
        left = right;
        if (i == 0 && m_state.small != nullptr) {
            ImageList_Draw(m_state.small, image_of(index), context, static_cast<int>(cell.left),
                           static_cast<int>((row.top + row.bottom - images.cy) / 2),
                           ILD_TRANSPARENT);
            cell.left += images.cx + scaled(kGap, m_dpi);
        }
        if (cell.left >= cell.right || texts[i].empty()) continue;
        const auto format = m_state.columns.empty() ? LVCFMT_LEFT : m_state.columns[i].format;
        DrawTextW(context, texts[i].c_str(), static_cast<int>(texts[i].size()), &cell,
                  kTextFormat | side_of(format));
    }
}

void ListViewView::paint_icon(HDC context, int index) {
    auto cell = place_of(index);
    SetTextColor(context, paint_band(context, index, cell));
    const auto margin = scaled(kCellMargin, m_dpi);
    const auto images = size_of_images(m_state.large);
    if (m_state.large != nullptr) {
        ImageList_Draw(m_state.large, image_of(index), context,
                       static_cast<int>((cell.left + cell.right - images.cx) / 2),
                       static_cast<int>(cell.top) + margin, ILD_TRANSPARENT);
    }
    cell.top += images.cy + 2 * margin;
    InflateRect(&cell, -margin, 0);
    const auto text = text_of_item(index, 0);
    DrawTextW(context, text.c_str(), static_cast<int>(text.size()), &cell, kTextFormat | DT_CENTER);
}

void ListViewView::paint_header(HDC context) const {
    auto area = client();
    area.bottom = m_state.rows.above;
    FillRect(context, &area, GetSysColorBrush(COLOR_WINDOW));
    auto* const brush = CreateSolidBrush(theme().palette.divider);
    const auto line = std::max(scaled(1, m_dpi), 1);
    const auto side = scaled(kCellSide, m_dpi);
    SetTextColor(context, GetSysColor(has_style(WS_DISABLED) ? COLOR_GRAYTEXT : COLOR_WINDOWTEXT));
    LONG left = -m_state.scroll_x;
    for (std::size_t i = 0; i < m_state.columns.size(); ++i) {
        const auto& column = m_state.columns[i];
        RECT cell{left, area.top, left + column.width, area.bottom};
        left = cell.right;
        if (m_state.pressed_column == static_cast<int>(i)) {
            draw_round_area(context, cell, 3, theme().palette.hot_row);
        }
        // Beside the border it would be a second one.
        if (cell.right < area.right - scaled(kEdge, m_dpi)) {
            const RECT edge{cell.right - line, cell.top + side / 2, cell.right,
                            cell.bottom - side / 2};
            FillRect(context, &edge, brush);
        }
        InflateRect(&cell, -side, 0);
        DrawTextW(context, column.title.c_str(), static_cast<int>(column.title.size()), &cell,
                  kTextFormat | side_of(column.format));
    }
    const RECT below{area.left, area.bottom - line, area.right, area.bottom};
    FillRect(context, &below, brush);
    DeleteObject(brush);
}

void ListViewView::paint() {
    const ControlPaint paint(m_window, m_state);
    FillRect(paint, &paint.client(), GetSysColorBrush(COLOR_WINDOW));
    RECT box{};
    GetClipBox(paint, &box);
    const auto saved = SaveDC(paint);
    IntersectClipRect(paint, 0, m_state.rows.above, paint.client().right, paint.client().bottom);
    for (int i = m_state.rows.top * m_state.per_row; i < m_state.count(); ++i) {
        const auto place = place_of(i);
        if (place.top >= box.bottom) break;
        if (place.bottom <= box.top) continue;
        if (shows_icons()) {
            paint_icon(paint, i);
        } else {
            paint_row(paint, i);
        }
    }
    RestoreDC(paint, saved);
    if (has_header() && box.top < m_state.rows.above) paint_header(paint);
}

}  // namespace tvutil2
