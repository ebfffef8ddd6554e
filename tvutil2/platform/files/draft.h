// A file that is to take another's place, as long as it isn't whole.
//
// It stands in the same folder under a name that nobody can guess or take first, and is locked
// (flock) as long as somebody works on it. So what a killed process leaves is told from what is in
// the making: the next draft in the folder, of whatever process, deletes what nobody holds. A
// process looks through a large folder once a minute at most.
#pragma once

#include "tvutil2/platform/files/host_files.h"

#include <string>
#include <string_view>

struct stat;

namespace tvutil2 {

/// Whether an entry of a folder is a draft, by its name.
[[nodiscard]] bool is_draft_name(std::string_view name);

/// All that fails sets errno.
class Draft {
  public:
    /// `folder` is an open folder that outlives the draft. The umask takes from `mode`.
    explicit Draft(int folder, mode_t mode = 0600);
    /// Deletes it, unless it took its place.
    ~Draft();
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;

    [[nodiscard]] explicit operator bool() const { return static_cast<bool>(m_file); }
    [[nodiscard]] int file() const { return m_file.get(); }

    /// Owner, group and access list of the file at `path`, and a mode, as far as they can be had;
    /// where they can't, fewer people may do less than before, and never more.
    [[nodiscard]] bool take_rights_of(const struct stat& old, const std::string& path, mode_t mode);

    /// From now on it is the file of that name in the folder.
    [[nodiscard]] bool take_place_of(const std::string& name);

  private:
    int m_folder;
    std::string m_name;
    Descriptor m_file;
};

/// What a link leads to, which is what gets replaced; `path` itself where there is nothing.
[[nodiscard]] std::string behind_links(const std::string& path);

}  // namespace tvutil2
