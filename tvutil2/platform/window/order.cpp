// Which window stands in front of which.
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/window_states.h"

namespace tvutil2 {
namespace {

bool is_topmost(const Window& window) {
    return (window.ex_style & WS_EX_TOPMOST) != 0;
}

// The sibling that a window in front of all others of its kind stands behind; null for none.
Window* last_topmost(Window& window) {
    Window* last = nullptr;
    if (!is_top_level(window) || is_topmost(window)) return last;
    for (auto* each = window.parent->first_child; each != nullptr && is_topmost(*each);
         each = each->next) {
        last = each;
    }
    return last;
}

bool place_behind(WindowTable& table, Window& window, Window* sibling) {
    if (window.previous == sibling) return false;
    auto& parent = *window.parent;
    table.unlink(window);
    if (sibling == nullptr) {
        table.link_first(parent, window);
    } else {
        table.link_behind(*sibling, window);
    }
    return true;
}

bool is_owned_by(const Window& window, const Window& owner) {
    const auto* up = window.owner;
    while (up != nullptr && up != &owner) up = up->owner;
    return up != nullptr;
}

// What the window owns, and what it hides behind, comes in front of it in the order it has.
void lift_owned(WindowTable& table, Window& window) {
    for (auto* each = window.next; each != nullptr;) {
        auto* const next = each->next;
        if (each->owner != nullptr && is_owned_by(*each, window)) {
            place_behind(table, *each, window.previous);
        }
        each = next;
    }
}

// A window never hides behind its owner.
bool stay_before_owner(WindowTable& table, Window& window) {
    const auto* const owner = window.owner;
    if (owner == nullptr || owner->parent != window.parent) return false;
    const auto* each = window.previous;
    while (each != nullptr && each != owner) each = each->previous;
    return each != nullptr && place_behind(table, window, owner->previous);
}

bool to_front(WindowTable& table, Window& window) {
    bool changes = false;
    if (window.owner != nullptr && window.owner->parent == window.parent &&
        is_topmost(*window.owner) == is_topmost(window)) {
        changes = to_front(table, *window.owner);
    }
    changes |= place_behind(table, window, last_topmost(window));
    lift_owned(table, window);
    return changes;
}

}  // namespace

bool reorder(WindowTable& table, Window& window, HWND after) {
    if (after == HWND_TOPMOST || after == HWND_NOTOPMOST) {
        if (!is_top_level(window)) return to_front(table, window);
        const bool was = is_topmost(window);
        if (after == HWND_NOTOPMOST && !was) return false;
        window.ex_style =
            (window.ex_style & ~WS_EX_TOPMOST) | (after == HWND_TOPMOST ? WS_EX_TOPMOST : 0U);
        return to_front(table, window) || is_topmost(window) != was;
    }
    if (after == HWND_TOP) return to_front(table, window);
    auto* sibling = after == HWND_BOTTOM ? window.parent->last_child : table.find(after);
    if (sibling == nullptr || sibling == &window || sibling->parent != window.parent) return false;
    if (is_top_level(window) && !is_topmost(window) && is_topmost(*sibling)) {
        sibling = last_topmost(window);
    }
    if (after == HWND_BOTTOM) window.ex_style &= ~WS_EX_TOPMOST;
    const auto* const before = window.next;
    place_behind(table, window, sibling);
    if (is_top_level(window)) {
        stay_before_owner(table, window);
        lift_owned(table, window);
    }
    return window.next != before;
}

}  // namespace tvutil2
