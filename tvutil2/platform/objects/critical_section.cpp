#include "tvutil2/platform/objects/critical_section.h"

#include "tvutil2/platform/objects/futex.h"

#include <pthread.h>

namespace {

constexpr DWORD kFree = 0;
constexpr DWORD kTaken = 1;
constexpr DWORD kContended = 2;

static_assert(sizeof(std::atomic<DWORD>) == sizeof(DWORD));

// The structure is plain memory that callers may zero-fill; the lock word in it is an atomic.
std::atomic<DWORD>& state_of(CRITICAL_SECTION* section) {
    return reinterpret_cast<std::atomic<DWORD>&>(section->state);
}

std::atomic<std::uintptr_t>& owner_of(CRITICAL_SECTION* section) {
    return reinterpret_cast<std::atomic<std::uintptr_t>&>(section->owner);
}

// A thread-local variable's address would do as well, but costs more where the library is loaded
// late.
std::uintptr_t this_thread() {
    return pthread_self();
}

// Nobody but the owner can find its own identity there, so a stale look does no harm.
bool is_ours(CRITICAL_SECTION* section) {
    return owner_of(section).load(std::memory_order_relaxed) == this_thread();
}

void become_owner(CRITICAL_SECTION* section) {
    owner_of(section).store(this_thread(), std::memory_order_relaxed);
    section->recursion = 1;
}

bool take_free(std::atomic<DWORD>& state) {
    auto expected = kFree;
    return state.compare_exchange_strong(expected, kTaken, std::memory_order_acquire,
                                         std::memory_order_relaxed);
}

}  // namespace

void InitializeCriticalSection(CRITICAL_SECTION* section) {
    *section = {};
}

void EnterCriticalSection(CRITICAL_SECTION* section) {
    if (is_ours(section)) {
        ++section->recursion;
        return;
    }
    auto& state = state_of(section);
    if (!take_free(state)) {
        const tvutil2::Deadline never(INFINITE);
        while (state.exchange(kContended, std::memory_order_acquire) != kFree) {
            tvutil2::futex_wait(state, kContended, never);
        }
    }
    become_owner(section);
}

BOOL TryEnterCriticalSection(CRITICAL_SECTION* section) {
    if (is_ours(section)) {
        ++section->recursion;
        return TRUE;
    }
    if (!take_free(state_of(section))) return FALSE;
    become_owner(section);
    return TRUE;
}

void LeaveCriticalSection(CRITICAL_SECTION* section) {
    if (--section->recursion > 0) return;
    owner_of(section).store(0, std::memory_order_relaxed);
    auto& state = state_of(section);
    if (state.exchange(kFree, std::memory_order_release) == kContended) {
        tvutil2::futex_wake(&state, 1);
    }
}

void DeleteCriticalSection(CRITICAL_SECTION* section) {
    *section = {};
}
