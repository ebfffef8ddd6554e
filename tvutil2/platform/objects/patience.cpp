#include "tvutil2/platform/objects/patience.h"

#include <algorithm>
#include <ctime>
#include <thread>

namespace tvutil2 {
namespace {

// About what a sleep and a wake cost where they are dear. A time-out is never shorter.
constexpr std::int64_t kLongestLook = 50'000;
constexpr std::int64_t kShortestLook = 4'000;
// Two threads that take turns asleep, of which neither looks, wait for each other so long at most.
constexpr std::int64_t kShortSleep = 2 * kLongestLook;
// After so many losses in a row a look is one wait in 256.
constexpr unsigned kMostLosses = 8;

}  // namespace

bool Patience::has_company() {
    static const bool has_company = std::thread::hardware_concurrency() > 1;
    return has_company;
}

Patience::Nanoseconds Patience::now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * Nanoseconds{1'000'000'000} + time.tv_nsec;
}

// The quicker the answers the shorter a look may be, and the less is lost by one that fails.
void Patience::note_gain(Nanoseconds passed) {
    const auto wanted = std::clamp(8 * passed, kShortestLook, kLongestLook);
    m_moment += (wanted - m_moment) / 4;
    m_losses = 0;
}

void Patience::note_loss() {
    m_losses = std::min(m_losses + 1, kMostLosses);
    m_passes = (1U << m_losses) - 1;
}

// What came soon after all might have been seen by a look.
void Patience::note_sleep(Nanoseconds passed) {
    m_moment = passed <= kShortSleep && has_company() ? kLongestLook : 0;
}

}  // namespace tvutil2
