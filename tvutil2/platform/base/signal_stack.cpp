#include "tvutil2/platform/base/signal_stack.h"

#include "tvutil2/platform/base/fork_lock.h"

#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstddef>
#include <mutex>
#include <vector>

namespace tvutil2 {
namespace {

constexpr std::size_t kSize = std::size_t{64} * 1024;

constinit std::atomic<bool> g_wanted = false;
constinit std::mutex g_lock;
const ForkLock g_fork_safe(g_lock, ForkRank::handles);

std::size_t page() {
    static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

// The guard, and the stack above it; null when there is no memory.
void* map_stack() {
    void* const memory = mmap(nullptr, page() + kSize, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED) return nullptr;
    mprotect(memory, page(), PROT_NONE);
    return memory;
}

// Stacks of threads that have ended serve later ones.
class Pool {
  public:
    void* take() {
        const std::lock_guard guard(g_lock);
        if (!m_free.empty()) {
            void* const memory = m_free.back();
            m_free.pop_back();
            return memory;
        }
        m_free.reserve(m_count + 1);  // so that give_back() can't fail
        void* const memory = map_stack();
        if (memory != nullptr) ++m_count;
        return memory;
    }
    void give_back(void* memory) {
        const std::lock_guard guard(g_lock);
        m_free.push_back(memory);
    }

  private:
    std::vector<void*> m_free;
    std::size_t m_count = 0;
};

// Never destroyed: threads outlive static objects.
Pool& pool() {
    static auto* const instance = new Pool;
    return *instance;
}

class OwnStack {
  public:
    OwnStack() = default;
    ~OwnStack() {
        if (m_memory == nullptr) return;
        const stack_t none{nullptr, SS_DISABLE, 0};
        // The end of a program may be called from a handler, which goes on running on it.
        if (is_in_use() && sigaltstack(&none, nullptr) != 0) return;
        pool().give_back(m_memory);
    }
    OwnStack(const OwnStack&) = delete;
    OwnStack& operator=(const OwnStack&) = delete;

    void take() {
        m_memory = pool().take();
        if (m_memory == nullptr) return;
        const stack_t own{bottom(), 0, kSize};
        sigaltstack(&own, nullptr);
    }

  private:
    [[nodiscard]] void* bottom() const { return static_cast<char*>(m_memory) + page(); }
    [[nodiscard]] bool is_in_use() const {
        stack_t present{};
        sigaltstack(nullptr, &present);
        return present.ss_sp == bottom();
    }

    void* m_memory = nullptr;
};

thread_local OwnStack t_stack;

}  // namespace

void give_signal_stack() {
    stack_t present{};
    sigaltstack(nullptr, &present);
    if ((present.ss_flags & SS_DISABLE) != 0) t_stack.take();
}

void want_signal_stacks() {
    g_wanted = true;
}

void give_signal_stack_if_wanted() {
    if (g_wanted.load(std::memory_order_relaxed)) give_signal_stack();
}

}  // namespace tvutil2
