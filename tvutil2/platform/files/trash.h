// The person's trash, in the layout that freedesktop.org fixes (Trash 1.0).
#pragma once

#include <string>

namespace tvutil2 {

class TreeWork;

/// Moves a file, folder or link into the trash, from where a file manager can restore it. Failures
/// are entered in `work`; nothing is lost then.
void move_to_trash(TreeWork& work, const std::string& path);

}  // namespace tvutil2
