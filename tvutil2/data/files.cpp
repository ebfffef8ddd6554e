#include "tvutil2/data/files.h"

#include "tvutil2/data/text.h"
#include "tvutil2/framework/app.h"
#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/find.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr UINT kCannotCreateFile = 14107;

bool is_there(const char16_t* path) {
    return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace

int DoesFileExist(const char16_t* path) {
    return tvutil2::is_found(path) ? 1 : 0;
}

int DoesFolderExist(const char16_t* path) {
    const auto attributes = GetFileAttributesW(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0
               ? 1
               : 0;
}

int EnsureFolderExist(const char16_t* path) {
    return is_there(path) || CreateDirectoryW(path, nullptr) != FALSE ? 1 : 0;
}

// From the end up to what is there, and down again; not by recursion: the depth of a path is the
// caller's.
int EnsureFolderExistRecursive(const char16_t* path) {
    constexpr auto kSeparators = u"\\/";
    if (path == nullptr) return 0;
    if (is_there(path)) return 1;
    // Nothing is made on the way to a path that the host can't have.
    if (GetLastError() == ERROR_FILENAME_EXCED_RANGE) return 0;
    const std::u16string_view text(path);
    std::vector<std::u16string> missing;
    for (auto end = text.find_last_of(kSeparators); end != std::u16string_view::npos;) {
        end = text.find_last_not_of(kSeparators, end);
        if (end == std::u16string_view::npos) break;
        std::u16string above(text.substr(0, end + 1));
        end = above.find_last_of(kSeparators);
        if (is_there(above.c_str())) break;
        missing.push_back(std::move(above));
    }
    for (; !missing.empty(); missing.pop_back()) {
        CreateDirectoryW(missing.back().c_str(), nullptr);
    }
    return EnsureFolderExist(path);
}

int tvutil2::ensure_private_folder(const char16_t* path) {
    make_private_folders(path);
    return EnsureFolderExistRecursive(path);
}

int AfxGetValidFolderPath(CString& path, int create) {
    const auto text = path.View();
    if (!text.starts_with(u"\\\\") && (text.size() < 2 || text[1] != u':')) return 0;
    path.TrimRight(u'\\');
    return create != 0 ? EnsureFolderExistRecursive(path) : DoesFolderExist(path);
}

int CreateEmptyFile(const char16_t* path) {
    const HANDLE file = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        CloseHandle(file);
        return 1;
    }
    AfxMessageBox(csFmt(tvutil2::library_string(kCannotCreateFile).GetString(), path));
    return 0;
}
