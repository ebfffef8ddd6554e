// How long a wait looks before it sleeps.
//
// Who sleeps and is woken pays for it: some 10 us, and on a virtual machine, whose halted processor
// has to be fetched back, 50. Threads that take turns are done with theirs within one. So a wait
// looks for a moment first, but only where that pays: a thread whose waits are long never looks,
// one that looked in vain lets more and more waits pass before it looks again.
#pragma once

#include <cstdint>

namespace tvutil2 {

/// One thread's, used by that thread alone.
class Patience {
  public:
    /// Calls `sleep` and gives what that gives, unless `is_there` says within the moment that seems
    /// worth it that there is no need to: true then.
    template <class IsThere, class Sleep>
    bool wait(const IsThere& is_there, const Sleep& sleep) {
        const auto start = now();
        if (m_passes > 0) {
            --m_passes;
        } else if (m_moment > 0 && look(start, is_there)) {
            return true;
        }
        const bool result = sleep();
        note_sleep(now() - start);
        return result;
    }

    /// Tells the processor that its thread turns round on the spot.
    static void relax() {
#if defined(__x86_64__) || defined(__i386__)
        __builtin_ia32_pause();
#elif defined(__aarch64__)
        asm volatile("yield");
#endif
    }

    /// Whether another thread can get on while one looks, as it was at the first call.
    [[nodiscard]] static bool has_company();

  private:
    using Nanoseconds = std::int64_t;

    template <class IsThere>
    bool look(Nanoseconds start, const IsThere& is_there) {
        for (Nanoseconds passed = 0; passed < m_moment; passed = now() - start) {
            // The clock costs as much as several looks.
            for (int i = 0; i < 16; ++i) {
                if (is_there()) {
                    note_gain(passed);
                    return true;
                }
                relax();
            }
        }
        note_loss();
        return false;
    }

    static Nanoseconds now();
    void note_gain(Nanoseconds passed);
    void note_loss();
    void note_sleep(Nanoseconds passed);

    Nanoseconds m_moment = 0;  // how long the next look may take
    unsigned m_passes = 0;     // waits that pass without a look
    unsigned m_losses = 0;     // in a row
};

}  // namespace tvutil2
