#include "tvutil2/platform/files/find.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/folder_listing.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <vector>

namespace tvutil2 {
namespace {

class SearchObject : public HandleObject {
  public:
    static constexpr HandleKind kHandleKind = HandleKind::search;

    SearchObject(Descriptor folder, std::vector<ListedName> names)
        : HandleObject(kHandleKind), m_folder(std::move(folder)), m_names(std::move(names)) {}

    // False behind the last name.
    bool next(WIN32_FIND_DATAW& data);

  private:
    Descriptor m_folder;
    std::vector<ListedName> m_names;
    std::size_t m_next = 0;
};

FILETIME file_time(const timespec& time) {
    return file_time_of(time.tv_sec, time.tv_nsec);
}

bool SearchObject::next(WIN32_FIND_DATAW& data) {
    while (m_next < m_names.size()) {
        const auto& entry = m_names[m_next++];
        if (describe_name(m_folder.get(), entry.host_name.c_str(), entry.name, data)) return true;
    }
    return false;
}

HANDLE search_handle(Descriptor folder, std::vector<ListedName> names, WIN32_FIND_DATAW& data) {
    auto search = std::make_shared<SearchObject>(std::move(folder), std::move(names));
    if (!search->next(data)) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    const auto handle = make_handle<HANDLE>(std::move(search));
    return handle != nullptr ? handle : INVALID_HANDLE_VALUE;
}

HANDLE find_one(std::u16string_view path, WIN32_FIND_DATAW& data) {
    const auto host = host_path(path);
    if (!host) return INVALID_HANDLE_VALUE;
    const auto name = platform_name(name_in(*host));
    if (!name || name->empty()) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    if (!describe_name(AT_FDCWD, host->c_str(), *name, data)) {
        fail_at(*host);
        return INVALID_HANDLE_VALUE;
    }
    const auto handle = make_handle<HANDLE>(
        std::make_shared<SearchObject>(Descriptor(), std::vector<ListedName>()));
    return handle != nullptr ? handle : INVALID_HANDLE_VALUE;
}

HANDLE find_matching(std::u16string_view folder, std::u16string_view pattern,
                     WIN32_FIND_DATAW& data) {
    const auto host = host_path(folder.empty() ? u"." : folder);
    if (!host) return INVALID_HANDLE_VALUE;
    auto opened = open_folder(*host);
    std::vector<ListedName> names;
    if (!opened || !list_folder(opened.get(), NamePattern(pattern), names)) {
        if (errno == ENOENT) {
            SetLastError(missing_folder_error(*host));
        } else if (errno == ENOTDIR) {
            SetLastError(ERROR_DIRECTORY);
        } else {
            fail_with_errno();
        }
        return INVALID_HANDLE_VALUE;
    }
    return search_handle(std::move(opened), std::move(names), data);
}

}  // namespace
}  // namespace tvutil2

HANDLE FindFirstFileW(const char16_t* text, WIN32_FIND_DATAW* data) {
    const std::u16string_view path = text != nullptr ? text : u"";
    const auto separator = path.find_last_of(u"\\/");
    const bool has_drive = path.size() >= 2 && path[1] == u':';
    const auto name_start =
        separator != std::u16string_view::npos ? separator + 1 : (has_drive ? 2U : 0U);
    const auto name = path.substr(name_start);
    if (path.empty() || name.empty()) {
        SetLastError(path.empty() ? ERROR_PATH_NOT_FOUND : ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    if (!tvutil2::NamePattern::has_wildcards(name)) return tvutil2::find_one(path, *data);
    // "C:*" hangs on the current folder as "C:." does; a bare "C:" would be the root.
    auto folder = std::u16string(path.substr(0, name_start));
    if (separator == std::u16string_view::npos && has_drive) folder += u'.';
    return tvutil2::find_matching(folder, name, *data);
}

BOOL FindNextFileW(HANDLE handle, WIN32_FIND_DATAW* data) {
    const auto search = tvutil2::object_of<tvutil2::SearchObject>(handle);
    if (!search) return FALSE;
    return search->next(*data) || tvutil2::fail_with(ERROR_NO_MORE_FILES);
}

BOOL FindClose(HANDLE handle) {
    return tvutil2::close_handle_of<tvutil2::SearchObject>(handle);
}

bool tvutil2::describe_name(int folder, const char* host_name, std::u16string_view name,
                            WIN32_FIND_DATAW& data) {
    struct stat info {};
    if (name.size() >= MAX_PATH) {
        errno = ENAMETOOLONG;
        return false;
    }
    if (fstatat(folder, host_name, &info, AT_SYMLINK_NOFOLLOW) != 0) return false;
    const bool is_link = S_ISLNK(info.st_mode);
    if (is_link) fstatat(folder, host_name, &info, 0);  // what leads nowhere stays as it is
    data = {};
    data.dwFileAttributes = attributes_of(info, name_in(host_name));
    if (is_link) {
        data.dwFileAttributes &= ~FILE_ATTRIBUTE_NORMAL;
        data.dwFileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    }
    // The recorded time of creation would cost a second call for each name.
    data.ftCreationTime = file_time(info.st_mtim);
    data.ftLastAccessTime = file_time(info.st_atim);
    data.ftLastWriteTime = file_time(info.st_mtim);
    if (!S_ISDIR(info.st_mode)) {
        data.nFileSizeLow = static_cast<DWORD>(info.st_size);
        data.nFileSizeHigh = static_cast<DWORD>(static_cast<std::uint64_t>(info.st_size) >> 32);
    }
    name.copy(data.cFileName, name.size());
    return true;
}

bool tvutil2::is_found(const char16_t* path) {
    WIN32_FIND_DATAW data;
    const HANDLE search = FindFirstFileW(path, &data);
    return search != INVALID_HANDLE_VALUE && FindClose(search) != FALSE;
}
