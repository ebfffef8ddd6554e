#include "tvutil2/platform/objects/shared/shared_sleep.h"

#include "tvutil2/platform/objects/shared/shared_object.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <optional>

namespace tvutil2 {
namespace {

// What a wait sleeps on: the waiter's outcome, a word of each shared object, and behind those the
// words that the kernel wakes one sleeper of when somebody dies in the middle of a signal.
class Words {
  public:
    Words(const Waiter& waiter, std::span<WaitableObject* const> objects,
          std::span<const WaitEntry> entries) {
        add(waiter.outcome, Waiter::kAsleep, FUTEX_PRIVATE_FLAG);
        for (std::size_t i = 0; i < objects.size(); ++i) {
            if (auto* const shared = objects[i]->shared()) add(*shared, entries[i].seen);
        }
        m_first_robust = m_count;
        for (auto* const object : objects) {
            auto* const shared = object->shared();
            if (shared == nullptr || is_mutex(*shared) || m_count == m_words.size()) continue;
            auto& word = shared->robust().word;
            add(word, word.load(), 0);
        }
    }

    // Sleeps with one of the objects named as pending, so that who dies in its sleep, or on waking,
    // passes the wake-up on. That covers one mutex; of several, the others are looked at anew now
    // and then.
    long sleep(const Deadline& deadline) {
        std::optional<RobustList::Pending> pending;
        if (m_pending != nullptr) pending.emplace(RobustList::current(), m_pending->robust());
        const Deadline slice(m_mutexes > 1 ? kSlice : INFINITE);
        const auto woken = syscall(SYS_futex_waitv, m_words.data(), m_count, 0,
                                   deadline.or_sooner(slice).time(), CLOCK_MONOTONIC);
        if (woken >= static_cast<long>(m_first_robust)) {
            auto* const word =
                reinterpret_cast<std::atomic<DWORD>*>(m_words[std::size_t(woken)].uaddr);
            wake_shared(*word, INT_MAX);
        }
        return woken;
    }

    [[nodiscard]] bool is_sliced() const { return m_mutexes > 1; }

  private:
    static constexpr DWORD kSlice = 50;

    static bool is_mutex(const SharedObject& object) { return object.kind() == HandleKind::mutex; }

    void add(SharedObject& object, DWORD seen) {
        if (is_mutex(object)) ++m_mutexes;
        if (m_pending == nullptr || (is_mutex(object) && m_mutexes == 1)) m_pending = &object;
        add(object.word(), seen, 0);
    }

    void add(const std::atomic<DWORD>& word, DWORD expected, unsigned flag) {
        auto& entry = m_words[m_count++];
        entry = {};
        entry.val = expected;
        entry.uaddr = reinterpret_cast<std::uintptr_t>(&word);
        entry.flags = FUTEX_32 | flag;
    }

    std::array<futex_waitv, FUTEX_WAITV_MAX> m_words;
    std::uint32_t m_count = 0;
    std::uint32_t m_first_robust = 0;
    unsigned m_mutexes = 0;
    const SharedObject* m_pending = nullptr;
};

}  // namespace

bool has_news(std::span<WaitableObject* const> objects, std::span<const WaitEntry> entries) {
    for (std::size_t i = 0; i < objects.size(); ++i) {
        auto* const shared = objects[i]->shared();
        if (shared != nullptr && shared->word().load() != entries[i].seen) return true;
    }
    return false;
}

bool sleep_on_shared(const Waiter& waiter, std::span<WaitableObject* const> objects,
                     std::span<const WaitEntry> entries, const Deadline& deadline) {
    Words words(waiter, objects, entries);
    if (words.sleep(deadline) >= 0) return true;
    if (errno == ETIMEDOUT) return words.is_sliced() && !deadline.has_passed();
    if (errno != ENOSYS && errno != EPERM) return true;
    // A host that can't, or won't, sleep on several words.
    constexpr DWORD kShortTime = 2;
    futex_wait(waiter.outcome, Waiter::kAsleep, Deadline(kShortTime));
    return !deadline.has_passed();
}

}  // namespace tvutil2
