// Waiting for objects.
#pragma once

#include "tvutil2/platform/objects/waitable.h"

namespace tvutil2 {

/// Waits as WaitForMultipleObjectsEx does, for up to MAXIMUM_WAIT_OBJECTS that are all different
/// and that the caller keeps; for none, it waits for the time alone. Queued calls have run when the
/// result is WAIT_IO_COMPLETION.
[[nodiscard]] DWORD wait_for(std::span<WaitableObject* const> objects, bool wants_all,
                             DWORD milliseconds, bool is_alertable);

}  // namespace tvutil2
