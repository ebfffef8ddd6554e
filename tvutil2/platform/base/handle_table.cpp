#include "tvutil2/platform/base/handle_table.h"

#include <mutex>
#include <shared_mutex>
#include <vector>

namespace tvutil2::handle_table {
namespace {

constexpr std::size_t kMaxHandles = std::size_t{1} << 24;

struct Slot {
    std::shared_ptr<HandleObject> object;
    std::uint32_t generation = 1;
};

struct Table {
    std::shared_mutex lock;
    std::vector<Slot> slots;
    std::vector<std::uint32_t> free_slots;
};

// Never destroyed: handles are closed by static objects of other modules after ours are gone.
Table& table() {
    static auto* const instance = new Table;
    return *instance;
}

std::uintptr_t handle_value(std::uint32_t index, std::uint32_t generation) {
    return (static_cast<std::uintptr_t>(generation) << 32) | (index << 2U);
}

Slot* live_slot(Table& t, std::uintptr_t handle) {
    const auto low = static_cast<std::uint32_t>(handle);
    const auto index = low >> 2U;
    if ((low & 3U) != 0 || index >= t.slots.size()) return nullptr;
    auto& slot = t.slots[index];
    return slot.object && slot.generation == handle >> 32U ? &slot : nullptr;
}

}  // namespace

std::uintptr_t insert(std::shared_ptr<HandleObject> object) {
    auto& t = table();
    const std::unique_lock guard(t.lock);
    std::uint32_t index = 0;
    if (!t.free_slots.empty()) {
        index = t.free_slots.back();
        t.free_slots.pop_back();
    } else if (t.slots.size() < kMaxHandles) {
        index = static_cast<std::uint32_t>(t.slots.size());
        t.slots.emplace_back();
        t.free_slots.reserve(t.slots.capacity());  // so that remove() can't fail
    } else {
        SetLastError(ERROR_TOO_MANY_OPEN_FILES);
        return 0;
    }
    t.slots[index].object = std::move(object);
    return handle_value(index, t.slots[index].generation);
}

std::shared_ptr<HandleObject> find(std::uintptr_t handle) {
    auto& t = table();
    const std::shared_lock guard(t.lock);
    const auto* slot = live_slot(t, handle);
    return slot != nullptr ? slot->object : nullptr;
}

std::shared_ptr<HandleObject> remove(std::uintptr_t handle, HandleKind kind) {
    auto& t = table();
    const std::unique_lock guard(t.lock);
    auto* slot = live_slot(t, handle);
    if (slot == nullptr || slot->object->kind() != kind) return nullptr;
    auto object = std::move(slot->object);
    slot->object = nullptr;
    slot->generation = slot->generation == 0xFFFFFFFFU ? 1 : slot->generation + 1;
    t.free_slots.push_back(static_cast<std::uint32_t>(handle) >> 2U);
    return object;
}

}  // namespace tvutil2::handle_table

BOOL CloseHandle(HANDLE handle) {
    using tvutil2::HandleKind;
    const auto has_own_close = [](HandleKind kind) {
        return kind == HandleKind::search || kind == HandleKind::key || kind == HandleKind::module;
    };
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    const auto object = tvutil2::handle_table::find(value);
    if (object && !has_own_close(object->kind()) &&
        tvutil2::handle_table::remove(value, object->kind())) {
        return TRUE;
    }
    return tvutil2::fail_with(ERROR_INVALID_HANDLE);
}
