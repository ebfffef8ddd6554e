#include "tvutil2/platform/files/replaced_file.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/sharing.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

namespace tvutil2 {
namespace {

constexpr std::size_t kLargest = std::size_t{1} << 30;

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
        if (size > kLargest) return fail_with(ERROR_FILE_TOO_LARGE);
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
    if (static_cast<std::size_t>(info.st_size) > kLargest) {
        SetLastError(ERROR_FILE_TOO_LARGE);
        return {};
    }
    if (!may_be_read(file.get())) return {};
    return file;
}

// The turn of one writer in a folder.
class Turn {
  public:
    explicit Turn(const std::string& folder)
        : m_folder(
              open(folder.empty() ? "/" : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        if (!m_folder) return;
        while (flock(m_folder.get(), LOCK_EX) != 0 && errno == EINTR) {
        }
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
    Descriptor m_folder;
};

bool write_all(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

// Nobody else may read the new content before it has the old one's mode and owner. The owner can
// only be kept by root; for others it is their own already, or becomes so.
bool take_place_of(int file, const struct stat& old) {
    if (fchown(file, old.st_uid, old.st_gid) != 0 && errno != EPERM) return false;
    return fchmod(file, old.st_mode & 07777) == 0;
}

// One name for all: only the writer whose turn it is uses it, and what a killed one left is
// replaced by the next.
constexpr const char* kNewContent = ".tvutil2-new-content";

bool replace(const Turn& turn, const std::string& path, const struct stat* old,
             std::string_view bytes) {
    const int folder = turn.folder();
    unlinkat(folder, kNewContent, 0);
    const Descriptor file(openat(folder, kNewContent, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                                 old != nullptr ? 0600 : 0666));
    if (!file) return fail_with_errno();
    const auto name = std::string(name_in(path));
    if (write_all(file.get(), bytes) && (old == nullptr || take_place_of(file.get(), *old)) &&
        fsync(file.get()) == 0 && renameat(folder, kNewContent, folder, name.c_str()) == 0) {
        fsync(folder);
        return true;
    }
    fail_with_errno();
    unlinkat(folder, kNewContent, 0);
    return false;
}

bool may_be_written(const std::string& path, const struct stat& info) {
    return (!is_read_only(info) && access(path.c_str(), W_OK) == 0) ||
           fail_with(ERROR_ACCESS_DENIED);
}

// What a link leads to is what gets replaced.
std::string behind_links(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? real.get() : path;
}

}  // namespace

bool read_whole_file(const std::string& path, struct stat& info, std::string& bytes) {
    const auto file = open_file(path, info);
    if (!file) return false;
    bytes.resize(static_cast<std::size_t>(info.st_size) + 1);
    return read_all(file.get(), bytes);
}

bool replace_content(const std::string& name, bool may_be_new, const ContentEdit& edit) {
    const auto path = behind_links(name);
    const Turn turn{std::string(folder_of(path))};
    if (!turn) return fail_at(path);
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
