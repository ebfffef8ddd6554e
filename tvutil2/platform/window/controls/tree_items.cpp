#include "tvutil2/platform/window/controls/tree_items.h"

#include "tvutil2/platform/base/wide_text.h"

#include <algorithm>

namespace tvutil2 {

TreeItem* TreeItems::find(HTREEITEM item) {
    const auto found = item != nullptr ? m_items.find(item) : m_items.end();
    return found != m_items.end() ? &found->second : nullptr;
}

HTREEITEM TreeItems::insert(HTREEITEM parent, HTREEITEM after, TreeItem item) {
    if (parent == TVI_ROOT) parent = nullptr;
    const auto above = m_items.find(parent);
    if (above == m_items.end() || count() >= kMost) return nullptr;
    item.parent = parent;
    item.depth = parent != nullptr ? above->second.depth + 1 : 0;
    if (item.depth > kDeepest) return nullptr;
    auto& siblings = above->second.children;
    auto place = siblings.end();
    if (after == TVI_FIRST) {
        place = siblings.begin();
    } else if (after == TVI_SORT) {
        place = std::ranges::find_if(siblings, [&](HTREEITEM each) {
            return lstrcmpiW(item.text.c_str(), m_items[each].text.c_str()) < 0;
        });
    } else if (after != TVI_LAST && !siblings.empty() && siblings.back() != after) {
        const auto found = std::ranges::find(siblings, after);
        if (found != siblings.end()) place = found + 1;
    }
    // A multiple of 16, which no TVI_ value is.
    auto* const handle = reinterpret_cast<HTREEITEM>(++m_last * 16);
    siblings.insert(place, handle);
    m_items.emplace(handle, std::move(item));
    m_is_listed = false;
    return handle;
}

std::vector<std::pair<HTREEITEM, LPARAM>> TreeItems::remove(HTREEITEM item) {
    std::vector<std::pair<HTREEITEM, LPARAM>> gone;
    std::vector<HTREEITEM> open{item};
    while (!open.empty()) {
        auto* const next = open.back();
        open.pop_back();
        const auto found = m_items.find(next);
        if (next == nullptr || found == m_items.end()) continue;
        gone.emplace_back(next, found->second.data);
        open.insert(open.end(), found->second.children.begin(), found->second.children.end());
    }
    if (gone.empty()) return gone;
    auto& above = m_items[m_items[item].parent];
    std::erase(above.children, item);
    above.is_open = above.is_open && !above.children.empty();
    std::ranges::reverse(gone);
    for (const auto& each : gone) m_items.erase(each.first);
    m_is_listed = false;
    return gone;
}

HTREEITEM TreeItems::relative(HTREEITEM item, WPARAM which) {
    const auto first_of = [](const std::vector<HTREEITEM>& items) {
        return items.empty() ? nullptr : items.front();
    };
    if (which == TVGN_ROOT) return first_of(m_items[nullptr].children);
    if (which == TVGN_CHILD && item == TVI_ROOT) return first_of(m_items[nullptr].children);
    const auto* const found = find(item);
    if (found == nullptr) return nullptr;
    if (which == TVGN_PARENT) return found->parent;
    if (which == TVGN_CHILD) return first_of(found->children);
    const auto& siblings = m_items[found->parent].children;
    const auto at = std::ranges::find(siblings, item);
    if (which == TVGN_NEXT) return at + 1 != siblings.end() ? *(at + 1) : nullptr;
    return which == TVGN_PREVIOUS && at != siblings.begin() ? *(at - 1) : nullptr;
}

bool TreeItems::is_below(HTREEITEM item, HTREEITEM outer) {
    for (auto* each = find(item); each != nullptr; each = find(each->parent)) {
        if (each->parent == outer && outer != nullptr) return true;
    }
    return false;
}

void TreeItems::list(HTREEITEM parent) {
    for (auto* const each : m_items[parent].children) {
        m_shown.push_back(each);
        if (m_items[each].is_open) list(each);
    }
}

const std::vector<HTREEITEM>& TreeItems::shown() {
    if (!m_is_listed) {
        m_shown.clear();
        list(nullptr);
        m_is_listed = true;
    }
    return m_shown;
}

void TreeItems::clear() {
    m_items.clear();
    m_items.emplace(nullptr, TreeItem{});
    m_shown.clear();
    m_is_listed = true;
}

}  // namespace tvutil2
