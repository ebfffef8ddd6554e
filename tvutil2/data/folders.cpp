#include "tvutil2/data/folders.h"

#include "tvutil2/data/files.h"
#include "tvutil2/data/folder_search.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/shell_operations.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

using tvutil2::FolderSearch;

namespace {

int shell(UINT operation, const std::u16string& from, const std::u16string& to, FILEOP_FLAGS flags,
          tvutil2::ShellObserver* observer = nullptr) {
    SHFILEOPSTRUCTW request{};
    request.wFunc = operation;
    request.pFrom = from.c_str();
    request.pTo = to.c_str();
    request.fFlags = flags;
    return tvutil2::watched_shell_operation(&request, observer);
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

bool is_same_path(std::u16string_view a, std::u16string_view b) {
    while (a.ends_with(u'\\')) a.remove_suffix(1);
    while (b.ends_with(u'\\')) b.remove_suffix(1);
    return a.size() == b.size() && ends_with_no_case(a, b);
}

}  // namespace

int SHRenameFile(const char16_t* from, const char16_t* to) {
    return shell(FO_RENAME, element(from), element(to),
                 FOF_ALLOWUNDO | FOF_NOCONFIRMATION | FOF_SILENT);
}

int SHDeleteFile(const char16_t* path) {
    return shell(FO_DELETE, element(path), {}, FOF_ALLOWUNDO | FOF_NOCONFIRMATION);
}

int MoveFolder(const char16_t* from, const char16_t* to, const char16_t* extension) {
    return MoveFolder(from, to, extension, nullptr);
}

int MoveFolder(const char16_t* from, const char16_t* to, const char16_t* extension,
               tvutil2::ShellObserver* observer) {
    const std::u16string ending = extension != nullptr ? extension : u"";
    EnsureFolderExistRecursive(to);
    std::u16string sources;
    std::u16string targets;
    for (Pairs folders{{from, to}}; !folders.empty();) {
        const auto [source, target] = take_last(folders);
        bool has_target = false;
        for (FolderSearch search(joined(source, u"*.*")); search.has_name(); search.next()) {
            if (search.is_folder()) {
                if (search.is_dots() || search.is_link()) continue;
                folders.emplace_back(joined(source, search.name()), joined(target, search.name()));
            } else if (ends_with_no_case(search.name(), ending)) {
                if (!std::exchange(has_target, true)) EnsureFolderExistRecursive(target.c_str());
                sources += element(joined(source, search.name()));
                targets += element(joined(target, search.name()));
            }
        }
    }
    if (sources.empty()) return 1;
    constexpr FILEOP_FLAGS kFlags = FOF_ALLOWUNDO | FOF_MULTIDESTFILES;
    return shell(FO_MOVE, sources, targets, kFlags, observer) == 0 ? 1 : 0;
}

int DeleteFolderFiles(const char16_t* folder, int whole_folder) {
    constexpr FILEOP_FLAGS kFlags = FOF_NOERRORUI | FOF_NOCONFIRMATION | FOF_SILENT;
    if (whole_folder != 0) return shell(FO_DELETE, element(folder), {}, kFlags) == 0 ? 1 : 0;
    std::u16string names;
    FolderSearch search(joined(folder, u"*.*"));
    if (!search.has_name()) return 0;
    for (; search.has_name(); search.next()) {
        if (!search.is_dots()) names += element(joined(folder, search.name()));
    }
    return names.empty() || shell(FO_DELETE, names, {}, kFlags) == 0 ? 1 : 0;
}

void CopyFolder(const char16_t* from, const char16_t* to) {
    for (Pairs folders{{from, to}}; !folders.empty();) {
        const auto [source, target] = take_last(folders);
        FolderSearch search(joined(source, u"*.*"));
        if (!search.has_name()) continue;
        EnsureFolderExistRecursive(target.c_str());
        for (; search.has_name(); search.next()) {
            auto source_name = joined(source, search.name());
            auto target_name = joined(target, search.name());
            if (!search.is_folder()) {
                CopyFileW(source_name.c_str(), target_name.c_str(), FALSE);
            } else if (search.is_link()) {
                CopyFileExW(source_name.c_str(), target_name.c_str(), nullptr, nullptr, nullptr,
                            COPY_FILE_COPY_SYMLINK);
            } else if (!search.is_dots() && !is_same_path(source_name, to)) {
                folders.emplace_back(std::move(source_name), std::move(target_name));
            }
        }
    }
}
