// Work on whole trees of host files. Symbolic links are copied, moved and deleted as what they are.
#pragma once

#include "tvutil2/platform/base/folder_id.h"
#include "tvutil2/platform/base/types.h"

#include <functional>
#include <set>
#include <string>
#include <string_view>

struct stat;

namespace tvutil2 {

/// Carries out several copies, moves and deletions, goes on behind failures, and keeps the first.
class TreeWork {
  public:
    /// `may_replace` is asked before a file takes the place of another.
    explicit TreeWork(std::function<bool(const std::string& target)> may_replace)
        : m_may_replace(std::move(may_replace)) {}

    /// A folder that meets a folder is merged with it. A folder that this work has made, come upon
    /// as something to be copied, is ERROR_SHARING_VIOLATION: by a mount, say, the target lies in
    /// its source.
    void copy(const std::string& from, const std::string& to);
    /// Between file systems: copies all, and deletes the source if nothing failed or was declined.
    void move(const std::string& from, const std::string& to);
    /// For good. A file that a handle keeps from being deleted stays.
    void remove(const std::string& path);

    /// 0, or the first error.
    [[nodiscard]] DWORD error() const { return m_error; }
    [[nodiscard]] bool declined() const { return m_declined; }
    /// Enters the calling thread's last error as a failure.
    void fail();

  private:
    struct Pair;
    [[nodiscard]] bool look(const std::string& from, const std::string& to, Pair& pair);
    [[nodiscard]] bool may_replace(const std::string& target);
    void copy_entry(const std::string& from, const std::string& to);
    void copy_folder(const std::string& from, const std::string& to, const struct stat& info,
                     bool is_taken);
    void merge(const std::string& from, const std::string& to);
    void move_by_copy(const std::string& from, const std::string& to);

    std::function<bool(const std::string&)> m_may_replace;
    std::set<FolderId> m_made;
    DWORD m_error = 0;
    bool m_declined = false;
};

/// The path of a name in a folder: as it is there, found exactly first and without regard to case
/// second, or as written.
[[nodiscard]] std::string entry_of(const std::string& folder, std::string_view name);

}  // namespace tvutil2
