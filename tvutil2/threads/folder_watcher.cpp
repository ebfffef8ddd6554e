#include "tvutil2/threads/folder_watcher.h"

#include "tvutil2/threads/folder_watch.h"

using tvutil2::FolderWatch;

CFolderWatcher::CFolderWatcher() : m_watch(std::make_shared<FolderWatch>()) {}
CFolderWatcher::CFolderWatcher(const CFolderWatcher& other) = default;
CFolderWatcher& CFolderWatcher::operator=(const CFolderWatcher& other) = default;
CFolderWatcher::~CFolderWatcher() = default;

int CFolderWatcher::BeginWatch(const char16_t* folder, int subtree, HWND window, UINT message,
                               DWORD filter) {
    if (m_watch->has_begun()) return 0;
    return m_watch->begin(folder, subtree != 0, window, message, filter, ThreadProc) ? 1 : 0;
}

void CFolderWatcher::EndWatch() {
    m_watch->end();
}

DWORD CFolderWatcher::ThreadProc(void* watch) {
    static_cast<FolderWatch*>(watch)->run(false);
    return 0;
}

CTvFolderWatch::CTvFolderWatch() : m_watch(std::make_shared<FolderWatch>()) {}
CTvFolderWatch::CTvFolderWatch(const CTvFolderWatch& other) = default;
CTvFolderWatch& CTvFolderWatch::operator=(const CTvFolderWatch& other) = default;
CTvFolderWatch::~CTvFolderWatch() = default;

int CTvFolderWatch::BeginWatch(const char16_t* folder, int subtree, HWND window, UINT message,
                               DWORD filter) {
    m_watch->end();
    return m_watch->begin(folder, subtree != 0, window, message, filter, ThreadProc) ? 1 : 0;
}

void CTvFolderWatch::EndWatch() {
    m_watch->end();
}

int CTvFolderWatch::IsWatching() const {
    return m_watch->has_begun() && !m_watch->is_folder_gone() ? 1 : 0;
}

DWORD CTvFolderWatch::ThreadProc(void* watch) {
    static_cast<FolderWatch*>(watch)->run(true);
    return 0;
}
