#include "tvutil2/threads/folder_reader.h"

#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/long_path.h"
#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/watch/directory_changes.h"
#include "tvutil2/threads/thread_end.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace tvutil2 {
namespace {

constexpr DWORD kBufferSize = 16'384;
/// A name of this many characters can't be a short one.
constexpr int kShortNameLimit = 13;

// What may be a short name is reported by its long one; what is gone already keeps the short one.
void lengthen(CString& path) {
    const int name = path.ReverseFind(u'\\') + 1;
    if (path.GetLength() - name >= kShortNameLimit || path.Find(u'~', name) < 0) return;
    std::array<char16_t, MAX_PATH> buffer;
    const auto length = GetLongPathNameW(path, buffer.data(), MAX_PATH);
    if (length != 0 && length < MAX_PATH) path = buffer.data();
}

}  // namespace

// One folder. It lives from FolderReader::add to the end of its last read.
class FolderReader::Request {
  public:
    Request(FolderReader& reader, const CString& folder, bool subtree, DWORD filter)
        : m_reader(reader), m_folder(folder), m_subtree(subtree ? TRUE : FALSE), m_filter(filter) {
        m_overlapped.hEvent = reinterpret_cast<HANDLE>(this);
    }
    ~Request() { close(); }
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    /// Opens the folder and begins to read. False when it can't be watched.
    bool begin() {
        m_handle = CreateFileW(
            m_folder, FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
            nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OVERLAPPED, nullptr);
        return m_handle != INVALID_HANDLE_VALUE && read();
    }

    void cancel() {
        CancelIo(m_handle);
        close();
    }

  private:
    bool read() {
        return ReadDirectoryChangesW(m_handle, m_arriving.data(), kBufferSize, m_subtree, m_filter,
                                     nullptr, &m_overlapped, on_read) != 0;
    }

    static void on_read(DWORD error, DWORD size, OVERLAPPED* overlapped) {
        reinterpret_cast<Request*>(overlapped->hEvent)->on_read(error, size);
    }

    // The next read is under way before what has arrived is taken apart.
    void on_read(DWORD error, DWORD size) {
        if (error == ERROR_SUCCESS && size != 0) {
            std::memcpy(m_arrived.data(), m_arriving.data(), size);
            const bool goes_on = read();
            parse();
            if (goes_on) return;
            m_reader.m_changes->lose();
        } else if (error == ERROR_SUCCESS) {
            m_reader.m_changes->lose();
        }
        m_reader.forget(*this);
    }

    void parse() {
        for (const auto* record = m_arrived.data();;) {
            FILE_NOTIFY_INFORMATION head{};
            constexpr auto kHead = offsetof(FILE_NOTIFY_INFORMATION, FileName);
            std::memcpy(&head, record, kHead);
            const auto* const name = reinterpret_cast<const char16_t*>(record + kHead);
            CString path(m_folder);
            if (path.View().back() != u'\\') path += u'\\';
            path.Append(name, static_cast<int>(head.FileNameLength / sizeof(char16_t)));
            lengthen(path);
            m_reader.m_changes->add(head.Action, path);
            if (head.NextEntryOffset == 0) return;
            record += head.NextEntryOffset;
        }
    }

    void close() {
        if (m_handle != INVALID_HANDLE_VALUE) CloseHandle(m_handle);
        m_handle = INVALID_HANDLE_VALUE;
    }

    FolderReader& m_reader;
    CString m_folder;
    BOOL m_subtree;
    DWORD m_filter;
    HANDLE m_handle = INVALID_HANDLE_VALUE;
    OVERLAPPED m_overlapped{};
    using Buffer = std::array<std::byte, kBufferSize>;
    alignas(DWORD) Buffer m_arriving{};
    alignas(DWORD) Buffer m_arrived{};
};

FolderReader::FolderReader(std::shared_ptr<ChangeQueue> changes) : m_changes(std::move(changes)) {}

FolderReader::~FolderReader() {
    if (m_thread != nullptr) CloseHandle(m_thread);
}

void FolderReader::add(const CString& folder, bool subtree, DWORD filter) {
    if (!start()) return;
    {
        const std::lock_guard guard(m_lock);
        m_new.push_back(std::make_unique<Request>(*this, folder, subtree, filter));
    }
    QueueUserAPC(open_new, m_thread, reinterpret_cast<std::uintptr_t>(this));
}

// The thread keeps the reader alive, whatever becomes of its owner.
bool FolderReader::start() {
    if (m_thread != nullptr) return true;
    auto self = std::make_unique<std::shared_ptr<FolderReader>>(shared_from_this());
    m_thread = reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, run, self.get(), 0, nullptr));
    if (m_thread == nullptr) return false;
    static_cast<void>(self.release());
    return true;
}

void FolderReader::stop() {
    if (m_thread == nullptr) return;
    QueueUserAPC(terminate, m_thread, reinterpret_cast<std::uintptr_t>(this));
    wait_for_end_of(m_thread, kLongestEnd);
    CloseHandle(std::exchange(m_thread, nullptr));
}

// Everything happens in the calls that are queued to the thread.
unsigned FolderReader::run(void* reader) {
    const std::unique_ptr<std::shared_ptr<FolderReader>> self(
        static_cast<std::shared_ptr<FolderReader>*>(reader));
    auto& it = **self;
    while (!it.m_terminates || !it.m_requests.empty()) SleepEx(INFINITE, TRUE);
    return 0;
}

void FolderReader::open_new(std::uintptr_t reader) {
    auto& it = *reinterpret_cast<FolderReader*>(reader);
    std::vector<std::unique_ptr<Request>> added;
    {
        const std::lock_guard guard(it.m_lock);
        added.swap(it.m_new);
    }
    if (it.m_terminates) return;
    for (auto& request : added) {
        if (request->begin()) it.m_requests.push_back(std::move(request));
    }
}

// What is cancelled comes back once more, as a read that was aborted.
void FolderReader::terminate(std::uintptr_t reader) {
    auto& it = *reinterpret_cast<FolderReader*>(reader);
    it.m_terminates = true;
    for (const auto& request : it.m_requests) request->cancel();
}

void FolderReader::forget(const Request& request) {
    const auto found = std::find_if(m_requests.begin(), m_requests.end(),
                                    [&](const auto& other) { return other.get() == &request; });
    if (found != m_requests.end()) m_requests.erase(found);
}

}  // namespace tvutil2
