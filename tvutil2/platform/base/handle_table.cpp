#include "tvutil2/platform/base/handle_table.h"

#include <pthread.h>

#include <array>
#include <atomic>
#include <bit>
#include <mutex>
#include <new>
#include <vector>

namespace tvutil2::handle_table {
namespace {

constexpr std::uint32_t kMaxHandles = std::uint32_t{1} << 24;
constexpr std::uint32_t kFirstChunk = 256;

// A cache line of its own, with its own lock: threads that work with different handles never meet.
struct alignas(64) Slot {
    std::mutex lock;
    std::uint32_t generation = 1;
    std::shared_ptr<HandleObject> object;
};

// Slots stand in chunks, each as large as all before it and one more of the first, so that they
// never move and a look-up needs no lock to get at one.
class Table {
  public:
    // Null for an index that no handle ever had.
    Slot* slot(std::uint32_t index) {
        if (index >= kMaxHandles) return nullptr;
        const auto chunk = chunk_of(index);
        auto* const first = m_chunks[chunk].load(std::memory_order_acquire);
        return first == nullptr ? nullptr : first + (index - start_of(chunk));
    }

    // The index of a slot that nobody has; kMaxHandles when there is none.
    std::uint32_t take() {
        const std::lock_guard guard(m_lock);
        if (!m_free.empty()) {
            const auto index = m_free.back();
            m_free.pop_back();
            return index;
        }
        if (m_used == kMaxHandles) return kMaxHandles;
        if (slot(m_used) == nullptr) add_chunk();
        return m_used++;
    }

    void give_back(std::uint32_t index) {
        const std::lock_guard guard(m_lock);
        m_free.push_back(index);
    }

    // The slot's lock, which isn't had while a fork is under way.
    std::unique_lock<std::mutex> locked(Slot& slot) {
        for (;;) {
            std::unique_lock guard(slot.lock);
            if (!m_is_forking) return guard;
            guard.unlock();
            m_is_forking.wait(true);
        }
    }

    // A fork while another thread is inside of a slot or of the table would leave the child with a
    // lock that nobody opens. So the table is held, threads are kept out of the slots, and those
    // inside are waited for. One that still comes to a slot turns round without touching anything
    // but its lock, and in the child the locks begin anew.
    void before_fork() {
        m_lock.lock();
        m_is_forking = true;
        for_each_slot([](Slot& slot) { const std::lock_guard guard(slot.lock); });
    }
    void after_fork(bool in_child) {
        if (in_child) for_each_slot([](Slot& slot) { new (&slot.lock) std::mutex; });
        m_is_forking = false;
        m_is_forking.notify_all();
        m_lock.unlock();
    }

  private:
    static unsigned chunk_of(std::uint32_t index) {
        return 31U - static_cast<unsigned>(std::countl_zero(index / kFirstChunk + 1));
    }
    static std::uint32_t start_of(unsigned chunk) { return kFirstChunk * ((1U << chunk) - 1); }

    void add_chunk() {
        const auto size = m_used + kFirstChunk;
        m_free.reserve(m_used + size);  // so that give_back() can't fail
        m_chunks[chunk_of(m_used)].store(new Slot[size], std::memory_order_release);
    }

    template <class Work>
    void for_each_slot(const Work& work) {
        for (std::uint32_t i = 0; i < m_used; ++i) work(*slot(i));
    }

    std::array<std::atomic<Slot*>, 17> m_chunks{};
    std::atomic<bool> m_is_forking{false};
    std::mutex m_lock;
    std::vector<std::uint32_t> m_free;
    std::uint32_t m_used = 0;
};

// Never destroyed: handles are closed by static objects of other modules after ours are gone.
Table& table() {
    static auto* const instance = new Table;
    return *instance;
}

// Registered as the library is loaded, and so run behind the locks of all that is registered later
// and may ask for handles while it holds them.
[[maybe_unused]] const int g_is_fork_safe =
    pthread_atfork([] { table().before_fork(); }, [] { table().after_fork(false); },
                   [] { table().after_fork(true); });

std::uintptr_t handle_value(std::uint32_t index, std::uint32_t generation) {
    return (static_cast<std::uintptr_t>(generation) << 32) | (index << 2U);
}

std::uint32_t index_of(std::uintptr_t handle) {
    return static_cast<std::uint32_t>(handle) >> 2U;
}

// The slot that a handle points at, be it live or not.
Slot* slot_of(std::uintptr_t handle) {
    return (handle & 3U) != 0 ? nullptr : table().slot(index_of(handle));
}

// With the slot's lock held.
bool is_live(const Slot& slot, std::uintptr_t handle) {
    return slot.object && slot.generation == handle >> 32U;
}

}  // namespace

std::uintptr_t insert(std::shared_ptr<HandleObject> object) {
    const auto index = table().take();
    if (index == kMaxHandles) {
        SetLastError(ERROR_TOO_MANY_OPEN_FILES);
        return 0;
    }
    auto& slot = *table().slot(index);
    const auto guard = table().locked(slot);
    slot.object = std::move(object);
    return handle_value(index, slot.generation);
}

std::shared_ptr<HandleObject> find(std::uintptr_t handle) {
    auto* const slot = slot_of(handle);
    if (slot == nullptr) return nullptr;
    const auto guard = table().locked(*slot);
    return is_live(*slot, handle) ? slot->object : nullptr;
}

std::shared_ptr<HandleObject> remove(std::uintptr_t handle, HandleKind kind) {
    auto* const slot = slot_of(handle);
    if (slot == nullptr) return nullptr;
    std::shared_ptr<HandleObject> object;
    {
        const auto guard = table().locked(*slot);
        if (!is_live(*slot, handle) || slot->object->kind() != kind) return nullptr;
        object.swap(slot->object);
        slot->generation = slot->generation == 0xFFFFFFFFU ? 1 : slot->generation + 1;
    }
    table().give_back(index_of(handle));
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
