#include "tvutil2/threads/synchronization.h"

#include "tvutil2/platform/base/handle_table.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/threads.h"

namespace {

using NSynchronization::CAutoLock;
using NSynchronization::Event;
using NSynchronization::Mutex;
using NSynchronization::Semaphore;
using NSynchronization::ThreadException;

std::string thrown_by(const std::function<void()>& work) {
    try {
        work();
    } catch (const ThreadException& exception) {
        return exception.what();
    }
    return "nothing";
}

TEST(Synchronization, FailuresThrowTheirText) {
    Event event;
    Mutex mutex;
    Semaphore semaphore;
    Mutex free_one;
    const std::vector<std::pair<std::function<void()>, const char*>> while_open = {
        {[] { Semaphore(2, 1); }, "Failed to create semaphore: CreateSemaphore() failed(87).\n"},
        {[&] { semaphore.Unlock(1); },
         "Failed to unlock semaphore: ReleaseSemaphore() failed(298).\n"},
        {[&] { free_one.Unlock(); }, "Failed to unlock mutex: ReleaseMutex failed(288).\n"}};
    for (const auto& [work, text] : while_open) EXPECT_EQ(thrown_by(work), text);
    for (auto* handle : {event.GetHandle(), mutex.GetHandle(), semaphore.GetHandle()}) {
        CloseHandle(handle);
    }
    const std::vector<std::pair<std::function<void()>, const char*>> once_closed = {
        {[&] { event.Wait(0); }, "Failed to wait event: WaitForSingleObject failed(6).\n"},
        {[&] { event.SetEvent(); }, "Failed to set event: SetEvent() failed(6).\n"},
        {[&] { event.ResetEvent(); }, "Failed to reset event: ResetEvent failed(6).\n"},
        {[&] { event.PulseEvent(); }, "Failed to pulse event: PulseEvent failed(6).\n"},
        {[&] { mutex.Lock(0); }, "Failed to lock mutex: WaitForSingleObject() failed(6).\n"},
        {[&] { mutex.Unlock(); }, "Failed to unlock mutex: ReleaseMutex failed(6).\n"},
        {[&] { semaphore.Lock(0); },
         "Failed to lock semaphore: WaitForSingleObject() failed(6).\n"},
        {[&] { semaphore.Unlock(1); },
         "Failed to unlock semaphore: ReleaseSemaphore() failed(6).\n"}};
    for (const auto& [work, text] : once_closed) EXPECT_EQ(thrown_by(work), text);
}

TEST(Synchronization, AnExceptionKeepsACopyOfItsText) {
    ThreadException other;
    EXPECT_STREQ(other.what(), "Thread Exception");
    {
        std::string text = "gone soon";
        const ThreadException exception(text.c_str());
        text.assign("overwritten");
        other = exception;
    }
    const auto& same = other;
    other = same;
    EXPECT_STREQ(other.what(), "gone soon");
}

TEST(Synchronization, ATimeThatRunsOutIsFalseAndAllElseTrue) {
    Event event(false, true);
    EXPECT_TRUE(event.Wait(0));
    EXPECT_FALSE(event.Wait(0));
    Semaphore semaphore;
    EXPECT_TRUE(semaphore.Lock(INFINITE));
    EXPECT_FALSE(semaphore.Lock(1));
    semaphore.Unlock(1);
    Mutex mutex;
    std::thread([&] { EXPECT_TRUE(mutex.Lock(0)); }).join();
    EXPECT_TRUE(mutex.Lock(0));  // abandoned
    std::thread([&] { EXPECT_FALSE(mutex.Lock(0)); }).join();
    mutex.Unlock();
}

TEST(Synchronization, AutoLocksExclude) {
    const CCriticalSection section;
    int count = 0;
    tests::on_threads(4, [&](int /*thread*/) {
        for (int i = 0; i < 10000; ++i) {
            const CAutoLock outer(section);
            const CAutoLock inner(section.m_sect);
            ++count;
        }
    });
    EXPECT_EQ(count, 40000);
}

}  // namespace
