#include "tvutil2/data/folders.h"

#include "tvutil2/data/files.h"
#include "tvutil2/data/folder_search.h"
#include "tvutil2/platform/base/folder_id.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/folder_copy.h"
#include "tvutil2/platform/files/shell_operations.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

using tvutil2::FolderSearch;
using tvutil2::Sources;

namespace {

int shell(UINT operation, const std::u16string& from, const std::u16string& to, FILEOP_FLAGS flags,
          Sources kind, tvutil2::ShellObserver* observer = nullptr) {
    SHFILEOPSTRUCTW request{};
    request.wFunc = operation;
    request.pFrom = from.c_str();
    request.pTo = to.c_str();
    request.fFlags = flags;
    return tvutil2::watched_shell_operation(&request, observer, kind);
}

// One element of a list for the shell; the list's second zero is the text's own.
std::u16string element(std::u16string_view path) {
    std::u16string text(path);
    text += u'\0';
    return text;
}

std::u16string joined(std::u16string_view folder, std::u16string_view name) {
    std::u16string path(folder);
    path += u'\\';
    path += name;
    return path;
}

bool ends_with_no_case(std::u16string_view name, std::u16string_view ending) {
    if (name.size() < ending.size()) return false;
    const std::u16string tail(name.substr(name.size() - ending.size()));
    return _wcsicmp(tail.c_str(), std::u16string(ending).c_str()) == 0;
}

// Folders still to be walked, each with its place below the target. A list and not recursion: the
// depth is the disk's.
using Pairs = std::vector<std::pair<std::u16string, std::u16string>>;

Pairs::value_type take_last(Pairs& pairs) {
    auto last = std::move(pairs.back());
    pairs.pop_back();
    return last;
}

// An empty text is what the library gives for a path that can't be had: it names nothing, and must
// not become the root by way of what is put behind it.
bool is_path(const char16_t* path) {
    return (path != nullptr && *path != 0) || tvutil2::fail_with(ERROR_PATH_NOT_FOUND);
}

// Whether the files of a folder may be taken away.
bool may_be_emptied(const char16_t* folder) {
    return is_path(folder) &&
           (!tvutil2::is_drive_root(folder) || tvutil2::fail_with(ERROR_ACCESS_DENIED));
}

}  // namespace

int SHRenameFile(const char16_t* from, const char16_t* to) {
    if (!is_path(from) || !is_path(to)) return static_cast<int>(GetLastError());
    return shell(FO_RENAME, element(from), element(to),
                 FOF_ALLOWUNDO | FOF_NOCONFIRMATION | FOF_SILENT, Sources::patterns);
}

int SHDeleteFile(const char16_t* path) {
    if (!is_path(path)) return static_cast<int>(GetLastError());
    return shell(FO_DELETE, element(path), {}, FOF_ALLOWUNDO | FOF_NOCONFIRMATION,
                 Sources::patterns);
}

int MoveFolder(const char16_t* from, const char16_t* to, const char16_t* extension) {
    return MoveFolder(from, to, extension, nullptr);
}

int MoveFolder(const char16_t* from, const char16_t* to, const char16_t* extension,
               tvutil2::ShellObserver* observer) {
    if (!may_be_emptied(from) || !is_path(to)) return 0;
    const std::u16string ending = extension != nullptr ? extension : u"";
    EnsureFolderExistRecursive(to);
    const auto top = tvutil2::folder_id(to);
    if (top && top == tvutil2::folder_id(from)) return tvutil2::fail_with(ERROR_SHARING_VIOLATION);
    std::u16string sources;
    std::u16string targets;
    for (Pairs folders{{from, to}}; !folders.empty();) {
        const auto [source, target] = take_last(folders);
        bool has_target = false;
        for (FolderSearch search(joined(source, u"*.*")); search.has_name(); search.next()) {
            if (search.is_folder()) {
                if (search.is_dots() || search.is_link()) continue;
                auto folder = joined(source, search.name());
                if (top && top == tvutil2::folder_id(folder.c_str())) continue;
                folders.emplace_back(std::move(folder), joined(target, search.name()));
            } else if (ends_with_no_case(search.name(), ending)) {
                if (!std::exchange(has_target, true)) EnsureFolderExistRecursive(target.c_str());
                sources += element(joined(source, search.name()));
                targets += element(joined(target, search.name()));
            }
        }
    }
    if (sources.empty()) return 1;
    constexpr FILEOP_FLAGS kFlags = FOF_ALLOWUNDO | FOF_MULTIDESTFILES;
    return shell(FO_MOVE, sources, targets, kFlags, Sources::names, observer) == 0 ? 1 : 0;
}

int DeleteFolderFiles(const char16_t* folder, int whole_folder) {
    constexpr FILEOP_FLAGS kFlags = FOF_NOERRORUI | FOF_NOCONFIRMATION | FOF_SILENT;
    if (!may_be_emptied(folder)) return 0;
    if (whole_folder != 0) {
        return shell(FO_DELETE, element(folder), {}, kFlags, Sources::names) == 0 ? 1 : 0;
    }
    std::u16string names;
    FolderSearch search(joined(folder, u"*.*"));
    if (!search.has_name()) return 0;
    for (; search.has_name(); search.next()) {
        if (!search.is_dots()) names += element(joined(folder, search.name()));
    }
    return names.empty() || shell(FO_DELETE, names, {}, kFlags, Sources::names) == 0 ? 1 : 0;
}

void CopyFolder(const char16_t* from, const char16_t* to) {
    tvutil2::copy_folder(from, to);
}

void CopyFolder(const char16_t* from, const char16_t* to, tvutil2::CopyObserver* observer) {
    tvutil2::copy_folder(from, to, observer);
}
