// What the tree of folders begins with.
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/files/known_folders.h"
#include "tvutil2/platform/window/common_dialogs/folder_items.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"

#include <utility>

namespace tvutil2 {

HTREEITEM FolderItems::add_place(HTREEITEM parent, int folder, const char16_t* name) {
    char16_t path[MAX_PATH];
    if (SHGetFolderPathW(nullptr, folder, nullptr, SHGFP_TYPE_CURRENT, path) != S_OK) {
        return nullptr;
    }
    FolderNode node;
    node.name = name;
    node.base = path;
    node.is_fixed = true;
    return add(parent, TVI_LAST, std::move(node), FolderIcon::folder);
}

void FolderItems::add_drives(HTREEITEM computer) {
    for (const auto& root : drive_roots()) {
        const auto path = platform_path(root.empty() ? "/" : root);
        if (!path) continue;
        FolderNode node;
        node.name = path->substr(0, 2);
        node.base = node.name + u'\\';
        node.is_fixed = true;
        add(computer, TVI_LAST, std::move(node), FolderIcon::drive);
    }
}

void FolderItems::add_roots(PCIDLIST_ABSOLUTE root) {
    const auto wanted = tvutil2::path_of(root);
    const bool is_desktop = root == nullptr || root->mkid.cb == 0;
    FolderNode node;
    node.is_fixed = true;
    auto icon = FolderIcon::folder;
    if (is_desktop) {
        node.kind = FolderKind::desktop;
        node.name = folder_word(FolderWord::desktop, m_language);
        node.base = tvutil2::path_of(desktop_item_list().get()).value_or(u"");
        icon = FolderIcon::desktop;
    } else if (wanted) {
        node.base = *wanted;
        node.name = last_part(*wanted);
    } else {
        node.kind = FolderKind::computer;
        node.name = folder_word(FolderWord::computer, m_language);
        icon = FolderIcon::computer;
    }
    const auto kind = node.kind;
    auto* const first = add(TVI_ROOT, TVI_LAST, std::move(node), icon);
    if (kind == FolderKind::computer) add_drives(first);
    if (kind == FolderKind::desktop) {
        add_place(first, CSIDL_PROFILE, folder_word(FolderWord::home, m_language));
        add_place(first, CSIDL_PERSONAL, folder_word(FolderWord::documents, m_language));
        FolderNode computer;
        computer.kind = FolderKind::computer;
        computer.name = folder_word(FolderWord::computer, m_language);
        computer.is_fixed = true;
        add_drives(add(first, TVI_LAST, std::move(computer), FolderIcon::computer));
    }
    expand(first);
}

}  // namespace tvutil2
