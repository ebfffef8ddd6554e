// A folder of a followed tree, and what is followed below it.
#pragma once

#include "tvutil2/platform/watch/folder_tree.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace tvutil2 {

class FolderTree::Node final : public FolderSubscriber {
  public:
    Node(FolderTree& tree, Node* parent, std::string name)
        : m_tree(tree), m_parent(parent), m_name(std::move(name)) {
        set_prefix();
    }
    ~Node() { InotifyHub::instance().forget(*this); }

    void on_entry(std::uint32_t mask, std::string_view name) override;
    void on_move(FolderSubscriber* from, std::string_view old_name, FolderSubscriber* to,
                 std::string_view new_name, bool is_folder) override;
    void on_folder_moved() override {
        if (m_parent == nullptr) m_tree.on_root_moved();
    }
    void on_folder_gone() override {
        if (m_parent == nullptr) m_tree.end();
    }
    void on_lost() override {
        if (m_parent == nullptr) m_tree.begin_again();
    }
    void on_quiet() override {
        m_listed.clear();
        if (m_parent == nullptr) m_tree.m_listener.on_quiet();
    }
    [[nodiscard]] const void* party() const override { return &m_tree; }

    [[nodiscard]] std::string path() const {
        if (m_parent == nullptr) return m_tree.m_path;
        auto path = m_parent->path();
        path.append(1, '/').append(m_name);
        return path;
    }
    [[nodiscard]] bool is_root() const { return m_parent == nullptr; }
    /// Nothing when a folder on the way has no name on the platform.
    [[nodiscard]] const std::optional<std::u16string>& prefix() const { return m_prefix; }

    Node& add(const std::string& name) {
        auto& place = m_folders[name];
        place = std::make_unique<Node>(m_tree, this, name);
        return *place;
    }
    void remove(std::string_view name);
    void remove_all() {
        m_folders.clear();
        m_missed.clear();
    }

    /// Remembers a folder that isn't found: it is gone, or one on the way to it has another name,
    /// of which the host will tell.
    void note_missed(const std::string& name, bool tells_content) {
        m_missed[name] = tells_content;
    }
    void look_for_missed();

    /// Remembers an entry that is told though the host's own record of it may still come.
    void note_told(const char* name) {
        InotifyHub::instance().tell_when_quiet(*this);
        m_listed.insert(name);
    }

  private:
    // Whether an entry's coming has been told already.
    bool was_told(std::string_view name);
    void set_prefix();
    // A folder that is followed goes on being followed under another name. One that had that name
    // before it could be followed is as good as new, unless it has been told by the other name.
    void take_over(Node& from, std::string_view old_name, std::string_view new_name, bool is_news);

    FolderTree& m_tree;
    Node* m_parent;
    std::string m_name;
    std::optional<std::u16string> m_prefix;
    std::map<std::string, std::unique_ptr<Node>, std::less<>> m_folders;
    std::map<std::string, bool, std::less<>> m_missed;
    std::set<std::string, std::less<>> m_listed;
};

}  // namespace tvutil2
