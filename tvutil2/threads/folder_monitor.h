// Reporting of every single change in a set of folders to a listener.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/watch/change_filter.h"

#include <memory>

/// Who hears of changes. Both are called on the monitor's dispatching thread and under no lock, so
/// they may block; up to 1,000 changes wait meanwhile. What they throw ends the program.
class CFolderMonitorListener {
  public:
    /// A FILE_ACTION_ and the full path: the folder as it was given to AddDirectory, and the name.
    /// A path may be empty; then the action says nothing.
    virtual void OnFolderChange(DWORD action, const char16_t* path) = 0;
    /// Changes were lost: all that waited, or what the host couldn't hold. In the second case the
    /// folder they were lost in isn't watched any more.
    virtual void OnFolderOverflow() = 0;

  protected:
    ~CFolderMonitorListener() = default;
};

/// Watches folders on a thread of its own and reports on another one.
///
/// Folders may be added before the reports begin; changes wait for them. They can't be taken away
/// one by one, and an object watches once: behind EndFolderMoniter no folder is watched any more.
/// The operations belong to the owner's thread. Copies share the watch, which ends with the last of
/// them or with the first EndFolderMoniter.
class TVUTIL_API CFolderMonitor {
  public:
    /// `listener` isn't owned, and outlives the reports.
    explicit CFolderMonitor(CFolderMonitorListener* listener);
    CFolderMonitor(const CFolderMonitor& other);
    CFolderMonitor& operator=(const CFolderMonitor& other);
    virtual ~CFolderMonitor();

    /// What folders that are added from now on report: FILE_NOTIFY_CHANGE_ flags. Always 1.
    int SetNotificationFlags(DWORD flags);
    /// Begins to watch a folder, with all below it if `subtree`. Nobody is told of one that can't
    /// be watched: because it isn't there, may not be read, or the host has no more watches.
    void AddDirectory(const char16_t* folder, int subtree);
    /// Begins to report. 0 when reports are under way, or no thread can be had.
    int BeginFolderMoniter();
    /// Ends the reports and the watch; nothing when reports aren't under way. The listener isn't
    /// called any more. A call that is under way is waited for, up to 10 seconds, and messages that
    /// it sends to this thread's windows are served meanwhile. The listener doesn't call this.
    void EndFolderMoniter();

  protected:
    /// The dispatching thread's body.
    static unsigned ThreadProc(void* dispatcher);

  private:
    struct Dispatcher;
    class Watch;
    std::shared_ptr<Watch> m_watch;
};
