#include "tvutil2/platform/registry/store_file.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locations.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <ctime>

namespace tvutil2 {
namespace {

constexpr auto kDone = static_cast<LONG>(ERROR_SUCCESS);
constexpr auto kRefused = static_cast<LONG>(ERROR_ACCESS_DENIED);
constexpr auto kMissing = static_cast<LONG>(ERROR_FILE_NOT_FOUND);
constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;
constexpr mode_t kMachineFolderMode = 0755;
constexpr const char* kFiles[] = {"", "-wal", "-shm", "-signal", "-journal"};

LONG folder_error() {
    const bool is_missing = errno == ENOENT || errno == ENOTDIR;
    return is_missing ? kMissing : static_cast<LONG>(error_from_errno(errno));
}

std::int64_t nanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

// A folder made under a careless umask is put right by whoever owns it.
LONG check_machine_folder(const std::string& folder) {
    struct stat info {};
    if (::lstat(folder.c_str(), &info) != 0) return folder_error();
    if (!S_ISDIR(info.st_mode)) return kRefused;
    if ((info.st_mode & kOthersWrite) != 0 && info.st_uid == geteuid()) {
        const Descriptor opened(
            ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!opened || ::fchmod(opened.get(), kMachineFolderMode) != 0 ||
            ::fstat(opened.get(), &info) != 0) {
            return folder_error();
        }
    }
    return is_trusted_file(info) ? kDone : kRefused;
}

}  // namespace

bool is_trusted_file(const struct stat& info) {
    return (info.st_uid == 0 || info.st_uid == geteuid()) && (info.st_mode & kOthersWrite) == 0;
}

StoreFile::StoreFile(std::string folder, bool is_private)
    : m_folder(std::move(folder)), m_path(m_folder + "/registry.db"), m_is_private(is_private) {}

// Nobody else's in between: the mode of the machine's folder is widened once it is there.
LONG StoreFile::make_folder() const {
    const auto parent = m_folder.substr(0, m_folder.find_last_of('/'));
    if (!parent.empty() && !make_host_folders(parent, m_is_private)) return folder_error();
    if (::mkdir(m_folder.c_str(), 0700) != 0) return errno == EEXIST ? kDone : folder_error();
    const Descriptor made(
        ::open(m_folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const bool is_done =
        made && ::fchmod(made.get(), m_is_private ? S_IRWXU : kMachineFolderMode) == 0;
    return is_done ? kDone : folder_error();
}

LONG StoreFile::check(std::string& real) const {
    if (!m_is_private) {
        if (const auto error = check_machine_folder(m_folder); error != kDone) return error;
    }
    char folder[PATH_MAX];
    if (::realpath(m_folder.c_str(), folder) == nullptr) return folder_error();
    real = std::string(folder) + m_path.substr(m_folder.size());
    for (const std::string suffix : kFiles) {
        struct stat info {};
        if (::lstat((real + suffix).c_str(), &info) != 0) {
            if (errno != ENOENT || suffix.empty()) return folder_error();
        } else if (S_ISLNK(info.st_mode) || (!m_is_private && !is_trusted_file(info))) {
            return kRefused;
        }
    }
    return kDone;
}

// What is pinned is what counts, whatever lies at the path by now. Closing a descriptor of this
// kind leaves SQLite's locks on the file alone.
bool StoreFile::pin_store(struct stat& info) {
    Descriptor pin(::open(m_path.c_str(), O_PATH | O_CLOEXEC));
    if (!pin || ::fstat(pin.get(), &info) != 0) return false;
    m_pin = std::move(pin);
    m_device = info.st_dev;
    m_inode = info.st_ino;
    ++m_number;
    return true;
}

std::uint32_t StoreFile::number() {
    struct stat info {};
    const std::lock_guard guard(m_lock);
    std::uint32_t now = 0;
    if (::stat(m_path.c_str(), &info) == 0) {
        const bool is_known = m_pin && info.st_dev == m_device && info.st_ino == m_inode;
        if (is_known || pin_store(info)) now = m_number;
    }
    m_seen_number.store(now, std::memory_order_relaxed);
    m_seen_at.store(nanoseconds(), std::memory_order_release);
    return now;
}

bool StoreFile::was_just(std::uint32_t asked, std::int64_t nanoseconds_ago) {
    const auto seen_at = m_seen_at.load(std::memory_order_acquire);
    const auto seen = m_seen_number.load(std::memory_order_relaxed);
    if (seen == asked && nanoseconds() - seen_at < nanoseconds_ago) return true;
    return number() == asked;
}

}  // namespace tvutil2
