#include "tvutil2/platform/objects/futex.h"

#include <linux/futex.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace tvutil2 {

static_assert(sizeof(std::atomic<DWORD>) == sizeof(DWORD) &&
                  std::atomic<DWORD>::is_always_lock_free,
              "the kernel looks at the atomic as at a plain word");

Deadline::Deadline(DWORD milliseconds) : m_is_finite(milliseconds != INFINITE) {
    if (!m_is_finite) return;
    clock_gettime(CLOCK_MONOTONIC, &m_time);
    m_time.tv_sec += milliseconds / 1000;
    m_time.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000;
    if (m_time.tv_nsec >= 1000000000) {
        m_time.tv_nsec -= 1000000000;
        ++m_time.tv_sec;
    }
}

bool Deadline::has_passed() const {
    if (!m_is_finite) return false;
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec != m_time.tv_sec ? now.tv_sec > m_time.tv_sec : now.tv_nsec >= m_time.tv_nsec;
}

const Deadline& Deadline::or_sooner(const Deadline& other) const {
    if (!other.m_is_finite) return *this;
    if (!m_is_finite) return other;
    const bool is_sooner = other.m_time.tv_sec != m_time.tv_sec
                               ? other.m_time.tv_sec < m_time.tv_sec
                               : other.m_time.tv_nsec < m_time.tv_nsec;
    return is_sooner ? other : *this;
}

bool futex_wait(const std::atomic<DWORD>& word, DWORD expected, const Deadline& deadline) {
    const auto result = syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, expected,
                                deadline.time(), nullptr, FUTEX_BITSET_MATCH_ANY);
    return result == 0 || errno != ETIMEDOUT;
}

void futex_wake(const std::atomic<DWORD>* word, int count) {
    syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, count, nullptr, nullptr, 0);
}

void give_way() {
    sched_yield();
}

}  // namespace tvutil2
