#include "tvutil2/platform/window/controls/edit_view.h"

#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {
namespace {

constexpr UINT kBlinkTime = 530;
// Then the caret stays, so that a window that nobody uses sleeps.
constexpr int kMostBlinks = 40;

int width_of(const RECT& rect) {
    return rect.right - rect.left;
}

}  // namespace

EditView::EditView(HWND window, EditState& state)
    : m_state(state), m_window(window), m_style(style_of(window)), m_dpi(GetDpiForWindow(window)) {
    const auto ex_style = static_cast<DWORD>(GetWindowLongW(window, GWL_EXSTYLE));
    m_font.is_right_to_left = (ex_style & WS_EX_RTLREADING) != 0;
    if ((ex_style & WS_EX_RIGHT) != 0 && (m_style & (ES_CENTER | ES_RIGHT)) == 0) {
        m_style |= ES_RIGHT;
    }
}

EditView::~EditView() {
    if (m_font.context == nullptr) return;
    SelectObject(m_font.context, m_font_before);
    ReleaseDC(m_window, m_font.context);
}

bool EditView::is_multiline() const {
    return has_style(ES_MULTILINE);
}
bool EditView::wraps() const {
    return is_multiline() && !has_style(ES_AUTOHSCROLL | WS_HSCROLL);
}
bool EditView::is_read_only() const {
    return has_style(ES_READONLY);
}

std::u16string_view EditView::shown() {
    if (m_state.password == 0) return m_state.text.text();
    m_state.mask.assign(m_state.text.size(), m_state.password);
    return m_state.mask;
}

RowFont& EditView::font() {
    if (m_font.context == nullptr) {
        m_font.context = GetDC(m_window);
        auto* const selected = m_state.font != nullptr ? static_cast<HGDIOBJ>(m_state.font)
                                                       : GetStockObject(DEFAULT_GUI_FONT);
        m_font_before = SelectObject(m_font.context, selected);
    }
    m_font.wrap_width = wraps() ? std::max(width_of(m_state.format), 1) : -1;
    return m_font;
}

void EditView::reset_format() {
    RECT client{};
    GetClientRect(m_window, &client);
    const auto side = scaled(3, m_dpi);
    const auto above = is_multiline() ? scaled(2, m_dpi) : 0;
    m_state.has_own_format = false;
    m_state.format = {client.left + side + m_state.left_margin, client.top + above,
                      client.right - side - m_state.right_margin, client.bottom - above};
    m_state.format.right = std::max(m_state.format.left, m_state.format.right);
    m_state.format.bottom = std::max(m_state.format.top, m_state.format.bottom);
}

void EditView::ready() {
    if (!m_state.is_laid_out) lay_out();
}

void EditView::lay_out() {
    TEXTMETRICW metrics{};
    GetTextMetricsW(font().context, &metrics);
    m_state.row_height = std::max<int>(metrics.tmHeight, 1);
    m_state.lines.reset(shown(), font(), !is_multiline());
    m_state.is_laid_out = true;
    m_state.goal_x = -1;
    scroll_to_row(static_cast<std::ptrdiff_t>(m_state.first_row));
    tell_scroll_bars();
    repaint(m_window);
}

void EditView::follow(const EditText::Change& change) {
    m_state.goal_x = -1;
    auto& lines = m_state.lines;
    const auto count = lines.count();
    lines.change(shown(), font(), change);
    const auto first = lines.row_of(change.at);
    if (lines.count() != count || wraps()) {
        repaint_from(first > 0 ? first - 1 : 0);
    } else {
        repaint_rows(first, lines.row_of(change.at + change.inserted));
    }
}

std::size_t EditView::rows_in_view() const {
    const auto height = m_state.format.bottom - m_state.format.top;
    return static_cast<std::size_t>(std::max<LONG>(height / m_state.row_height, 1));
}

