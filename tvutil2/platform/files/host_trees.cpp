#include "tvutil2/platform/files/host_trees.h"

#include "tvutil2/platform/base/folder_names.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/folder_listing.h"
#include "tvutil2/platform/files/host_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <vector>

namespace tvutil2 {
namespace {

std::string path_in(const std::string& folder, std::string_view name) {
    auto path = folder + "/";
    path += name;
    return path;
}

bool read_names(const std::string& folder, std::vector<HostEntry>& names) {
    const auto opened = open_folder(folder);
    return opened && list_host_folder(opened.get(), names);
}

// Deletes the tree of one folder. It walks by descriptors, one open at a time: neither a link put
// in its way nor the depth of a tree leads it astray.
class TreeRemoval {
  public:
    explicit TreeRemoval(TreeWork& work) : m_work(work) {}

    void run(const std::string& path) {
        m_current = Descriptor(open(path.c_str(), kFolderFlags));
        if (!m_current || !enter()) return fail();
        for (;;) {
            auto& names = m_levels.back().folders;
            if (!names.empty()) {
                const auto name = std::move(names.back());
                names.pop_back();
                Descriptor next(openat(m_current.get(), name.c_str(), kFolderFlags));
                if (!next) {
                    fail();
                    continue;
                }
                std::swap(m_current, next);
                if (!enter()) {
                    fail();
                    std::swap(m_current, next);
                    continue;
                }
                m_levels.back().name = name;
            } else if (!leave()) {
                break;
            }
        }
        if (rmdir(path.c_str()) != 0) fail();
    }

  private:
    static constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

    struct Level {
        std::string name;
        dev_t device = 0;
        ino_t inode = 0;
        std::vector<std::string> folders;  // still to be deleted
    };

    void fail() {
        fail_with_errno();
        m_work.fail();
    }

