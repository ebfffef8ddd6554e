#include "tvutil2/platform/window/menus/menu_window.h"

#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {
namespace {

// In pixels at 96 dots an inch.
constexpr int kPopupEdge = 4;  // around all items
constexpr int kRowMargin = 6;  // above and below a text
constexpr int kGutter = 32;    // in front of the texts, for checks
constexpr int kBehind = 28;    // behind them, for arrows
constexpr int kShortcutGap = 24;
constexpr int kSeparator = 7;
constexpr UINT kTextFormat = DT_SINGLELINE | DT_VCENTER;

std::u16string_view label_of(const MenuItem& item) {
    return std::u16string_view(item.text).substr(0, item.text.find(u'\t'));
}
std::u16string_view shortcut_of(const MenuItem& item) {
    const auto tab = item.text.find(u'\t');
    return tab == std::u16string::npos ? std::u16string_view{}
                                       : std::u16string_view(item.text).substr(tab + 1);
}

// The size of all items together.
SIZE measure(HWND window, MenuWindowState& state) {
    auto* const context = GetDC(window);
    int shortcuts = 0;
    {
        const MenuFont font(context, state.dpi);
        TEXTMETRICW metrics{};
        GetTextMetricsW(context, &metrics);
        const int height = metrics.tmHeight + 2 * scaled(kRowMargin, state.dpi);
        int top = scaled(kPopupEdge, state.dpi);
        for (const auto& item : state.items) {
            state.tops.push_back(top);
            top += item.is_separator() ? scaled(kSeparator, state.dpi) : height;
            font.choose(item);
            state.text_width = std::max(state.text_width, menu_text_width(context, label_of(item)));
            shortcuts =
                std::max(shortcuts, menu_text_width(context, shortcut_of(item), DT_NOPREFIX));
        }
        state.tops.push_back(top);
    }
    ReleaseDC(window, context);
    const int gap = shortcuts > 0 ? scaled(kShortcutGap, state.dpi) : 0;
    const int width = 2 * scaled(kPopupEdge, state.dpi) + scaled(kGutter, state.dpi) +
                      state.text_width + gap + shortcuts + scaled(kBehind, state.dpi);
    return {width, state.tops.back() + scaled(kPopupEdge, state.dpi)};
}

// All of it where the person can see it.
RECT placed(SIZE size, const MenuAnchor& anchor) {
    const auto around = anchor.is_submenu ? anchor.beside
                                          : RECT{anchor.point.x, anchor.point.y, anchor.point.x + 1,
                                                 anchor.point.y + 1};
    const auto work = monitor_at(around).work;
    size.cx = std::min(size.cx, work.right - work.left);
    size.cy = std::min(size.cy, work.bottom - work.top);
    POINT corner = anchor.point;
    if ((anchor.flags & TPM_CENTERALIGN) != 0) corner.x -= size.cx / 2;
    if ((anchor.flags & TPM_RIGHTALIGN) != 0) corner.x -= size.cx;
    if ((anchor.flags & TPM_VCENTERALIGN) != 0) corner.y -= size.cy / 2;
    if ((anchor.flags & TPM_BOTTOMALIGN) != 0) corner.y -= size.cy;
    if (display_finds_room()) return {corner.x, corner.y, corner.x + size.cx, corner.y + size.cy};
    // Without room below it opens upwards, a submenu to the other side.
    if (corner.y + size.cy > work.bottom && !anchor.is_submenu &&
        anchor.point.y - size.cy >= work.top) {
        corner.y = anchor.point.y - size.cy;
    }
    if (anchor.is_submenu && corner.x + size.cx > work.right)
        corner.x = anchor.beside.left - size.cx;
    corner.x = std::clamp(corner.x, work.left, std::max(work.left, work.right - size.cx));
    corner.y = std::clamp(corner.y, work.top, std::max(work.top, work.bottom - size.cy));
    return {corner.x, corner.y, corner.x + size.cx, corner.y + size.cy};
}

void paint_item(HDC context, const MenuWindowState& state, std::size_t index, RECT row) {
    const auto& item = state.items[index];
    const auto dpi = state.dpi;
    if (item.is_separator()) {
        const RECT line{row.left, (row.top + row.bottom) / 2, row.right,
                        (row.top + row.bottom) / 2 + std::max(scaled(1, dpi), 1)};
        auto* const brush = CreateSolidBrush(theme().palette.divider);
        FillRect(context, &line, brush);
        DeleteObject(brush);
        return;
    }
    const bool is_selected = static_cast<int>(index) == state.selected;
    const bool is_plain = theme().mode != ThemeMode::high_contrast;
    auto ink = GetSysColor(item.is_disabled() ? COLOR_GRAYTEXT : COLOR_MENUTEXT);
    if (is_selected) {
        const auto fill = is_plain ? theme().palette.hot_row : GetSysColor(COLOR_HIGHLIGHT);
        draw_round_area(context, row, 4, fill);
        if (!is_plain && !item.is_disabled()) ink = GetSysColor(COLOR_HIGHLIGHTTEXT);
    }
    auto area = row;
    area.right = area.left + scaled(kGutter, dpi);
    if ((item.state & MFS_CHECKED) != 0) {
        const bool is_radio = (item.type & MFT_RADIOCHECK) != 0;
        draw_glyph(context, area, is_radio ? Glyph::bullet : Glyph::check, scaled(12, dpi), ink);
    }
    SetTextColor(context, ink);
    area.left = area.right;
    area.right = row.right;
    const auto label = label_of(item);
    DrawTextW(context, label.data(), static_cast<int>(label.size()), &area, kTextFormat);
    area.right = row.right - scaled(kBehind, dpi);
    const auto shortcut = shortcut_of(item);
    DrawTextW(context, shortcut.data(), static_cast<int>(shortcut.size()), &area,
              kTextFormat | DT_RIGHT | DT_NOPREFIX);
    if (item.submenu == nullptr) return;
    const RECT arrow{area.right, row.top, row.right, row.bottom};
    draw_glyph(context, arrow, Glyph::right, scaled(10, dpi), ink);
}

RECT row_of(const MenuWindowState& state, const RECT& client, std::size_t index) {
    const auto edge = scaled(kPopupEdge, state.dpi);
    return {client.left + edge, state.tops[index] - state.scrolled, client.right - edge,
            state.tops[index + 1] - state.scrolled};
}

void paint(HWND window, const MenuWindowState& state) {
    PAINTSTRUCT paint;
    auto* const context = BeginPaint(window, &paint);
    RECT client{};
    GetClientRect(window, &client);
    FillRect(context, &client, GetSysColorBrush(COLOR_MENU));
    {
        const MenuFont font(context, state.dpi);
        for (std::size_t i = 0; i < state.items.size(); ++i) {
            const auto row = row_of(state, client, i);
            if (row.bottom <= client.top || row.top >= client.bottom) continue;
            font.choose(state.items[i]);
            paint_item(context, state, i, row);
        }
    }
    auto* const frame = CreateSolidBrush(theme().palette.divider);
    FrameRect(context, &client, frame);
    DeleteObject(frame);
    EndPaint(window, &paint);
}

}  // namespace