int EditView::row_top(std::size_t row) const {
    const auto& format = m_state.format;
    if (!is_multiline()) {
        return format.top + (format.bottom - format.top - m_state.row_height) / 2;
    }
    const auto away = static_cast<std::int64_t>(row) - static_cast<std::int64_t>(m_state.first_row);
    return static_cast<int>(std::clamp<std::int64_t>(away * m_state.row_height, -100000, 100000)) +
           format.top;
}

int EditView::row_left(std::size_t row) {
    const auto& format = m_state.format;
    const auto sides = m_style & (ES_CENTER | ES_RIGHT);
    if (sides == 0) return format.left - m_state.scroll_x;
    const auto room = width_of(format) - m_state.lines.width_of(shown(), font(), row) - 1;
    if (room <= 0) return format.left - m_state.scroll_x;
    return format.left + (sides == ES_CENTER ? room / 2 : room);
}

std::size_t EditView::row_at(int y) {
    if (!is_multiline()) return 0;
    const auto away = y - m_state.format.top;
    const auto rows = away >= 0 ? away / m_state.row_height
                                : (away - m_state.row_height + 1) / m_state.row_height;
    const auto row = static_cast<std::int64_t>(m_state.first_row) + rows;
    const auto last = static_cast<std::int64_t>(m_state.lines.count()) - 1;
    return static_cast<std::size_t>(std::clamp<std::int64_t>(row, 0, last));
}

int EditView::x_in_row(std::size_t at) {
    return m_state.lines.x_of(shown(), font(), at);
}

POINT EditView::point_of(std::size_t at) {
    const auto row = m_state.lines.row_of(at);
    return {row_left(row) + x_in_row(at), row_top(row)};
}

std::size_t EditView::place_in_row(std::size_t row, int x) {
    return m_state.lines.place_at(shown(), font(), row, x);
}

std::size_t EditView::place_at(POINT point) {
    const auto row = row_at(point.y);
    return place_in_row(row, point.x - row_left(row));
}

bool EditView::fits(const std::u16string& text) {
    EditLines one;
    one.reset(text, font(), true);
    return one.width_of(text, font(), 0) < width_of(m_state.format);
}

void EditView::scroll_to_caret() {
    const auto row = m_state.lines.row_of(m_state.text.caret());
    const auto in_view = rows_in_view();
    if (row < m_state.first_row) {
        scroll_to_row(static_cast<std::ptrdiff_t>(row));
    } else if (row >= m_state.first_row + in_view) {
        scroll_to_row(static_cast<std::ptrdiff_t>(row + 1 - in_view));
    }
    const auto room = width_of(m_state.format) - 1;
    if (wraps() || room <= 0) return;
    const auto x = x_in_row(m_state.text.caret());
    auto to = m_state.scroll_x;
    if (x < to) to = std::max(x - room / 4, 0);
    if (x > to + room) to = x - room + room / 8;
    const auto width = m_state.lines.width_of(shown(), font(), row);
    // At the end of the one line there is no room for nothing.
    if (!is_multiline()) to = std::min(to, std::max(width - room, 0));
    scroll_to_x(to);
    tell_scroll_bars();
}

bool EditView::scroll_to_row(std::ptrdiff_t row) {
    const auto count = m_state.lines.count();
    const auto in_view = rows_in_view();
    const auto last = static_cast<std::ptrdiff_t>(count > in_view ? count - in_view : 0);
    const auto to = static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(row, 0, last));
    if (to == m_state.first_row) return false;
    m_state.first_row = to;
    tell_scroll_bars();
    repaint(m_window);
    return true;
}

void EditView::scroll_to_x(int x) {
    if (x == m_state.scroll_x) return;
    m_state.scroll_x = std::max(x, 0);
    repaint(m_window);
}

