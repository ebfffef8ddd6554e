// A folder, alone or with everything below it, whose changes are followed as it grows and shrinks.
#pragma once

#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/watch/change_filter.h"
#include "tvutil2/platform/watch/inotify_hub.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

/// Who hears of a followed folder's changes. All is called with the hub's lock held, mostly on the
/// hub's thread; so it is short, and asks the hub for nothing.
class FolderListener {
  public:
    /// A FILE_ACTION_ on `name`, below the folder `prefix` ("" or "a\b\", relative to the followed
    /// one). The two halves of a new name follow each other.
    virtual void on_change(DWORD action, std::u16string_view prefix, std::u16string_view name) = 0;
    /// Changes were lost, or can't be followed any more.
    virtual void on_lost() = 0;
    /// The followed folder is gone. Nothing more is told.
    virtual void on_gone() = 0;
    /// Behind changes: for the moment these were all.
    virtual void on_quiet() = 0;

  protected:
    ~FolderListener() = default;
};

/// Follows a folder from start() to its own end; behind the destructor nothing is told.
///
/// What appears below is followed from then on. What a new folder got before the host began to
/// watch it is told as added, once. A folder that is moved in is followed with its content, of
/// which nothing is told; one that is moved out isn't followed any more. Links to folders are
/// entries and not followed. Entries without a name on the platform are passed over, and so is what
/// the account may not list.
class FolderTree {
  public:
    FolderTree(bool subtree, DWORD filter, FolderListener& listener);
    ~FolderTree();
    FolderTree(const FolderTree&) = delete;
    FolderTree& operator=(const FolderTree&) = delete;

    /// Follows the folder under its path. Its end is seen at once; once it was moved, new folders
    /// in it can't be found any more, which is told as a loss.
    [[nodiscard]] bool start(const std::string& path);
    /// Follows an open folder wherever it is moved.
    [[nodiscard]] bool start(Descriptor folder);

  private:
    class Node;
    class ParentGuard;
    friend class Node;

    [[nodiscard]] bool begin();
    void begin_again();
    // Watches a folder and what is in it; `tells_content`: as added. False with the last error when
    // the folder itself can't be watched, or found.
    bool follow(Node& node, bool tells_content);
    bool follow_content(Node& node, bool tells_content);
    // The names of the folders in a folder; nothing when it isn't found.
    std::optional<std::vector<std::string>> folders_in(Node& node, bool tells_content);
    [[nodiscard]] std::uint32_t mask_of(const Node& node) const;
    // Whether the node's folder is the one that has its path now, if any has.
    [[nodiscard]] bool is_in_place(const Node& node) const;
    void add_folder(Node& parent, const std::string& name, bool tells_content);
    void lose_below();
    void tell(DWORD action, DWORD kinds, const Node& folder, std::string_view name);
    void on_root_moved();
    void end();
    void end_if_gone();
    void guard_end();

    const bool m_subtree;
    const DWORD m_filter;
    FolderListener& m_listener;
    std::string m_path;  ///< by which the host finds the followed folder
    Descriptor m_folder;
    std::unique_ptr<Node> m_root;
    std::unique_ptr<ParentGuard> m_parent;
    std::u16string m_name;       ///< room for what is being told
    std::size_t m_followed = 0;  ///< folders so far
    bool m_is_told = false;      ///< the listener is told of what is found missing
    bool m_is_short = false;     ///< a folder below isn't followed, and that has been told
    bool m_is_adrift = false;    ///< the folder has left its path
    bool m_is_over = false;
};

}  // namespace tvutil2
