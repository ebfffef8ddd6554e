#include "tvutil2/platform/objects/threads.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <random>
#include <thread>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/threads.h"

namespace {

HANDLE event(bool is_manual = false) {
    return CreateEventW(nullptr, is_manual, FALSE, nullptr);
}

HANDLE start(LPTHREAD_START_ROUTINE routine, void* argument = nullptr, DWORD flags = 0) {
    auto* const thread = CreateThread(nullptr, 0, routine, argument, flags, nullptr);
    EXPECT_NE(thread, nullptr);
    return thread;
}

DWORD join(HANDLE thread) {
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    EXPECT_TRUE(CloseHandle(thread));
    return code;
}

// What the calls of a test were given, in their order.
thread_local std::vector<std::uintptr_t> t_calls;
void note(std::uintptr_t data) {
    t_calls.push_back(data);
}

struct Late {
    ~Late() {
        if (done != nullptr) SetEvent(done);
    }
    HANDLE done = nullptr;
};
thread_local Late t_late;

TEST(Threads, AThreadHasAnIdAnArgumentAndAnExitCode) {
    struct Seen {
        DWORD id = 0;
        HANDLE go_on = event();
    } seen;
    DWORD id = 0;
    auto* const thread = CreateThread(
        nullptr, 65536,
        [](void* argument) -> DWORD {
            auto& told = *static_cast<Seen*>(argument);
            told.id = GetCurrentThreadId();
            WaitForSingleObject(told.go_on, INFINITE);
            return 77;
        },
        &seen, 0, &id);
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    EXPECT_EQ(code, STILL_ACTIVE);
    EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_TIMEOUT);
    EXPECT_EQ(GetThreadId(thread), id);
    EXPECT_NE(id, GetCurrentThreadId());
    SetEvent(seen.go_on);
    EXPECT_EQ(join(thread), 77U);
    EXPECT_EQ(seen.id, id);
    CloseHandle(seen.go_on);
}

