// A handle without a file behind it.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

/// For who has a file by other means, as a stream of the C library, and owes its callers a handle
/// by which they see that it is open. Whatever is asked of the handle is refused; CloseHandle
/// closes it. INVALID_HANDLE_VALUE when there is no room for more handles.
[[nodiscard]] HANDLE open_placeholder();

}  // namespace tvutil2
