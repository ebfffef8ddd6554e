#include "tvutil2/platform/objects/critical_section.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/support/threads.h"

namespace {

TEST(CriticalSection, ExcludesOtherThreadsAndAdmitsItsOwnerAgain) {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    const auto is_free_elsewhere = [&section] {
        bool is_free = false;
        std::thread([&] {
            is_free = TryEnterCriticalSection(&section) != 0;
            if (is_free) LeaveCriticalSection(&section);
        }).join();
        return is_free;
    };
    EnterCriticalSection(&section);
    EXPECT_TRUE(TryEnterCriticalSection(&section));
    LeaveCriticalSection(&section);
    EXPECT_FALSE(is_free_elsewhere());
    LeaveCriticalSection(&section);
    EXPECT_TRUE(is_free_elsewhere());
    DeleteCriticalSection(&section);
}

TEST(CriticalSection, LosesNoCountUnderContention) {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    constexpr int kThreads = 4;
    constexpr int kRounds = 20000;
    int count = 0;
    tests::on_threads(kThreads, [&](int /*thread*/) {
        for (int round = 0; round < kRounds; ++round) {
            EnterCriticalSection(&section);
            ++count;
            LeaveCriticalSection(&section);
        }
    });
    EXPECT_EQ(count, kThreads * kRounds);
    DeleteCriticalSection(&section);
}

}  // namespace
