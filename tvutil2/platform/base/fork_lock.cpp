#include "tvutil2/platform/base/fork_lock.h"

#include <pthread.h>

#include <utility>

namespace tvutil2 {

// In the order of the ranks; of equal ones the first that came is the first.
class ForkMembers {
  public:
    static void enter(ForkMember& member) {
        auto* place = &g_first;
        for (;;) {
            auto* next = place->load();
            if (next != nullptr && next->m_rank <= member.m_rank) {
                place = &next->m_next;
                continue;
            }
            member.m_next = next;
            if (place->compare_exchange_strong(next, &member)) return;
        }
    }
    static void before() {
        for (auto* member = g_first.load(); member != nullptr; member = member->m_next) {
            member->m_before(member->m_what);
            member->m_takes_part = true;
        }
    }
    static void in_parent() { after(&ForkMember::m_in_parent); }
    static void in_child() { after(&ForkMember::m_in_child); }

  private:
    static void after(ForkMember::Work ForkMember::*work) {
        for (auto* member = g_first.load(); member != nullptr;) {
            auto* const next = member->m_next.load();
            // The last to be let go of, so that no two forks meet.
            if (std::exchange(member->m_takes_part, false) && member->m_rank != ForkRank::first) {
                (member->*work)(member->m_what);
            }
            member = next;
        }
        (g_one_at_a_time.*work)(g_one_at_a_time.m_what);
    }

    static constinit std::atomic<ForkMember*> g_first;
    static constinit std::mutex g_forks;
    static const ForkLock g_one_at_a_time;
};

constinit std::atomic<ForkMember*> ForkMembers::g_first = nullptr;
constinit std::mutex ForkMembers::g_forks;
const ForkLock ForkMembers::g_one_at_a_time(g_forks, ForkRank::first);

namespace {

[[maybe_unused]] const int g_handlers =
    pthread_atfork(&ForkMembers::before, &ForkMembers::in_parent, &ForkMembers::in_child);

}  // namespace

ForkMember::ForkMember(ForkRank rank, void* what, Work before, Work in_parent, Work in_child)
    : m_rank(rank), m_what(what), m_before(before), m_in_parent(in_parent), m_in_child(in_child) {
    ForkMembers::enter(*this);
}

}  // namespace tvutil2