    // Deletes the files of the folder that was just opened and notes its folders.
    bool enter() {
        Level level;
        struct stat info {};
        std::vector<HostEntry> names;
        if (fstat(m_current.get(), &info) != 0 || !list_host_folder(m_current.get(), names)) {
            return false;
        }
        level.device = info.st_dev;
        level.inode = info.st_ino;
        for (auto& [name, type] : names) {
            if (fstatat(m_current.get(), name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) continue;
            if (S_ISDIR(info.st_mode)) {
                level.folders.push_back(std::move(name));
            } else {
                remove_file(name, S_ISREG(info.st_mode));
            }
        }
        m_levels.push_back(std::move(level));
        return true;
    }

    void remove_file(const std::string& name, bool is_regular) {
        Descriptor claim;
        const auto path = "/proc/self/fd/" + std::to_string(m_current.get()) + "/" + name;
        if (is_regular && !claim_for_deletion(path, claim)) {
            m_work.fail();
        } else if (unlinkat(m_current.get(), name.c_str(), 0) != 0) {
            fail();
        }
    }

    // Back to the folder above; false at the top, or when the tree was changed under our feet.
    bool leave() {
        const auto done = std::move(m_levels.back());
        m_levels.pop_back();
        if (m_levels.empty()) return false;
        Descriptor above(openat(m_current.get(), "..", kFolderFlags));
        struct stat info {};
        if (!above || fstat(above.get(), &info) != 0 || info.st_dev != m_levels.back().device ||
            info.st_ino != m_levels.back().inode) {
            errno = ENOENT;
            fail();
            return false;
        }
        m_current = std::move(above);
        if (unlinkat(m_current.get(), done.name.c_str(), AT_REMOVEDIR) != 0) fail();
        return true;
    }

    TreeWork& m_work;
    Descriptor m_current;
    std::vector<Level> m_levels;
};

}  // namespace

std::string entry_of(const std::string& folder, std::string_view name) {
    auto path = path_in(folder, name);
    struct stat info {};
    if (lstat(path.c_str(), &info) == 0) return path;
    const auto other = find_without_case(folder, name);
    return other ? path_in(folder, *other) : path;
}

void TreeWork::fail() {
    if (m_error == 0) m_error = GetLastError();
}

bool TreeWork::may_replace(const std::string& target) {
    if (m_may_replace(target)) return true;
    m_declined = true;
    return false;
}

void TreeWork::copy_folder(const std::string& from, const std::string& to, const struct stat& info,
                           bool is_taken) {
    if (m_made.contains(folder_id(info))) {
        SetLastError(ERROR_SHARING_VIOLATION);
        return fail();
    }
    std::vector<HostEntry> names;
    if (!read_names(from, names) || (!is_taken && mkdir(to.c_str(), 0700) != 0)) {
        fail_at(to);
        return fail();
    }
    if (const auto id = folder_id(to)) m_made.insert(*id);
    for (const auto& [name, type] : names) copy_entry(path_in(from, name), entry_of(to, name));
    // Last, since a folder may be closed to writing and each new name sets its time.
    const Descriptor folder(open(to.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!is_taken && (!folder || !keep_times_and_mode(folder.get(), info))) fail();
}

struct TreeWork::Pair {
    struct stat source;
    bool is_taken;  // there is something of the target's name
};

// Looks at both names: false, with the failure entered, when there is nothing to take, or a folder
// and something else would have to become one.
bool TreeWork::look(const std::string& from, const std::string& to, Pair& pair) {
    if (lstat(from.c_str(), &pair.source) != 0) {
        fail_at(from);
        return fail(), false;
    }
    struct stat target {};
    pair.is_taken = lstat(to.c_str(), &target) == 0;
    if (pair.is_taken && S_ISDIR(pair.source.st_mode) != S_ISDIR(target.st_mode)) {
        SetLastError(ERROR_ALREADY_EXISTS);
        return fail(), false;
    }
    return true;
}

void TreeWork::copy(const std::string& from, const std::string& to) {
    m_made.clear();
    copy_entry(from, to);
}

void TreeWork::copy_entry(const std::string& from, const std::string& to) {
    Pair pair{};
    if (!look(from, to, pair)) return;
    const auto& source = pair.source;
    const bool is_taken = pair.is_taken;
    if (S_ISDIR(source.st_mode)) return copy_folder(from, to, source, is_taken);
    if (is_taken && !may_replace(to)) return;
    const bool copied = S_ISLNK(source.st_mode) ? copy_host_link(from, to, false)
                                                : copy_host_file(from, to, CopyTarget::any);
    if (!copied) fail();
}

void TreeWork::merge(const std::string& from, const std::string& to) {
    std::vector<HostEntry> names;
    if (!read_names(from, names)) {
        fail_at(from);
        return fail();
    }
    for (const auto& [name, type] : names) move(path_in(from, name), entry_of(to, name));
    // Holds what failed or was declined, which has its own report.
    if (rmdir(from.c_str()) != 0 && errno != ENOTEMPTY && errno != EEXIST) {
        fail_at(from);
        fail();
    }
}

void TreeWork::move_by_copy(const std::string& from, const std::string& to) {
    TreeWork whole(m_may_replace);
    whole.copy(from, to);
    if (whole.error() == 0 && !whole.declined()) whole.remove(from);
    if (m_error == 0) m_error = whole.error();
    m_declined = m_declined || whole.declined();
}

void TreeWork::move(const std::string& from, const std::string& to) {
    Pair pair{};
    if (!look(from, to, pair)) return;
    const bool is_taken = pair.is_taken;
    if (is_taken && S_ISDIR(pair.source.st_mode)) return merge(from, to);
    if (is_taken && !may_replace(to)) return;
    if (move_host_file(from, to, is_taken ? MOVEFILE_REPLACE_EXISTING : 0)) return;
    if (GetLastError() != ERROR_NOT_SAME_DEVICE) return fail();
    move_by_copy(from, to);
}

void TreeWork::remove(const std::string& path) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0) {
        fail_at(path);
        return fail();
    }
    if (S_ISDIR(info.st_mode)) return TreeRemoval(*this).run(path);
    Descriptor claim;
    if (S_ISREG(info.st_mode) && !claim_for_deletion(path, claim)) return fail();
    if (unlink(path.c_str()) != 0) {
        fail_at(path);
        fail();
    }
}

}  // namespace tvutil2
