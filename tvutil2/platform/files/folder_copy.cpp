#include "tvutil2/platform/files/folder_copy.h"

#include "tvutil2/platform/base/folder_id.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locations.h"
#include "tvutil2/platform/files/draft.h"
#include "tvutil2/platform/files/folder_listing.h"
#include "tvutil2/platform/files/host_files.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <map>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace tvutil2 {
namespace {

std::string path_in(const std::string& folder, const std::string& name) {
    return folder + "/" + name;
}

// What is in a target folder before anything is copied into it.
class TakenNames {
  public:
    explicit TakenNames(std::vector<HostEntry> entries) {
        for (auto& entry : entries) {
            if (const auto name = platform_name(entry.name)) {
                m_by_upper.emplace(upper_of(*name), entry.name);
            }
            m_exact.insert(std::move(entry.name));
        }
    }
    // The name that a copy of `name` takes, or takes over.
    [[nodiscard]] std::string find(const std::string& name, bool& is_taken) const {
        is_taken = m_exact.contains(name);
        if (is_taken || m_exact.empty()) return name;
        const auto wide = platform_name(name);
        const auto twin = wide ? m_by_upper.find(upper_of(*wide)) : m_by_upper.end();
        is_taken = twin != m_by_upper.end();
        return is_taken ? twin->second : name;
    }

  private:
    std::unordered_set<std::string> m_exact;
    std::multimap<std::u16string, std::string> m_by_upper;
};

// The last error is the copy's, whatever the observer does.
void tell_failure(CopyObserver* observer, const std::string& from) {
    if (observer == nullptr) return;
    const auto error = GetLastError();
    observer->failed(platform_path(from).value_or(u"").c_str(), error);
    SetLastError(error);
}

class FolderCopy {
  public:
    explicit FolderCopy(CopyObserver* observer) : m_observer(observer) {}

    // A list and not recursion: the depth is the disk's.
    bool run(const std::string& from, const std::string& to) {
        const bool worked = copy_one(from, to);
        while (!m_folders.empty()) {
            const auto [source, target] = std::move(m_folders.back());
            m_folders.pop_back();
            copy_one(source, target);
        }
        return worked;
    }

  private:
    bool copy_one(const std::string& from, const std::string& to) {
        if (copy_content_of(from, to)) return true;
        tell_failure(m_observer, from);
        return false;
    }

    bool copy_content_of(const std::string& from, const std::string& to) {
        const auto source = open_folder(from);
        struct stat info {};
        if (!source || fstat(source.get(), &info) != 0) return fail_at(from);
        // Before the target is made, which may lie in the source.
        std::vector<HostEntry> entries;
        if (!list_host_folder(source.get(), entries)) return fail_with_errno();
        if (m_targets.contains(folder_id(info))) return true;
        const bool is_new = mkdir(to.c_str(), (info.st_mode & 0777) | 0700) == 0;
        if (!is_new && errno != EEXIST) return fail_at(to);
        const auto target = open_folder(to);
        struct stat target_info {};
        if (!target || fstat(target.get(), &target_info) != 0) return fail_at(to);
        if (folder_id(target_info) == folder_id(info)) return fail_with(ERROR_SHARING_VIOLATION);
        m_targets.insert(folder_id(target_info));
        std::vector<HostEntry> taken;
        if (!is_new && !list_host_folder(target.get(), taken)) return fail_with_errno();
        copy_entries(from, to, entries, taken);
        return true;
    }

    void copy_entries(const std::string& from, const std::string& to,
                      const std::vector<HostEntry>& entries, std::vector<HostEntry>& taken) {
        std::unordered_set<std::string> own;
        if (!taken.empty()) {
            for (const auto& entry : entries) own.insert(entry.name);
        }
        const TakenNames names(std::move(taken));
        for (const auto& entry : entries) {
            if (is_draft_name(entry.name)) continue;
            bool is_taken = false;
            auto name = names.find(entry.name, is_taken);
            // The source has a file of its own for that name.
            if (name != entry.name && own.contains(name)) {
                name = entry.name;
                is_taken = false;
            }
            copy_entry(path_in(from, entry.name), path_in(to, name), entry.type, is_taken);
        }
    }

    void copy_entry(const std::string& from, const std::string& to, unsigned char type,
                    bool is_taken) {
        struct stat info {};
        if (type == DT_UNKNOWN && lstat(from.c_str(), &info) == 0) {
            type = static_cast<unsigned char>(IFTODT(info.st_mode));
        }
        if (type == DT_DIR) {
            m_folders.emplace_back(from, to);
        } else if (type == DT_LNK && is_folder(from)) {
            tell(from, copy_host_link(from, to, false));
        } else if (type == DT_REG || type == DT_LNK) {
            tell(from, copy_host_file(from, to, is_taken ? CopyTarget::any : CopyTarget::is_new));
        }
    }

    void tell(const std::string& from, bool worked) {
        if (!worked) return tell_failure(m_observer, from);
        if (m_observer != nullptr) m_observer->copied();
    }

    CopyObserver* m_observer;
    std::vector<std::pair<std::string, std::string>> m_folders;
    std::set<FolderId> m_targets;
};

}  // namespace

bool copy_folder(const char16_t* from, const char16_t* to, CopyObserver* observer) {
    const auto source = host_path_of(from);
    const auto target = source ? host_path_of(to) : std::nullopt;
    if (!target) return false;
    if (!is_folder(*source)) {
        errno = ENOENT;
        return fail_at(*source);
    }
    const std::string parent(folder_of(*target));
    if (!parent.empty() && !make_host_folders(parent, false)) {
        fail_at(parent);
        tell_failure(observer, *source);
        return false;
    }
    return FolderCopy(observer).run(*source, *target);
}

}  // namespace tvutil2
