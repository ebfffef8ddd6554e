// The names of a host folder that a pattern takes in.
#pragma once

#include "tvutil2/platform/files/host_files.h"
#include "tvutil2/platform/files/name_pattern.h"

#include <functional>
#include <string>
#include <vector>

namespace tvutil2 {

struct ListedName {
    std::u16string name;
    std::string host_name;
};

/// The matching names in the order of a search, "." and ".." first; names that the platform can't
/// express are left out. False with errno set when the folder can't be read.
bool list_folder(int folder, const NamePattern& pattern, std::vector<ListedName>& names);

struct HostEntry {
    std::string name;
    unsigned char type;  ///< DT_ value of dirent.h; DT_UNKNOWN where the file system doesn't tell
};

/// Shows each name, whatever its bytes, with its type as in HostEntry, as the host reads it, until
/// `see` gives false; "." and ".." are left out. False with errno set when the folder can't be
/// read.
bool visit_host_folder(int folder, const std::function<bool(const char* name, unsigned char)>& see);

/// All names, whatever their bytes, but "." and "..", in the order of the directory. False with
/// errno set.
bool list_host_folder(int folder, std::vector<HostEntry>& entries);

/// Opens a host folder for list_folder; "" is the root. Empty with errno set.
[[nodiscard]] Descriptor open_folder(const std::string& path);

}  // namespace tvutil2
