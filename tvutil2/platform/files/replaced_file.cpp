#include "tvutil2/platform/files/replaced_file.h"

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/draft.h"
#include "tvutil2/platform/files/folder_listing.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/sharing.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <thread>
#include <utility>

namespace tvutil2 {
namespace {

// The file may grow meanwhile, and some of /proc have more than they tell.
bool read_all(int file, std::string& bytes) {
    std::size_t size = 0;
    for (;;) {
        if (size == bytes.size()) bytes.resize(size + std::max(size / 2, std::size_t{4096}));
        const auto count = read(file, bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return fail_with_errno();
        size += static_cast<std::size_t>(count);
        if (count == 0) break;
        if (size > kLargestContent) return fail_with(ERROR_FILE_TOO_LARGE);
    }
    bytes.resize(size);
    return true;
}

// O_NONBLOCK: a pipe with a file's name must not hold the caller.
Descriptor open_file(const std::string& path, struct stat& info) {
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (!file || fstat(file.get(), &info) != 0) {
        fail_at(path);
        return {};
    }
    if (!S_ISREG(info.st_mode)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return {};
    }
    if (static_cast<std::size_t>(info.st_size) > kLargestContent) {
        SetLastError(ERROR_FILE_TOO_LARGE);
        return {};
    }
    if (!may_be_read(file.get())) return {};
    return file;
}

// The turn of one writer in a folder. Anybody who may read the folder can lock it, so the wait for
// it has an end.
class Turn {
  public:
    Turn(const std::string& folder, std::chrono::milliseconds longest_wait)
        : m_folder(open_folder(folder)) {
        if (!m_folder) {
            fail_with(errno == ENOENT ? missing_folder_error(folder) : error_from_errno(errno));
            return;
        }
        if (!wait(std::chrono::steady_clock::now() + longest_wait)) m_folder = Descriptor();
    }
    // Given back by hand: a child that was forked meanwhile has the descriptor too.
    ~Turn() {
        if (m_folder) flock(m_folder.get(), LOCK_UN);
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    [[nodiscard]] explicit operator bool() const { return static_cast<bool>(m_folder); }
    [[nodiscard]] int folder() const { return m_folder.get(); }

  private:
    // The host has no wait for this lock that ends by itself. A turn takes about as long as the
    // disk takes to write, so little is lost between two looks.
    bool wait(std::chrono::steady_clock::time_point end) {
        std::chrono::microseconds pause(100);
        while (flock(m_folder.get(), LOCK_EX | LOCK_NB) != 0) {
            if (errno == EINTR) continue;
            // A file system without locks: there writers don't meet.
            if (errno != EWOULDBLOCK) return true;
            if (std::chrono::steady_clock::now() >= end) return fail_with(ERROR_LOCK_VIOLATION);
            std::this_thread::sleep_for(pause);
            pause = std::min(pause * 2, std::chrono::microseconds(5000));
        }
        return true;
    }

    Descriptor m_folder;
};

bool replace(const Turn& turn, const std::string& path, const struct stat* old,
             std::string_view bytes) {
    Draft draft(turn.folder(), old == nullptr ? 0666 : 0600);
    if (draft && write_all(draft.file(), bytes) &&
        (old == nullptr || draft.take_rights_of(*old, path, old->st_mode & 07777)) &&
        fsync(draft.file()) == 0 && draft.take_place_of(std::string(name_in(path)))) {
        fsync(turn.folder());
        return true;
    }
    return fail_with_errno();
}

bool may_be_written(const std::string& path, const struct stat& info) {
    return (!is_read_only(info) && access(path.c_str(), W_OK) == 0) ||
           fail_with(ERROR_ACCESS_DENIED);
}

}  // namespace

bool read_whole_file(const std::string& path, struct stat& info, std::string& bytes) {
    const auto file = open_file(path, info);
    if (!file) return false;
    bytes.resize(static_cast<std::size_t>(info.st_size) + 1);
    return read_all(file.get(), bytes);
}

bool replace_content(const std::string& name, bool may_be_new, const ContentEdit& edit,
                     std::chrono::milliseconds longest_wait) {
    const auto path = behind_links(name);
    const Turn turn(std::string(folder_of(path)), longest_wait);
    if (!turn) return false;
    struct stat info {};
    std::string bytes;
    const bool is_there = read_whole_file(path, info, bytes);
    if (!is_there && (!may_be_new || GetLastError() != ERROR_FILE_NOT_FOUND)) return false;
    if (is_there && !may_be_written(path, info)) return false;
    if (!is_there) bytes.clear();
    const auto content = edit(std::move(bytes));
    return !content || replace(turn, path, is_there ? &info : nullptr, *content);
}

}  // namespace tvutil2
