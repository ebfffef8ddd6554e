#include "tvutil2/platform/window/screen.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/accessibility.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/input.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/top_level.h"
#include "tvutil2/platform/window/update.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_icons.h"

#include <algorithm>
#include <atomic>
#include <mutex>

namespace tvutil2 {
namespace {

std::atomic<Driver*> g_driver{nullptr};
std::atomic<bool> g_is_chosen{false};  // or is about to be
std::atomic<bool> g_is_parents{false};

// A child after a fork has no windows, and its parent's connection is none of its own; one that was
// only half made least of all. No lock: a driver may start programs while it is made.
const ForkMember g_fork_safe(
    ForkRank::area, nullptr, [](void* /*what*/) {}, [](void* /*what*/) {},
    [](void* /*what*/) {
        g_driver = nullptr;
        g_is_parents = g_is_chosen.load();
    });

// With the lock of the tree.
Shown description_of(const Window& window) {
    const auto corner = corner_of(window);
    const auto area = area_of(window);
    const auto frame = frame_thickness(window.style, window.ex_style, window.dpi);
    return {window.hwnd(),
            window.owner != nullptr ? window.owner->hwnd() : nullptr,
            {corner.x, corner.y, corner.x + area.right, corner.y + area.bottom},
            window.place_number,
            {frame.left, frame.top, std::max(frame.left, area.right - frame.right),
             std::max(frame.top, area.bottom - frame.bottom)},
            window.least,
            window.base,
            window.style,
            window.ex_style,
            window.dpi,
            window.text,
            (window.style & WS_DISABLED) == 0,
            {}};
}

// With the lock of the tree.
void count_place(Window& window) {
    const auto corner = corner_of(window);
    const auto area = area_of(window);
    const RECT place{corner.x, corner.y, corner.x + area.right, corner.y + area.bottom};
    if (EqualRect(&place, &window.told_place) != 0) return;
    window.told_place = place;
    ++window.place_number;
}

// Not what the display said before it knew what the program wants by now.
void follow_place(const RawInput& input) {
    const auto& place = input.place;
    {
        const TreeLock tree;
        auto* const record = tree.table.find(input.window);
        if (record == nullptr || record->place_number != input.place_number) return;
        record->told_place = place;
    }
    SetWindowPos(input.window, nullptr, place.left, place.top, place.right - place.left,
                 place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void forget_top_level(Window& window) {
    forget_updates(window);
    window.top.reset();
}

void follow_scale(const RawInput& input) {
    RECT place{};
    UINT before = 0;
    const auto now = held_dpi(input.dpi);
    {
        const TreeLock tree;
        auto* const record = tree.table.find(input.window);
        if (record == nullptr || input.dpi == 0 || record->dpi == now) return;
        before = std::exchange(record->dpi, now);
        place = record->rect;
        if (record->top != nullptr) invalidate_all(*record);
    }
    const auto scaled = [&](LONG length) {
        return MulDiv(length, static_cast<int>(now), static_cast<int>(before));
    };
    RECT wanted{place.left, place.top, place.left + scaled(place.right - place.left),
                place.top + scaled(place.bottom - place.top)};
    const auto dpi = static_cast<WORD>(now);
    SendMessageW(input.window, WM_DPICHANGED, MAKEWPARAM(dpi, dpi),
                 reinterpret_cast<LPARAM>(&wanted));
}

void follow_form(const RawInput& input) {
    const bool is_restored = (input.form & (WS_MINIMIZE | WS_MAXIMIZE)) == 0;
    if (is_restored) {
        ShowWindow(input.window, SW_RESTORE);
    } else {
        ShowWindow(input.window,
                   (input.form & WS_MINIMIZE) != 0 ? SW_SHOWMINNOACTIVE : SW_MAXIMIZE);
    }
}

void follow_look(HWND window) {
    SendMessageW(window, WM_THEMECHANGED, 0, 0);
    RedrawWindow(window, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN);
}

}  // namespace

// Never destroyed: threads with windows end behind the static objects.
Driver* display() {
    static std::once_flag once;
    if (g_is_parents) return nullptr;
    std::call_once(once, [] {
        g_is_chosen = true;
        g_driver = make_driver(put_input).release();
    });
    return g_driver;
}

Driver* loaded_display() {
    return g_driver;
}

void tell_display(HWND window, bool activates) {
    bool is_visible = false;
    bool is_there = false;
    {
        const TreeLock tree;
        const auto* const record = tree.table.find(window);
        if (record == nullptr || record->parent != &tree.table.root()) return;
        is_visible = (record->style & WS_VISIBLE) != 0;
        is_there = record->top != nullptr;
    }
    if (!is_visible && !is_there) return;
    auto* const driver = display();
    if (driver == nullptr) return;
    Shown shown;
    WindowIcons icons{};
    {
        const TreeLock tree;
        auto* const record = tree.table.find(window);
        if (record == nullptr) return;
        if (!is_visible) {
            forget_top_level(*record);
        } else if (!is_there) {
            record->top = std::make_shared<TopLevel>();
            invalidate_all(*record);
        }
        count_place(*record);
        shown = description_of(*record);
        icons = icons_of(*record);
    }
    shown.icons = pictures_of(icons);
    if (is_visible) {
        driver->show(shown, activates);
    } else {
        driver->hide(window);
    }
}

void set_popup_base(HWND popup, const RECT& base) {
    const TreeLock tree;
    auto* const record = tree.table.find(popup);
    if (record != nullptr) record->base = base;
}

bool display_finds_room() {
    const auto* const driver = loaded_display();
    return driver != nullptr && driver->finds_room();
}

bool is_on_display(HWND window) {
    const TreeLock tree;
    const auto* const record = tree.table.find(window);
    return record != nullptr && is_on_display(*record);
}

void leave_display(HWND window) {
    {
        const TreeLock tree;
        auto* const record = tree.table.find(window);
        if (record == nullptr || record->top == nullptr) return;
        forget_top_level(*record);
    }
    if (auto* const driver = loaded_display()) driver->hide(window);
}

void tell_caret(HWND window, const RECT& place) {
    auto* const driver = loaded_display();
    if (driver == nullptr) return;
    POINT corner{place.left, place.top};
    ClientToScreen(window, &corner);
    driver->set_caret(GetAncestor(window, GA_ROOT),
                      {corner.x, corner.y, corner.x + (place.right - place.left),
                       corner.y + (place.bottom - place.top)});
}

void tell_content(HWND window) {
    auto* const driver = loaded_display();
    if (driver != nullptr && driver->wants_descriptions()) {
        driver->describe(window, accessible_tree(window));
    }
}

void follow_desktop(const RawInput& input) {
    switch (input.kind) {
        case RawInput::Kind::place:
            follow_place(input);
            break;
        case RawInput::Kind::form:
            follow_form(input);
            break;
        case RawInput::Kind::scale:
            follow_scale(input);
            break;
        case RawInput::Kind::look:
            follow_look(input.window);
            break;
        case RawInput::Kind::focus:
            if (IsWindowVisible(input.control) != 0) SetFocus(input.control);
            break;
        case RawInput::Kind::fill:
            fill_control(input.control, input.text, input.delta);
            break;
        case RawInput::Kind::describe:
            tell_content(input.window);
            break;
        case RawInput::Kind::lost:
            leave_display(input.window);
            PostMessageW(input.window, WM_CLOSE, 0, 0);
            break;
        default:
            break;
    }
}

}  // namespace tvutil2
