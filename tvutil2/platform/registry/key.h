// An open key behind a handle, and what a call needs to know of a handle.
#pragma once

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/registry/hive.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace tvutil2 {

/// What the calls on a handle leave for the next one.
struct KeyMemory {
    /// Not waited for: who finds it taken does without what the other call knows.
    std::mutex listing_lock;
    Listing sub_keys;
    Listing values;

    std::mutex watch_lock;
    /// The watch that the first notification began; null before it.
    std::shared_ptr<Watch> watch;
};

class KeyObject : public HandleObject {
  public:
    static constexpr HandleKind kHandleKind = HandleKind::key;

    KeyObject(Hive& owner, const KeyId& key, DWORD granted)
        : HandleObject(kHandleKind), hive(owner), id(key), access(granted) {}

    Hive& hive;
    const KeyId id;
    const DWORD access;
    /// Set before the watches of the handle are ended: one that comes later ends itself.
    std::atomic<bool> is_closed{false};
    KeyMemory memory;
};

/// A key as a call sees it: an open one, or a root.
struct KeyReference {
    Hive* hive = nullptr;
    KeyId id;
    /// Null for a root.
    std::shared_ptr<KeyObject> object;
    KeyMemory* memory = nullptr;
};

/// ERROR_INVALID_HANDLE, or ERROR_ACCESS_DENIED when the handle lacks one of the rights. The last
/// error stays.
[[nodiscard]] LONG resolve_key(HKEY key, DWORD rights, KeyReference& reference);

[[nodiscard]] bool is_root_key(HKEY key);

}  // namespace tvutil2
