// The choice of folders and files on the disk, and the moments at which it is pictured.
#pragma once

#include "tvutil2/tvutil2.h"

#include <string>
#include <vector>

namespace gallery {

struct DiskPicture {
    std::string name;
    bool is_in_every_language;
    void (*open)(const std::u16string& path);  ///< runs the dialog, with those folders
    HWND (*reach)(HWND dialog);                ///< what is pictured; null: not there yet
};

const std::vector<DiskPicture>& disk_pictures();

/// Folders to choose from, below a host folder; the folder that is theirs.
std::u16string make_folders(const std::string& below);
/// Whether such a dialog shows what is in its folder.
bool has_read_folder(HWND dialog);

}  // namespace gallery
