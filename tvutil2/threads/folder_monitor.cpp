#include "tvutil2/threads/folder_monitor.h"

#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/threads/change_queue.h"
#include "tvutil2/threads/folder_reader.h"
#include "tvutil2/threads/thread_end.h"

#include <atomic>

using tvutil2::ChangeQueue;
using tvutil2::FolderReader;

// What one run of the dispatching thread knows. The thread keeps it, so that a listener which
// doesn't come back in time finds it when it does.
struct CFolderMonitor::Dispatcher {
    Dispatcher(CFolderMonitorListener& told, std::shared_ptr<ChangeQueue> queue)
        : listener(told), changes(std::move(queue)) {}

    CFolderMonitorListener& listener;
    std::shared_ptr<ChangeQueue> changes;
    std::atomic<bool> is_over = false;
};

// What copies of a monitor share.
class CFolderMonitor::Watch {
  public:
    explicit Watch(CFolderMonitorListener* listener) : m_listener(listener) {}
    ~Watch() {
        end();
        m_reader->stop();
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    void set_filter(DWORD filter) { m_filter = filter; }
    void add(const char16_t* folder, bool subtree) {
        m_reader->add(CString(folder), subtree, m_filter);
    }
    bool begin();
    void end();

  private:
    CFolderMonitorListener* m_listener;
    DWORD m_filter =
        FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME | FILE_NOTIFY_CHANGE_CREATION;
    std::shared_ptr<ChangeQueue> m_changes = std::make_shared<ChangeQueue>();
    std::shared_ptr<FolderReader> m_reader = std::make_shared<FolderReader>(m_changes);
    std::shared_ptr<Dispatcher> m_dispatcher;
    HANDLE m_thread = nullptr;  ///< the dispatching thread
};

bool CFolderMonitor::Watch::begin() {
    if (m_thread != nullptr || m_listener == nullptr) return false;
    m_dispatcher = std::make_shared<Dispatcher>(*m_listener, m_changes);
    auto kept = std::make_unique<std::shared_ptr<Dispatcher>>(m_dispatcher);
    m_thread = reinterpret_cast<HANDLE>(
        _beginthreadex(nullptr, 0, CFolderMonitor::ThreadProc, kept.get(), 0, nullptr));
    if (m_thread == nullptr) return false;
    static_cast<void>(kept.release());
    return true;
}

void CFolderMonitor::Watch::end() {
    if (m_thread == nullptr) return;
    m_dispatcher->is_over = true;
    m_changes->wake();
    tvutil2::wait_for_end_of(m_thread, tvutil2::kLongestEnd);
    CloseHandle(std::exchange(m_thread, nullptr));
    m_reader->stop();
}

unsigned CFolderMonitor::ThreadProc(void* dispatcher) {
    const std::unique_ptr<std::shared_ptr<Dispatcher>> kept(
        static_cast<std::shared_ptr<Dispatcher>*>(dispatcher));
    auto& run = **kept;
    for (;;) {
        run.changes->wait();
        if (run.is_over) break;
        run.changes->report_to(run.listener);
    }
    run.changes->count_again();
    return 0;
}

CFolderMonitor::CFolderMonitor(CFolderMonitorListener* listener)
    : m_watch(std::make_shared<Watch>(listener)) {}
CFolderMonitor::CFolderMonitor(const CFolderMonitor& other) = default;
CFolderMonitor& CFolderMonitor::operator=(const CFolderMonitor& other) = default;
CFolderMonitor::~CFolderMonitor() = default;

int CFolderMonitor::SetNotificationFlags(DWORD flags) {
    m_watch->set_filter(flags);
    return 1;
}

void CFolderMonitor::AddDirectory(const char16_t* folder, int subtree) {
    if (folder != nullptr && *folder != 0) m_watch->add(folder, subtree != 0);
}

int CFolderMonitor::BeginFolderMoniter() {
    return m_watch->begin() ? 1 : 0;
}

void CFolderMonitor::EndFolderMoniter() {
    m_watch->end();
}
