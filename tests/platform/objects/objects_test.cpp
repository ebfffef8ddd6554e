#include "tvutil2/platform/objects/objects.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <random>
#include <thread>
#include <utility>

#include "tests/support/threads.h"

namespace {

using tests::on_threads;

// Owner of a handle, so that a failed test leaves nothing behind.
class Object {
  public:
    explicit Object(HANDLE handle) : m_handle(handle) { EXPECT_NE(handle, nullptr); }
    ~Object() { CloseHandle(m_handle); }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    operator HANDLE() const { return m_handle; }

  private:
    HANDLE m_handle;
};

HANDLE auto_event(bool is_set = false) {
    return CreateEventW(nullptr, FALSE, is_set, nullptr);
}
HANDLE manual_event() {
    return CreateEventW(nullptr, TRUE, FALSE, nullptr);
}
HANDLE mutex(bool is_owned = false) {
    return CreateMutexW(nullptr, is_owned, nullptr);
}

DWORD wait(HANDLE object, DWORD milliseconds = INFINITE) {
    return WaitForSingleObject(object, milliseconds);
}

template <std::size_t count>
DWORD wait_any(const std::array<HANDLE, count>& objects, DWORD milliseconds = INFINITE) {
    return WaitForMultipleObjects(count, objects.data(), FALSE, milliseconds);
}
template <std::size_t count>
DWORD wait_all(const std::array<HANDLE, count>& objects, DWORD milliseconds = INFINITE) {
    return WaitForMultipleObjects(count, objects.data(), TRUE, milliseconds);
}

// Runs something on a thread that has ended when this returns.
template <class Work>
void on_other_thread(Work work) {
    std::thread(work).join();
}

TEST(Objects, AutoResetEventIsTakenByTheWaitAndManualOneIsNot) {
    const Object once(auto_event(true));
    EXPECT_EQ(wait(once, 0), WAIT_OBJECT_0);
    EXPECT_EQ(wait(once, 0), WAIT_TIMEOUT);
    SetEvent(once);
    SetEvent(once);  // counts no further
    EXPECT_EQ(wait(once, 0), WAIT_OBJECT_0);
    EXPECT_EQ(wait(once, 0), WAIT_TIMEOUT);

    const Object lasting(manual_event());
    SetEvent(lasting);
    EXPECT_EQ(wait(lasting, 0), WAIT_OBJECT_0);
    EXPECT_EQ(wait(lasting, 0), WAIT_OBJECT_0);
    ResetEvent(lasting);
    EXPECT_EQ(wait(lasting, 0), WAIT_TIMEOUT);
}

TEST(Objects, WrongHandlesAndArgumentsAreRefused) {
    const Object event(auto_event());
    const Object lock(mutex());
    auto* const closed = manual_event();
    CloseHandle(closed);

    for (auto* const handle : {HANDLE(lock), closed, HANDLE(nullptr), INVALID_HANDLE_VALUE}) {
        SetLastError(0);
        EXPECT_FALSE(SetEvent(handle));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        EXPECT_FALSE(ResetEvent(handle));
    }
    SetLastError(0);
    EXPECT_FALSE(ReleaseMutex(event));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(ReleaseMutex(lock));
    EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
    EXPECT_EQ(wait(closed), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);

    const std::array<HANDLE, 65> same = [&] {
        std::array<HANDLE, 65> all{};
        all.fill(event);
        return all;
    }();
    for (const DWORD count : {0U, 2U, 65U}) {
        SetLastError(0);
        EXPECT_EQ(WaitForMultipleObjects(count, same.data(), FALSE, 0), WAIT_FAILED) << count;
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER) << count;
    }
}

