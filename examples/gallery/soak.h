// The gallery in the hands of somebody who doesn't read.
#pragma once

namespace gallery {

/// Opens the dialogs in random order for so many seconds, in every look and language, types and
/// clicks at random and closes them again, without a display and in a profile of its own. Prints
/// the seed. 1 when a dialog couldn't be made or closed, or when something has grown; otherwise 0.
int soak(int seconds, unsigned seed);

}  // namespace gallery
