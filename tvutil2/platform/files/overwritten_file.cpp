#include "tvutil2/platform/files/overwritten_file.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/replaced_file.h"
#include "tvutil2/platform/files/sharing.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

namespace tvutil2 {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kLongestWait = std::chrono::seconds(5);
// Beside the marks of sharing modes. Programs of different releases meet here: it never changes.
constexpr off_t kTurnByte = 0x7FFFFFFFFFFFFF10;

int set_lock(int file, short type) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = kTurnByte;
    lock.l_len = 1;
    return fcntl(file, F_OFD_SETLK, &lock);
}

// Turns are short: most waits end while others are let run.
void wait_a_little(int attempt) {
    constexpr int kYields = 100;
    if (attempt < kYields) {
        sched_yield();
    } else {
        std::this_thread::sleep_for(std::chrono::milliseconds(std::min(attempt - kYields + 1, 10)));
    }
}

// By attempts, since a wait of the host's for a lock has no end.
bool wait_for_turn(int file, short type, Clock::time_point end) {
    for (int attempt = 0; set_lock(file, type) != 0; ++attempt) {
        if (errno != EAGAIN && errno != EACCES) return true;  // no locks here
        if (Clock::now() >= end) return fail_with(ERROR_LOCK_VIOLATION);
        wait_a_little(attempt);
    }
    return true;
}

// O_NONBLOCK: a pipe with a file's name must not hold the caller.
constexpr int kFlags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

bool is_sound(int file, struct stat& info) {
    if (fstat(file, &info) != 0) return fail_with_errno();
    if (!S_ISREG(info.st_mode)) return fail_with(ERROR_ACCESS_DENIED);
    if (static_cast<std::size_t>(info.st_size) > kLargestContent)
        return fail_with(ERROR_FILE_TOO_LARGE);
    return may_be_read(file);
}

// The file may grow meanwhile, and some of /proc have more than they tell.
bool read_all(int file, std::size_t expected, std::string& bytes) {
    bytes.resize(expected + 1);
    std::size_t size = 0;
    for (;;) {
        const auto count =
            pread(file, bytes.data() + size, bytes.size() - size, static_cast<off_t>(size));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return fail_with_errno();
        size += static_cast<std::size_t>(count);
        if (count == 0) break;
        if (size > kLargestContent) return fail_with(ERROR_FILE_TOO_LARGE);
        if (size == bytes.size()) bytes.resize(size + std::max(size / 2, std::size_t{4096}));
    }
    bytes.resize(size);
    return true;
}

// A signal that ends the process stands behind this limit, for a write at it: none is tried.
bool is_at_size_limit(std::size_t size) {
    rlimit limit{};
    return getrlimit(RLIMIT_FSIZE, &limit) == 0 && size >= limit.rlim_cur;
}

bool overwrite_all(int file, std::string_view bytes) {
    std::size_t size = 0;
    while (size < bytes.size()) {
        const auto count =
            pwrite(file, bytes.data() + size, bytes.size() - size, static_cast<off_t>(size));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return fail_with_errno();
        size += static_cast<std::size_t>(count);
        if (size < bytes.size() && is_at_size_limit(size)) return fail_with(ERROR_DISK_FULL);
    }
    return true;
}

// What lines end with, as the mark in front of a text says.
std::string_view line_end(std::string_view text) {
    if (text.starts_with("\xFF\xFE")) return {"\n\0", 2};
    if (text.starts_with("\xFE\xFF")) return {"\0\n", 2};
    return "\n";
}

std::string filled_up(std::string_view content, std::size_t size) {
    std::string filled(content);
    const auto filling = line_end(content);
    while (filled.size() + filling.size() <= size) filled += filling;
    filled.resize(std::max(size, filled.size()), '\n');
    return filled;
}

}  // namespace

bool read_between_writers(const std::string& path, struct stat& info, std::string& bytes) {
    const Descriptor file(open(path.c_str(), O_RDONLY | kFlags));
    if (!file) return fail_at(path);
    if (!is_sound(file.get(), info) ||
        !wait_for_turn(file.get(), F_RDLCK, Clock::now() + kLongestWait)) {
        return false;
    }
    const bool is_read = fstat(file.get(), &info) == 0 &&
                         read_all(file.get(), static_cast<std::size_t>(info.st_size), bytes);
    set_lock(file.get(), F_UNLCK);  // a child that was forked meanwhile has the descriptor too
    return is_read;
}