MenuFont::MenuFont(HDC context, UINT dpi) : m_context(context) {
    auto description = interface_font(dpi);
    m_plain = CreateFontIndirectW(&description);
    description.lfWeight = FW_SEMIBOLD;
    m_bold = CreateFontIndirectW(&description);
    m_before = SelectObject(context, m_plain);
    SetBkMode(context, TRANSPARENT);
}

MenuFont::~MenuFont() {
    SelectObject(m_context, m_before);
    DeleteObject(m_plain);
    DeleteObject(m_bold);
}

void MenuFont::choose(const MenuItem& item) const {
    SelectObject(m_context, (item.state & MFS_DEFAULT) != 0 ? m_bold : m_plain);
}

int menu_text_width(HDC context, std::u16string_view text, UINT format) {
    RECT area{};
    DrawTextW(context, text.data(), static_cast<int>(text.size()), &area,
              format | DT_SINGLELINE | DT_CALCRECT);
    return area.right;
}

bool MenuWindowState::can_select(int index) const {
    return index >= 0 && static_cast<std::size_t>(index) < items.size() &&
           !items[static_cast<std::size_t>(index)].is_separator();
}

int MenuWindowState::next(int from, int step) const {
    const auto count = static_cast<int>(items.size());
    auto at = from < 0 && step < 0 ? count : from;
    for (int left = count; left > 0; --left) {
        at = (at + step + count) % count;
        if (can_select(at)) return at;
    }
    return -1;
}

