// A thread whose body is a subclass's Run, and which is told to stop by an event.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <atomic>

namespace NThread {

/// Begin and End of one object are for one thread. A subclass calls End in its own destructor: the
/// base's comes when the members that the body uses are gone.
///
/// Copies share the handles, so only one of them may be ended.
class TVUTIL_API CSimpleThread {
  public:
    CSimpleThread() = default;
    virtual ~CSimpleThread();
    CSimpleThread(const CSimpleThread& other);
    CSimpleThread& operator=(const CSimpleThread& other);

    /// Starts the thread; nothing while it is running, that is until End, even if the body has
    /// returned by then. Reports nothing.
    void Begin();
    /// Signals the kill event and waits without a limit for the body to return; nothing when it
    /// isn't running.
    void End();

    /// The body: returns soon once the kill event is signalled.
    virtual void Run() {}

    /// An auto-reset event; null before the first Begin, closed after End.
    [[nodiscard]] HANDLE GetKillEvent() const { return m_kill_event; }
    /// The platform's id of the latest thread; 0 before the first Begin, and in the body until
    /// Begin has it.
    [[nodiscard]] DWORD GetThreadID() const { return m_thread_id; }

    /// Calls Run of the object; 0, the thread's exit code.
    static DWORD HandleRunner(void* object);

  protected:
    [[nodiscard]] bool is_running() const { return m_is_running; }
    /// Says that the body shall not go on; false when it isn't running.
    bool stop_running() { return m_is_running.exchange(false); }
    /// Waits for the thread and closes its handles.
    void join();

  private:
    HANDLE m_thread = nullptr;
    HANDLE m_kill_event = nullptr;
    std::atomic<DWORD> m_thread_id = 0;
    std::atomic<bool> m_is_running = false;
};

}  // namespace NThread
