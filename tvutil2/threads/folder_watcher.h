// Telling a window that something changed in a folder.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <memory>

namespace tvutil2 {
class FolderWatch;
}

/// Posts a message, both parameters 0, when something in a folder changed. A message is no count:
/// several changes may give one. While the window doesn't exist nothing is posted, and the watch
/// goes on; a folder that can't be watched any more ends it.
///
/// The operations belong to the owner's thread. Copies share the watch, which the first EndWatch or
/// the end of the last copy ends; behind EndWatch no message is posted.
class TVUTIL_API CFolderWatcher {
  public:
    CFolderWatcher();
    CFolderWatcher(const CFolderWatcher& other);
    CFolderWatcher& operator=(const CFolderWatcher& other);
    virtual ~CFolderWatcher();

    /// `subtree`: also below the folder. `filter`: FILE_NOTIFY_CHANGE_ flags. 1; 0 while a watch is
    /// under way, which stays as it is, and when the folder can't be watched or there is no thread;
    /// the last error then is FindFirstChangeNotificationW's or CreateThread's.
    int BeginWatch(const char16_t* folder, int subtree, HWND window, UINT message, DWORD filter);
    void EndWatch();

  protected:
    static DWORD ThreadProc(void* watch);

  private:
    std::shared_ptr<tvutil2::FolderWatch> m_watch;
};

/// The same, but for three things: a new watch takes the place of one that is under way, the end of
/// the folder ends the watch, behind one last message, and it can be asked.
class TVUTIL_API CTvFolderWatch {
  public:
    CTvFolderWatch();
    CTvFolderWatch(const CTvFolderWatch& other);
    CTvFolderWatch& operator=(const CTvFolderWatch& other);
    virtual ~CTvFolderWatch();

    int BeginWatch(const char16_t* folder, int subtree, HWND window, UINT message, DWORD filter);
    void EndWatch();
    /// Non-zero from BeginWatch to EndWatch, or to the end of the folder.
    [[nodiscard]] int IsWatching() const;

  protected:
    static DWORD ThreadProc(void* watch);

  private:
    std::shared_ptr<tvutil2::FolderWatch> m_watch;
};
