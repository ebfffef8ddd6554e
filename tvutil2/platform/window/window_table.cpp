#include "tvutil2/platform/window/window_table.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/window/top_level.h"

#include <sys/random.h>
#include <unistd.h>

#include <new>

namespace tvutil2 {
namespace {

std::atomic<WindowTable*> g_table{nullptr};

constexpr std::uint32_t kGenerationMask = 0xFFFFFF;

// A process that gets the number of one that has ended doesn't give out the same handles.
std::uint32_t first_generation() {
    std::uint32_t value = 0;
    if (getrandom(&value, sizeof value, GRND_NONBLOCK) != sizeof value) {
        value = static_cast<std::uint32_t>(getpid()) * 2654435761U;
    }
    return value & kGenerationMask;
}

}  // namespace

// Never destroyed: threads end behind the static objects. A child after a fork is another process
// and has no windows: its parent's are its parent's.
WindowTable& WindowTable::instance() {
    auto* table = g_table.load(std::memory_order_acquire);
    if (table != nullptr) return *table;
    constexpr auto kNothing = [](void* /*what*/) {};
    static const ForkMember is_fork_safe(
        ForkRank::area, nullptr, kNothing, kNothing,
        [](void* /*what*/) { g_table.store(nullptr, std::memory_order_relaxed); });
    auto fresh = std::make_unique<WindowTable>();
    if (g_table.compare_exchange_strong(table, fresh.get())) table = fresh.release();
    return *table;
}

WindowTable::WindowTable() : m_process(static_cast<std::uintptr_t>(getpid())) {}

Window* WindowTable::take_record() {
    if (!m_free.empty()) {
        auto* const record = m_free.front();
        m_free.pop_front();
        return record;
    }
    if (m_used == kMaxWindows) {
        SetLastError(ERROR_NO_MORE_USER_HANDLES);
        return nullptr;
    }
    auto& chunk = m_chunks[m_used / kChunk];
    if (chunk.load(std::memory_order_relaxed) == nullptr) {
        static const auto first = first_generation();
        auto* const records = new Window[kChunk];
        for (std::size_t i = 0; i < kChunk; ++i) {
            records[i].index = static_cast<std::uint32_t>(m_used + i);
            records[i].generation = first;
        }
        chunk.store(records, std::memory_order_release);
    }
    return &chunk.load(std::memory_order_relaxed)[m_used++ % kChunk];
}

HWND WindowTable::enter(Window& record, ThreadQueue& queue) {
    record.age = ++m_age;
    record.queue.store(&queue, std::memory_order_relaxed);
    const auto value = (m_process << kProcessShift) |
                       (std::uintptr_t{record.generation} << kGenerationShift) | record.index;
    record.handle.store(value, std::memory_order_release);
    return reinterpret_cast<HWND>(value);
}

void WindowTable::give_back(Window& record) {
    record.window_class.reset();
    record.text = {};
    record.extra = {};
    record.properties.clear();
    record.style = record.ex_style = 0;
    record.id = record.user_data = 0;
    record.is_destroying = record.was_sized = false;
    record.owner = nullptr;
    record.owned = 0;
    record.rect = record.client = record.normal = {};
    record.dpi = 0;
    record.least = {};
    record.base = record.told_place = {};
    record.place_number = 0;
    record.icons = {};
    record.top.reset();
    record.state.reset();
    record.scroll_bars.reset();
    record.update = {};
    record.background_is_old = record.frame_is_old = false;
    record.is_counted = record.is_frozen = false;
    record.generation = (record.generation + 1) & kGenerationMask;
    m_free.push_back(&record);
}

void WindowTable::link_first(Window& parent, Window& child) {
    ++changes;
    child.parent = &parent;
    child.previous = nullptr;
    child.next = parent.first_child;
    (parent.first_child == nullptr ? parent.last_child : parent.first_child->previous) = &child;
    parent.first_child = &child;
}

void WindowTable::link_last(Window& parent, Window& child) {
    ++changes;
    child.parent = &parent;
    child.next = nullptr;
    child.previous = parent.last_child;
    (parent.last_child == nullptr ? parent.first_child : parent.last_child->next) = &child;
    parent.last_child = &child;
}

void WindowTable::link_behind(Window& sibling, Window& child) {
    ++changes;
    auto& parent = *sibling.parent;
    child.parent = &parent;
    child.previous = &sibling;
    child.next = sibling.next;
    (sibling.next == nullptr ? parent.last_child : sibling.next->previous) = &child;
    sibling.next = &child;
}

void WindowTable::unlink(Window& child) {
    ++changes;
    auto& parent = *child.parent;
    (child.previous == nullptr ? parent.first_child : child.previous->next) = child.next;
    (child.next == nullptr ? parent.last_child : child.next->previous) = child.previous;
    child.parent = child.previous = child.next = nullptr;
}

}  // namespace tvutil2
