#include "tvutil2/platform/window/timers.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/thread_queue.h"
#include "tvutil2/platform/window/window_table.h"

#include <algorithm>
#include <ctime>

namespace tvutil2 {

std::uint64_t TimerList::now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1000 +
           static_cast<std::uint64_t>(time.tv_nsec) / 1000000;
}

void TimerList::start(HWND window, UINT_PTR id, DWORD period, TIMERPROC procedure) {
    const auto [entry, is_new] = m_timers.try_emplace(Key{window, id});
    if (!is_new) m_order.erase({entry->second.due, &*entry});
    entry->second = {now() + period, period, procedure};
    m_order.insert({entry->second.due, &*entry});
}

UINT_PTR TimerList::free_id() const {
    const auto behind = m_timers.lower_bound({nullptr, ~UINT_PTR{0}});
    const bool is_first = behind == m_timers.begin();
    if (is_first || std::prev(behind)->first.first != nullptr) return 1;
    auto id = std::prev(behind)->first.second + 1;
    while (id == 0 || has(nullptr, id)) ++id;
    return id;
}

bool TimerList::stop(HWND window, UINT_PTR id) {
    const auto found = m_timers.find({window, id});
    if (found == m_timers.end()) return false;
    m_order.erase({found->second.due, &*found});
    m_timers.erase(found);
    return true;
}

void TimerList::stop_all_of(HWND window) {
    for (auto each = m_timers.lower_bound({window, 0});
         each != m_timers.end() && each->first.first == window;) {
        m_order.erase({each->second.due, &*each});
        each = m_timers.erase(each);
    }
}

void TimerList::clear() {
    m_order.clear();
    m_timers.clear();
}

DWORD TimerList::time_left() const {
    const auto next = m_order.lower_bound({m_looked + 1, nullptr});
    if (next == m_order.end()) return INFINITE;
    const auto due = next->first;
    const auto time = now();
    // Never INFINITE, and a wait that is cut short is no harm.
    return due <= time ? 0 : static_cast<DWORD>(std::min<std::uint64_t>(due - time, 0x7FFFFFFF));
}

bool TimerList::owns(HWND window, UINT_PTR id, TIMERPROC procedure) const {
    const auto found = m_timers.find({window, id});
    return found != m_timers.end() && found->second.procedure == procedure;
}

void TimerList::fill(MSG& message, const Entry& timer, std::uint64_t now) {
    message = {timer.first.first,       WM_TIMER,
               timer.first.second,      reinterpret_cast<LPARAM>(timer.second.procedure),
               static_cast<DWORD>(now), {}};
}

// The next tick is a period behind this one's time; what was missed meanwhile stays missed.
void TimerList::restart(Entry& timer, std::uint64_t now) {
    auto place = m_order.extract({timer.second.due, &timer});
    auto& due = timer.second.due;
    due += timer.second.period;
    if (due <= now) due = now + timer.second.period;
    place.value() = {due, &timer};
    m_order.insert(std::move(place));
}

}  // namespace tvutil2

using tvutil2::fail_with;
using tvutil2::ThreadQueue;

UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) {
    auto& queue = ThreadQueue::current();
    if (window == nullptr) {
        if (!queue.timers().has(nullptr, id)) id = queue.timers().free_id();
    } else {
        const auto* const record = tvutil2::WindowTable::instance().find(window);
        if (record == nullptr) return fail_with(ERROR_INVALID_WINDOW_HANDLE);
        if (record->queue != &queue) return fail_with(ERROR_WINDOW_OF_OTHER_THREAD);
        if (id == 0) id = 1;
    }
    queue.timers().start(
        window, id, std::clamp(milliseconds, USER_TIMER_MINIMUM, USER_TIMER_MAXIMUM), procedure);
    return id;
}

BOOL KillTimer(HWND window, UINT_PTR id) {
    auto* const queue = ThreadQueue::current_or_null();
    if (queue != nullptr && queue->timers().stop(window, id)) return TRUE;
    return fail_with(ERROR_INVALID_PARAMETER);
}