TEST(Objects, ASemaphoreCountsUpToItsMaximum) {
    for (const auto& [count, maximum] : {std::pair{-1, 1}, {2, 1}, {0, 0}, {0, -1}}) {
        EXPECT_EQ(CreateSemaphoreW(nullptr, count, maximum, nullptr), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
    constexpr LONG kMost = 0x7FFFFFFF;
    const Object counter(CreateSemaphoreW(nullptr, 1, kMost, nullptr));
    EXPECT_EQ(wait(counter, 0), WAIT_OBJECT_0);
    EXPECT_EQ(wait(counter, 0), WAIT_TIMEOUT);
    LONG previous = -1;
    EXPECT_TRUE(ReleaseSemaphore(counter, kMost - 1, &previous));
    EXPECT_EQ(previous, 0);
    EXPECT_FALSE(ReleaseSemaphore(counter, 2, &previous));
    EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_POSTS);
    EXPECT_TRUE(ReleaseSemaphore(counter, 1, &previous));
    EXPECT_EQ(previous, kMost - 1);
    EXPECT_FALSE(ReleaseSemaphore(counter, 0, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    const Object event(auto_event());
    EXPECT_FALSE(ReleaseSemaphore(event, 1, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);

    // Several waiters are let through by one release.
    const Object gate(CreateSemaphoreW(nullptr, 0, 4, nullptr));
    std::thread opener([&] { ReleaseSemaphore(gate, 4, nullptr); });
    on_threads(4, [&](int /*i*/) { EXPECT_EQ(wait(gate), WAIT_OBJECT_0); });
    opener.join();
    EXPECT_EQ(wait(gate, 0), WAIT_TIMEOUT);
}

TEST(Objects, APulseLetsThroughWhoWaitsAndNobodyElse) {
    for (const bool is_manual : {false, true}) {
        const Object event(is_manual ? manual_event() : auto_event());
        EXPECT_TRUE(PulseEvent(event));
        EXPECT_EQ(wait(event, 0), WAIT_TIMEOUT);
        std::atomic<int> passed = 0;
        constexpr int kWaiters = 3;
        std::thread pulser([&] {
            // Pulsed until all are through: those who aren't waiting yet miss one.
            while (passed < kWaiters) {
                PulseEvent(event);
                Sleep(0);
            }
        });
        on_threads(kWaiters, [&](int /*i*/) {
            EXPECT_EQ(wait(event), WAIT_OBJECT_0);
            ++passed;
        });
        pulser.join();
        EXPECT_EQ(wait(event, 0), WAIT_TIMEOUT);
    }
    const Object lock(mutex());
    EXPECT_FALSE(PulseEvent(lock));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(Objects, WhoWaitsOnAClosedHandleGoesOnWaiting) {
    HANDLE lock = mutex();
    const Object is_taken(auto_event());
    const Object waits(auto_event());
    std::thread owner([&] {
        wait(lock);
        SetEvent(is_taken);
        wait(waits);
        EXPECT_TRUE(CloseHandle(lock));
        EXPECT_FALSE(ReleaseMutex(lock));
        EXPECT_EQ(wait(lock, 0), WAIT_FAILED);
    });
    wait(is_taken);
    const std::array<HANDLE, 2> both{is_taken, lock};
    std::thread helper([&] {
        Sleep(5);
        SetEvent(waits);
    });
    EXPECT_EQ(wait_any(both), WAIT_ABANDONED_0 + 1);
    owner.join();
    helper.join();
}

TEST(Objects, AWaitEndsAtItsTimeAndNotBefore) {
    const Object event(auto_event());
    const Object other(manual_event());
    for (const auto kind : {0, 1, 2}) {
        const auto start = std::chrono::steady_clock::now();
        const std::array<HANDLE, 2> both{event, other};
        const auto result = kind == 0   ? wait(event, 20)
                            : kind == 1 ? wait_any(both, 20)
                                        : wait_all(both, 20);
        EXPECT_EQ(result, WAIT_TIMEOUT);
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
    }
    // Nothing is left in a queue that a later signal could be lost to.
    SetEvent(event);
    EXPECT_EQ(wait(event, 0), WAIT_OBJECT_0);
}

TEST(Objects, AMutexBelongsToItsThreadAndIsGivenBackAsOftenAsItWasTaken) {
    const Object lock(mutex(true));
    EXPECT_EQ(wait(lock), WAIT_OBJECT_0);
    const auto elsewhere = [&lock] {
        DWORD result = 0;
        on_other_thread([&] {
            result = wait(lock, 0);
            if (result == WAIT_OBJECT_0) {
                EXPECT_TRUE(ReleaseMutex(lock));
            } else {
                EXPECT_FALSE(ReleaseMutex(lock));
            }
        });
        return result;
    };
    EXPECT_EQ(elsewhere(), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseMutex(lock));
    EXPECT_EQ(elsewhere(), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseMutex(lock));
    EXPECT_EQ(elsewhere(), WAIT_OBJECT_0);
    EXPECT_FALSE(ReleaseMutex(lock));
}

TEST(Objects, AThreadThatEndsAbandonsWhatItOwns) {
    const Object first(mutex());
    const Object second(mutex());
    const Object given_back(mutex());
    on_other_thread([&] {
        wait(first);
        wait(first);
        wait(second);
        wait(given_back);
        ReleaseMutex(given_back);
        Object made_here(mutex(true));  // and closed while it is owned
    });
    const std::array<HANDLE, 2> both{given_back, second};
    EXPECT_EQ(wait_all(both, 0), WAIT_ABANDONED_0 + 1);
    EXPECT_EQ(wait(first, 0), WAIT_ABANDONED);
    // The news is told once.
    EXPECT_TRUE(ReleaseMutex(first));
    EXPECT_EQ(wait(first, 0), WAIT_OBJECT_0);
}

TEST(Objects, AnAbandonedMutexGoesToWhoWaits) {
    const Object lock(mutex());
    const Object is_taken(auto_event());
    std::thread owner([&] {
        wait(lock);
        SetEvent(is_taken);
    });
    wait(is_taken);
    const std::array<HANDLE, 2> both{is_taken, lock};
    EXPECT_EQ(wait_any(both), WAIT_ABANDONED_0 + 1);
    owner.join();
    EXPECT_TRUE(ReleaseMutex(lock));
}

TEST(Objects, TheLowestReadyObjectIsTakenAndNoOther) {
    const Object a(auto_event());
    const Object b(auto_event(true));
    const Object c(auto_event(true));
    const std::array<HANDLE, 3> all{a, b, c};
    EXPECT_EQ(wait_any(all, 0), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(wait_any(all, 0), WAIT_OBJECT_0 + 2);
    EXPECT_EQ(wait_any(all, 0), WAIT_TIMEOUT);
}

TEST(Objects, AWaitForAllTakesNothingUntilItCanTakeAll) {
    const Object event(auto_event(true));
    const Object lock(mutex());
    const Object late(auto_event());
    const std::array<HANDLE, 3> all{event, lock, late};
    EXPECT_EQ(wait_all(all, 1), WAIT_TIMEOUT);
    on_other_thread([&] {
        EXPECT_EQ(wait(lock, 0), WAIT_OBJECT_0);
        EXPECT_TRUE(ReleaseMutex(lock));
    });
    EXPECT_EQ(wait(event, 0), WAIT_OBJECT_0);
    SetEvent(event);
    SetEvent(late);
    EXPECT_EQ(wait_all(all, 0), WAIT_OBJECT_0);
    EXPECT_EQ(wait(event, 0), WAIT_TIMEOUT);
    EXPECT_TRUE(ReleaseMutex(lock));
}

// What an object of one thread is, in one number: signalled, times owned, or counted.
struct Model {
    enum Kind { once, lasting, lock, counter } kind;
    LONG value = 0;

    static constexpr LONG kMost = 3;
    [[nodiscard]] HANDLE make() const {
        if (kind == lock) return mutex();
        if (kind == counter) return CreateSemaphoreW(nullptr, 0, kMost, nullptr);
        return kind == once ? auto_event() : manual_event();
    }
    [[nodiscard]] bool is_ready() const { return kind == lock || value > 0; }
    void take() {
        if (kind != lasting) value += kind == lock ? 1 : -1;
    }
    // What gives the object free: false when it is refused.
    bool give(int count) {
        if (kind == lock ? value == 0 : kind == counter && value + count > kMost) return false;
        if (kind == lock) {
            --value;
        } else {
            value = kind == counter ? value + count : 1;
        }
        return true;
    }
    bool give_real(HANDLE object, int count) const {
        if (kind == lock) return ReleaseMutex(object) != 0;
        return (kind == counter ? ReleaseSemaphore(object, count, nullptr) : SetEvent(object)) != 0;
    }
};

TEST(Objects, AreWhatAModelSaysAfterRandomCalls) {
    using enum Model::Kind;
    for (const unsigned seed : {11U, 12U, 13U, 14U}) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&random](std::size_t limit) { return random() % limit; };
        std::array<Model, 8> models{
            {{once}, {counter}, {lasting}, {lock}, {once}, {lasting}, {counter}, {lock}}};
        std::array<HANDLE, models.size()> objects{};
        for (std::size_t i = 0; i < models.size(); ++i) objects[i] = models[i].make();
        for (int step = 0; step < 20000; ++step) {
            SCOPED_TRACE(step);
            const auto at = below(models.size());
            auto& model = models[at];
            const auto call = below(8);
            if (call < 3) {
                const int count = 1 + static_cast<int>(below(2));
                ASSERT_EQ(model.give_real(objects[at], count), model.give(count));
            } else if (call == 3 && (model.kind == once || model.kind == lasting)) {
                const bool pulses = below(2) == 0;
                ASSERT_TRUE(pulses ? PulseEvent(objects[at]) : ResetEvent(objects[at]));
                model.value = 0;
            } else {
                const auto count = 1 + below(models.size() - at);
                const bool all = call == 7;
                auto* const first = &model;
                auto* const last = first + count;
                const auto is_ready = [](const Model& each) { return each.is_ready(); };
                auto* const ready = std::find_if(first, last, is_ready);
                DWORD expected = WAIT_TIMEOUT;
                if (all && std::all_of(first, last, is_ready)) {
                    for (auto* each = first; each != last; ++each) each->take();
                    expected = WAIT_OBJECT_0;
                } else if (!all && ready != last) {
                    ready->take();
                    expected = WAIT_OBJECT_0 + static_cast<DWORD>(ready - first);
                }
                ASSERT_EQ(WaitForMultipleObjects(static_cast<DWORD>(count), &objects[at], all, 0),
                          expected);
            }
        }
        for (auto* object : objects) CloseHandle(object);
    }
}

TEST(Objects, NoSignalIsLostBetweenTwoThreads) {
    const Object ping(auto_event());
    const Object pong(auto_event());
    constexpr int kRounds = 5000;
    std::thread other([&] {
        for (int i = 0; i < kRounds; ++i) {
            wait(ping);
            SetEvent(pong);
        }
    });
    for (int i = 0; i < kRounds; ++i) {
        SetEvent(ping);
        ASSERT_EQ(wait(pong), WAIT_OBJECT_0);
    }
    other.join();
}

TEST(Objects, AManualResetEventLetsAllThrough) {
    const Object gate(manual_event());
    const Object lock(mutex());
    std::atomic<int> passed = 0;
    std::thread opener([&] { SetEvent(gate); });
    on_threads(8, [&](int i) {
        // Half of them wait for the gate together with something else.
        const std::array<HANDLE, 2> both{lock, gate};
        if (i % 2 == 0) {
            wait(gate);
        } else {
            wait_all(both);
            ReleaseMutex(lock);
        }
        ++passed;
    });
    opener.join();
    EXPECT_EQ(passed, 8);
}

TEST(Objects, MutexesExcludeAlsoWhenTwoAreTakenAtOnce) {
    const Object a(mutex());
    const Object b(mutex());
    const Object c(mutex());
    const std::array<HANDLE, 3> mutexes{a, b, c};
    std::array<int, 3> counts{};  // each guarded by its mutex
    constexpr int kRounds = 1000;
    on_threads(3, [&](int i) {
        const auto left = static_cast<std::size_t>(i);
        const auto right = (left + 1) % 3;
        const std::array<HANDLE, 2> pair{mutexes[left], mutexes[right]};
        for (int round = 0; round < kRounds; ++round) {
            wait_all(pair);
            ++counts[left];
            ++counts[right];
            ReleaseMutex(pair[0]);
            ReleaseMutex(pair[1]);
            wait(pair[1]);
            ++counts[right];
            ReleaseMutex(pair[1]);
        }
    });
    for (const auto count : counts) EXPECT_EQ(count, 3 * kRounds);
}

// Several consumers wait for any of several events; a producer sets each event again only once it
// has been consumed, so that every signal must be taken exactly once.
TEST(Objects, EachSignalIsTakenExactlyOnce) {
    constexpr std::size_t kEvents = 4;
    constexpr int kRounds = 3000;
    const Object e0(auto_event());
    const Object e1(auto_event());
    const Object e2(auto_event());
    const Object e3(auto_event());
    const Object stop(manual_event());
    const Object consumed(auto_event());
    const std::array<HANDLE, kEvents + 1> objects{e0, e1, e2, e3, stop};
    std::array<std::atomic<int>, kEvents> pending{};
    std::atomic<int> surplus = 0;
    std::atomic<int> taken = 0;

    std::thread producer([&] {
        int sent = 0;
        while (sent < kRounds) {
            bool has_sent = false;
            for (std::size_t i = 0; i < kEvents && sent < kRounds; ++i) {
                if (pending[i] != 0) continue;
                ++pending[i];
                ++sent;
                has_sent = true;
                SetEvent(objects[i]);
            }
            if (!has_sent) wait(consumed);
        }
        while (taken < kRounds) wait(consumed);
        SetEvent(stop);
    });
    on_threads(3, [&](int /*i*/) {
        for (;;) {
            const auto result = wait_any(objects);
            if (result >= kEvents) return;
            if (--pending[result] != 0) ++surplus;
            ++taken;
            SetEvent(consumed);
        }
    });
    producer.join();
    EXPECT_EQ(surplus, 0);
    EXPECT_EQ(taken, kRounds);
}

// Each object lets so many in at a time, however threads ask for it: alone, for one of several, for
// all of several, for a moment or for as long as it takes. Nobody holds anything while it waits.
TEST(Objects, LetInNoMoreThanTheyMayWhateverIsAskedFor) {
    struct Door {
        HANDLE object;
        int room;
        BOOL (*give_back)(HANDLE);
        std::atomic<int> inside = 0;
    };
    const auto release = [](HANDLE object) { return ReleaseMutex(object); };
    const auto post = [](HANDLE object) { return ReleaseSemaphore(object, 1, nullptr); };
    std::array<Door, 5> doors{{
        {mutex(), 1, release},
        {CreateSemaphoreW(nullptr, 2, 2, nullptr), 2, post},
        {auto_event(true), 1, SetEvent},
        {CreateMutexW(nullptr, FALSE, u"door"), 1, release},
        {CreateSemaphoreW(nullptr, 2, 2, u"doors"), 2, post},
    }};
    on_threads(4, [&doors](int thread) {
        const auto seed = 20U + static_cast<unsigned>(thread);
        std::mt19937 random(seed);
        for (int step = 0; step < 2000; ++step) {
            std::array<std::size_t, doors.size()> order{0, 1, 2, 3, 4};
            std::shuffle(order.begin(), order.end(), random);
            const auto count = 1 + random() % doors.size();
            const bool all = random() % 2 == 0;
            constexpr std::array<DWORD, 3> kTimes{0, 1, 60000};
            const auto time = kTimes.at(random() % kTimes.size());
            std::array<HANDLE, doors.size()> objects{};
            for (std::size_t i = 0; i < count; ++i) objects.at(i) = doors.at(order.at(i)).object;
            const auto got =
                WaitForMultipleObjects(static_cast<DWORD>(count), objects.data(), all, time);
            if (got == WAIT_TIMEOUT && time < 60000) continue;
            ASSERT_LT(got, count) << "seed " << seed << " step " << step;
            for (std::size_t i = all ? 0 : got; i < (all ? count : got + 1); ++i) {
                auto& door = doors.at(order.at(i));
                EXPECT_LE(++door.inside, door.room) << "seed " << seed << " step " << step;
                --door.inside;
                EXPECT_TRUE(door.give_back(door.object)) << "seed " << seed << " step " << step;
            }
        }
    });
    for (const auto& door : doors) {
        // From the thread of its own that a mutex asks for; nothing was lost and nothing added.
        for (int i = 0; i < door.room; ++i) EXPECT_EQ(wait(door.object, 0), WAIT_OBJECT_0);
        on_other_thread([&door] { EXPECT_EQ(wait(door.object, 0), WAIT_TIMEOUT); });
        CloseHandle(door.object);
    }
}

// Answers that come at once, soon, and late find the other side looking, falling asleep, and
// asleep.
TEST(Objects, ATurnIsNeverLostHoweverLateItComes) {
    constexpr std::array kDelays{0, 0, 0, 2, 20, 45, 55, 0, 300};  // in microseconds
    constexpr int kTurns = 900;
    const auto hold_back = [&](int turn) {
        const auto delay = kDelays[static_cast<std::size_t>(turn) % kDelays.size()];
        const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(delay);
        while (std::chrono::steady_clock::now() < end) {
        }
    };
    for (const auto* const name : {u"", u"Local\\turns"}) {
        const auto named = [&](char16_t suffix) {
            return *name == 0 ? std::u16string() : name + std::u16string(1, suffix);
        };
        const Object there(CreateEventW(nullptr, FALSE, FALSE, named(u'1').c_str()));
        const Object back(CreateEventW(nullptr, FALSE, FALSE, named(u'2').c_str()));
        const Object also_back(CreateSemaphoreW(nullptr, 0, 1, named(u'3').c_str()));
        std::thread other([&] {
            for (int turn = 0; turn < kTurns; ++turn) {
                ASSERT_EQ(wait(there, 60'000), WAIT_OBJECT_0) << turn;
                hold_back(turn);
                SetEvent(back);
                ReleaseSemaphore(also_back, 1, nullptr);
            }
        });
        for (int turn = 0; turn < kTurns; ++turn) {
            hold_back(turn / 2);
            SetEvent(there);
            ASSERT_EQ(wait_all(std::array<HANDLE, 2>{back, also_back}, 60'000), WAIT_OBJECT_0);
        }
        other.join();
    }
}

}  // namespace
