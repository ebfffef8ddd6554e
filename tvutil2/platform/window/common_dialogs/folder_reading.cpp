#include "tvutil2/platform/window/common_dialogs/folder_reading.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/folder_id.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/find.h"
#include "tvutil2/platform/files/folder_listing.h"
#include "tvutil2/platform/window/common_dialogs/folder_mounts.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <set>
#include <string>
#include <system_error>
#include <utility>

namespace tvutil2 {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kFirstPart{8};
constexpr std::chrono::milliseconds kLongestPart{200};

// The folders from the root down to this one.
std::set<FolderId> folders_above(const std::u16string& path) {
    std::set<FolderId> ids;
    for (auto end = path.find(u'\\'); end != std::u16string::npos;
         end = path.find(u'\\', end + 1)) {
        if (const auto id = folder_id(path.substr(0, end + 1).c_str())) ids.insert(*id);
    }
    if (const auto id = folder_id(path.c_str())) ids.insert(*id);
    return ids;
}

FolderEntry entry_of(const WIN32_FIND_DATAW& data) {
    FolderEntry entry{data.cFileName};
    entry.is_folder = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    entry.is_hidden = (data.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN) != 0;
    return entry;
}

FolderEntry entry_with_key(const WIN32_FIND_DATAW& data) {
    auto entry = entry_of(data);
    entry.size = std::uint64_t{data.nFileSizeHigh} << 32 | data.nFileSizeLow;
    entry.changed = data.ftLastWriteTime;
    entry.key = name_order_key(entry.name);
    return entry;
}

bool comes_before(const FolderEntry& a, const FolderEntry& b) {
    if (a.is_folder != b.is_folder) return a.is_folder;
    return lstrcmpiW(a.name.c_str(), b.name.c_str()) < 0;
}

bool has_smaller_key(const FolderEntry& a, const FolderEntry& b) {
    return a.is_folder != b.is_folder ? a.is_folder : a.key < b.key;
}

// Where a folder that is open lies.
std::string real_path_of(int folder) {
    std::error_code error;
    auto path = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(folder), error);
    return path == "/" ? std::string() : path.string();
}

// Of a folder that nobody is asked about.
WIN32_FIND_DATAW unseen_folder(const std::u16string& name) {
    WIN32_FIND_DATAW data{};
    data.dwFileAttributes = FILE_ATTRIBUTE_DIRECTORY;
    data.cFileName[name.copy(data.cFileName, std::size(data.cFileName) - 1)] = 0;
    return data;
}

// Shows what is in a folder until `see` gives false: 0, or why it can't be read. What is mounted
// there and may never answer is shown by its name alone.
DWORD visit_entries(const std::u16string& path, const SeeFolder& opened,
                    const std::function<bool(const WIN32_FIND_DATAW&)>& see) {
    const auto host = host_path(path);
    if (!host) return GetLastError();
    const auto folder = open_folder(*host);
    if (folder) opened(folder.get());
    const auto mounts =
        folder ? asking_mounts(mount_lines(), real_path_of(folder.get())) : std::set<std::string>();
    const auto see_name = [&](const char* host_name, unsigned char) {
        const auto name = platform_name(host_name);
        if (!name) return true;
        if (mounts.contains(host_name)) return see(unseen_folder(*name));
        WIN32_FIND_DATAW data;
        return !describe_name(folder.get(), host_name, *name, data) || see(data);
    };
    if (folder && visit_host_folder(folder.get(), see_name)) return 0;
    fail_with_errno();
    return GetLastError();
}

// Collects entries, and tells them when there is time.
class Parts {
  public:
    Parts(const std::u16string& path, const std::function<void(FolderAnswer)>& put)
        : m_path(path), m_put(put) {}

    void add(FolderEntry entry) {
        m_part.entries.push_back(std::move(entry));
        if (Clock::now() < m_next) return;
        tell(true, 0);
        m_next = Clock::now() + m_wait;
        m_wait = std::min<Clock::duration>(2 * m_wait, kLongestPart);
    }
    void tell(bool has_more, DWORD error) {
        std::ranges::sort(m_part.entries, has_smaller_key);
        m_part.path = m_path;
        m_part.has_more = has_more;
        m_part.error = error;
        m_put(std::exchange(m_part, {}));
    }

  private:
    const std::u16string& m_path;
    const std::function<void(FolderAnswer)>& m_put;
    FolderAnswer m_part;
    Clock::duration m_wait = 2 * kFirstPart;
    Clock::time_point m_next = Clock::now() + kFirstPart;
};

}  // namespace

FolderAnswer list_folder_of(const std::u16string& path, bool with_files,
                            const StillWanted& is_wanted) {
    FolderAnswer answer;
    answer.path = path;
    const auto above = folders_above(path);
    const auto see = [&](const WIN32_FIND_DATAW& data) {
        auto entry = entry_of(data);
        if (entry.is_folder && (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
            const auto id = folder_id(joined(path, entry.name).c_str());
            entry.leads_back = id && above.contains(*id);
        }
        if (entry.is_folder || with_files) answer.entries.push_back(std::move(entry));
        return is_wanted();
    };
    answer.error = visit_entries(
        path, [](int) {}, see);
    std::ranges::stable_sort(answer.entries, comes_before);
    return answer;
}

void read_folder(const std::u16string& path, const StillWanted& is_wanted, const SeeFolder& opened,
                 const std::function<void(FolderAnswer)>& put) {
    Parts parts(path, put);
    const auto see = [&](const WIN32_FIND_DATAW& data) {
        parts.add(entry_with_key(data));
        return is_wanted();
    };
    const auto error = visit_entries(path, opened, see);
    parts.tell(false, error);
}

std::u16string joined(const std::u16string& folder, const std::u16string& name) {
    return folder.ends_with(u'\\') ? folder + name : folder + u'\\' + name;
}

std::u16string last_part(const std::u16string& path) {
    return path.ends_with(u'\\') ? path : path.substr(path.rfind(u'\\') + 1);
}

}  // namespace tvutil2
