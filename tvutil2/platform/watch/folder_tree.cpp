#include "tvutil2/platform/watch/folder_tree.h"

#include "tvutil2/platform/base/last_error.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <map>
#include <optional>
#include <set>

namespace tvutil2 {
namespace {

/// Folders that are begun to be followed between two looks at the host's queue.
constexpr std::size_t kFoldersAtOnce = 64;

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

bool is_folder_entry(DIR* folder, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
    struct stat info {};
    return fstatat(dirfd(folder), entry.d_name, &info, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(info.st_mode);
}

constexpr DWORD name_kind(bool is_folder) {
    return is_folder ? FILE_NOTIFY_CHANGE_DIR_NAME : FILE_NOTIFY_CHANGE_FILE_NAME;
}

// The host tells of attributes, owners and times in one: who asked for one of them hears of all.
constexpr DWORD kAttributeKinds =
    FILE_NOTIFY_CHANGE_ATTRIBUTES | FILE_NOTIFY_CHANGE_SECURITY | FILE_NOTIFY_CHANGE_LAST_WRITE;
constexpr DWORD kWriteKinds = FILE_NOTIFY_CHANGE_SIZE | FILE_NOTIFY_CHANGE_LAST_WRITE;

constexpr DWORD content_kinds(std::uint32_t mask) {
    DWORD kinds = 0;
    if ((mask & IN_MODIFY) != 0) kinds |= kWriteKinds;
    if ((mask & IN_ATTRIB) != 0) kinds |= kAttributeKinds;
    if ((mask & IN_ACCESS) != 0) kinds |= FILE_NOTIFY_CHANGE_LAST_ACCESS;
    return kinds;
}

std::uint32_t host_mask(DWORD filter, bool subtree) {
    std::uint32_t mask = IN_ONLYDIR | IN_MOVE_SELF;
    if (subtree || (filter & (name_kind(false) | name_kind(true))) != 0) {
        mask |= IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;
    }
    for (const auto what : {IN_MODIFY, IN_ATTRIB, IN_ACCESS}) {
        const auto flag = static_cast<std::uint32_t>(what);
        if ((filter & content_kinds(flag)) != 0) mask |= flag;
    }
    return mask;
}

}  // namespace

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
    void remove(std::string_view name) {
        const auto found = m_folders.find(name);
        if (found != m_folders.end()) m_folders.erase(found);
        const auto missed = m_missed.find(name);
        if (missed != m_missed.end()) m_missed.erase(missed);
    }
    void remove_all() {
        m_folders.clear();
        m_missed.clear();
    }

    /// Remembers a folder that isn't found: it is gone, or one on the way to it has another name,
    /// of which the host will tell.
    void note_missed(const std::string& name, bool tells_content) {
        m_missed[name] = tells_content;
    }
    void look_for_missed() {
        for (const auto& [name, tells_content] : std::exchange(m_missed, {})) {
            m_tree.add_folder(*this, name, tells_content);
        }
        for (const auto& [name, folder] : m_folders) folder->look_for_missed();
    }

    /// Remembers an entry that is told though the host's own record of it may still come.
    void note_told(const char* name) {
        InotifyHub::instance().tell_when_quiet(*this);
        m_listed.insert(name);
    }

  private:
    // Whether an entry's coming has been told already.
    bool was_told(std::string_view name) {
        const auto found = m_listed.find(name);
        if (found == m_listed.end()) return false;
        m_listed.erase(found);
        return true;
    }

    void set_prefix() {
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

    // A folder that is followed goes on being followed under another name. One that had that name
    // before it could be followed is as good as new, unless it has been told by the other name.
    void take_over(Node& from, std::string_view old_name, std::string_view new_name, bool is_news) {
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
        folder.look_for_missed();
    }

    FolderTree& m_tree;
    Node* m_parent;
    std::string m_name;
    std::optional<std::u16string> m_prefix;
    std::map<std::string, std::unique_ptr<Node>, std::less<>> m_folders;
    std::map<std::string, bool, std::less<>> m_missed;
    std::set<std::string, std::less<>> m_listed;
};

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

// A folder that is held open is never told to be gone, so its parent is listened to as well.
class FolderTree::ParentGuard final : public FolderSubscriber {
  public:
    explicit ParentGuard(FolderTree& tree) : m_tree(tree) {}
    ~ParentGuard() { InotifyHub::instance().forget(*this); }

    void on_entry(std::uint32_t mask, std::string_view /*name*/) override {
        if ((mask & IN_DELETE) != 0 && (mask & IN_ISDIR) != 0) m_tree.end_if_gone();
    }
    void on_move(FolderSubscriber* /*from*/, std::string_view /*old_name*/,
                 FolderSubscriber* /*to*/, std::string_view /*new_name*/,
                 bool /*is_folder*/) override {}
    void on_folder_moved() override {}
    void on_folder_gone() override { m_tree.end_if_gone(); }
    void on_lost() override { m_tree.end_if_gone(); }
    void on_quiet() override {}
    [[nodiscard]] const void* party() const override { return this; }

