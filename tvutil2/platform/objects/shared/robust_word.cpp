#include "tvutil2/platform/objects/shared/robust_word.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tvutil2 {
namespace {

constexpr long kWordOffset = -32;
constexpr std::size_t kNextOffset = 32;
constexpr std::size_t kPreviousBeforeNext = sizeof(void*);

static_assert(offsetof(RobustWord, next) == kNextOffset);

// Links are addresses of the "next" field; the lowest bit marks another kind of mutex.
void*& next_at(void* link) {
    return *static_cast<void**>(link);
}
void* plain(void* link) {
    return reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(link) & ~std::uintptr_t{1});
}
void*& previous_at(void* link) {
    return *reinterpret_cast<void**>(static_cast<char*>(plain(link)) - kPreviousBeforeNext);
}

// A thread that is killed between two of these writes must find the list whole.
void in_order() {
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

}  // namespace

RobustList* RobustList::current() {
    static thread_local RobustList* const list = [] {
        RobustList* head = nullptr;
        std::size_t size = 0;
        const auto result = syscall(SYS_get_robust_list, 0, &head, &size);
        const bool is_known = result == 0 && head != nullptr && size == sizeof(RobustList) &&
                              head->m_word_offset == kWordOffset;
        return is_known ? head : nullptr;
    }();
    return list;
}

void RobustList::add(RobustWord& word) {
    void* const link = &word.next;
    word.next = m_first;
    word.previous = &m_first;
    previous_at(m_first) = link;
    in_order();
    m_first = link;
}

void RobustList::remove(RobustWord& word) {
    previous_at(word.next) = word.previous;
    next_at(plain(word.previous)) = word.next;
    in_order();
    word.next = word.previous = nullptr;
}

RobustList::Pending::Pending(RobustList* list, RobustWord& word) : m_list(list) {
    if (m_list != nullptr) m_list->m_pending = &word.next;
    in_order();
}

RobustList::Pending::~Pending() {
    in_order();
    if (m_list != nullptr) m_list->m_pending = nullptr;
}

void wake_shared(std::atomic<DWORD>& word, int count) {
    syscall(SYS_futex, &word, FUTEX_WAKE, count, nullptr, nullptr, 0);
}

}  // namespace tvutil2
