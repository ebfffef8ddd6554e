#include "tvutil2/platform/window/update.h"

#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/thread_queue.h"
#include "tvutil2/platform/window/top_level.h"

namespace tvutil2 {
namespace {

constexpr UINT kRedrawWidth = CS_HREDRAW;
constexpr UINT kRedrawHeight = CS_VREDRAW;

bool is_drawn(const Window& window) {
    return (window.style & (WS_VISIBLE | WS_MINIMIZE)) == WS_VISIBLE && !window.is_frozen;
}

bool is_out_of_date(const Window& window) {
    return !window.update.is_empty() || window.frame_is_old;
}

// Keeps the count of the window's thread, which wakes up for it.
void settle(Window& window) {
    const bool is = is_out_of_date(window);
    if (is == window.is_counted) return;
    window.is_counted = is;
    auto* const queue = window.queue.load(std::memory_order_relaxed);
    queue->m_out_of_date += is ? 1 : -1;
    if (!is) return;
    ++WindowTable::instance().changes;
    queue->tell(ThreadQueue::painting);
}

// The place of a child in its parent, from the parent's corner.
RECT place_in_parent(const Window& child, const Window& parent) {
    return moved(child.rect, {parent.client.left, parent.client.top});
}

// Takes what is drawn of a row of siblings out of a part of their parent. Together: one by one, a
// thousand windows would be taken out of a thousand pieces.
void subtract_windows(Region& part, const Window& parent, const Window* first,
                      Window* Window::*next) {
    std::vector<RECT> places;
    for (const auto* each = first; each != nullptr; each = each->*next) {
        if (!is_drawn(*each)) continue;
        const auto place = place_in_parent(*each, parent);
        if (!is_empty(common_part(place, part.bounds()))) places.push_back(place);
    }
    part.subtract(Region::of(places));
}

void invalidate_children(Window& window, const Region& part, bool erase, Children children) {
    for (auto* child = window.first_child; child != nullptr; child = child->next) {
        if (!is_drawn(*child)) continue;
        const auto place = place_in_parent(*child, window);
        if (!part.touches(place)) continue;
        auto inside = part;
        inside.intersect(place);
        inside.offset(-place.left, -place.top);
        invalidate(*child, inside, erase, true, children);
    }
}

}  // namespace

bool is_on_display(const Window& window) {
    const auto* each = &window;
    for (; is_drawn(*each); each = each->parent) {
        if (is_top_level(*each)) return each->top != nullptr;
    }
    return false;
}

POINT corner_on_surface(const Window& window) {
    POINT corner{};
    for (const auto* each = &window; !is_top_level(*each); each = each->parent) {
        corner.x += each->rect.left + each->parent->client.left;
        corner.y += each->rect.top + each->parent->client.top;
    }
    return corner;
}

RECT area_of(const Window& window) {
    const auto& rect = window.rect;
    return {0, 0, rect.right - rect.left, rect.bottom - rect.top};
}

Region visible_part(const Window& window, bool is_client) {
    if (!is_on_display(window)) return {};
    Region part(is_client ? window.client : area_of(window));
    if (is_client && (window.style & WS_CLIPCHILDREN) != 0) {
        subtract_windows(part, window, window.first_child, &Window::next);
    }
    // From the window's corner to its parent's, up to the surface's.
    for (const auto* each = &window; !is_top_level(*each); each = each->parent) {
        const auto& parent = *each->parent;
        const auto place = place_in_parent(*each, parent);
        part.offset(place.left, place.top);
        part.intersect(parent.client);
        if ((each->style & WS_CLIPSIBLINGS) == 0) continue;
        subtract_windows(part, parent, each->previous, &Window::previous);
    }
    return part;
}

void invalidate(Window& window, const Region& part, bool erase, bool frame, Children children) {
    if (!is_drawn(window)) return;
    auto inside = part;
    inside.intersect(area_of(window));
    if (inside.is_empty()) return;
    const bool touches_frame = frame && !same_rect(window.client, area_of(window));
    auto in_client = inside;
    in_client.intersect(window.client);
    const bool clips = (window.style & WS_CLIPCHILDREN) != 0;
    if (children == Children::all || (children == Children::by_style && !clips)) {
        invalidate_children(window, in_client, erase, children);
    }
    if (clips) subtract_windows(in_client, window, window.first_child, &Window::next);
    window.update.unite(in_client);
    window.background_is_old |= erase && !in_client.is_empty();
    window.frame_is_old |= touches_frame;
    settle(window);
}

void invalidate_frame(Window& window) {
    window.frame_is_old = !same_rect(window.client, area_of(window));
    settle(window);
}

void validate(Window& window, const Region& part) {
    window.update.subtract(part);
    if (window.update.is_empty()) window.background_is_old = window.frame_is_old = false;
    settle(window);
}

void forget_updates(Window& window) {
    take_update(window);
    for (auto* child = window.first_child; child != nullptr; child = child->next) {
        forget_updates(*child);
    }
}

Update take_update(Window& window) {
    Update update{std::move(window.update), window.background_is_old, window.frame_is_old};
    window.update = {};
    window.background_is_old = window.frame_is_old = false;
    settle(window);
    return update;
}

Region client_update(const Window& window) {
    auto part = window.update;
    part.intersect(window.client);
    return part;
}

Placement placement_of(const Window& window) {
    return {is_on_display(window), window.rect, window.client, visible_part(window, false)};
}

void update_after(Window& window, const Placement& before, bool changes_order, bool changes_frame) {
    const bool is_shown_now = is_on_display(window);
    if (!before.is_on_display && !is_shown_now) return;
    if (!is_shown_now) forget_updates(window);
    if (!is_top_level(window)) {
        auto& parent = *window.parent;
        auto uncovered = before.visible;
        if (!changes_order) uncovered.subtract(visible_part(window, false));
        const auto corner = corner_on_surface(parent);
        uncovered.offset(-corner.x, -corner.y);
        invalidate(parent, uncovered, true, false, Children::all);
    }
    if (!is_shown_now) return;
    const auto& rect = window.rect;
    const auto old_area =
        RECT{0, 0, before.rect.right - before.rect.left, before.rect.bottom - before.rect.top};
    const bool has_moved =
        !is_top_level(window) && (rect.left != before.rect.left || rect.top != before.rect.top);
    const bool is_wider = area_of(window).right != old_area.right;
    const bool is_higher = area_of(window).bottom != old_area.bottom;
    const auto style = window.window_class->description.style;
    const bool redraws =
        (is_wider && (style & kRedrawWidth) != 0) || (is_higher && (style & kRedrawHeight) != 0);
    const bool client_has_moved =
        window.client.left != before.client.left || window.client.top != before.client.top;
    if (!before.is_on_display || has_moved || redraws || client_has_moved || changes_frame ||
        (changes_order && !is_top_level(window))) {
        invalidate_all(window);
        return;
    }
    if (!is_wider && !is_higher) return;
    // What was there stays; only what has come to it is painted.
    Region fresh(area_of(window));
    fresh.subtract(before.client);
    invalidate(window, fresh, true, true, Children::all);
}

namespace {

// The next window from the top, with or without what is in this one.
Window* behind(const Window& window, bool with_children) {
    if (with_children && window.first_child != nullptr) return window.first_child;
    for (const auto* each = &window; each != nullptr; each = each->parent) {
        if (each->next != nullptr) return each->next;
    }
    return nullptr;
}

Window* find_out_of_date(Window* from, const ThreadQueue& queue) {
    for (auto* each = from; each != nullptr;) {
        const bool is_shown = is_drawn(*each) && (!is_top_level(*each) || each->top != nullptr);
        if (is_shown && each->is_counted && each->queue == &queue) return each;
        each = behind(*each, is_shown);
    }
    return nullptr;
}

}  // namespace

// Goes on where it found the last one: from the top each time, ten thousand controls would be
// looked at fifty million times. What has been hidden meanwhile, or was passed by while it was, is
// told by a look at all.
Window* next_out_of_date(WindowTable& table, ThreadQueue& queue) {
    auto& painted = queue.m_painted;
    const bool goes_on = painted.window != nullptr && painted.changes == table.changes;
    auto* found = goes_on ? find_out_of_date(painted.window, queue) : nullptr;
    if (found == nullptr || !is_on_display(*found)) {
        found = find_out_of_date(table.root().first_child, queue);
    }
    painted = {found, table.changes};
    return found;
}

}  // namespace tvutil2
