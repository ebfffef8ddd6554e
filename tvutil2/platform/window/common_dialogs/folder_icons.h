// The pictures beside folders and files.
#pragma once

#include "tvutil2/platform/picture/image_list.h"

namespace tvutil2 {

/// Their places in the list; "none" is a picture of nothing.
enum class FolderIcon : std::uint8_t { folder, file, drive, computer, desktop, none };

/// A list of them, 16 pixels wide at 96 dots an inch, in the colours of the theme; it is the
/// caller's.
[[nodiscard]] HIMAGELIST make_folder_icons(UINT dpi);

}  // namespace tvutil2
