#include "tvutil2/platform/window/common_dialogs/folder_reading.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/folder_id.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/find.h"
#include "tvutil2/platform/files/folder_listing.h"
#include "tvutil2/platform/files/name_pattern.h"

#include <algorithm>
#include <chrono>
#include <set>
#include <string_view>
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

bool is_dots(std::u16string_view name) {
    return name == u"." || name == u"..";
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

FolderAnswer list_folder_of(const std::u16string& path, const FileWishes& wishes,
                            const StillWanted& is_wanted) {
    FolderAnswer answer;
    answer.path = path;
    WIN32_FIND_DATAW data;
    auto* const search = FindFirstFileW(joined(path, u"*").c_str(), &data);
    if (search == INVALID_HANDLE_VALUE) {
        // An empty root has not even dots.
        answer.error = GetLastError() == ERROR_FILE_NOT_FOUND ? 0 : GetLastError();
        return answer;
    }
    const std::vector<NamePattern> patterns(wishes.patterns.begin(), wishes.patterns.end());
    const auto is_wished = [&](const std::u16string& name) {
        const auto upper = upper_of(name);
        return wishes.with_files &&
               (patterns.empty() || std::ranges::any_of(patterns, [&](const NamePattern& each) {
                    return each.matches(upper);
                }));
    };
    const auto above = folders_above(path);
    do {
        auto entry = entry_of(data);
        if (is_dots(entry.name) || (!entry.is_folder && !is_wished(entry.name))) continue;
        if ((data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && entry.is_folder) {
            const auto id = folder_id(joined(path, entry.name).c_str());
            entry.leads_back = id && above.contains(*id);
        }
        answer.entries.push_back(std::move(entry));
    } while (is_wanted() && FindNextFileW(search, &data));
    FindClose(search);
    std::ranges::stable_sort(answer.entries, comes_before);
    return answer;
}

void read_folder(const std::u16string& path, const StillWanted& is_wanted,
                 const std::function<void(FolderAnswer)>& put) {
    Parts parts(path, put);
    const auto host = host_path(path);
    if (!host) return parts.tell(false, GetLastError());
    const auto folder = open_folder(*host);
    const auto see = [&](const char* host_name, unsigned char) {
        WIN32_FIND_DATAW data;
        const auto name = platform_name(host_name);
        if (name && describe_name(folder.get(), host_name, *name, data)) {
            parts.add(entry_with_key(data));
        }
        return is_wanted();
    };
    const bool is_read = folder && visit_host_folder(folder.get(), see);
    if (!is_read) fail_with_errno();
    parts.tell(false, is_read ? 0 : GetLastError());
}

std::u16string joined(const std::u16string& folder, const std::u16string& name) {
    return folder.ends_with(u'\\') ? folder + name : folder + u'\\' + name;
}

}  // namespace tvutil2
