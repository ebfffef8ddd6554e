// The folder for what the running programs of a user share, and which needs no disk.
#pragma once

#include <string>

namespace tvutil2 {

/// Opens a folder of that name below the user's run-time folder, and makes what is missing: the
/// descriptor, which the caller closes, or -1 with errno.
///
/// It is DIR/run/NAME below a profile, else $XDG_RUNTIME_DIR/tvutil2/NAME, else
/// /tmp/tvutil2-UID/NAME. Only this user gets in: a folder that belongs to somebody else, or that
/// others may enter, gives EPERM. With `is_read_only` nothing is made, and a missing folder gives
/// ENOENT.
[[nodiscard]] int open_runtime_folder(const char* name, bool is_read_only);

}  // namespace tvutil2
