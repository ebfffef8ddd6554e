// An open key behind a handle, and what a call needs to know of a handle.
#pragma once

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/registry/hive.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace tvutil2 {

class KeyObject : public HandleObject {
  public:
    static constexpr HandleKind kHandleKind = HandleKind::key;

    KeyObject(Hive& owner, std::int64_t key, DWORD granted)
        : HandleObject(kHandleKind), hive(owner), id(key), access(granted) {}

    Hive& hive;
    const std::int64_t id;
    const DWORD access;
    /// Set before the watches of the handle are ended: one that comes later ends itself.
    std::atomic<bool> is_closed{false};

    /// What calls on this handle leave for the next one.
    struct Memory {
        std::mutex lock;
        Position sub_keys;
        Position values;
        /// The watch that the first notification began; null before it.
        std::shared_ptr<Watch> watch;
    };
    Memory memory;
};

/// A key as a call sees it: an open one, or a root.
struct KeyReference {
    Hive* hive = nullptr;
    std::int64_t id = kRootKey;
    /// Null for a root.
    std::shared_ptr<KeyObject> object;
};

/// ERROR_INVALID_HANDLE, or ERROR_ACCESS_DENIED when the handle lacks one of the rights. The last
/// error stays.
[[nodiscard]] LONG resolve_key(HKEY key, DWORD rights, KeyReference& reference);

[[nodiscard]] bool is_root_key(HKEY key);

}  // namespace tvutil2