void EditView::tell_scroll_bars() {
    constexpr UINT kMask = SIF_RANGE | SIF_PAGE | SIF_POS | SIF_DISABLENOSCROLL;
    if (has_style(WS_VSCROLL)) {
        const auto rows = static_cast<int>(m_state.lines.count());
        const auto page = static_cast<int>(rows_in_view());
        const auto first = static_cast<int>(m_state.first_row);
        if (rows != m_state.told_rows || page != m_state.told_page || first != m_state.told_first) {
            m_state.told_rows = rows;
            m_state.told_page = page;
            m_state.told_first = first;
            const SCROLLINFO info{sizeof info, kMask, 0, rows - 1, static_cast<UINT>(page),
                                  first,       0};
            SetScrollInfo(m_window, SB_VERT, &info, TRUE);
        }
    }
    if (!has_style(WS_HSCROLL)) return;
    const auto room = std::max(width_of(m_state.format), 1);
    // Rows are measured when they come into view: the bar goes as far as the widest one so far.
    auto width = m_state.lines.widest();
    const auto end = std::min(m_state.first_row + rows_in_view(), m_state.lines.count());
    for (auto row = m_state.first_row; row < end; ++row) {
        width = std::max(width, m_state.lines.width_of(shown(), font(), row));
    }
    width += 2;
    if (width == m_state.told_width && room == m_state.told_room &&
        m_state.scroll_x == m_state.told_x) {
        return;
    }
    m_state.told_width = width;
    m_state.told_room = room;
    m_state.told_x = m_state.scroll_x;
    const SCROLLINFO info{sizeof info,      kMask, 0, width - 1, static_cast<UINT>(room),
                          m_state.scroll_x, 0};
    SetScrollInfo(m_window, SB_HORZ, &info, TRUE);
}

void EditView::repaint_rows(std::size_t first, std::size_t last) {
    RECT client{};
    GetClientRect(m_window, &client);
    const RECT part{client.left, row_top(first), client.right, row_top(last) + m_state.row_height};
    InvalidateRect(m_window, &part, TRUE);
}

void EditView::repaint_from(std::size_t first) {
    RECT part{};
    GetClientRect(m_window, &part);
    part.top = std::max<LONG>(part.top, row_top(first));
    InvalidateRect(m_window, &part, TRUE);
}

RECT EditView::caret_rect() {
    const auto at = point_of(m_state.text.caret());
    const auto width = std::max(scaled(1, m_dpi), 1);
    // A caret at the right edge still shows.
    const auto x =
        std::min<LONG>(at.x, std::max(m_state.format.left, m_state.format.right - width));
    return {x, at.y, x + width, at.y + m_state.row_height};
}

void EditView::repaint_caret() {
    const auto rect = caret_rect();
    InvalidateRect(m_window, &rect, TRUE);
}

void EditView::show_caret(bool has_focus) {
    m_state.caret_shows = true;
    m_state.blinks = 0;
    if (has_focus) {
        SetTimer(m_window, kCaretTimer, kBlinkTime, nullptr);
        tell_caret(m_window, caret_rect());
    } else {
        KillTimer(m_window, kCaretTimer);
    }
}

void EditView::blink() {
    m_state.caret_shows = !m_state.caret_shows;
    if (++m_state.blinks >= kMostBlinks && m_state.caret_shows) KillTimer(m_window, kCaretTimer);
    repaint_caret();
}

void EditView::select(std::size_t anchor, std::size_t caret, bool scrolls) {
    auto& text = m_state.text;
    const auto before = text.selection();
    if (anchor == text.anchor() && caret == text.caret() && !scrolls) return;
    repaint_caret();
    text.select(anchor, caret);
    const auto now = text.selection();
    if (!(before == now) && !(before.is_empty() && now.is_empty())) {
        auto& lines = m_state.lines;
        // What both have stays as it is.
        const auto first = before.start == now.start ? std::min(before.end, now.end)
                                                     : std::min(before.start, now.start);
        const auto last = before.end == now.end ? std::max(before.start, now.start)
                                                : std::max(before.end, now.end);
        repaint_rows(lines.row_of(first), lines.row_of(last));
    }
    if (scrolls) scroll_to_caret();
    repaint_caret();
    if (GetFocus() == m_window) show_caret(true);
}

}  // namespace tvutil2
