#include "tvutil2/threads/thread_timer.h"

#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/threads/synchronization.h"

using NSynchronization::CAutoLock;

namespace NThread {

CTimer::CTimer() : m_stop_event(INVALID_HANDLE_VALUE) {
    InitializeCriticalSection(&m_lock);
}

CTimer::CTimer(const CTimer& other)
    : CSimpleThread(other),
      m_interval(other.m_interval.load()),
      m_stop_event(other.m_stop_event.load()),
      m_table(other.copy_of_table()) {
    InitializeCriticalSection(&m_lock);
}

CTimer& CTimer::operator=(const CTimer& other) {
    if (this == &other) return *this;
    CSimpleThread::operator=(other);
    m_interval = other.m_interval.load();
    m_stop_event = other.m_stop_event.load();
    auto table = other.copy_of_table();
    const CAutoLock guard(m_lock);
    m_table.swap(table);
    ++m_changes;
    return *this;
}

CTimer::~CTimer() {
    if (stop_running()) {
        SetEvent(m_stop_event);
        join();
    }
    CloseHandle(m_stop_event);
    m_stop_event = INVALID_HANDLE_VALUE;
    DeleteCriticalSection(&m_lock);
}

CTimer::Table CTimer::copy_of_table() const {
    const CAutoLock guard(m_lock);
    return m_table;
}

int CTimer::Initialize(DWORD interval) {
    m_interval = interval;
    // One for the life of the object: the thread may be waiting on it.
    if (m_stop_event == INVALID_HANDLE_VALUE) {
        m_stop_event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    }
    Begin();
    return 1;
}

void CTimer::Record(unsigned id, CTimerListener* listener, unsigned short period) {
    const CAutoLock guard(m_lock);
    m_table[id] = {listener, period, 0};
    ++m_changes;
}

void CTimer::Remove(unsigned id) {
    const CAutoLock guard(m_lock);
    m_table.erase(id);
    ++m_changes;
}

void CTimer::Run() {
    while (is_running()) {
        if (WaitForSingleObject(m_stop_event, m_interval) == WAIT_TIMEOUT) pass();
        ResetEvent(m_stop_event);
    }
}

// The lock isn't held while a listener runs. Its call ends the entry's turn, so that what it or
// another thread does to the table meanwhile costs a search for the next one and nothing else.
void CTimer::pass() {
    EnterCriticalSection(&m_lock);
    for (auto next = m_table.begin(); next != m_table.end();) {
        const auto id = next->first;
        auto& entry = next->second;
        ++next;
        if (++entry.count != entry.period) continue;
        entry.count = 0;
        auto* const listener = entry.listener;
        const auto changes = m_changes;
        LeaveCriticalSection(&m_lock);
        listener->OnTimeEllipse(this, id);
        EnterCriticalSection(&m_lock);
        if (m_changes != changes) next = m_table.upper_bound(id);
    }
    LeaveCriticalSection(&m_lock);
}

}  // namespace NThread
