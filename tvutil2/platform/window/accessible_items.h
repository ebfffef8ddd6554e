// The items of lists and trees, for somebody who doesn't see them.
#pragma once

#include "tvutil2/platform/display/accessible.h"

namespace tvutil2 {

/// Adds the items in view to a list box, a list view or a tree, and says as its value which one is
/// chosen. However many there are, only those are asked about.
void describe_items(Accessible& list);

}  // namespace tvutil2
