#include "tvutil2/data/session_folders.h"

#include "tvutil2/data/files.h"
#include "tvutil2/data/folder_search.h"
#include "tvutil2/data/folders.h"
#include "tvutil2/data/path.h"
#include "tvutil2/data/text_view.h"
#include "tvutil2/data/user_data.h"
#include "tvutil2/frame/startup.h"
#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/settings/ini_file.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr unsigned int kMoveFiles = 14101;
constexpr unsigned int kCreateFolder = 14132;

constexpr auto kSuite = u"Ombrelia";
constexpr auto kSuiteKey = u"OmbreliaSessions";
constexpr auto kSection = u"SessionPath";

constexpr struct {
    std::u16string_view kind;
    const char16_t* extension;
} kExtensions[] = {
    {u"Pelrin", u"pln"},  {u"Dovr", u"dvf"}, {u"Ombrelia", u"ombs"},
    {u"Lumsey", u"lmcs"}, {u"VNC", u"ovnc"},
};

// What a session file's name ends in. VNC sessions alone are no reason to ask.
constexpr std::array<std::u16string_view, 4> kSessionEndings{u"lmcs", u"ombs", u"pln", u"dvf"};

bool is_suite_kind(const CString& kind) {
    constexpr std::array kSuiteKinds{u"Lumsey", u"Ombrelia", u"VNC"};
    return std::any_of(kSuiteKinds.begin(), kSuiteKinds.end(),
                       [&](const char16_t* suite) { return kind.CompareNoCase(suite) == 0; });
}

CString in_user_data(const char16_t* tail) {
    CString path(GetUserDataFolderPath(0));
    AppendPath(path, tail);
    return path;
}

CString choices_file() {
    return in_user_data(u"SessionPath.ini");
}

CString parent(const CString& path) {
    return path.Left(path.ReverseFind(u'\\'));
}

// The chosen folder without trailing backslashes; empty when there is none, now.
CString chosen_folder(const char16_t* key) {
    CIniFile choices(choices_file());
    auto folder = choices.GetValue(kSection, key, u"");
    if (folder.IsEmpty() || DoesFolderExist(folder) == 0) return {};
    return folder.TrimRight(u'\\');
}

bool ends_in_any(std::u16string_view name) {
    const auto ends_in = [&](std::u16string_view ending) {
        return name.size() >= ending.size() &&
               std::equal(ending.begin(), ending.end(), name.end() - std::ptrdiff_t(ending.size()),
                          [](char16_t a, char16_t b) { return a == tvutil2::to_lower(b); });
    };
    return std::any_of(kSessionEndings.begin(), kSessionEndings.end(), ends_in);
}

bool make_the_choice(const char16_t* folder, const char16_t* key) {
    const auto file = choices_file();
    CIniFile choices(file);
    choices.SetValue(kSection, key, folder);
    return choices.Write(file, 1, 0) != 0;
}

int ask(HWND owner, unsigned int id, const char16_t* about, const char16_t* title, UINT type) {
    CString question;
    question.Format(MLS_TVUTIL_ID2STR_DLL(tvutil2::resource_instance(), id), about);
    return MessageBoxW(owner, question, title, type);
}

// What a change of the folder leaves to be moved.
struct Change {
    bool is_wanted = false;
    bool is_made = false;
    CString old_folder;
    CString extension;
};

Change change(const char16_t* folder, const char16_t* kind, HWND owner) {
    if (folder == nullptr || kind == nullptr) return {};
    if (DoesFolderExist(folder) == 0) {
        if (ask(owner, kCreateFolder, folder, kind, MB_OKCANCEL) != IDOK) return {};
        EnsureFolderExistRecursive(folder);
    }
    Change made;
    made.is_wanted = true;
    made.old_folder =
        CString(kind) == kSuiteKey ? AfxGetOmbrSessionPath() : AfxGetSessionPath(kind);
    made.is_made = make_the_choice(folder, kind);
    GetSessionFilesExt(kind, made.extension);
    return made;
}

}  // namespace

void GetSessionFilesExt(const char16_t* kind, CString& extension) {
    const auto found = std::find_if(std::begin(kExtensions), std::end(kExtensions),
                                    [&](const auto& entry) { return entry.kind == view(kind); });
    extension = found != std::end(kExtensions) ? found->extension : u"";
}

