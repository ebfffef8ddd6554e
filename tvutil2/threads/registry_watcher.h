// Telling a window that something changed in the registry.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <memory>

namespace tvutil2 {
class KeyWatch;
}

/// Sends a message, both parameters 0, when something in a key changed, and waits for the window's
/// answer before it looks on: what changes meanwhile is told by one message more. Nothing that
/// changes behind BeginWatch is missed. While the window doesn't exist nothing is sent, and the
/// watch goes on. Once the key is closed or gone there is nothing more to tell; the watch then
/// rests until EndWatch.
///
/// The operations belong to the owner's thread. Copies share the watch, which the first EndWatch or
/// the end of the last copy ends. Behind EndWatch no message is sent.
class TVUTIL_API CRegistryWatcher {
  public:
    CRegistryWatcher();
    CRegistryWatcher(const CRegistryWatcher& other);
    CRegistryWatcher& operator=(const CRegistryWatcher& other);
    virtual ~CRegistryWatcher();

    /// `key` isn't owned, and stays open during the watch. `subtree`: also below the key. `filter`:
    /// REG_NOTIFY_CHANGE_ flags. 1; 0 while a watch is under way, which stays as it is, or when
    /// there is no thread.
    int BeginWatch(HKEY key, int subtree, HWND window, UINT message, DWORD filter);
    /// Waits for the answer of a window that has begun with a message; one that its window, if it
    /// is this process's, hasn't begun with is taken back.
    void EndWatch();

  protected:
    static DWORD ThreadProc(void* watch);

  private:
    std::shared_ptr<tvutil2::KeyWatch> m_watch;
};
