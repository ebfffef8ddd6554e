#include "tvutil2/platform/profile/profile_store.h"

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
#include <ctime>
#include <mutex>
#include <vector>

namespace tvutil2 {
namespace {

constexpr off_t kLargest = off_t{1} << 30;
constexpr std::size_t kKept = 16;

long long nanoseconds(const timespec& time) {
    return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

bool is_same_file(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           nanoseconds(a.st_mtim) == nanoseconds(b.st_mtim) &&
           nanoseconds(a.st_ctim) == nanoseconds(b.st_ctim);
}

// The files that were read last, the latest one in front.
class Cache {
  public:
    std::shared_ptr<const ProfileText> find(const std::string& path, const struct stat& info) {
        const std::lock_guard lock(m_mutex);
        const auto found = std::find_if(m_kept.begin(), m_kept.end(),
                                        [&path](const Kept& kept) { return kept.path == path; });
        if (found == m_kept.end() || !is_same_file(found->info, info)) return nullptr;
        std::rotate(m_kept.begin(), found, found + 1);
        return m_kept.front().text;
    }

    // A file that changed a moment ago may change again without its times showing it, since they
    // move in steps of up to 10 ms: it isn't kept yet.
    void keep(const std::string& path, const struct stat& info,
              std::shared_ptr<const ProfileText> text) {
        constexpr long long kSettled = 50'000'000;
        timespec now{};
        clock_gettime(CLOCK_REALTIME_COARSE, &now);
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_kept, [&path](const Kept& kept) { return kept.path == path; });
        if (nanoseconds(now) - nanoseconds(info.st_ctim) < kSettled) return;
        if (m_kept.size() == kKept) m_kept.pop_back();
        m_kept.insert(m_kept.begin(), {path, info, std::move(text)});
    }

  private:
    struct Kept {
        std::string path;
        struct stat info;
        std::shared_ptr<const ProfileText> text;
    };

    std::mutex m_mutex;
    std::vector<Kept> m_kept;
};

Cache& cache() {
    static Cache cache;
    return cache;
}

bool read_all(int file, std::string& bytes) {
    std::size_t size = 0;
    for (;;) {
        if (size == bytes.size()) bytes.resize(size + 4096);
        const auto count = read(file, bytes.data() + size, bytes.size() - size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return fail_with_errno();
        size += static_cast<std::size_t>(count);
        if (count == 0) break;
    }
    bytes.resize(size);
    return true;
}

// O_NONBLOCK: a pipe with a file's name must not hold the caller.
Descriptor open_profile(const std::string& path, struct stat& info) {
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (!file || fstat(file.get(), &info) != 0) {
        fail_at(path);
        return {};
    }
    if (!S_ISREG(info.st_mode)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return {};
    }
    if (info.st_size > kLargest) {
        SetLastError(ERROR_FILE_TOO_LARGE);
        return {};
    }
    if (!may_be_read(file.get())) return {};
    return file;
}

bool read_content(const std::string& path, struct stat& info, std::string& bytes) {
    const auto file = open_profile(path, info);
    if (!file) return false;
    bytes.resize(static_cast<std::size_t>(info.st_size) + 1);
    return read_all(file.get(), bytes);
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
constexpr const char* kNewContent = ".tvutil2-profile-new";

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

std::shared_ptr<const ProfileText> read_profile(const std::string& path) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0) {
        fail_at(path);
        return nullptr;
    }
    if (auto kept = cache().find(path, info)) return kept;
    std::string bytes;
    if (!read_content(path, info, bytes)) return nullptr;
    auto text = std::make_shared<const ProfileText>(std::move(bytes));
    cache().keep(path, info, text);
    return text;
}

bool edit_profile(const std::string& name,
                  const std::function<std::string(const ProfileText&)>& edit) {
    const auto path = behind_links(name);
    const Turn turn{std::string(folder_of(path))};
    if (!turn) return fail_at(path);
    struct stat info {};
    std::string bytes;
    const bool is_there = read_content(path, info, bytes);
    if (!is_there && GetLastError() != ERROR_FILE_NOT_FOUND) return false;
    if (!is_there) bytes.clear();
    const ProfileText text(std::move(bytes));
    const auto content = edit(text);
    if (is_there && !may_be_written(path, info)) return false;
    if (content == text.bytes()) return true;
    return replace(turn, path, is_there ? &info : nullptr, content);
}

}  // namespace tvutil2