  private:
    FolderTree& m_tree;
};

FolderTree::FolderTree(bool subtree, DWORD filter, FolderListener& listener)
    : m_subtree(subtree), m_filter(filter), m_listener(listener) {}

FolderTree::~FolderTree() {
    const auto guard = InotifyHub::instance().locked();
    m_parent.reset();
    m_root.reset();
}

bool FolderTree::start(const std::string& path) {
    m_path = path;
    return begin();
}

bool FolderTree::start(Descriptor folder) {
    m_folder = std::move(folder);
    m_path = std::string("/proc/self/fd/").append(std::to_string(m_folder.get()));
    if (!begin()) return false;
    const auto guard = InotifyHub::instance().locked();
    guard_end();
    return true;
}

bool FolderTree::begin() {
    const auto guard = InotifyHub::instance().locked();
    m_root = std::make_unique<Node>(*this, nullptr, std::string());
    const bool is_followed = follow(*m_root, false);
    const auto error = is_followed ? ERROR_NO_SYSTEM_RESOURCES : GetLastError();
    if (is_followed && !m_is_short) return m_is_told = true;
    m_root.reset();
    return fail_with(error);
}

// What was lost may have been a new folder.
void FolderTree::begin_again() {
    m_root->remove_all();
    if (m_subtree) follow_content(*m_root, false);
    m_is_short = false;
    m_listener.on_lost();
}

bool FolderTree::follow(Node& node, bool tells_content) {
    auto& hub = InotifyHub::instance();
    const auto mask = host_mask(m_filter, m_subtree) | (node.is_root() ? 0U : IN_DONT_FOLLOW);
    if (!hub.watch(node, node.path(), mask)) return false;
    if (++m_followed % kFoldersAtOnce == 0) hub.collect();
    return !m_subtree || follow_content(node, tells_content);
}

bool FolderTree::follow_content(Node& node, bool tells_content) {
    const auto folders = folders_in(node, tells_content);
    if (!folders) return false;
    for (const auto& name : *folders) add_folder(node, name, tells_content);
    return true;
}

// Closed before any of them is followed: a deep tree takes no more descriptors than a flat one.
std::optional<std::vector<std::string>> FolderTree::folders_in(Node& node, bool tells_content) {
    std::vector<std::string> folders;
    const auto path = node.path();
    const OpenFolder folder(opendir(path.c_str()));
    if (!folder && errno == ENOENT) return fail_at(path), std::nullopt;
    if (!folder && (errno == EMFILE || errno == ENFILE || errno == ENOMEM)) lose_below();
    while (const auto* const entry = folder ? readdir(folder.get()) : nullptr) {
        const std::string_view name(entry->d_name);
        if (name == "." || name == "..") continue;
        const bool is_folder = is_folder_entry(folder.get(), *entry);
        if (tells_content) {
            node.note_told(entry->d_name);
            tell(FILE_ACTION_ADDED, name_kind(is_folder), node, name);
        }
        if (is_folder) folders.emplace_back(name);
    }
    return folders;
}

// A folder that may not be listed is passed over. One that can't be watched for want of watches, or
// can't be found because everything was moved, is a loss.
void FolderTree::add_folder(Node& parent, const std::string& name, bool tells_content) {
    if (follow(parent.add(name), tells_content)) return;
    const auto error = GetLastError();
    parent.remove(name);
    if (error == ERROR_NO_SYSTEM_RESOURCES || m_is_adrift) return lose_below();
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
        parent.note_missed(name, tells_content);
    }
}

void FolderTree::lose_below() {
    if (!std::exchange(m_is_short, true) && m_is_told) m_listener.on_lost();
}

void FolderTree::tell(DWORD action, DWORD kinds, const Node& folder, std::string_view name) {
    if ((kinds & m_filter) == 0 || !folder.prefix()) return;
    const auto is_plain = [](char c) { return static_cast<unsigned char>(c) < 0x80 && c != '\\'; };
    if (std::all_of(name.begin(), name.end(), is_plain)) {
        m_name.assign(name.begin(), name.end());
    } else if (auto other = platform_name(name)) {
        m_name = std::move(*other);
    } else {
        return;
    }
    m_listener.on_change(action, *folder.prefix(), m_name);
    InotifyHub::instance().tell_when_quiet(*m_root);
}

void FolderTree::on_root_moved() {
    if (m_folder) {
        guard_end();
    } else {
        m_is_adrift = true;
    }
}

void FolderTree::end() {
    if (!std::exchange(m_is_over, true)) m_listener.on_gone();
}

void FolderTree::end_if_gone() {
    struct stat info {};
    if (fstat(m_folder.get(), &info) == 0 && info.st_nlink == 0) end();
}

// Where the folder lies now, its parent tells of its end. The look after that is for an end that
// came before.
void FolderTree::guard_end() {
    std::array<char, PATH_MAX> path;
    const auto size = readlink(m_path.c_str(), path.data(), path.size());
    m_parent.reset();
    if (size > 1) {
        m_parent = std::make_unique<ParentGuard>(*this);
        std::string parent(folder_of({path.data(), static_cast<std::size_t>(size)}));
        if (parent.empty()) parent.push_back('/');
        if (!InotifyHub::instance().watch(*m_parent, parent, IN_DELETE | IN_ONLYDIR))
            m_parent.reset();
    }
    end_if_gone();
}

}  // namespace tvutil2
