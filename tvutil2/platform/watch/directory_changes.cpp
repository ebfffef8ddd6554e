#include "tvutil2/platform/watch/directory_changes.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/file_object.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/objects/apc.h"
#include "tvutil2/platform/objects/thread_record.h"
#include "tvutil2/platform/watch/change_records.h"
#include "tvutil2/platform/watch/folder_tree.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstring>
#include <deque>

namespace tvutil2 {
namespace {

// What the handle gathers between reads, in rooms of its first read's buffer.
constexpr std::size_t kRooms = 64;

struct Read {
    void* buffer;
    DWORD size;
    OVERLAPPED* overlapped;
    LPOVERLAPPED_COMPLETION_ROUTINE routine;
    std::shared_ptr<ApcQueue> thread;

    // The buffer is touched on the reader's thread alone: who has ended that may have freed it.
    void finish(DWORD error, std::vector<std::byte> records) const {
        thread->post([read = *this, error, records = std::move(records)] {
            const auto bytes = records.size();
            if (bytes != 0) std::memcpy(read.buffer, records.data(), bytes);
            read.overlapped->Internal = error;
            read.overlapped->InternalHigh = bytes;
            read.routine(error, static_cast<DWORD>(bytes), read.overlapped);
        });
    }
};

// One for all watches, which the hub tells one behind the other: a fork finds it free, so that a
// child can close its parent's handles.
constinit std::mutex g_lock;
const ForkLock g_fork_safe(g_lock, ForkRank::area);

class DirectoryWatch final : public FileCompanion, private FolderListener {
  public:
    DirectoryWatch(bool subtree, DWORD filter, DWORD room)
        : m_records(kRooms * std::size_t{room}), m_tree(subtree, filter, *this) {}
    ~DirectoryWatch() override { cancel(nullptr); }

    [[nodiscard]] bool start(int folder) {
        return m_tree.start(Descriptor(fcntl(folder, F_DUPFD_CLOEXEC, 0)));
    }

    void add(Read read) {
        const std::lock_guard guard(g_lock);
        m_reads.push_back(std::move(read));
        serve();
    }

    /// Ends the reads of a thread; of every thread when it is null.
    void cancel(const ApcQueue* thread) {
        const std::lock_guard guard(g_lock);
        std::deque<Read> rest;
        for (auto& read : m_reads) {
            if (thread == nullptr || read.thread.get() == thread) {
                read.finish(ERROR_OPERATION_ABORTED, {});
            } else {
                rest.push_back(std::move(read));
            }
        }
        m_reads = std::move(rest);
    }

  private:
    void on_change(DWORD action, std::u16string_view prefix, std::u16string_view name) override {
        const std::lock_guard guard(g_lock);
        m_records.add(action, prefix, name);
    }
    void on_lost() override {
        const std::lock_guard guard(g_lock);
        m_records.lose();
        serve();
    }
    void on_gone() override {
        const std::lock_guard guard(g_lock);
        m_is_gone = true;
        serve();
    }
    void on_quiet() override {
        const std::lock_guard guard(g_lock);
        serve();
    }

    // Ends reads for as long as there is something to tell. With the lock.
    void serve() {
        while (!m_reads.empty() && (m_is_gone || m_records.has_news())) {
            const auto read = std::move(m_reads.front());
            m_reads.pop_front();
            const bool is_end = m_is_gone && !m_records.has_news();
            read.finish(is_end ? ERROR_ACCESS_DENIED : ERROR_SUCCESS, m_records.take(read.size));
        }
    }

    ChangeRecords m_records;   // guarded by the lock, as are
    std::deque<Read> m_reads;  // the reads under way, the first to end first
    bool m_is_gone = false;

    FolderTree m_tree;  // the first to end: it tells the members above
};

std::unique_ptr<FileCompanion> begin_watch(const FileObject& file, bool subtree, DWORD filter,
                                           DWORD room) {
    struct stat info {};
    if (fstat(file.descriptor(), &info) != 0 || !S_ISDIR(info.st_mode)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto watch = std::make_unique<DirectoryWatch>(subtree, filter, room);
    if (!watch->start(file.descriptor())) return nullptr;
    return watch;
}

}  // namespace
}  // namespace tvutil2

BOOL ReadDirectoryChangesW(HANDLE folder, void* buffer, DWORD size, BOOL subtree, DWORD filter,
                           DWORD* /*bytes*/, OVERLAPPED* overlapped,
                           LPOVERLAPPED_COMPLETION_ROUTINE routine) {
    using namespace tvutil2;
    const auto file = object_of<FileObject>(folder);
    if (!file) return FALSE;
    if (overlapped == nullptr || routine == nullptr) return fail_with(ERROR_NOT_SUPPORTED);
    if (buffer == nullptr || size == 0 || !is_change_filter(filter)) {
        return fail_with(ERROR_INVALID_PARAMETER);
    }
    if (!file->may(FILE_LIST_DIRECTORY)) return fail_with(ERROR_ACCESS_DENIED);
    auto* const watch =
        file->companion([&] { return begin_watch(*file, subtree != 0, filter, size); });
    if (watch == nullptr) return FALSE;
    static_cast<DirectoryWatch*>(watch)->add(
        {buffer, size, overlapped, routine, ThreadRecord::current().apcs()});
    return TRUE;
}

BOOL CancelIo(HANDLE file) {
    using namespace tvutil2;
    const auto object = object_of<FileObject>(file);
    if (!object) return FALSE;
    auto* const watch = object->companion([] { return nullptr; });
    if (watch != nullptr)
        static_cast<DirectoryWatch*>(watch)->cancel(ThreadRecord::current().apcs().get());
    return TRUE;
}