int MenuWindowState::item_at(int y) const {
    const auto found = std::ranges::upper_bound(tops, y + scrolled);
    const auto index = static_cast<int>(found - tops.begin()) - 1;
    return can_select(index) ? index : -1;
}

HWND open_menu_window(HMENU menu, HWND owner, const MenuAnchor& anchor) {
    auto* const window =
        CreateWindowExW(WS_EX_TOPMOST | WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, u"#32768", u"",
                        WS_POPUP | WS_CLIPSIBLINGS, anchor.point.x, anchor.point.y, 1, 1,
                        GetAncestor(owner, GA_ROOT), nullptr, nullptr, nullptr);
    const auto state = window != nullptr ? state_of<MenuWindowState>(window) : nullptr;
    if (!state) return nullptr;
    state->menu = menu;
    state->items = items_of(menu);
    state->dpi = GetDpiForWindow(owner);
    const auto place = placed(measure(window, *state), anchor);
    const RECT at_point{anchor.point.x, anchor.point.y, anchor.point.x, anchor.point.y};
    set_popup_base(window, IsRectEmpty(&anchor.beside) != 0 ? at_point : anchor.beside);
    SetWindowPos(window, HWND_TOPMOST, place.left, place.top, place.right - place.left,
                 place.bottom - place.top, SWP_NOACTIVATE | SWP_SHOWWINDOW);
    return IsWindow(window) ? window : nullptr;
}

void select_menu_item(HWND window, int index) {
    const auto state = state_of<MenuWindowState>(window);
    if (!state || state->selected == index) return;
    state->selected = index;
    RECT client{};
    GetClientRect(window, &client);
    if (index >= 0) {
        const auto row = row_of(*state, client, static_cast<std::size_t>(index));
        if (row.top < client.top) state->scrolled -= client.top - row.top;
        if (row.bottom > client.bottom) state->scrolled += row.bottom - client.bottom;
    }
    InvalidateRect(window, nullptr, FALSE);
}

RECT menu_item_rect(HWND window, int index) {
    const auto state = state_of<MenuWindowState>(window);
    RECT client{};
    GetClientRect(window, &client);
    if (!state || !state->can_select(index)) return {};
    auto row = row_of(*state, client, static_cast<std::size_t>(index));
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&row), 2);
    return row;
}

void scroll_menu(HWND window, int by) {
    const auto state = state_of<MenuWindowState>(window);
    if (!state) return;
    RECT client{};
    GetClientRect(window, &client);
    const auto most = state->tops.back() + scaled(kPopupEdge, state->dpi) - client.bottom;
    state->scrolled = std::clamp(state->scrolled + by, 0, std::max<int>(most, 0));
    InvalidateRect(window, nullptr, FALSE);
}

LRESULT menu_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const auto state = state_of<MenuWindowState>(window);
    switch (message) {
        case WM_PAINT:
            if (state && !state->tops.empty()) {
                paint(window, *state);
                return 0;
            }
            break;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_MOUSEACTIVATE:
            return MA_NOACTIVATE;
        default:
            break;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace tvutil2