CString AfxGetSessionPath(const char16_t* kind) {
    const CString name(kind);
    auto folder = chosen_folder(is_suite_kind(name) ? kSuiteKey : name.GetString());
    if (folder.IsEmpty()) return AfxGetDefaultSessionPath(kind);
    if (!is_suite_kind(name)) return folder;
    folder += u"\\" + name;
    if (DoesFolderExist(folder) == 0 && CreateDirectoryW(folder, nullptr) == FALSE) {
        return AfxGetDefaultSessionPath(kind);
    }
    return folder;
}

CString AfxGetDefaultSessionPath(const char16_t* kind) {
    const CString name(kind);
    CString path;
    if (is_suite_kind(name)) {
        path.Format(u"%s\\%s\\Sessions\\%s", GetUserDataFolderPath(0), kSuite, name);
    } else {
        path.Format(u"%s\\%s\\Sessions", GetUserDataFolderPath(0), name);
    }
    tvutil2::ensure_private_folder(path);
    return path;
}

CString GetSharedSessionPath(int lumsey) {
    CString path(GetCommonDataFolderPath());
    AppendPath(path, lumsey != 0 ? u"Ombrelia\\Sessions\\Lumsey" : u"Ombrelia\\Sessions\\Ombrelia");
    EnsureFolderExistRecursive(path);
    return path;
}

int ExistSessionFile(const char16_t* folder) {
    // Empty, it would be the root.
    if (view(folder).empty()) return 0;
    // By a list and not by recursion: the depth of a folder is the person's.
    std::vector<std::u16string> folders{std::u16string(view(folder))};
    while (!folders.empty()) {
        const auto path = std::move(folders.back()) + u'\\';
        folders.pop_back();
        for (tvutil2::FolderSearch search(path + u"*.*"); search.has_name(); search.next()) {
            if (search.is_dots()) continue;
            if (!search.is_folder()) {
                if (ends_in_any(search.name())) return 1;
            } else if (!search.is_link()) {
                folders.push_back(path + search.name());
            }
        }
    }
    return 0;
}

int ChangeSessionPath(const char16_t* folder, const char16_t* kind, HWND owner) {
    return ChangeSessionPath(folder, kind, owner, nullptr);
}

int ChangeSessionPath(const char16_t* folder, const char16_t* kind, HWND owner,
                      tvutil2::ShellObserver* observer) {
    const auto made = change(folder, kind, owner);
    if (made.is_made && ExistSessionFile(made.old_folder) != 0 &&
        ask(owner, kMoveFiles, kind, kind, MB_YESNO | MB_ICONWARNING) == IDYES) {
        MoveFolder(made.old_folder, folder, made.extension, observer);
    }
    return made.is_wanted ? 1 : 0;
}

int ChangeSessionPathWithoutMsgBox(const char16_t* folder, const char16_t* kind, int move_files) {
    return ChangeSessionPathWithoutMsgBox(folder, kind, move_files, nullptr);
}

int ChangeSessionPathWithoutMsgBox(const char16_t* folder, const char16_t* kind, int move_files,
                                   tvutil2::ShellObserver* observer) {
    const auto made = change(folder, kind, nullptr);
    if (made.is_made && move_files != 0) {
        MoveFolder(made.old_folder, folder, made.extension, observer);
    }
    return made.is_wanted ? 1 : 0;
}

CString AfxGetOmbrDefaultSessionPath() {
    return parent(AfxGetDefaultSessionPath(kSuite));
}

CString AfxGetOmbrDefaultCommonPath() {
    return parent(AfxGetOmbrDefaultSessionPath());
}

CString AfxGetOmbrSessionPath() {
    auto chosen = chosen_folder(kSuiteKey);
    return chosen.IsEmpty() ? AfxGetOmbrDefaultSessionPath() : chosen;
}

CString AfxGetOmbrAddonSessionPath(const CString& name) {
    return AfxGetOmbrSessionPath() + u'\\' + name;
}

CString AfxGetOmbrAddonCommonPath() {
    auto path = AfxGetOmbrDefaultCommonPath() + u"\\addons";
    tvutil2::ensure_private_folder(path);
    return path;
}

CString AfxGetOmbrAddonConfigPath(const CString& name) {
    return AfxGetOmbrAddonCommonPath() + u'\\' + name;
}
