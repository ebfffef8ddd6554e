// The timers of one thread, in the order in which they are due.
#pragma once

#include "tvutil2/platform/window/timers.h"

#include <map>
#include <set>
#include <utility>

namespace tvutil2 {

/// Used by its own thread only. A tick isn't kept anywhere: it is there while its time has come and
/// nobody has taken it, so ending or restarting a timer drops it, and missed ticks are one.
class TimerList {
  public:
    /// Starts a timer, or starts it anew.
    void start(HWND window, UINT_PTR id, DWORD period, TIMERPROC procedure);
    /// A number that no timer without a window has.
    [[nodiscard]] UINT_PTR free_id() const;
    [[nodiscard]] bool has(HWND window, UINT_PTR id) const {
        return m_timers.find({window, id}) != m_timers.end();
    }
    bool stop(HWND window, UINT_PTR id);
    void stop_all_of(HWND window);
    void clear();

    /// Milliseconds to the next tick that take() hasn't seen yet; INFINITE for none.
    [[nodiscard]] DWORD time_left() const;
    /// The tick that is due the longest among those that `takes` accepts, as a message.
    template <class Takes>
    bool take(MSG& message, const Takes& takes, bool remove) {
        if (m_order.empty()) return false;
        const auto now = this->now();
        m_looked = now;
        for (const auto& [due, timer] : m_order) {
            if (due > now) return false;
            if (!takes(timer->first.first)) continue;
            fill(message, *timer, now);
            if (remove) restart(*timer, now);
            return true;
        }
        return false;
    }
    /// Whether a tick with that procedure comes from one of these timers.
    [[nodiscard]] bool owns(HWND window, UINT_PTR id, TIMERPROC procedure) const;

  private:
    using Key = std::pair<HWND, UINT_PTR>;
    struct Timer {
        std::uint64_t due;
        DWORD period;
        TIMERPROC procedure;
    };
    using Entry = std::pair<const Key, Timer>;
    using Place = std::pair<std::uint64_t, Entry*>;

    static std::uint64_t now();
    static void fill(MSG& message, const Entry& timer, std::uint64_t now);
    void restart(Entry& timer, std::uint64_t now);

    std::map<Key, Timer> m_timers;
    std::set<Place> m_order;
    std::uint64_t m_looked = 0;  ///< when take() last saw what is due
};

}  // namespace tvutil2