bool read_between_writers(const std::string& path, std::string& bytes) {
    struct stat info {};
    return read_between_writers(path, info, bytes);
}

OverwrittenFile::OverwrittenFile(const std::string& path, bool may_be_new) : m_path(path) {
    struct stat info {};
    for (const auto end = Clock::now() + kLongestWait;;) {
        if (!open(may_be_new)) return;
        if (!is_sound(m_file.get(), info) ||
            (is_read_only(info) && !m_is_new && !fail_with(ERROR_ACCESS_DENIED)) ||
            !wait_for_turn(m_file.get(), F_WRLCK, end)) {
            break;
        }
        // The one before may have put another file in its place.
        if (stands_under_its_name()) return;
        m_file = {};
    }
    const auto error = GetLastError();
    m_file = {};
    SetLastError(error);
}

OverwrittenFile::~OverwrittenFile() {
    if (!m_file) return;
    struct stat info {};
    if (m_is_new && stands_under_its_name() && fstat(m_file.get(), &info) == 0 &&
        info.st_size == 0) {
        unlink(m_path.c_str());
    }
    set_lock(m_file.get(), F_UNLCK);  // a child that was forked meanwhile has the descriptor too
}

// A link that leads nowhere is told as existing by O_EXCL, and followed without it.
bool OverwrittenFile::open(bool may_be_new) {
    const auto attempt = [this](int flags) {
        m_file = Descriptor(::open(m_path.c_str(), O_RDWR | kFlags | flags, 0666));
        return static_cast<bool>(m_file);
    };
    m_is_new = false;
    if (attempt(0)) return true;
    if (errno != ENOENT || !may_be_new) return fail_at(m_path);
    m_is_new = attempt(O_CREAT | O_EXCL);
    return m_is_new || (errno == EEXIST && attempt(O_CREAT)) || fail_at(m_path);
}

bool OverwrittenFile::stands_under_its_name() const {
    struct stat own {};
    struct stat named {};
    return fstat(m_file.get(), &own) == 0 && stat(m_path.c_str(), &named) == 0 &&
           own.st_dev == named.st_dev && own.st_ino == named.st_ino;
}

// Holes of the old content count as well. Not every file system can do it.
bool OverwrittenFile::reserve(std::size_t size) const {
    if (size == 0 ||
        fallocate(m_file.get(), FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size)) == 0) {
        return true;
    }
    if (errno == EOPNOTSUPP || errno == ENOSYS || errno == EINVAL || errno == EINTR) return true;
    return fail_with_errno();
}

bool OverwrittenFile::put(std::string_view content, std::string_view old) const {
    const auto size = std::max(content.size(), old.size());
    const bool is_written = is_at_size_limit(0) ? fail_with(ERROR_DISK_FULL)
                            : content.empty()   ? true
                            : content.size() == size
                                ? overwrite_all(m_file.get(), content)
                                : overwrite_all(m_file.get(), filled_up(content, size));
    return is_written &&
           (old.size() <= content.size() ||
            ftruncate(m_file.get(), static_cast<off_t>(content.size())) == 0 || fail_with_errno());
}

bool OverwrittenFile::overwrite(const ContentEdit& edit, bool flush) {
    struct stat info {};
    std::string old;
    if (!claim_sharing(m_file.get(), FILE_WRITE_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE) ||
        fstat(m_file.get(), &info) != 0 ||
        !read_all(m_file.get(), static_cast<std::size_t>(info.st_size), old)) {
        return false;
    }
    const auto content = edit(old);
    if (!content) return true;
    if (content->size() > kLargestContent) return fail_with(ERROR_FILE_TOO_LARGE);
    if (!reserve(content->size()) || !put(*content, old)) {
        const auto error = GetLastError();
        if (!old.empty() && !is_at_size_limit(0)) overwrite_all(m_file.get(), old);
        [[maybe_unused]] const int cut = ftruncate(m_file.get(), static_cast<off_t>(old.size()));
        return fail_with(error);
    }
    m_is_new = false;
    return !flush || fsync(m_file.get()) == 0 || fail_with_errno();
}

}  // namespace tvutil2
