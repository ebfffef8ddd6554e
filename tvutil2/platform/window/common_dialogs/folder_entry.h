// What the disk has to say to the dialogs for folders and files.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <string>
#include <vector>

namespace tvutil2 {

struct FolderEntry {
    std::u16string name = {};
    bool is_folder = false;
    bool is_hidden = false;
    bool leads_back = false;  ///< a link to a folder that it is in
    bool is_there = true;
    bool has_folder = true;  ///< what it lies in is there
    std::uint64_t size = 0;  ///< bytes; of a folder 0
    FILETIME changed{};
    std::string key = {};  ///< name_order_key, where the folder was read for a list
};

/// Where people keep files, or get at others'.
struct FolderPlace {
    enum class Kind : std::uint8_t { home, desktop, documents, downloads, drive, mount };
    Kind kind = Kind::home;
    std::u16string path;
};

struct FolderAnswer {
    std::uint64_t question = 0;
    DWORD error = 0;
    bool has_more = false;     ///< another answer to the same question follows
    bool has_changed = false;  ///< the folder isn't as it was; nothing else is said
    std::u16string path;       ///< of what was asked for, or was made
    std::vector<FolderEntry> entries;
    std::vector<FolderPlace> places;
};

/// A name in a folder.
[[nodiscard]] std::u16string joined(const std::u16string& folder, const std::u16string& name);
/// The name of what a path leads to; of a root the path itself.
[[nodiscard]] std::u16string last_part(const std::u16string& path);

}  // namespace tvutil2
