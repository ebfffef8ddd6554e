#include "tvutil2/threads/folder_watch.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/watch/change_notification.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <array>
#include <utility>

namespace tvutil2 {
namespace {

bool is_folder(const CString& path) {
    const auto attributes = GetFileAttributesW(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

}  // namespace

FolderWatch::FolderWatch() : m_stop(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

FolderWatch::~FolderWatch() {
    end();
    CloseHandle(m_stop);
}

bool FolderWatch::begin(const char16_t* folder, bool subtree, HWND window, UINT message,
                        DWORD filter, LPTHREAD_START_ROUTINE routine) {
    m_changes = FindFirstChangeNotificationW(folder, subtree ? TRUE : FALSE, filter);
    if (m_changes == INVALID_HANDLE_VALUE) return false;
    m_window = window;
    m_message = message;
    m_folder = folder;
    m_is_gone = false;
    ResetEvent(m_stop);
    m_thread = CreateThread(nullptr, 0, routine, this, 0, nullptr);
    if (m_thread != nullptr) return true;
    const auto error = GetLastError();
    FindCloseChangeNotification(std::exchange(m_changes, INVALID_HANDLE_VALUE));
    return fail_with(error);
}

// The thread holds no lock and waits for nobody, so it is soon over.
void FolderWatch::end() {
    if (m_thread == nullptr) return;
    SetEvent(m_stop);
    WaitForSingleObject(m_thread, INFINITE);
    CloseHandle(std::exchange(m_thread, nullptr));
    FindCloseChangeNotification(std::exchange(m_changes, INVALID_HANDLE_VALUE));
}

void FolderWatch::run(bool looks_for_folder) {
    const std::array<HANDLE, 2> both{m_stop, m_changes};
    while (WaitForMultipleObjects(2, both.data(), FALSE, INFINITE) == WAIT_OBJECT_0 + 1) {
        // Looked for before the message: what its receiver does to the folder is told once more.
        const bool is_gone = looks_for_folder && !is_folder(m_folder);
        if (IsWindow(m_window) != 0) PostMessageW(m_window, m_message, 0, 0);
        if (is_gone) {
            m_is_gone = true;
            return;
        }
        if (FindNextChangeNotification(m_changes) == 0) return;
    }
}

}  // namespace tvutil2
