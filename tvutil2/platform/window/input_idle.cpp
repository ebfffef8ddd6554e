#include "tvutil2/platform/window/input_idle.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/process/processes.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/process_place.h"
#include "tvutil2/platform/window/thread_queue.h"

#include <sys/epoll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace tvutil2 {
namespace {

// How soon a window that couldn't be asked is asked again.
constexpr DWORD kRetry = 50;

class TimeLeft {
  public:
    explicit TimeLeft(DWORD milliseconds) : m_limit(milliseconds), m_start(GetTickCount()) {}
    [[nodiscard]] DWORD get() const {
        if (m_limit == INFINITE) return INFINITE;
        return m_limit - std::min(m_limit, GetTickCount() - m_start);
    }

  private:
    DWORD m_limit, m_start;
};

// What wakes who waits for a process to get a window.
class News {
  public:
    explicit News(DWORD process)
        : m_listings(watch_listings()),
          m_process(static_cast<int>(syscall(SYS_pidfd_open, process, 0))),
          m_both(epoll_create1(EPOLL_CLOEXEC)) {
        add(m_listings);
        add(m_process);
    }
    [[nodiscard]] bool can_be_had() const { return m_listings && m_both; }
    // False when the time is over. The calling thread answers what is sent to it.
    bool wait(DWORD milliseconds) const {
        const bool is_new =
            ThreadQueue::current().wait_for_connection(m_both.get(), false, false, milliseconds);
        std::array<char, 4096> events;
        while (read(m_listings.get(), events.data(), events.size()) > 0) {
        }
        return is_new;
    }

  private:
    void add(const Descriptor& one) const {
        epoll_event event{};
        event.events = EPOLLIN;
        if (one) epoll_ctl(m_both.get(), EPOLL_CTL_ADD, one.get(), &event);
    }

    Descriptor m_listings, m_process, m_both;
};

bool answers(const ListedWindow& window, DWORD milliseconds) {
    std::uintptr_t result = 0;
    return SendMessageTimeoutW(reinterpret_cast<HWND>(window.handle), WM_NULL, 0, 0, SMTO_NORMAL,
                               milliseconds, &result) != 0;
}

DWORD wait_for_window(HANDLE process, DWORD id, const News& news, const TimeLeft& time) {
    while (true) {
        // Looked at before the windows are: what comes later is news.
        const bool is_over = WaitForSingleObject(process, 0) == WAIT_OBJECT_0;
        const auto windows = windows_of_process(id);
        if (is_over) {
            SetLastError(ERROR_GEN_FAILURE);
            return WAIT_FAILED;
        }
        if (!windows.empty() && answers(windows.front(), time.get())) return 0;
        if (time.get() == 0) return WAIT_TIMEOUT;
        news.wait(windows.empty() ? time.get() : std::min(kRetry, time.get()));
    }
}

}  // namespace
}  // namespace tvutil2

DWORD WaitForInputIdle(HANDLE process, DWORD milliseconds) {
    const auto id = GetProcessId(process);
    if (id == 0) return WAIT_FAILED;
    const tvutil2::TimeLeft time(milliseconds);
    const tvutil2::News news(id);
    if (!news.can_be_had()) return WAIT_FAILED;
    return tvutil2::wait_for_window(process, id, news, time);
}
