#include "tvutil2/platform/base/global_memory.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/handle_table.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <unordered_map>

using tvutil2::fail_with;

namespace {

struct FreeBytes {
    void operator()(void* bytes) const { std::free(bytes); }
};
using Bytes = std::unique_ptr<void, FreeBytes>;

class MemoryObject : public tvutil2::HandleObject {
  public:
    static constexpr auto kHandleKind = tvutil2::HandleKind::memory;
    MemoryObject(Bytes bytes, SIZE_T size)
        : HandleObject(kHandleKind), m_bytes(std::move(bytes)), m_size(size) {}
    [[nodiscard]] void* bytes() const { return m_bytes.get(); }
    [[nodiscard]] SIZE_T size() const { return m_size; }
    std::atomic<unsigned> locks = 0;

  private:
    Bytes m_bytes;
    SIZE_T m_size;
};

constinit std::mutex g_lock;
const tvutil2::ForkLock g_fork_safe(g_lock, tvutil2::ForkRank::objects);

// Fixed blocks, which callers know by their addresses.
std::unordered_map<std::uintptr_t, SIZE_T>& fixed_blocks() {
    static auto* const blocks = new std::unordered_map<std::uintptr_t, SIZE_T>;
    return *blocks;
}

std::uintptr_t value_of(HGLOBAL memory) {
    return reinterpret_cast<std::uintptr_t>(memory);
}

bool is_fixed(HGLOBAL memory, SIZE_T& size) {
    const std::lock_guard guard(g_lock);
    const auto found = fixed_blocks().find(value_of(memory));
    if (found == fixed_blocks().end()) return false;
    size = found->second;
    return true;
}

}  // namespace

HGLOBAL GlobalAlloc(UINT flags, SIZE_T size) {
    // One byte more, so that a block of none has an address of its own.
    Bytes bytes(size == ~SIZE_T{0}             ? nullptr
                : (flags & GMEM_ZEROINIT) != 0 ? std::calloc(size + 1, 1)
                                               : std::malloc(size + 1));
    if (!bytes) return fail_with(ERROR_NOT_ENOUGH_MEMORY), nullptr;
    if ((flags & GMEM_MOVEABLE) != 0) {
        return tvutil2::make_handle<HGLOBAL>(
            std::make_shared<MemoryObject>(std::move(bytes), size));
    }
    const std::lock_guard guard(g_lock);
    fixed_blocks().emplace(reinterpret_cast<std::uintptr_t>(bytes.get()), size);
    return static_cast<HGLOBAL>(bytes.release());
}

void* GlobalLock(HGLOBAL memory) {
    SIZE_T size = 0;
    if (is_fixed(memory, size)) return memory;
    const auto object = tvutil2::object_of<MemoryObject>(memory);
    if (!object || object->size() == 0) return nullptr;
    ++object->locks;
    return object->bytes();
}

BOOL GlobalUnlock(HGLOBAL memory) {
    SIZE_T size = 0;
    if (is_fixed(memory, size)) return TRUE;
    const auto object = tvutil2::object_of<MemoryObject>(memory);
    if (!object) return FALSE;
    auto locks = object->locks.load();
    while (locks != 0 && !object->locks.compare_exchange_weak(locks, locks - 1)) {
    }
    if (locks == 0) return fail_with(ERROR_NOT_LOCKED);
    if (locks > 1) return TRUE;
    return fail_with(NO_ERROR);
}

SIZE_T GlobalSize(HGLOBAL memory) {
    SIZE_T size = 0;
    if (is_fixed(memory, size)) return size;
    const auto object = tvutil2::object_of<MemoryObject>(memory);
    return object ? object->size() : 0;
}

HGLOBAL GlobalFree(HGLOBAL memory) {
    if (memory == nullptr) return nullptr;
    {
        const std::lock_guard guard(g_lock);
        if (fixed_blocks().erase(value_of(memory)) != 0) {
            const Bytes freed(memory);
            return nullptr;
        }
    }
    return tvutil2::close_handle_of<MemoryObject>(memory) ? nullptr : memory;
}
