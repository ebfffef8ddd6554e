// How a thread sleeps until its queue has news for it, and who wakes it.
#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/objects/thread_record.h"
#include "tvutil2/platform/window/thread_queue.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace tvutil2 {
namespace {

// Set while the owner sleeps; whoever brings news then wakes it.
constexpr DWORD kSleeping = 0x80000000;
// Set while the owner waits for objects; whoever brings news then rings the bell.
constexpr DWORD kListening = 0x40000000;

}  // namespace

// The owner marks news as old before it looks, so news that is still marked needs no telling.
void ThreadQueue::tell(News news) {
    if ((m_word.load(std::memory_order_relaxed) & news) != 0) return;
    const auto before = m_word.fetch_or(news, std::memory_order_acq_rel);
    if ((before & kListening) != 0) SetEvent(m_bell);
    if ((before & kSleeping) == 0) return;
    futex_wake(&m_word, 1);
    const int wake = m_wake.load(std::memory_order_acquire);
    const std::uint64_t one = 1;
    if (wake >= 0) [[maybe_unused]]
        const auto size = write(wake, &one, sizeof one);
}

bool ThreadQueue::wait_for(DWORD news, DWORD milliseconds) {
    const Deadline deadline(milliseconds);
    const auto is_there = [this, news] {
        return (m_word.load(std::memory_order_acquire) & news) != 0;
    };
    const auto sleep = [&] {
        auto word = m_word.load(std::memory_order_relaxed);
        if ((word & news) != 0 || !m_word.compare_exchange_strong(word, word | kSleeping))
            return true;
        const bool is_in_time = futex_wait(m_word, word | kSleeping, deadline);
        m_word.fetch_and(~kSleeping, std::memory_order_relaxed);
        return is_in_time;
    };
    auto& patience = ThreadRecord::current().patience();
    for (bool is_in_time = milliseconds != 0;;) {
        if (is_there()) return true;
        if (!is_in_time) return false;
        is_in_time = patience.wait(is_there, sleep);
    }
}

DWORD ThreadQueue::wait_for_any(std::span<const HANDLE> objects, DWORD news, DWORD milliseconds) {
    if (objects.size() >= MAXIMUM_WAIT_OBJECTS) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    if (m_bell == nullptr) m_bell = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::array<HANDLE, MAXIMUM_WAIT_OBJECTS> all;
    *std::copy(objects.begin(), objects.end(), all.begin()) = m_bell;
    const auto count = static_cast<DWORD>(objects.size());
    const auto start = GetTickCount();
    for (auto left = milliseconds;;) {
        const auto word = m_word.fetch_or(kListening, std::memory_order_acq_rel);
        const bool is_news = (word & news) != 0;
        const auto result =
            WaitForMultipleObjects(count + 1, all.data(), FALSE, is_news ? 0 : left);
        m_word.fetch_and(~kListening, std::memory_order_acq_rel);
        if (result != WAIT_OBJECT_0 + count && (result != WAIT_TIMEOUT || !is_news)) return result;
        if (is_news || has_news(static_cast<News>(news))) return WAIT_OBJECT_0 + count;
        // The bell rang for other news, or for old ones.
        if (milliseconds != INFINITE) {
            const auto passed = GetTickCount() - start;
            left = passed < milliseconds ? milliseconds - passed : 0;
        }
    }
}

bool ThreadQueue::wait_for_answer(const SentMessage& message, bool is_deaf, DWORD milliseconds,
                                  HANDLE stop) {
    const DWORD news = is_deaf ? answered : answered | sent;
    const auto start = GetTickCount();
    for (auto left = milliseconds;;) {
        m_word.fetch_and(~DWORD{answered}, std::memory_order_acquire);
        if (!is_deaf) answer_sent();
        if (message.is_answered.load(std::memory_order_acquire)) return true;
        const bool is_news = stop == nullptr
                                 ? wait_for(news, left)
                                 : wait_for_any({&stop, 1}, news, left) == WAIT_OBJECT_0 + 1;
        if (!is_news) return false;
        if (milliseconds != INFINITE) {
            const auto passed = GetTickCount() - start;
            left = passed < milliseconds ? milliseconds - passed : 0;
        }
    }
}

bool ThreadQueue::wait_for_connection(int connection, bool writes, bool is_deaf,
                                      DWORD milliseconds) {
    // Kept for good: who wakes may come late.
    if (m_wake < 0) {
        m_wake = beyond_standard_files(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    }
    const int wake = m_wake;
    const auto start = GetTickCount();
    for (;;) {
        if (!is_deaf) answer_sent();
        auto word = m_word.load(std::memory_order_acquire);
        if (!is_deaf && (word & sent) != 0) continue;
        if (!m_word.compare_exchange_weak(word, word | kSleeping)) continue;
        const auto passed = GetTickCount() - start;
        const auto left = passed < milliseconds ? milliseconds - passed : 0;
        std::array<pollfd, 2> watched{
            {{connection, static_cast<short>(writes ? POLLOUT : POLLIN), 0}, {wake, POLLIN, 0}}};
        const int ready =
            poll(watched.data(), watched.size(),
                 milliseconds == INFINITE ? -1 : static_cast<int>(std::min(left, 0x7FFFFFFFU)));
        m_word.fetch_and(~kSleeping, std::memory_order_acquire);
        std::uint64_t count = 0;
        if (watched[1].revents != 0) {
            [[maybe_unused]] const auto size = read(wake, &count, sizeof count);
        }
        if (watched[0].revents != 0) return true;
        if (ready == 0) return false;
    }
}

}  // namespace tvutil2
