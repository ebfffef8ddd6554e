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

namespace {

constexpr UINT kCannotCreateFile = 14107;

bool is_there(const char16_t* path) {
    return GetFileAttributesW(path) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace

int DoesFileExist(const char16_t* path) {
    WIN32_FIND_DATAW data;
    const HANDLE search = FindFirstFileW(path, &data);
    if (search == INVALID_HANDLE_VALUE) return 0;
    FindClose(search);
    return 1;
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

// From the top down and not by recursion: the depth of a path is the caller's.
int EnsureFolderExistRecursive(const char16_t* path) {
    if (path == nullptr) return 0;
    if (is_there(path)) return 1;
    // Nothing is made on the way to a path that the host can't have.
    if (GetLastError() == ERROR_FILENAME_EXCED_RANGE) return 0;
    const std::u16string_view text(path);
    for (std::size_t end = 0; end < text.size();) {
        const auto start = text.find_first_not_of(u"\\/", end);
        if (start == std::u16string_view::npos) break;
        end = std::min(text.find_first_of(u"\\/", start), text.size());
        if (EnsureFolderExist(std::u16string(text.substr(0, end)).c_str()) == 0) return 0;
    }
    return EnsureFolderExist(path);
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
    AfxMessageBox(csFmt(kCannotCreateFile, path));
    return 0;
}
