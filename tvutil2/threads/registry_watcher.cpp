#include "tvutil2/threads/registry_watcher.h"

#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/registry/registry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/threads/thread_end.h"

#include <array>
#include <utility>

namespace tvutil2 {

// What copies of a watcher share, and the thread that waits for changes.
class KeyWatch {
  public:
    KeyWatch()
        : m_stop(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
          m_change(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}
    ~KeyWatch() {
        end();
        CloseHandle(m_change);
        CloseHandle(m_stop);
    }
    KeyWatch(const KeyWatch&) = delete;
    KeyWatch& operator=(const KeyWatch&) = delete;

    bool begin(HKEY key, bool subtree, HWND window, UINT message, DWORD filter,
               LPTHREAD_START_ROUTINE routine) {
        if (m_thread != nullptr) return false;
        m_key = key;
        m_subtree = subtree ? TRUE : FALSE;
        m_window = window;
        m_message = message;
        m_filter = filter;
        ResetEvent(m_stop);
        ResetEvent(m_change);
        // Not left to the thread: a change that comes before it runs is told, too.
        m_is_asked = ask_for_change();
        m_thread = CreateThread(nullptr, 0, routine, this, 0, nullptr);
        return m_thread != nullptr;
    }

    void end() {
        if (m_thread == nullptr) return;
        SetEvent(m_stop);
        wait_for_end_of(m_thread, INFINITE);
        CloseHandle(std::exchange(m_thread, nullptr));
    }

    // A change that comes while the window answers is one more message: the next one is asked for
    // before the window hears of the last.
    void run() {
        const std::array<HANDLE, 2> both{m_stop, m_change};
        while (m_is_asked &&
               WaitForMultipleObjects(2, both.data(), FALSE, INFINITE) == WAIT_OBJECT_0 + 1) {
            m_is_asked = ask_for_change();
            if (IsWindow(m_window) != 0) send_until(m_stop, m_window, m_message, 0, 0);
        }
    }

  private:
    [[nodiscard]] bool ask_for_change() const {
        return RegNotifyChangeKeyValue(m_key, m_subtree, m_filter, m_change, TRUE) == ERROR_SUCCESS;
    }

    HANDLE m_stop;
    HANDLE m_change;
    HANDLE m_thread = nullptr;
    HKEY m_key = nullptr;
    BOOL m_subtree = FALSE;
    HWND m_window = nullptr;
    UINT m_message = 0;
    DWORD m_filter = 0;
    bool m_is_asked = false;
};

}  // namespace tvutil2
using tvutil2::KeyWatch;

CRegistryWatcher::CRegistryWatcher() : m_watch(std::make_shared<KeyWatch>()) {}
CRegistryWatcher::CRegistryWatcher(const CRegistryWatcher& other) = default;
CRegistryWatcher& CRegistryWatcher::operator=(const CRegistryWatcher& other) = default;
CRegistryWatcher::~CRegistryWatcher() = default;

int CRegistryWatcher::BeginWatch(HKEY key, int subtree, HWND window, UINT message, DWORD filter) {
    return m_watch->begin(key, subtree != 0, window, message, filter, ThreadProc) ? 1 : 0;
}

void CRegistryWatcher::EndWatch() {
    m_watch->end();
}

DWORD CRegistryWatcher::ThreadProc(void* watch) {
    static_cast<KeyWatch*>(watch)->run();
    return 0;
}
