#include "tvutil2/platform/watch/folder_tree.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/watch/change_kinds.h"
#include "tvutil2/platform/watch/folder_node.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>

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

std::uint32_t FolderTree::mask_of(const Node& node) const {
    return host_mask(m_filter, m_subtree) | (node.is_root() ? 0U : IN_DONT_FOLLOW);
}

bool FolderTree::is_in_place(const Node& node) const {
    return InotifyHub::instance().is_watched_by(node, node.path(), mask_of(node));
}

bool FolderTree::follow(Node& node, bool tells_content) {
    auto& hub = InotifyHub::instance();
    if (!hub.watch(node, node.path(), mask_of(node))) return false;
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
