#include "tvutil2/platform/base/folder_names.h"

#include "tvutil2/platform/base/folder_id.h"
#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/wide_text.h"

#include <dirent.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace tvutil2 {
namespace {

/// Smaller folders are read in a few microseconds.
constexpr std::size_t kWorthKeeping = 64;
/// Larger ones would cost more memory than their questions are worth.
constexpr std::size_t kMostNames = std::size_t{1} << 18;
constexpr std::size_t kMostFolders = 8;

std::optional<std::u16string> folded(std::string_view host_name) {
    auto name = platform_name(host_name);
    if (name) std::transform(name->begin(), name->end(), name->begin(), to_lower);
    return name;
}

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

std::optional<FolderId> folder_id_of(const OpenFolder& folder) {
    struct stat info {};
    if (fstat(dirfd(folder.get()), &info) != 0) return std::nullopt;
    return folder_id(info);
}

// Every entry but "." and "..", with its folded name.
template <class Visit>
void for_each_name(const OpenFolder& folder, Visit visit) {
    while (const auto* entry = readdir(folder.get())) {
        const std::string_view name(entry->d_name);
        if (name == "." || name == "..") continue;
        if (auto key = folded(name)) visit(std::move(*key), name);
    }
}

// File systems that change through this kernel alone, by their magic numbers (statfs(2)).
bool changes_are_local(const OpenFolder& folder) {
    struct statfs info {};
    if (fstatfs(dirfd(folder.get()), &info) != 0) return false;
    constexpr std::array<std::uint32_t, 7> kLocal = {
        0xEF53,      // ext2, ext3, ext4
        0x58465342,  // xfs
        0x9123683E,  // btrfs
        0x01021994,  // tmpfs
        0xF2F52010,  // f2fs
        0x2FC12FC1,  // zfs
        0xCA451A4E,  // bcachefs
    };
    return std::find(kLocal.begin(), kLocal.end(), static_cast<std::uint32_t>(info.f_type)) !=
           kLocal.end();
}

// How many forks this process is away from the one that loaded the library.
std::atomic<unsigned> g_forks{0};
const ForkMember g_counts_forks(
    ForkRank::caller, nullptr, [](void* /*what*/) {}, [](void* /*what*/) {},
    [](void* /*what*/) { g_forks.fetch_add(1, std::memory_order_relaxed); });

bool is_better(std::string_view name, const std::optional<std::string>& best,
               std::string_view exact) {
    return !best || name == exact || (*best != exact && name < *best);
}

class Names {
  public:
    void add(std::u16string key, std::string_view name) {
        const auto [first, last] = m_names.equal_range(key);
        const auto is_name = [name](const auto& entry) { return entry.second == name; };
        if (std::none_of(first, last, is_name)) m_names.emplace(std::move(key), name);
    }
    void remove(const std::u16string& key, std::string_view name) {
        const auto [first, last] = m_names.equal_range(key);
        const auto found =
            std::find_if(first, last, [name](const auto& entry) { return entry.second == name; });
        if (found != last) m_names.erase(found);
    }
    [[nodiscard]] std::optional<std::string> find(const std::u16string& key,
                                                  std::string_view exact) const {
        const auto [first, last] = m_names.equal_range(key);
        std::optional<std::string> best;
        for (auto entry = first; entry != last; ++entry) {
            if (is_better(entry->second, best, exact)) best = entry->second;
        }
        return best;
    }
    [[nodiscard]] std::size_t size() const { return m_names.size(); }

  private:
    std::unordered_multimap<std::u16string, std::string> m_names;
};

struct WatchedFolder {
    FolderId id;
    int watch;
    Names names;
};

// The folders in memory, the one asked for last in front.
class WatchedFolders {
  public:
    // The folder's names, up to date; null when it isn't kept.
    Names* find(FolderId id) {
        forget_in_child();
        if (m_folders.empty()) return nullptr;
        read_changes();
        const auto found = std::find_if(m_folders.begin(), m_folders.end(),
                                        [id](const auto& folder) { return folder.id == id; });
        if (found == m_folders.end()) return nullptr;
        m_folders.splice(m_folders.begin(), m_folders, found);
        return &found->names;
    }

    // True from the second time on that a large folder is told.
    bool is_asked_often(FolderId id) {
        if (std::find(m_asked_once.begin(), m_asked_once.end(), id) != m_asked_once.end()) {
            return true;
        }
        m_asked_once[m_next_asked++ % m_asked_once.size()] = id;
        return false;
    }

