// Sleeping for objects of this process and of several at once.
#pragma once

#include "tvutil2/platform/objects/waitable.h"

namespace tvutil2 {

/// Whether the word of a shared object isn't what its entry has seen.
bool has_news(std::span<WaitableObject* const> objects, std::span<const WaitEntry> entries);

/// Sleeps until the waiter's outcome is settled or the word of a shared object isn't what its entry
/// has seen. The waiter has fallen asleep already. False when the deadline has passed; true
/// otherwise, which doesn't say that anything has changed.
bool sleep_on_shared(const Waiter& waiter, std::span<WaitableObject* const> objects,
                     std::span<const WaitEntry> entries, const Deadline& deadline);

}  // namespace tvutil2
