#include "tvutil2/threads/simple_thread.h"

#include "tvutil2/platform/objects/threads.h"

namespace NThread {

CSimpleThread::CSimpleThread(const CSimpleThread& other)
    : m_thread(other.m_thread),
      m_kill_event(other.m_kill_event),
      m_thread_id(other.m_thread_id.load()),
      m_is_running(other.m_is_running.load()) {}

CSimpleThread& CSimpleThread::operator=(const CSimpleThread& other) {
    if (this == &other) return *this;
    m_thread = other.m_thread;
    m_kill_event = other.m_kill_event;
    m_thread_id = other.m_thread_id.load();
    m_is_running = other.m_is_running.load();
    return *this;
}

CSimpleThread::~CSimpleThread() {
    End();
}

void CSimpleThread::Begin() {
    if (m_is_running) return;
    m_kill_event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    m_is_running = true;
    DWORD id = 0;
    m_thread = CreateThread(nullptr, 0, &CSimpleThread::HandleRunner, this, 0, &id);
    m_thread_id = id;
}

void CSimpleThread::End() {
    if (stop_running()) join();
}

void CSimpleThread::join() {
    SetEvent(m_kill_event);
    WaitForSingleObject(m_thread, INFINITE);
    CloseHandle(m_thread);
    CloseHandle(m_kill_event);
}

DWORD CSimpleThread::HandleRunner(void* object) {
    static_cast<CSimpleThread*>(object)->Run();
    return 0;
}

}  // namespace NThread
