#include "tvutil2/platform/watch/folder_node.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/watch/change_kinds.h"

namespace tvutil2 {

void FolderTree::Node::remove(std::string_view name) {
    const auto found = m_folders.find(name);
    if (found != m_folders.end()) m_folders.erase(found);
    const auto missed = m_missed.find(name);
    if (missed != m_missed.end()) m_missed.erase(missed);
}

void FolderTree::Node::look_for_missed() {
    for (const auto& [name, tells_content] : std::exchange(m_missed, {})) {
        m_tree.add_folder(*this, name, tells_content);
    }
    for (const auto& [name, folder] : m_folders) folder->look_for_missed();
}

bool FolderTree::Node::was_told(std::string_view name) {
    const auto found = m_listed.find(name);
    if (found == m_listed.end()) return false;
    m_listed.erase(found);
    return true;
}

void FolderTree::Node::set_prefix() {
    m_prefix.reset();
    if (m_parent == nullptr) {
        m_prefix.emplace();
    } else if (m_parent->m_prefix) {
        if (const auto name = platform_name(m_name)) {
            m_prefix = m_parent->m_prefix;
            m_prefix->append(*name).push_back(u'\\');
        }
    }
    for (const auto& [name, folder] : m_folders) folder->set_prefix();
}

void FolderTree::Node::take_over(Node& from, std::string_view old_name, std::string_view new_name,
                                 bool is_news) {
    auto moved = from.m_folders.extract(std::string(old_name));
    from.remove(old_name);
    if (moved.empty() && !is_news) return;
    remove(new_name);
    if (moved.empty()) return m_tree.add_folder(*this, std::string(new_name), true);
    auto& folder = *moved.mapped();
    folder.m_parent = this;
    folder.m_name = new_name;
    folder.set_prefix();
    moved.key() = new_name;
    m_folders.insert(std::move(moved));
    if (m_tree.is_in_place(folder)) return folder.look_for_missed();
    // It was looked for when another one had its old name already, and that one was found.
    remove(new_name);
    m_tree.add_folder(*this, std::string(new_name), true);
}

void FolderTree::Node::on_entry(std::uint32_t mask, std::string_view name) {
    const bool is_folder = (mask & IN_ISDIR) != 0;
    if ((mask & IN_CREATE) != 0) {
        if (was_told(name)) return;
        m_tree.tell(FILE_ACTION_ADDED, name_kind(is_folder), *this, name);
        if (is_folder && m_tree.m_subtree) m_tree.add_folder(*this, std::string(name), true);
    } else if ((mask & IN_DELETE) != 0) {
        was_told(name);
        if (is_folder) remove(name);
        m_tree.tell(FILE_ACTION_REMOVED, name_kind(is_folder), *this, name);
    } else {
        m_tree.tell(FILE_ACTION_MODIFIED, content_kinds(mask), *this, name);
    }
}

// Within one folder a move is a new name; between two it is an end here and a beginning there.
void FolderTree::Node::on_move(FolderSubscriber* from, std::string_view old_name,
                               FolderSubscriber* to, std::string_view new_name, bool is_folder) {
    auto* const left = static_cast<Node*>(from);
    auto* const reached = static_cast<Node*>(to);
    const auto kind = name_kind(is_folder);
    if (left != nullptr) left->was_told(old_name);
    const bool is_news = reached != nullptr && !reached->was_told(new_name);
    const bool is_renamed = left == reached && is_news;
    if (left != nullptr) {
        m_tree.tell(is_renamed ? FILE_ACTION_RENAMED_OLD_NAME : FILE_ACTION_REMOVED, kind, *left,
                    old_name);
    }
    if (is_news) {
        m_tree.tell(is_renamed ? FILE_ACTION_RENAMED_NEW_NAME : FILE_ACTION_ADDED, kind, *reached,
                    new_name);
    }
    if (!is_folder || !m_tree.m_subtree) return;
    if (left != nullptr && reached != nullptr) {
        reached->take_over(*left, old_name, new_name, is_news);
    } else if (left != nullptr) {
        left->remove(old_name);
    } else if (is_news) {
        m_tree.add_folder(*reached, std::string(new_name), false);
    }
}

}  // namespace tvutil2
