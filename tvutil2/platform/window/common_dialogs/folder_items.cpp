#include "tvutil2/platform/window/common_dialogs/folder_items.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/files/known_folders.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"
#include "tvutil2/platform/window/common_dialogs/shown_name.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tvutil2 {
namespace {

HTREEITEM as_item(LRESULT value) {
    return reinterpret_cast<HTREEITEM>(value);
}

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

// Nothing is laid out or painted while many items come and go.
class Frozen {
  public:
    explicit Frozen(HWND window) : m_window(window) { SendMessageW(window, WM_SETREDRAW, 0, 0); }
    ~Frozen() { SendMessageW(m_window, WM_SETREDRAW, 1, 0); }
    Frozen(const Frozen&) = delete;
    Frozen& operator=(const Frozen&) = delete;

  private:
    HWND m_window;
};

bool is_below(const std::map<HTREEITEM, FolderNode>& nodes, HTREEITEM item, HTREEITEM outer) {
    for (auto found = nodes.find(item); found != nodes.end();
         found = nodes.find(found->second.parent)) {
        if (found->first == outer) return true;
    }
    return false;
}

}  // namespace

FolderItems::FolderItems(HWND tree, FolderQuestions& questions, bool with_files, LANGID language)
    : m_tree(tree), m_disk(questions), m_wishes{with_files, {}}, m_language(language) {}

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
        node.name = wanted->size() <= 3 ? *wanted : wanted->substr(wanted->rfind(u'\\') + 1);
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

std::vector<HTREEITEM> FolderItems::notes_of(HTREEITEM parent) const {
    auto notes = m_nodes.at(parent).children;
    std::erase_if(notes, [&](HTREEITEM each) { return m_nodes.at(each).kind != FolderKind::note; });
    return notes;
}

void FolderItems::open(HTREEITEM item) {
    const auto found = m_nodes.find(item);
    if (found == m_nodes.end() || !found->second.has_inside) return;
    const auto path = path_of(item);
    if (path.empty()) return;
    if (found->second.question == 0) {
        found->second.question = m_disk.list(path, m_wishes);
        m_asked[found->second.question] = item;
    }
    if (found->second.children.empty()) {
        add_note(item, folder_word(FolderWord::reading, m_language));
    }
}

bool FolderItems::take(const FolderAnswer& answer) {
    const auto asked = m_asked.find(answer.question);
    if (asked == m_asked.end()) return false;
    auto* const item = asked->second;
    m_asked.erase(asked);
    m_nodes[item].question = 0;
    const bool follows = is_in_view(selected());
    {
        const Frozen frozen(m_tree);
        const auto notes = notes_of(item);
        if (answer.error == 0) {
            merge(item, answer);
        } else if (m_nodes[item].children.size() == notes.size()) {
            add_note(item, folder_word(FolderWord::unreadable, m_language));
        }
        // An item without any others would close.
        for (auto* const note : notes) remove(note);
        tell_of_children(item);
    }
    // What the person looks at stays there, however much comes above it.
    if (follows) {
        SendMessageW(m_tree, TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(selected()));
    }
    return true;
}

// What was typed or handed over in another case is as the disk has it.
void FolderItems::adopt_spelling(HTREEITEM item, const FolderAnswer& answer) {
    for (auto* const child : m_nodes[item].children) {
        auto& node = m_nodes[child];
        if (!std::exchange(node.is_assumed, false)) continue;
        const auto has_name = [&](const FolderEntry& entry) { return entry.name == node.name; };
        if (std::ranges::any_of(answer.entries, has_name)) continue;
        const auto alike = std::ranges::find_if(answer.entries, [&](const FolderEntry& entry) {
            return entry.is_folder && are_alike(entry.name, node.name);
        });
        if (alike != answer.entries.end()) rename(child, alike->name);
    }
}

void FolderItems::merge(HTREEITEM item, const FolderAnswer& answer) {
    adopt_spelling(item, answer);
    std::map<std::u16string, HTREEITEM> there;
    std::vector<HTREEITEM> children;
    for (auto* const child : m_nodes[item].children) {
        const auto& node = m_nodes[child];
        if (node.is_fixed) {
            children.push_back(child);
        } else if (node.kind != FolderKind::note) {
            there.emplace(node.name, child);
        }
    }
    auto* after = children.empty() ? TVI_FIRST : children.back();
    for (const auto& entry : answer.entries) {
        const auto known = there.find(entry.name);
        if (known != there.end()) {
            after = known->second;
            there.erase(known);
        } else if (entry.is_hidden && !m_shows_hidden) {
            continue;
        } else if (auto* const fresh = add_entry(item, after, entry)) {
            after = fresh;
        } else {
            break;
        }
        children.push_back(after);
    }
    for (const auto& gone : there) remove(gone.second);
    m_nodes[item].children = std::move(children);
}

void FolderItems::tell_of_children(HTREEITEM item) {
    TVITEMW given{};
    given.mask = TVIF_CHILDREN;
    given.hItem = item;
    given.cChildren = m_nodes[item].children.empty() ? 0 : 1;
    SendMessageW(m_tree, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&given));
}

void FolderItems::expand(HTREEITEM item) {
    SendMessageW(m_tree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(item));
}

// What is under way was asked for under other wishes, maybe.
void FolderItems::read_again() {
    std::vector<HTREEITEM> items;
    for (auto& [item, node] : m_nodes) {
        m_asked.erase(std::exchange(node.question, 0));
        if (!node.children.empty() || item == selected()) items.push_back(item);
    }
    for (auto* const item : items) open(item);
}

void FolderItems::show_files(std::vector<std::u16string> patterns) {
    m_wishes.patterns = std::move(patterns);
    read_again();
}

bool FolderItems::take_key(WPARAM key) {
    if (key == VK_F5) {
        read_again();
    } else if (key == 'H' && GetKeyState(VK_CONTROL) < 0) {
        show_hidden(!m_shows_hidden);
    } else {
        return false;
    }
    return true;
}

void FolderItems::show_hidden(bool shows) {
    m_shows_hidden = shows;
    read_again();
}

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
