// Whether the system's firewall keeps a program from the network.
#pragma once

#include "tvutil2/platform/base/export.h"

/// Tells the person, in the thread's language, when the firewall blocks a program: `path`, or the
/// running executable for null. Nothing is shown for a path that isn't there. Uses the platform's
/// objects on the calling thread and leaves it as it was.
extern "C" TVUTIL_API void TvCheckFirewallBlocked(const char16_t* path);

namespace tvutil2 {

/// The question alone. The first enabled TCP rule for the program in a profile in force decides,
/// and a disabled one ends the search; nothing is blocked while the firewall is off in one of the
/// profiles in force, or can't be asked.
[[nodiscard]] TVUTIL_API bool is_blocked_by_firewall(const char16_t* path);

}  // namespace tvutil2
