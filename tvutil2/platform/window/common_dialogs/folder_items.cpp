#include "tvutil2/platform/window/common_dialogs/folder_items.h"

#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/common_dialogs/shown_name.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tvutil2 {
namespace {

HTREEITEM as_item(LRESULT value) {
    return reinterpret_cast<HTREEITEM>(value);
}

bool is_below(const std::map<HTREEITEM, FolderNode>& nodes, HTREEITEM item, HTREEITEM outer) {
    for (auto found = nodes.find(item); found != nodes.end();
         found = nodes.find(found->second.parent)) {
        if (found->first == outer) return true;
    }
    return false;
}

}  // namespace

FolderItems::FolderItems(HWND tree, FolderQuestions& questions, bool with_files, LANGID language)
    : m_tree(tree), m_disk(questions), m_with_files(with_files), m_language(language) {}

HTREEITEM FolderItems::add(HTREEITEM parent, HTREEITEM after, FolderNode node, FolderIcon icon) {
    auto shown = shown_name(node.name);
    TVINSERTSTRUCTW given{};
    given.hParent = parent;
    given.hInsertAfter = after;
    given.item.mask = TVIF_TEXT | TVIF_IMAGE | TVIF_CHILDREN;
    given.item.pszText = shown.data();
    given.item.iImage = given.item.iSelectedImage = static_cast<int>(icon);
    given.item.cChildren = node.has_inside ? 1 : 0;
    auto* const item =
        as_item(SendMessageW(m_tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&given)));
    if (item == nullptr) return nullptr;
    node.parent = parent;
    if (!node.base.empty()) m_bases.push_back(item);
    if (const auto above = m_nodes.find(parent); above != m_nodes.end()) {
        above->second.children.push_back(item);
    }
    m_nodes.emplace(item, std::move(node));
    return item;
}

HTREEITEM FolderItems::add_entry(HTREEITEM parent, HTREEITEM after, const FolderEntry& entry) {
    FolderNode node;
    node.name = entry.name;
    if (!entry.is_folder) node.kind = FolderKind::file;
    node.has_inside = entry.is_folder && !entry.leads_back;
    return add(parent, after, std::move(node),
               entry.is_folder ? FolderIcon::folder : FolderIcon::file);
}

void FolderItems::add_note(HTREEITEM parent, const char16_t* text) {
    FolderNode node;
    node.kind = FolderKind::note;
    node.name = text;
    node.has_inside = false;
    add(parent, TVI_LAST, std::move(node), FolderIcon::none);
}

void FolderItems::remove(HTREEITEM item) {
    const auto found = m_nodes.find(item);
    if (found == m_nodes.end()) return;
    auto* const parent = found->second.parent;
    if (is_below(m_nodes, selected(), item)) {
        SendMessageW(m_tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(parent));
    }
    std::vector<HTREEITEM> gone{item};
    for (std::size_t i = 0; i < gone.size(); ++i) {
        const auto& node = m_nodes[gone[i]];
        gone.insert(gone.end(), node.children.begin(), node.children.end());
        m_asked.erase(node.question);
    }
    for (auto* const each : gone) m_nodes.erase(each);
    std::erase_if(m_bases, [&](HTREEITEM each) { return !m_nodes.contains(each); });
    if (const auto above = m_nodes.find(parent); above != m_nodes.end()) {
        std::erase(above->second.children, item);
    }
    SendMessageW(m_tree, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(item));
}

void FolderItems::expand(HTREEITEM item) {
    SendMessageW(m_tree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(item));
}

void FolderItems::rename(HTREEITEM item, const std::u16string& name) {
    const auto found = m_nodes.find(item);
    if (found == m_nodes.end()) return;
    found->second.name = name;
    auto shown = shown_name(name);
    TVITEMW given{};
    given.mask = TVIF_TEXT;
    given.hItem = item;
    given.pszText = shown.data();
    SendMessageW(m_tree, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&given));
}

bool FolderItems::is_in_view(HTREEITEM item) const {
    RECT place{}, client{}, both{};
    // The handle stands where the rectangle goes.
    const auto handle = reinterpret_cast<std::uintptr_t>(item);
    std::memcpy(&place, &handle, sizeof handle);
    GetClientRect(m_tree, &client);
    return SendMessageW(m_tree, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&place)) != 0 &&
           IntersectRect(&both, &place, &client) != 0;
}

HTREEITEM FolderItems::selected() const {
    return as_item(SendMessageW(m_tree, TVM_GETNEXTITEM, TVGN_CARET, 0));
}

const FolderNode* FolderItems::node(HTREEITEM item) const {
    const auto found = m_nodes.find(item);
    return found != m_nodes.end() ? &found->second : nullptr;
}

std::u16string FolderItems::path_of(HTREEITEM item) const {
    const auto* const found = node(item);
    if (found == nullptr) return {};
    if (found->kind == FolderKind::note || found->kind == FolderKind::computer) return {};
    if (!found->base.empty()) return found->base;
    const auto above = path_of(found->parent);
    return above.empty() ? above : joined(above, found->name);
}

ItemList FolderItems::list_of(HTREEITEM item) const {
    const auto* const found = node(item);
    if (found == nullptr || found->kind == FolderKind::note) return nullptr;
    if (found->kind == FolderKind::desktop) return desktop_item_list();
    if (found->kind == FolderKind::computer) return computer_item_list();
    return item_list_of(path_of(item));
}

}  // namespace tvutil2