    void keep(const OpenFolder& folder, FolderId id) {
        if (m_queue < 0) m_queue = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        if (m_queue < 0 || find(id) != nullptr) return;
        // By descriptor, so that the folder watched is the folder read. The watch comes first: what
        // changes while the names are read is then applied once more, which changes nothing.
        const auto path = "/proc/self/fd/" + std::to_string(dirfd(folder.get()));
        const int watch = inotify_add_watch(
            m_queue, path.c_str(),
            IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ONLYDIR | IN_EXCL_UNLINK);
        if (watch < 0) return;
        m_folders.push_front({id, watch, {}});
        rewinddir(folder.get());
        for_each_name(folder, [&names = m_folders.front().names](auto key, auto name) {
            names.add(std::move(key), name);
        });
        if (m_folders.front().names.size() > kMostNames) drop(m_folders.begin());
        if (m_folders.size() > kMostFolders) drop(std::prev(m_folders.end()));
    }

  private:
    using Position = std::list<WatchedFolder>::iterator;

    void drop(Position folder) {
        inotify_rm_watch(m_queue, folder->watch);
        m_folders.erase(folder);
    }

    // A child that was forked shares the queue: events that it read would be lost to its parent.
    void forget_in_child() {
        const auto forks = g_forks.load(std::memory_order_relaxed);
        if (m_forks == forks) return;
        m_forks = forks;
        m_folders.clear();
        if (m_queue >= 0) close(m_queue);
        m_queue = -1;
    }

    void read_changes() {
        alignas(inotify_event) std::array<char, 16384> buffer;
        constexpr std::size_t kLongestEvent = sizeof(inotify_event) + NAME_MAX + 1;
        ssize_t size = 0;
        do {
            size = read(m_queue, buffer.data(), buffer.size());
            for (const char* next = buffer.data(); next < buffer.data() + size;) {
                const auto* event = reinterpret_cast<const inotify_event*>(next);
                apply(*event);
                next += sizeof *event + event->len;
            }
            // A buffer with room for one more event has emptied the queue.
        } while (size > 0 && static_cast<std::size_t>(size) + kLongestEvent > buffer.size());
    }

    void apply(const inotify_event& event) {
        if ((event.mask & IN_Q_OVERFLOW) != 0) {
            while (!m_folders.empty()) drop(m_folders.begin());
            return;
        }
        const auto folder = std::find_if(m_folders.begin(), m_folders.end(),
                                         [&event](const auto& f) { return f.watch == event.wd; });
        if (folder == m_folders.end()) return;
        if ((event.mask & IN_IGNORED) != 0) {
            m_folders.erase(folder);
            return;
        }
        if (event.len == 0) return;
        const std::string_view name(event.name);
        auto key = folded(name);
        if (!key) return;
        if ((event.mask & (IN_CREATE | IN_MOVED_TO)) != 0) {
            folder->names.add(std::move(*key), name);
        } else {
            folder->names.remove(*key, name);
        }
    }

    std::list<WatchedFolder> m_folders;
    std::array<FolderId, kMostFolders> m_asked_once;
    std::size_t m_next_asked = 0;
    int m_queue = -1;
    unsigned m_forks = g_forks.load(std::memory_order_relaxed);
};

struct SharedFolders {
    std::mutex lock;
    ForkLock is_fork_safe{lock, ForkRank::area};
    WatchedFolders folders;
};

// Never destroyed: files are closed and made by static objects of other modules at the end.
SharedFolders& shared_folders() {
    static auto* const instance = new SharedFolders;
    return *instance;
}

// Made at load: a fork must not come upon it half made.
[[maybe_unused]] const auto& g_folders = shared_folders();

}  // namespace

std::optional<std::string> find_without_case(const std::string& folder, std::string_view name,
                                             bool* is_there) {
    const char* path = folder.empty() ? "/" : folder.c_str();
    struct stat info {};
    const bool is_folder = stat(path, &info) == 0 && S_ISDIR(info.st_mode);
    if (is_there != nullptr) *is_there = is_folder;
    const auto key = folded(name);
    if (!key || !is_folder) return std::nullopt;
    auto& shared = shared_folders();
    {
        const std::lock_guard guard(shared.lock);
        if (const auto* names = shared.folders.find(folder_id(info))) {
            return names->find(*key, name);
        }
    }
    const OpenFolder entries(opendir(path));
    if (!entries) return std::nullopt;
    std::optional<std::string> best;
    std::size_t count = 0;
    for_each_name(entries, [&](const std::u16string& candidate, std::string_view host_name) {
        ++count;
        if (candidate == *key && is_better(host_name, best, name)) best = host_name;
    });
    if (count >= kWorthKeeping && changes_are_local(entries)) {
        const std::lock_guard guard(shared.lock);
        const auto id = folder_id_of(entries);
        if (id && shared.folders.is_asked_often(*id)) shared.folders.keep(entries, *id);
    }
    return best;
}

}  // namespace tvutil2
