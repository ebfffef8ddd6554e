// Changes on their way from the thread that reads them to the thread that reports them.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/objects/critical_section.h"
#include "tvutil2/threads/folder_monitor.h"

#include <list>

namespace tvutil2 {

/// Up to 1,000 changes, first in first out. One thread adds, one takes.
class ChangeQueue {
  public:
    ChangeQueue();
    ~ChangeQueue();
    ChangeQueue(const ChangeQueue&) = delete;
    ChangeQueue& operator=(const ChangeQueue&) = delete;

    /// Of a change that has no place, and of all that wait then, the listener hears as an overflow.
    void add(DWORD action, const CString& path);
    /// The same for changes that never came here.
    void lose();

    /// Waits until there is something to report or wake() is called.
    void wait();
    void wake();
    /// Reports one change, or one overflow in the place of all that wait.
    void report_to(CFolderMonitorListener& listener);
    /// Makes good for a wait() whose change wasn't reported.
    void count_again();

  private:
    struct Change {
        DWORD action;
        CString path;
    };

    bool signal();
    void take_counts();

    HANDLE m_count;  ///< a semaphore with one count for each change
    CRITICAL_SECTION m_lock;
    std::list<Change> m_changes;  // guarded by the lock, as is
    bool m_has_overflown = false;
};

}  // namespace tvutil2
