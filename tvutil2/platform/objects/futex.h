// The host's futex: sleep until a word changes, without a descriptor and without a lock.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <atomic>
#include <ctime>

namespace tvutil2 {

/// When a wait of so many milliseconds ends; never for INFINITE.
class Deadline {
  public:
    explicit Deadline(DWORD milliseconds);
    [[nodiscard]] bool has_passed() const;
    /// The earlier of both.
    [[nodiscard]] const Deadline& or_sooner(const Deadline& other) const;
    /// On the monotonic clock; null for never.
    [[nodiscard]] const timespec* time() const { return m_is_finite ? &m_time : nullptr; }

  private:
    bool m_is_finite;
    timespec m_time{};
};

/// Sleeps while `word` holds `expected`. False when the deadline has passed; true otherwise, which
/// doesn't say that the word has changed.
bool futex_wait(const std::atomic<DWORD>& word, DWORD expected, const Deadline& deadline);

/// Wakes up to `count` of those who sleep on `word`. Never reads it: the word may be gone by then,
/// and whoever sleeps at that address finds that nothing has changed.
void futex_wake(const std::atomic<DWORD>* word, int count);

/// Lets other threads run.
void give_way();

}  // namespace tvutil2