TEST(Threads, WrongArgumentsAreRefused) {
    const auto routine = [](void* /*argument*/) -> DWORD { return 0; };
    EXPECT_EQ(CreateThread(nullptr, 0, nullptr, nullptr, 0, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(CreateThread(nullptr, 0, routine, nullptr, 1, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    auto* const other = event();
    DWORD code = 0;
    for (auto* const handle : {other, HANDLE(nullptr)}) {
        SetLastError(0);
        EXPECT_EQ(ResumeThread(handle), 0xFFFFFFFF);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        EXPECT_FALSE(GetExitCodeThread(handle, &code));
        EXPECT_EQ(GetThreadId(handle), 0U);
        EXPECT_EQ(QueueUserAPC(note, handle, 0), 0U);
    }
    CloseHandle(other);
}

TEST(Threads, ASuspendedOneBeginsWhenItIsResumedAndRunsItsCallsFirst) {
    static std::atomic<int> calls;
    calls = 0;
    auto* const thread = reinterpret_cast<HANDLE>(_beginthreadex(
        nullptr, 0, [](void* /*argument*/) -> unsigned { return static_cast<unsigned>(calls); },
        nullptr, CREATE_SUSPENDED, nullptr));
    for (int i = 0; i < 3; ++i) {
        EXPECT_NE(QueueUserAPC([](std::uintptr_t) { ++calls; }, thread, 0), 0U);
    }
    EXPECT_EQ(WaitForSingleObject(thread, 5), WAIT_TIMEOUT);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(ResumeThread(thread), 1U);
    EXPECT_EQ(ResumeThread(thread), 0U);
    EXPECT_EQ(join(thread), 3U);
}

TEST(Threads, TheEndComesBehindThreadLocalObjectsAndAbandonsMutexes) {
    auto* const done = event();
    auto* const mutex = CreateMutexW(nullptr, FALSE, nullptr);
    static HANDLE taken;
    taken = mutex;
    auto* const thread = start(
        [](void* argument) -> DWORD {
            t_late.done = static_cast<HANDLE>(argument);
            return WaitForSingleObject(taken, INFINITE);
        },
        done);
    EXPECT_EQ(join(thread), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(done, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_ABANDONED);
    CloseHandle(done);
    CloseHandle(mutex);
}

TEST(Threads, ManyStartAndEndAtOnce) {
    static std::atomic<int> ran;
    ran = 0;
    tests::on_threads(4, [](int /*thread*/) {
        for (int i = 0; i < 100; ++i) {
            auto* const thread = start([](void* /*argument*/) -> DWORD { return DWORD(++ran); });
            if (i % 2 == 0) {
                CloseHandle(thread);
            } else {
                join(thread);
            }
        }
    });
    while (ran < 400) Sleep(0);
}

TEST(Apcs, RunInOrderAtAlertableWaitsOnly) {
    static HANDLE self;
    const auto body = [](void* /*argument*/) -> DWORD {
        auto* const never = event();
        auto* const ready = event(true);
        SetEvent(ready);
        EXPECT_EQ(SleepEx(0, TRUE), 0U);
        // A call may queue another one, which belongs to the same wait.
        const auto first = [](std::uintptr_t data) {
            note(data);
            QueueUserAPC(note, self, data + 2);
        };
        QueueUserAPC(first, self, 1);
        QueueUserAPC(note, self, 2);
        EXPECT_EQ(WaitForSingleObjectEx(never, 0, FALSE), WAIT_TIMEOUT);
        EXPECT_EQ(WaitForSingleObjectEx(ready, INFINITE, TRUE), WAIT_OBJECT_0);
        EXPECT_TRUE(t_calls.empty());
        EXPECT_EQ(WaitForSingleObjectEx(never, 0, TRUE), WAIT_IO_COMPLETION);
        EXPECT_EQ(t_calls, (std::vector<std::uintptr_t>{1, 2, 3}));
        EXPECT_EQ(WaitForSingleObjectEx(never, 0, TRUE), WAIT_TIMEOUT);
        CloseHandle(never);
        CloseHandle(ready);
        return 0;
    };
    self = start(body, nullptr, CREATE_SUSPENDED);
    ResumeThread(self);
    join(self);
}

// Each kind of alertable wait is ended by a call from another thread, and no call is lost.
TEST(Apcs, EndEveryKindOfWaitAndNoneIsLost) {
    struct Shared {
        HANDLE never[2] = {event(), event()};
        std::atomic<bool> is_over = false;
    } shared;
    auto* const thread = start(
        [](void* argument) -> DWORD {
            auto& all = *static_cast<Shared*>(argument);
            for (int i = 0; !all.is_over; ++i) {
                const auto result =
                    i % 4 == 0   ? SleepEx(INFINITE, TRUE)
                    : i % 4 == 1 ? WaitForSingleObjectEx(all.never[0], INFINITE, TRUE)
                    : i % 4 == 2 ? WaitForMultipleObjectsEx(1, all.never, FALSE, INFINITE, TRUE)
                                 : WaitForMultipleObjectsEx(2, all.never, TRUE, INFINITE, TRUE);
                if (result != WAIT_IO_COMPLETION) return 1;
            }
            for (std::size_t i = 0; i < t_calls.size(); ++i) {
                if (t_calls[i] != i) return 2;
            }
            return static_cast<DWORD>(t_calls.size());
        },
        &shared);
    constexpr std::uintptr_t kCalls = 5000;
    for (std::uintptr_t i = 0; i < kCalls; ++i) {
        EXPECT_NE(QueueUserAPC(note, thread, i), 0U);
        // Signals that don't complete the wait for both get in the way.
        SetEvent(shared.never[1]);
        ResetEvent(shared.never[1]);
    }
    const auto finish = [](std::uintptr_t data) {
        reinterpret_cast<Shared*>(data)->is_over = true;
    };
    QueueUserAPC(finish, thread, reinterpret_cast<std::uintptr_t>(&shared));
    EXPECT_EQ(join(thread), kCalls);
    for (auto* handle : shared.never) CloseHandle(handle);
}

// One thread that queues calls to itself, some of which queue another one, and waits in every way.
TEST(Apcs, RunWhenAModelSaysAfterRandomCalls) {
    static HANDLE self;
    constexpr std::uintptr_t kAgain = 1U << 20;  // a call that queues another one
    static const PAPCFUNC call = [](std::uintptr_t data) {
        note(data);
        if ((data & kAgain) != 0) QueueUserAPC(note, self, data - kAgain);
    };
    const auto body = [](void* seed) -> DWORD {
        std::mt19937 random(static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(seed)));
        const std::array<HANDLE, 2> both{event(true), event(true)};
        std::vector<std::uintptr_t> queued, ran;
        std::array<bool, 2> is_set{};
        t_calls.clear();
        for (std::uintptr_t step = 0; step < 3000; ++step) {
            if (random() % 2 == 0) {
                const auto data = step | (random() % 4 == 0 ? kAgain : 0);
                EXPECT_NE(QueueUserAPC(call, self, data), 0U);
                queued.push_back(data);
                continue;
            }
            if (const auto at = random() % 4; at < 2) {
                is_set.at(at) = !is_set.at(at);
                EXPECT_TRUE(is_set.at(at) ? SetEvent(both.at(at)) : ResetEvent(both.at(at)));
            }
            const bool alertable = random() % 2 == 0;
            const auto kind = random() % 4;
            const DWORD got =
                kind == 0   ? SleepEx(0, alertable)
                : kind == 1 ? WaitForSingleObjectEx(both[0], 0, alertable)
                            : WaitForMultipleObjectsEx(2, both.data(), kind == 2, 0, alertable);
            DWORD expected = kind == 0 ? 0 : WAIT_TIMEOUT;
            const bool is_ready = (kind == 1 && is_set[0]) ||
                                  (kind == 2 && is_set[0] && is_set[1]) ||
                                  (kind == 3 && (is_set[0] || is_set[1]));
            if (is_ready) {
                expected = WAIT_OBJECT_0 + (kind == 3 && !is_set[0] ? 1U : 0U);
            } else if (alertable && !queued.empty()) {
                expected = WAIT_IO_COMPLETION;
                ran.insert(ran.end(), queued.begin(), queued.end());
                for (const auto data : queued) {
                    if ((data & kAgain) != 0) ran.push_back(data - kAgain);
                }
                queued.clear();
            }
            if (got != expected || t_calls != ran) return static_cast<DWORD>(step) + 1;
        }
        for (auto* handle : both) CloseHandle(handle);
        return 0;
    };
    for (const std::uintptr_t seed : {31U, 32U, 33U}) {
        self = start(body, reinterpret_cast<void*>(seed), CREATE_SUSPENDED);
        ResumeThread(self);
        EXPECT_EQ(join(self), 0U) << "the step after it, with seed " << seed;
    }
}

TEST(Apcs, AThreadThatHasEndedTakesNone) {
    auto* const thread = start([](void* /*argument*/) -> DWORD { return 0; });
    WaitForSingleObject(thread, INFINITE);
    SetLastError(0);
    EXPECT_EQ(QueueUserAPC(note, thread, 0), 0U);
    EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
    CloseHandle(thread);
}

// Objects stay usable in a child, whatever the other threads of the parent were about.
TEST(Threads, AForkInTheMidstOfOthersWorkLeavesUsableObjects) {
    auto* const a = event();
    auto* const b = event();
    auto* const mutex = CreateMutexW(nullptr, FALSE, nullptr);
    auto* const held = CreateMutexW(nullptr, FALSE, nullptr);
    auto* const is_held = event();
    std::atomic<bool> is_over = false;
    std::thread busy([&] {
        WaitForSingleObject(held, INFINITE);
        SetEvent(is_held);
        while (!is_over) {
            SetEvent(a);
            WaitForSingleObject(mutex, INFINITE);
            WaitForSingleObject(b, 1);
            ReleaseMutex(mutex);
            CloseHandle(event());
        }
    });
    std::thread waiting([&] {
        const std::array<HANDLE, 2> both{a, mutex};
        while (!is_over) {
            if (WaitForMultipleObjects(2, both.data(), TRUE, 1) == WAIT_OBJECT_0) {
                ReleaseMutex(mutex);
            }
        }
    });
    WaitForSingleObject(is_held, INFINITE);
    for (int i = 0; i < 30; ++i) {
        EXPECT_EQ(tests::in_child([&] {
                      if (GetCurrentThreadId() != static_cast<DWORD>(getpid())) return 1;
                      if (WaitForSingleObject(held, 0) == WAIT_OBJECT_0) return 2;
                      if (WaitForSingleObject(mutex, 0) == WAIT_TIMEOUT) return 3;
                      SetEvent(b);
                      if (WaitForSingleObject(b, INFINITE) != WAIT_OBJECT_0) return 4;
                      return ReleaseMutex(mutex) && CloseHandle(mutex) ? 0 : 5;
                  }),
                  0);
    }
    is_over = true;
    busy.join();
    waiting.join();
    for (auto* handle : {a, b, mutex, held, is_held}) CloseHandle(handle);
}

}  // namespace
