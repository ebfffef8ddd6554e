// Waiting for a thread that was told to end.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

/// How long a watch's thread may take to end, in milliseconds.
inline constexpr DWORD kLongestEnd = 10'000;

/// Waits for the end of a thread, up to a time in milliseconds. What other threads, this one among
/// them, send to windows of the calling thread is answered meanwhile. False when the time ran out,
/// or when it is the calling thread itself.
bool wait_for_end_of(HANDLE thread, DWORD milliseconds);

}  // namespace tvutil2
