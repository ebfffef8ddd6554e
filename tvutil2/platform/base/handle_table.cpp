#include "tvutil2/platform/base/handle_table.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/handle_slot.h"

#include <mutex>
#include <vector>

namespace tvutil2::handle_table {

constinit std::array<std::atomic<Slot*>, 17> g_chunks{};

namespace {

// Which rows are free. Looked at by those who open and close handles, never by a look-up.
class FreeRows {
  public:
    // The index of a row that nobody has; kMaxHandles when there is none.
    std::uint32_t take() {
        const std::lock_guard guard(m_lock);
        if (!m_free.empty()) {
            const auto index = m_free.back();
            m_free.pop_back();
            return index;
        }
        const auto used = m_used.load();
        if (used == kMaxHandles) return kMaxHandles;
        if (slot_at(used) == nullptr) add_chunk(used);
        m_used = used + 1;
        return used;
    }

    void give_back(std::uint32_t index) {
        const std::lock_guard guard(m_lock);
        m_free.push_back(index);
    }

    // Rows in use up to now, free ones among them.
    [[nodiscard]] std::uint32_t used() const { return m_used.load(); }
    [[nodiscard]] std::mutex& lock() { return m_lock; }

  private:
    void add_chunk(std::uint32_t used) {
        const auto size = used + kFirstChunk;
        m_free.reserve(used + size);  // so that give_back() can't fail
        g_chunks[chunk_of(used)].store(new Slot[size], std::memory_order_release);
    }

    std::mutex m_lock;
    std::vector<std::uint32_t> m_free;
    std::atomic<std::uint32_t> m_used = 0;
};

// Never destroyed: handles are closed by static objects of other modules after ours are gone.
FreeRows& rows() {
    static auto* const instance = new FreeRows;
    return *instance;
}

[[maybe_unused]] const bool g_is_fork_safe = (guard_forks(), true);

std::uintptr_t handle_value(std::uint32_t index, std::uint64_t generation) {
    return static_cast<std::uintptr_t>(generation << 32) | (std::uintptr_t{index} << 2U);
}

std::uint32_t index_of(const Slot& slot) {
    for (unsigned chunk = 0;; ++chunk) {
        const auto* const first = g_chunks[chunk].load(std::memory_order_relaxed);
        const auto size = kFirstChunk << chunk;
        if (!std::less<>()(&slot, first) && std::less<>()(&slot, first + size)) {
            return start_of(chunk) + static_cast<std::uint32_t>(&slot - first);
        }
    }
}

bool add_pin(Slot& slot, std::uint64_t generation, bool or_closed) {
    auto share = slot.share.load(std::memory_order_relaxed);
    do {
        const bool is_closed = (share & Slot::kClosed) != 0;
        const bool is_free = static_cast<std::uint32_t>(share) == Slot::kClosed;
        if (share >> 32 != generation || is_free || (is_closed && !or_closed)) return false;
    } while (!slot.share.compare_exchange_weak(share, share + 1, std::memory_order_acquire,
                                               std::memory_order_relaxed));
    return true;
}

// The row is closed and nobody pins it any more.
void free_row(Slot& slot, std::uint64_t generation) {
    const auto object = std::move(slot.object);  // destroyed at the very end
    slot.quick.store(0, std::memory_order_relaxed);
    const auto next = generation == 0xFFFFFFFF ? 1 : generation + 1;
    slot.share.store(next << 32 | Slot::kClosed, std::memory_order_release);
    rows().give_back(index_of(slot));
}

}  // namespace

Pin::Pin(std::uintptr_t handle, bool or_closed) {
    auto* const slot = slot_of(handle);
    if (slot != nullptr && add_pin(*slot, generation_of(handle), or_closed)) m_slot = slot;
}

HandleObject* Pin::object() const {
    return m_slot->object.get();
}

const std::shared_ptr<HandleObject>& Pin::shared() const {
    return m_slot->object;
}

void Pin::release() {
    if (m_slot == nullptr) return;
    const auto share = m_slot->share.fetch_sub(1, std::memory_order_acq_rel);
    if (static_cast<std::uint32_t>(share) == (Slot::kClosed | 1)) free_row(*m_slot, share >> 32);
    m_slot = nullptr;
}

std::uintptr_t insert(std::shared_ptr<HandleObject> object) {
    const auto index = rows().take();
    if (index == kMaxHandles) {
        SetLastError(ERROR_TOO_MANY_OPEN_FILES);
        return 0;
    }
    auto& slot = *slot_at(index);
    const auto generation = slot.share.load(std::memory_order_relaxed) >> 32;
    const auto handle = handle_value(index, generation);
    slot.object = std::move(object);
    slot.object->on_inserted(slot, handle);
    slot.share.store(generation << 32, std::memory_order_release);
    return handle;
}

std::shared_ptr<HandleObject> find(std::uintptr_t handle) {
    const Pin pin(handle);
    return pin ? pin.shared() : nullptr;
}

std::shared_ptr<HandleObject> remove(std::uintptr_t handle, HandleKind kind) {
    const Pin pin(handle);
    if (!pin || pin.object()->kind() != kind) return nullptr;
    // Of several who close it at once, one finds it open.
    if ((pin.m_slot->share.fetch_or(Slot::kClosed) & Slot::kClosed) != 0) return nullptr;
    pin.m_slot->quick.fetch_or(Slot::kQueued | Slot::kGone);
    return pin.shared();
}

void visit_live(const std::function<void(HandleObject&)>& visit) {
    for (std::uint32_t i = 0, end = rows().used(); i < end; ++i) {
        auto& slot = *slot_at(i);
        const auto share = slot.share.load(std::memory_order_acquire);
        if (!add_pin(slot, share >> 32, false)) continue;
        Pin pin;
        pin.m_slot = &slot;
        visit(*pin.object());
    }
}

std::size_t count_live() {
    std::size_t count = 0;
    visit_live([&count](HandleObject&) { ++count; });
    return count;
}

// A fork while another thread opens or closes a handle would leave the child with a lock that
// nobody opens. A look-up holds none. What another thread had pinned stays pinned in the child: its
// handle can be closed there, its memory isn't freed.
void guard_forks() {
    static const ForkLock is_fork_safe(rows().lock(), ForkRank::handles);
}

}  // namespace tvutil2::handle_table

BOOL CloseHandle(HANDLE handle) {
    using tvutil2::HandleKind;
    const auto has_own_close = [](HandleKind kind) {
        return kind == HandleKind::search || kind == HandleKind::key ||
               kind == HandleKind::module || kind == HandleKind::change ||
               kind >= HandleKind::internet;
    };
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    std::shared_ptr<tvutil2::HandleObject> closed;  // destroyed behind the pin
    if (const tvutil2::handle_table::Pin pin(value); pin && !has_own_close(pin.object()->kind())) {
        closed = tvutil2::handle_table::remove(value, pin.object()->kind());
    }
    if (!closed) return tvutil2::fail_with(ERROR_INVALID_HANDLE);
    closed->on_closed();
    return TRUE;
}
