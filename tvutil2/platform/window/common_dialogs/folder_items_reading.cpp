// What the disk says of the folders in the tree.
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/window/common_dialogs/folder_items.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"
#include "tvutil2/platform/window/common_dialogs/shown_name.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"

#include <algorithm>
#include <map>
#include <utility>

namespace tvutil2 {
namespace {

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

}  // namespace

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
        found->second.question = m_disk.list(path, m_with_files);
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

bool FolderItems::say_silent(std::uint64_t question) {
    const auto asked = m_asked.find(question);
    if (asked == m_asked.end()) return false;
    const auto text = text_with_path(folder_word(FolderWord::is_silent, m_language),
                                     last_part(path_of(asked->second)));
    for (auto* const note : notes_of(asked->second)) rename(note, text);
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
            return entry.is_folder && _wcsicmp(entry.name.c_str(), node.name.c_str()) == 0;
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

// What is under way may be older than what the person has in mind.
void FolderItems::read_again() {
    std::vector<HTREEITEM> items;
    for (auto& [item, node] : m_nodes) {
        m_asked.erase(std::exchange(node.question, 0));
        if (!node.children.empty() || item == selected()) items.push_back(item);
    }
    for (auto* const item : items) open(item);
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

}  // namespace tvutil2
