#include "tvutil2/platform/window/common_dialogs/file_part.h"

#include "tvutil2/platform/window/common_dialogs/file_layout.h"
#include "tvutil2/platform/window/common_dialogs/open_file_hook.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {
namespace {

SIZE size_of(HWND window) {
    RECT place{};
    if (!GetWindowRect(window, &place)) return {};
    return {place.right - place.left, place.bottom - place.top};
}

RECT place_in(HWND part, HWND control) {
    RECT place{};
    GetWindowRect(control, &place);
    MapWindowPoints(nullptr, part, reinterpret_cast<POINT*>(&place), 2);
    return place;
}

void move(HWND window, POINT to, SIZE size, UINT flags) {
    SetWindowPos(window, HWND_BOTTOM, to.x, to.y, size.cx, size.cy, SWP_NOACTIVATE | flags);
}

// The part's own controls follow the sides that they are at.
void move_controls(HWND part, const RECT& own, SIZE growth) {
    for (auto* control = GetWindow(part, GW_CHILD); control != nullptr;
         control = GetWindow(control, GW_HWNDNEXT)) {
        const auto place = place_in(part, control);
        const POINT to{place.left + (place.left >= own.right ? growth.cx : 0),
                       place.top + (place.top >= own.bottom ? growth.cy : 0)};
        move(control, to, {}, SWP_NOSIZE | SWP_NOZORDER);
    }
}

}  // namespace

PartRoom room_of_part(HWND dialog) {
    auto* const part = GetDlgItem(dialog, kFilePart);
    if (part == nullptr) return {};
    const auto size = size_of(part);
    auto* const holder = GetDlgItem(part, stc32);
    if (holder == nullptr) return {{0, 0, 0, size.cy}, size.cx};
    const auto own = place_in(part, holder);
    const auto side = [](LONG length) { return std::max<LONG>(length, 0); };
    return {{side(own.left), side(own.top), side(size.cx - own.right), side(size.cy - own.bottom)},
            0};
}

void place_part(HWND dialog) {
    auto* const part = GetDlgItem(dialog, kFilePart);
    if (part == nullptr) return;
    RECT client{};
    GetClientRect(dialog, &client);
    const auto size = size_of(part);
    auto* const holder = GetDlgItem(part, stc32);
    if (holder == nullptr) return move(part, {0, client.bottom - size.cy}, {}, SWP_NOSIZE);
    const SIZE growth{client.right - size.cx, client.bottom - size.cy};
    const auto own = place_in(part, holder);
    move_controls(part, own, growth);
    move(holder, {own.left, own.top},
         {own.right - own.left + growth.cx, own.bottom - own.top + growth.cy}, SWP_NOZORDER);
    ShowWindow(holder, SW_HIDE);
    move(part, {}, {client.right, client.bottom}, 0);
}

void cut_part_to_monitor(HWND part) {
    RECT place{};
    if (!GetWindowRect(part, &place)) return;
    const auto work = monitor_at(place).work;
    const SIZE most{(work.right - work.left) * 9 / 10, (work.bottom - work.top) / 3};
    const auto size = size_of(part);
    auto* const holder = GetDlgItem(part, stc32);
    if (holder == nullptr) {
        return move(part, {}, {std::min(size.cx, most.cx), std::min(size.cy, most.cy)},
                    SWP_NOMOVE | SWP_NOZORDER);
    }
    // Each side by itself.
    const auto own = place_in(part, holder);
    const auto left = std::clamp<LONG>(own.left, 0, most.cx / 3);
    const auto top = std::clamp<LONG>(own.top, 0, most.cy / 2);
    move(holder, {left, top}, {own.right - own.left, own.bottom - own.top}, SWP_NOZORDER);
    move(part, {},
         {own.right - own.left + left + std::clamp<LONG>(size.cx - own.right, 0, most.cx / 3),
          own.bottom - own.top + top + std::clamp<LONG>(size.cy - own.bottom, 0, most.cy / 2)},
         SWP_NOMOVE | SWP_NOZORDER);
}

}  // namespace tvutil2
