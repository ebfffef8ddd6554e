// The gallery's own dialogs, as part of its file.
#pragma once

namespace gallery {

/// False when they aren't what a resource compiler writes.
bool add_resources();

}  // namespace gallery
