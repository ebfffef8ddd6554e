// How long a wait looks before it sleeps.
//
// A signal that comes from another processor is often there within a microsecond; going to sleep
// and being woken costs ten. So a wait looks for a moment first, for as long as that has paid off
// for its thread lately: who waits for something that takes its time soon doesn't look at all, but
// tries again now and then.
#pragma once

#include <thread>

namespace tvutil2 {

/// One thread's.
class Patience {
  public:
    /// Looks until `is_there` says so, or for as long as seems worth it. Whether it was there.
    template <class IsThere>
    bool look(const IsThere& is_there) {
        // Alone on one processor nobody else would get anything done meanwhile.
        static const bool has_others = std::thread::hardware_concurrency() > 1;
        if (!has_others || (m_looks == 0 && ++m_skipped % kTriesAgain != 0)) return false;
        for (auto left = m_looks == 0 ? kMost : m_looks; left > 0; --left) {
            if (is_there()) {
                m_looks = kMost;
                return true;
            }
            relax();
        }
        m_looks /= 2;
        return false;
    }

  private:
    static constexpr unsigned kMost = 64;
    static constexpr unsigned kTriesAgain = 32;

    static void relax() {
#if defined(__x86_64__) || defined(__i386__)
        __builtin_ia32_pause();
#elif defined(__aarch64__)
        asm volatile("yield");
#endif
    }

    unsigned m_looks = kMost;
    unsigned m_skipped = 0;
};

}  // namespace tvutil2
