// What the two folder watchers share: the handle that tells of changes, and the thread that waits.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/objects/threads.h"

#include <atomic>

namespace tvutil2 {

/// One watch after another; used by its owner's thread, but for run().
class FolderWatch {
  public:
    FolderWatch();
    ~FolderWatch();
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    /// `routine` gets this object, and calls run(). False with the last error.
    bool begin(const char16_t* folder, bool subtree, HWND window, UINT message, DWORD filter,
               LPTHREAD_START_ROUTINE routine);
    void end();

    [[nodiscard]] bool has_begun() const { return m_thread != nullptr; }
    /// The folder was found gone.
    [[nodiscard]] bool is_folder_gone() const { return m_is_gone; }

    /// The thread's body. `looks_for_folder`: the folder's end is looked for behind each message.
    void run(bool looks_for_folder);

  private:
    HANDLE m_stop;  ///< an event
    HANDLE m_changes = INVALID_HANDLE_VALUE;
    HANDLE m_thread = nullptr;
    HWND m_window = nullptr;
    UINT m_message = 0;
    CString m_folder;
    std::atomic<bool> m_is_gone = false;
};

}  // namespace tvutil2
