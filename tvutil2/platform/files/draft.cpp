#include "tvutil2/platform/files/draft.h"

#include "tvutil2/platform/base/folder_id.h"
#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/files/folder_listing.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <vector>

namespace tvutil2 {
namespace {

constexpr std::string_view kPrefix = ".tvutil2-copy-";
constexpr const char* kAccessList = "system.posix_acl_access";

std::string new_name() {
    constexpr char kDigits[] = "0123456789abcdef";
    std::array<std::uint8_t, 8> bytes{};
    arc4random_buf(bytes.data(), bytes.size());
    std::string name(kPrefix);
    for (const auto byte : bytes) {
        name += kDigits[byte >> 4];
        name += kDigits[byte & 15];
    }
    return name;
}

// The folders that this process looked through last. A small one is looked through each time.
class Sweeps {
  public:
    bool is_due(FolderId id) {
        const std::lock_guard guard(lock);
        return std::none_of(m_large.begin(), m_large.end(), [id](const Large& folder) {
            return folder.id == id &&
                   std::chrono::steady_clock::now() - folder.seen < std::chrono::minutes(1);
        });
    }
    void note(FolderId id, std::size_t entries) {
        constexpr std::size_t kSmall = 64;
        if (entries <= kSmall) return;
        const std::lock_guard guard(lock);
        m_large[m_next] = {id, std::chrono::steady_clock::now()};
        m_next = (m_next + 1) % m_large.size();
    }

    std::mutex lock;

  private:
    struct Large {
        FolderId id;
        std::chrono::steady_clock::time_point seen;
    };
    std::array<Large, 16> m_large{};
    std::size_t m_next = 0;
};

constinit Sweeps g_sweeps;
const ForkLock g_sweeps_fork_safe(g_sweeps.lock, ForkRank::area);

// Deletes a draft that nobody holds. Another account's can't be opened, and stays.
void delete_if_abandoned(int folder, const char* name) {
    const Descriptor file(
        openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat info {};
    if (!file || fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) return;
    if (flock(file.get(), LOCK_EX | LOCK_NB) == 0) unlinkat(folder, name, 0);
}

void sweep(int folder) {
    struct stat info {};
    if (fstat(folder, &info) != 0 || !g_sweeps.is_due(folder_id(info))) return;
    std::vector<HostEntry> entries;
    list_host_folder(folder, entries);
    g_sweeps.note(folder_id(info), entries.size());
    for (const auto& [name, type] : entries) {
        if (is_draft_name(name)) delete_if_abandoned(folder, name.c_str());
    }
}

// For a group that can't be kept, or a list of persons, which the mode shows as the group: who was
// in it and who wasn't both keep only what both could do.
mode_t without_group(mode_t mode) {
    const mode_t both = mode & (mode >> 3) & 07;
    return (mode & ~mode_t{077}) | both << 3 | both;
}

}  // namespace

bool is_draft_name(std::string_view name) {
    return name.starts_with(kPrefix);
}

Draft::Draft(int folder, mode_t mode) : m_folder(folder) {
    sweep(folder);
    // Between its making and its lock another process may take it for abandoned.
    for (int attempt = 0; attempt < 8; ++attempt) {
        m_name = new_name();
        Descriptor file(
            openat(folder, m_name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        if (!file) {
            if (errno == EEXIST) continue;
            return;
        }
        struct stat info {};
        const bool is_locked =
            flock(file.get(), LOCK_EX | LOCK_NB) == 0 || errno == ENOLCK || errno == EOPNOTSUPP;
        if (is_locked && fstat(file.get(), &info) == 0 && info.st_nlink != 0) {
            m_file = std::move(file);
            return;
        }
        unlinkat(folder, m_name.c_str(), 0);
        errno = EBUSY;
    }
}

Draft::~Draft() {
    const int error = errno;
    if (m_file && !m_name.empty()) unlinkat(m_folder, m_name.c_str(), 0);
    errno = error;
}

bool Draft::take_rights_of(const struct stat& old, const std::string& path, mode_t mode) {
    struct stat own {};
    if (fstat(m_file.get(), &own) != 0) return false;
    const bool same_owner =
        own.st_uid == old.st_uid || fchown(m_file.get(), old.st_uid, gid_t(-1)) == 0;
    const bool same_group =
        own.st_gid == old.st_gid || fchown(m_file.get(), uid_t(-1), old.st_gid) == 0;
    if (!same_owner || !same_group) mode &= 0777;
    if (!same_group) mode = without_group(mode);

    // A list that the folder hands down to new files goes as well: the old file had none, or its
    // own.
    std::vector<char> list(1024);
    const auto size = getxattr(path.c_str(), kAccessList, list.data(), list.size());
    if (size > 0) {
        if (fsetxattr(m_file.get(), kAccessList, list.data(), static_cast<std::size_t>(size), 0) !=
            0) {
            mode = without_group(mode);
        }
    } else {
        if (size < 0 && errno == ERANGE) mode = without_group(mode);
        fremovexattr(m_file.get(), kAccessList);
    }
    return fchmod(m_file.get(), mode) == 0;
}

bool Draft::take_place_of(const std::string& name) {
    if (renameat(m_folder, m_name.c_str(), m_folder, name.c_str()) != 0) return false;
    m_name.clear();
    return true;
}

std::string behind_links(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? real.get() : path;
}

}  // namespace tvutil2
