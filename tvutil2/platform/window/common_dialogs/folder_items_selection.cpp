// How a path finds its place in the tree of folders.
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/window/common_dialogs/folder_items.h"
#include "tvutil2/platform/window/messages.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace tvutil2 {
namespace {

bool are_alike(const std::u16string& a, const std::u16string& b) {
    return _wcsicmp(a.c_str(), b.c_str()) == 0;
}

// What of a path comes behind a folder that it is in, without the separator between them; nothing
// for one that isn't in it.
std::optional<std::u16string> rest_behind(const std::u16string& base, const std::u16string& path) {
    auto folder = base;
    if (folder.ends_with(u'\\')) folder.pop_back();
    if (path.size() < folder.size() || !are_alike(path.substr(0, folder.size()), folder)) {
        return std::nullopt;
    }
    if (path.size() == folder.size()) return u"";
    return path[folder.size()] == u'\\' ? std::optional(path.substr(folder.size() + 1))
                                        : std::nullopt;
}

}  // namespace

HTREEITEM FolderItems::child_of(HTREEITEM parent, const std::u16string& name) const {
    HTREEITEM alike = nullptr;
    for (auto* const child : m_nodes.at(parent).children) {
        const auto& node = m_nodes.at(child);
        if (!node.base.empty() || node.kind == FolderKind::note) continue;
        if (node.name == name) return child;
        if (are_alike(node.name, name)) alike = child;
    }
    return alike;
}

// The item, of those with a path of their own, that is nearest above a path; null for none.
HTREEITEM FolderItems::base_of(const std::u16string& path) const {
    HTREEITEM best = nullptr;
    std::size_t length = 0;
    for (auto* const item : m_bases) {
        const auto& base = m_nodes.at(item).base;
        if (!rest_behind(base, path) || base.size() <= length) continue;
        best = item;
        length = base.size();
    }
    return best;
}

bool FolderItems::select_path(const std::u16string& path, bool opens) {
    auto* item = base_of(path);
    if (item == nullptr) return false;
    auto rest = *rest_behind(m_nodes[item].base, path);
    while (!rest.empty()) {
        const auto end = std::min(rest.find(u'\\'), rest.size());
        const auto name = rest.substr(0, end);
        rest.erase(0, end + 1);
        if (name.empty()) continue;
        auto* next = child_of(item, name);
        if (next == nullptr) {
            FolderNode node;
            node.name = name;
            node.is_assumed = true;
            next = add(item, TVI_SORT, std::move(node), FolderIcon::folder);
        }
        if (next == nullptr) break;
        expand(item);
        item = next;
    }
    SendMessageW(m_tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
    if (opens) expand(item);
    return true;
}

bool FolderItems::select(PCIDLIST_ABSOLUTE list, bool opens) {
    if (list == nullptr) return false;
    const auto path = tvutil2::path_of(list);
    const bool is_desktop = list->mkid.cb == 0;
    if (path && !is_desktop) return select_path(*path, opens);
    const auto kind = is_desktop ? FolderKind::desktop : FolderKind::computer;
    const auto found =
        std::ranges::find_if(m_nodes, [&](const auto& each) { return each.second.kind == kind; });
    if (found == m_nodes.end()) return false;
    SendMessageW(m_tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(found->first));
    if (opens) expand(found->first);
    return true;
}

HTREEITEM FolderItems::add_made(HTREEITEM parent, const std::u16string& name) {
    if (!m_nodes.contains(parent)) return nullptr;
    const auto notes = notes_of(parent);
    auto* item = child_of(parent, name);
    if (item == nullptr) {
        FolderNode node;
        node.name = name;
        item = add(parent, TVI_SORT, std::move(node), FolderIcon::folder);
    }
    for (auto* const note : notes) remove(note);
    tell_of_children(parent);
    expand(parent);
    SendMessageW(m_tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
    return item;
}

}  // namespace tvutil2
