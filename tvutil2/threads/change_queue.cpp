#include "tvutil2/threads/change_queue.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/objects/objects.h"

namespace tvutil2 {
namespace {

constexpr LONG kLimit = 1000;

class Guard {
  public:
    explicit Guard(CRITICAL_SECTION& section) : m_section(&section) {
        EnterCriticalSection(m_section);
    }
    ~Guard() { LeaveCriticalSection(m_section); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

  private:
    CRITICAL_SECTION* m_section;
};

}  // namespace

ChangeQueue::ChangeQueue() : m_count(CreateSemaphoreW(nullptr, 0, kLimit, nullptr)) {
    InitializeCriticalSection(&m_lock);
}

ChangeQueue::~ChangeQueue() {
    DeleteCriticalSection(&m_lock);
    CloseHandle(m_count);
}

bool ChangeQueue::signal() {
    return ReleaseSemaphore(m_count, 1, nullptr) != 0;
}

void ChangeQueue::add(DWORD action, const CString& path) {
    const Guard guard(m_lock);
    m_changes.push_back({action, path});
    if (signal()) return;
    m_changes.pop_back();
    if (GetLastError() == ERROR_TOO_MANY_POSTS) m_has_overflown = true;
}

void ChangeQueue::lose() {
    const Guard guard(m_lock);
    m_has_overflown = true;
    signal();
}

void ChangeQueue::wait() {
    WaitForSingleObject(m_count, INFINITE);
}

void ChangeQueue::wake() {
    signal();
}

void ChangeQueue::take_counts() {
    while (WaitForSingleObject(m_count, 0) == WAIT_OBJECT_0) {
    }
}

void ChangeQueue::report_to(CFolderMonitorListener& listener) {
    std::list<Change> taken;
    bool has_overflown = false;
    {
        const Guard guard(m_lock);
        has_overflown = std::exchange(m_has_overflown, false);
        if (has_overflown) taken.swap(m_changes);
        if (m_changes.empty()) {
            take_counts();
        } else {
            taken.splice(taken.begin(), m_changes, m_changes.begin());
        }
    }
    if (has_overflown) {
        listener.OnFolderOverflow();
    } else if (taken.empty()) {
        listener.OnFolderChange(0, u"");
    } else {
        listener.OnFolderChange(taken.front().action, taken.front().path);
    }
}

void ChangeQueue::count_again() {
    const Guard guard(m_lock);
    take_counts();
    ReleaseSemaphore(m_count, static_cast<LONG>(m_changes.size()), nullptr);
}

}  // namespace tvutil2
