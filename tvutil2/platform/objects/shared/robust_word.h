// Words in shared memory that the kernel tidies up behind a thread that is killed.
//
// Each thread has a list of words that it holds. When it ends, however it ends, the kernel marks
// those as left behind and wakes one who sleeps on them (robust futexes, see get_robust_list(2) and
// the kernel's "robust-futex-ABI"). The C library keeps that list for its own robust mutexes; here
// words of ours are entered in it by the layout that those have. One word more can be named as
// "pending": if the thread dies while it is and nobody holds it, one sleeper is woken.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <atomic>

namespace tvutil2 {

/// As the kernel and the C library want it: the word 32 bytes in front of the link.
struct RobustWord {
    std::atomic<DWORD> word;
    std::byte unused[20];
    void* previous;
    void* next;

    /// Of the holder's thread.
    static constexpr DWORD kOwner = 0x3FFFFFFF;
    /// The holder has died.
    static constexpr DWORD kLeft = 0x40000000;
    /// Somebody sleeps on the word, or has done so. Stays once it is set, so that no sleeper
    /// depends on the life of another one.
    static constexpr DWORD kSleepers = 0x80000000;
};
static_assert(sizeof(RobustWord) == 40 && sizeof(std::atomic<DWORD>) == 4);

/// The calling thread's list.
class RobustList {
  public:
    /// Null where the host doesn't have it as described.
    static RobustList* current();

    void add(RobustWord& word);
    void remove(RobustWord& word);

    /// Names a word as pending for as long as it lives.
    class Pending {
      public:
        Pending(RobustList* list, RobustWord& word);
        ~Pending();
        Pending(const Pending&) = delete;
        Pending& operator=(const Pending&) = delete;

      private:
        RobustList* m_list;
    };

  private:
    // The kernel's robust_list_head.
    void* m_first;
    long m_word_offset;
    void* m_pending;
};

/// Wakes up to `count` of those who sleep on a word of shared memory.
void wake_shared(std::atomic<DWORD>& word, int count);

}  // namespace tvutil2
