// The thread of a folder monitor that reads: one for all of its folders.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/threads/change_queue.h"

#include <memory>
#include <mutex>
#include <vector>

namespace tvutil2 {

/// Opens folders, reads their changes and puts them into a queue, all on its own thread by calls
/// that are queued to it. It lives until the thread has ended.
class FolderReader : public std::enable_shared_from_this<FolderReader> {
  public:
    explicit FolderReader(std::shared_ptr<ChangeQueue> changes);
    ~FolderReader();
    FolderReader(const FolderReader&) = delete;
    FolderReader& operator=(const FolderReader&) = delete;

    /// Begins to watch; starts the thread with the first folder. Nothing once stop() was called.
    void add(const CString& folder, bool subtree, DWORD filter);
    /// Ends every watch and waits for the thread, up to 10 seconds.
    void stop();

  private:
    class Request;
    friend class Request;

    static unsigned run(void* reader);
    static void open_new(std::uintptr_t reader);
    static void terminate(std::uintptr_t reader);
    [[nodiscard]] bool start();
    void forget(const Request& request);

    std::shared_ptr<ChangeQueue> m_changes;
    HANDLE m_thread = nullptr;  ///< the owner's
    std::mutex m_lock;
    std::vector<std::unique_ptr<Request>> m_new;  ///< guarded by the lock

    // The thread's.
    std::vector<std::unique_ptr<Request>> m_requests;  ///< whose reads are under way
    bool m_terminates = false;
};

}  // namespace tvutil2
